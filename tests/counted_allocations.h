// What a call takes from the heap: for the one source of a program, since it replaces the operators.
#pragma once

#include "replaced_new.h"

#include <cstdint>

struct Allocations {
    std::size_t count = 0;
    std::uint64_t bytes = 0;
};

namespace counted {

inline bool counting = false;
inline Allocations made;

} // namespace counted

inline void* replaced::Allocate(std::size_t size)
{
    if (counted::counting) {
        ++counted::made.count;
        counted::made.bytes += size;
    }
    return FromHeap(size);
}

inline void replaced::Free(void* memory) noexcept
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
