// Bytes with nothing behind them that could be read: whoever looks further than a message goes ends the process.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

// Memory whose last bytes are these.
class AtTheEnd {
public:
    AtTheEnd(const void* bytes, std::size_t byteCount)
        : size(byteCount),
          start(static_cast<std::uint8_t*>(
              mmap(nullptr, 2 * most, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (start == MAP_FAILED || size > most || mprotect(End(), most, PROT_NONE) != 0) throw std::bad_alloc();
        if (size != 0) std::memcpy(Begin(), bytes, size);
    }
    ~AtTheEnd() { munmap(start, 2 * most); }
    AtTheEnd(const AtTheEnd&) = delete;
    AtTheEnd& operator=(const AtTheEnd&) = delete;

    std::uint8_t* Begin() const { return End() - size; }
    std::uint8_t* End() const { return start + most; }

private:
    static constexpr std::size_t most = 1 << 16;
    std::size_t size;
    std::uint8_t* start;
};
