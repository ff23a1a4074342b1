// What a call takes from the heap: for the one source of a program, since it replaces the operators.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

struct Allocations {
    std::size_t count = 0;
    std::uint64_t bytes = 0;
};

namespace counted {

inline bool counting = false;
inline Allocations made;

} // namespace counted

// Not inlined, so that compilers do not take the pairs for mistakes.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (counted::counting) {
        ++counted::made.count;
        counted::made.bytes += size;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

// What `call` allocates, freed again or not.
template <typename Call>
Allocations CountAllocations(Call&& call)
{
    counted::made = {};
    counted::counting = true;
    call();
    counted::counting = false;
    return counted::made;
}
