#pragma once

#include <cstddef>

// Heap allocations made by this process so far (every malloc, calloc or realloc counts one).
std::size_t allocationCount();
