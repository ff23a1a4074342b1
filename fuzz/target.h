// What every fuzz target has: a body that ends the program when the library is not what the model says. Two mains call
// it: libFuzzer's, and replay_main.cpp's, which goes over the corpus that is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// Defined by each target. Any bytes are an input.
void Check(const std::uint8_t* data, std::size_t size);

[[noreturn]] inline void Fail(const std::string& what)
{
    std::fprintf(stderr, "fuzz: %s\n", what.c_str());
    std::abort();
}

inline void Require(bool holds, const std::string& what)
{
    if (!holds) Fail(what);
}

// An input, byte by byte; zeros follow its end.
class Input {
public:
    Input(const std::uint8_t* begin, std::size_t size) : next(begin), left(size) {}

    bool AtEnd() const { return left == 0; }
    std::size_t Left() const { return left; }

    std::uint8_t Byte()
    {
        if (left == 0) return 0;
        --left;
        return *next++;
    }
    std::uint64_t Number(std::size_t width)
    {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < width; ++i)
            number |= std::uint64_t{Byte()} << 8 * i;
        return number;
    }
    std::string Bytes(std::size_t size)
    {
        std::string bytes;
        while (bytes.size() < size)
            bytes += static_cast<char>(Byte());
        return bytes;
    }

private:
    const std::uint8_t* next;
    std::size_t left;
};
