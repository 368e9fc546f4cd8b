#pragma once

#include <cstddef>

// Heap allocations made by this process so far (every operator new counts one).
std::size_t allocationCount();
