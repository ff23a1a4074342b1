// Include in one source of a program: its operator new, the library's calls included, then refuses more than the
// model's limit. So it does not depend on the machine whether reading a hostile list of identifiers gets the memory
// that it asks for, which may be 64 GiB. It counts what it is asked for, which DecodedSize foretells.
#pragma once

#include "library.h"

#include <cstdlib>
#include <new>

// Not inlined: GCC would see what belongs together in one place and not in the other, and warn.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    library::bytesAskedFor += size;
    return size > model::memoryLimit ? nullptr : std::malloc(size == 0 ? 1 : size);
}
[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void* operator new[](std::size_t size)
{
    return operator new(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
