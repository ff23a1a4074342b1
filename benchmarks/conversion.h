// One conversion of one record by one library, ready to be run any number of times: under the clock, or under an
// instruction counter. Whatever a conversion calls, it calls through a pointer that the compiler cannot see through.
#pragma once

#include <common/vyn_connector_common.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

namespace common = vyn_connector::common;

struct Conversion {
    std::string name; // record/direction/library
    std::function<void(std::size_t times)> run;
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

template <typename Record>
using Writer = common::WireOf<Record> (*)(const Record&, zt_arena*);
template <typename Record>
using Reader = Record (*)(const common::WireOf<Record>&, const zt_arena*);

// A record and the message made of it by this library.
template <typename Record>
struct Message {
    explicit Message(Record value) : record(std::move(value)), buffer(common::ArenaSize(record, 0) + 8)
    {
        arena = {buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    }

    Record record;
    std::vector<std::uint8_t> buffer;
    zt_arena arena{};
    common::WireOf<Record> wire{};
};

// This library's two conversions of a record: into an arena that is used again, and into a new record each time.
template <typename Record>
void AddThisLibrary(std::vector<Conversion>& conversions, const std::string& name, Record record)
{
    const Writer<Record> write = Opaque(static_cast<Writer<Record>>(&common::CastToZt));
    const Reader<Record> read = Opaque(static_cast<Reader<Record>>(&common::CastFromZt));
    const auto message = std::make_shared<Message<Record>>(std::move(record));

    message->wire = write(message->record, &message->arena);
    conversions.push_back({name + "/write/this", [=](std::size_t times) {
                               Message<Record>& m = *message;
                               for (; times > 0; --times) {
                                   m.arena.top = m.arena.start;
                                   m.wire = write(m.record, &m.arena);
                                   Keep(m);
                               }
                           }});
    conversions.push_back({name + "/read/this", [=](std::size_t times) {
                               const Message<Record>& m = *message;
                               for (; times > 0; --times) {
                                   const Record copy = read(m.wire, &m.arena);
                                   Keep(copy);
                               }
                           }});
}

} // namespace bench
