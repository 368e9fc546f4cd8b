#pragma once

#include <string_view>

// The device table of devices.def, at compile time: each code's family and traits.
namespace device {

namespace detail {
enum TraitBit {
#define DAL_TRAIT(name, input, what) name##Bit,
#include "devices.def"
};
} // namespace detail

// The traits as bit flags, so that a row holds any number of them.
enum Trait : unsigned {
#define DAL_TRAIT(name, input, what) name = 1u << detail::name##Bit,
#include "devices.def"
};

// What the library compares with the code to treat it so.
enum class Input { DeviceType, Argument, ModelMember, SubType };

struct TraitText {
    Trait trait;
    const char* name;
    Input input;
    const char* what; // follows "native records, with " or "... records, with "
};

inline constexpr TraitText kTraits[] = {
#define DAL_TRAIT(name, input, what) {name, #name, Input::input, what},
#include "devices.def"
};

struct Row {
    int code;
    const char* family; // its name in families.def, or "none"
    unsigned traits;    // Trait flags
};

// In the list's order: each family's rows together, its own code first.
inline constexpr Row kRows[] = {
#define DAL_DEVICE(code, family, traits) {code, #family, traits},
#include "devices.def"
};

constexpr bool eachCodeOnce() {
    for (const Row& a : kRows)
        for (const Row& b : kRows)
            if (&a != &b && a.code == b.code)
                return false;
    return true;
}
static_assert(eachCodeOnce(), "a device code has two rows in devices.def");

constexpr const Row* rowOf(int code) {
    for (const Row& row : kRows)
        if (row.code == code)
            return &row;
    return nullptr;
}

// Whether `code` has `trait`; a code the table does not hold has none.
constexpr bool has(int code, Trait trait) {
    const Row* row = rowOf(code);
    return row && (row->traits & trait);
}

// The family's own code: its first row's; 0 for a family without one (the OSD box).
constexpr int ownCode(std::string_view family) {
    for (const Row& row : kRows)
        if (family == row.family)
            return row.code;
    return 0;
}

} // namespace device
