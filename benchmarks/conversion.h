// One conversion of one record by one library, ready to be run any number of times: under the clock, or under an
// instruction counter. Everybody's conversions are called through a pointer that the compiler cannot see through, write
// into a buffer that is used again, and read into a new record whose destruction is part of the run. Before any of it
// is run, what comes back is compared with the original.
#pragma once

#include "looks.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

struct Conversion {
    std::string name;  // record/direction/library
    std::size_t bytes; // how large the message is, or what is looked at of it
    std::function<void(std::size_t times)> run;
};

// All of them, or just those that were asked for.
class Conversions {
public:
    // A name, or the part of it before a slash; empty for all.
    explicit Conversions(std::string wanted = "") : only(std::move(wanted)) {}

    template <typename Run>
    void Add(const std::string& name, std::size_t bytes, Run run)
    {
        if (Wants(name)) all.push_back({name, bytes, std::move(run)});
    }

    // Whether to prepare the two conversions of a record by a library.
    bool Wants(const std::string& record, const std::string& library) const
    {
        return Wants(record + "/write/" + library) || Wants(record + "/read/" + library);
    }

    bool Wants(const std::string& name) const
    {
        return name.compare(0, only.size(), only) == 0 && (only.empty() || (name + "/")[only.size()] == '/');
    }

    auto begin() const { return all.begin(); }
    auto end() const { return all.end(); }

private:
    std::string only;
    std::vector<Conversion> all;
};

// What the compiler has to assume that somebody reads.
template <typename T>
void Keep(const T& value)
{
    asm volatile("" : : "r"(&value) : "memory");
}

template <typename Function>
Function* Opaque(Function* function)
{
    asm volatile("" : "+r"(function));
    return function;
}

struct Bytes {
    const std::uint8_t* data;
    std::size_t size;
};

// How a library other than this one converts a record. What it can use again from call to call, it keeps.
template <typename Record>
class Codec {
public:
    Codec() = default;
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;
    virtual ~Codec() = default;

    // The result is the codec's and holds until the next call.
    virtual Bytes Encode(const Record& record) = 0;
    virtual Record Decode(Bytes message) = 0;

    // A copy for Decode.
    virtual std::vector<std::uint8_t> Message(const Record& record)
    {
        const Bytes message = Encode(record);
        return {message.data, message.data + message.size};
    }

    // Its ways to look at such a copy; none where it has to decode it.
    virtual std::vector<Looks<std::vector<std::uint8_t>>> WaysToLook() const { return {}; }
};

// Runs `convert(source)` for one source after the other, again and again.
template <typename Source, typename Convert>
void Cycle(const std::vector<Source>& sources, std::size_t times, Convert convert)
{
    const Source* next = sources.data();
    const Source* const end = next + sources.size();
    for (; times > 0; --times) {
        convert(*next);
        if (++next == end) next = sources.data();
    }
}

template <typename Record>
void ExpectSame(const std::string& name, const Record& original, const Record& copy)
{
    if (!(original == copy)) throw std::logic_error(name + ": what is read is not what was written");
}

template <typename Record>
void AddCodec(Conversions& conversions, const std::string& record, const std::string& library,
              const std::vector<Record>& records, std::shared_ptr<Codec<Record>> codec)
{
    if (!conversions.Wants(record, library)) return;
    std::vector<std::vector<std::uint8_t>> messages;
    std::size_t bytes = 0;
    for (const Record& original : records) {
        messages.push_back(codec->Message(original));
        bytes += codec->Encode(original).size / records.size();
        ExpectSame(record + " by " + library, original,
                   codec->Decode({messages.back().data(), messages.back().size()}));
    }

    conversions.Add(record + "/write/" + library, bytes, [=](std::size_t times) {
        Cycle(records, times, [&](const Record& original) { Keep(codec->Encode(original)); });
    });
    conversions.Add(record + "/read/" + library, bytes, [codec, messages = std::move(messages)](std::size_t times) {
        Cycle(messages, times, [&](const std::vector<std::uint8_t>& message) {
            const Record copy = codec->Decode({message.data(), message.size()});
            Keep(copy);
        });
    });
}

} // namespace bench
