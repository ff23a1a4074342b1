// Replaces operator new and delete, for the calls of the library as well: for the one source of a program that defines
// Allocate, which returns null where the allocation is to fail, and Free.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace replaced {

void* Allocate(std::size_t size);
void Free(void* memory) noexcept;

inline void* FromHeap(std::size_t size)
{
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace replaced

// Not inlined, so that compilers do not take the pairs for mistakes.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const memory = replaced::Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    replaced::Free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    replaced::Free(memory);
}
