// An arena of just its size on the heap, so that the address sanitizer sees the byte behind its end. The bytes between
// the allocation and the start are checked; read by mistake, they differ from what the model reads.
#pragma once

#include "model/model.h"
#include "target.h"

#include <common/zt_arena.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

class ArenaBuffer {
public:
    // The start lies `startMod16` past a multiple of 16, the top `top` bytes behind it.
    ArenaBuffer(const std::string& bytes, std::size_t startMod16, std::size_t top)
        : before(startMod16), buffer(new std::uint8_t[startMod16 + bytes.size()]), size(bytes.size())
    {
        std::memset(buffer.get(), guard, before);
        std::memcpy(buffer.get() + before, bytes.data(), size);
        arena = {buffer.get() + before, buffer.get() + before + top, buffer.get() + before + size};
    }

    zt_arena* Get() { return &arena; }

    // The same for the model.
    model::Arena Now() const
    {
        for (std::size_t i = 0; i < before; ++i)
            Require(buffer[i] == guard, "bytes before the arena were written");
        Require(arena.start == buffer.get() + before && arena.end == arena.start + size, "the arena was moved");
        return {reinterpret_cast<std::uintptr_t>(arena.start), static_cast<std::uint64_t>(arena.top - arena.start),
                std::string(arena.start, arena.end)};
    }

private:
    static constexpr std::uint8_t guard = 0xC3;

    std::size_t before;
    std::unique_ptr<std::uint8_t[]> buffer;
    std::size_t size;
    zt_arena arena{};
};

// The last bytes of the address space but `behind`, all in use. There, sums of addresses wrap. No memory backs it.
inline zt_arena LastAddresses(std::size_t capacity, std::size_t behind)
{
    const std::uintptr_t end = 0 - std::uintptr_t{1} - behind;
    auto* const last = reinterpret_cast<std::uint8_t*>(end);
    return {reinterpret_cast<std::uint8_t*>(end - capacity), last, last};
}

inline bool Same(const model::Arena& a, const model::Arena& b)
{
    return a.start == b.start && a.top == b.top && a.bytes == b.bytes;
}
