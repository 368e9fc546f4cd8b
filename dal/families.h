#pragma once

#include "devices.h"

// Each device family's own device-type code, by the family's name: family::T9 is 0x250300.
namespace family {

#define DAL_FAMILY(name, ...) constexpr int name = device::ownCode(#name);
#include "families.def"

constexpr std::string_view kNames[] = {
#define DAL_FAMILY(name, ...) #name,
#include "families.def"
};

constexpr bool isFamily(std::string_view name) {
    for (std::string_view family : kNames)
        if (name == family)
            return true;
    return false;
}

constexpr bool everyRowNamesAFamily() {
    for (const device::Row& row : device::kRows)
        if (!isFamily(row.family) && std::string_view(row.family) != "none")
            return false;
    return true;
}
static_assert(everyRowNamesAFamily(), "a devices.def row names no family of families.def");

} // namespace family
