#include "allocations.h"

#include <atomic>
#include <cstdlib>

// Every heap allocation of the process, Qt's containers included, goes through malloc,
// calloc or realloc; counting them here counts what a send really allocates.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* p, std::size_t size);
}

namespace {
std::atomic<std::size_t> allocations{0};
}

std::size_t allocationCount() { return allocations.load(std::memory_order_relaxed); }

extern "C" void* malloc(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}

extern "C" void* realloc(void* p, std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(p, size);
}
