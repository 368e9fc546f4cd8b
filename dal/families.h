#pragma once

// Each device family's own device-type code, by the family's name: family::T9 is 0x250300.
namespace family {

enum Code : int {
#define DAL_FAMILY(name, cls, form, code, ...) name = code,
#include "families.def"
};

} // namespace family
