// What a library does with a message where it stands, without making the record of it. Everybody is asked the same
// three things about the same records, and each answer is compared with the right one before it is timed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

// What looking at fields comes to: numbers as they are, of a text its size and its first byte.
class Sum {
public:
    template <typename Number>
    void Add(Number number)
    {
        total += static_cast<std::uint64_t>(number);
    }
    void AddBytes(const void* data, std::size_t size)
    {
        total += size;
        if (size != 0) total += *static_cast<const unsigned char*>(data);
    }

    std::uint64_t Total() const { return total; }

private:
    std::uint64_t total = 0;
};

inline std::uint64_t SumOf(std::string_view text)
{
    Sum sum;
    sum.AddBytes(text.data(), text.size());
    return sum.Total();
}

// One way to look at messages; null for what it does not offer.
template <typename Message>
struct Looks {
    std::string name;
    bool (*verify)(const Message& message);           // whether all of it is good
    std::uint64_t (*touch)(const Message& message);   // the sum of all fields
    std::uint64_t (*oneText)(const Message& message); // the sum of one that lies deep
};

// The one text is the proxy's password of a server, the second text of this update configuration entry of an app, the
// name of a chunk's file, and the name of the last parameter.
inline constexpr std::size_t entryAskedFor = 5;

} // namespace bench
