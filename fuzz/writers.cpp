// Every record's writer: the input says which record, what is in it, and where in the address space its arena begins,
// how much of it is in use and how large it is.
#include "check_message.h"
#include "memory_limit.h"

#include <string>
#include <vector>

namespace {

class Chosen {
public:
    explicit Chosen(Input& from) : input(from) {}

    model::Value Structure(const model::Layout& layout)
    {
        model::Value value;
        for (const model::Field& field : layout.fields)
            value.items.push_back(Member(field));
        return value;
    }

private:
    model::Value Member(const model::Field& field)
    {
        using model::Kind;
        model::Value value;
        switch (field.kind) {
        case Kind::Number:
        case Kind::Severity:
            value.number = input.Number(field.width);
            break;
        case Kind::NotCarried:
            value.number = input.Byte();
            break;
        case Kind::Flag:
            value.number = input.Byte() & 1;
            break;
        case Kind::Raw:
            value.bytes = input.Bytes(field.width);
            break;
        case Kind::Text:
        case Kind::Blob:
            return Text(field.limit);
        case Kind::Nested:
            return Structure(*field.element);
        case Kind::Optional:
            if ((input.Byte() & 1) != 0) value.items = {Structure(*field.element)};
            break;
        case Kind::List:
        case Kind::Range:
            for (std::size_t count = Size(field.limit); count > 0; --count)
                value.items.push_back(Structure(*field.element));
            break;
        case Kind::Set: {
            const std::size_t count = Size(field.limit);
            for (std::size_t i = 0; i < count; ++i) {
                value.items.push_back(Text(128));
                value.items.back().bytes += std::to_string(i);
            }
            break;
        }
        case Kind::Entries:
            for (std::size_t count = input.Byte() % 6; count > 0; --count)
                value.items.push_back(Structure(*field.element));
            break;
        case Kind::Texts:
            for (std::size_t i = 0; i < field.limit; ++i)
                value.items.push_back(Text(512));
            break;
        }
        return value;
    }

    // Mostly small, else about the limit.
    std::size_t Size(std::uint64_t limit)
    {
        const std::size_t chosen = input.Byte();
        if (chosen < 0xF0 || limit > 65536) return chosen % 16;
        return limit - 1 + chosen % 3;
    }

    model::Value Text(std::uint64_t limit)
    {
        const std::size_t size = Size(limit);
        std::string text = input.Bytes(std::min(size, input.Left()));
        text.resize(size, 'x');
        return {0, text, {}};
    }

    Input& input;
};

// The room up to the end of one of the record's parts, or a byte less or more: where each test for room has its edge.
std::size_t RoomForAPart(const library::Conversions& record, const model::Value& value, std::size_t startMod16,
                         std::size_t top, std::size_t chosen)
{
    model::Value inOrder;
    zt_arena none{};
    record.write(value, &none, &inOrder); // for the order alone

    model::Message message;
    message.arena.start = 0x1000 + startMod16;
    message.arena.top = top;
    message.arena.bytes.resize(top + record.arenaSize(inOrder, message.arena.start + top));
    const model::Outcome written = Write(*record.layout, inOrder, &message.arena);
    message.wire = written.wire;

    std::vector<std::uint64_t> ends{message.arena.top};
    if (!written.failure.has_value()) {
        for (const model::PointerAt& at : PointersOf(*record.layout, message)) {
            const model::WirePointer pointer =
                model::GetPointer(at.inArena ? message.arena.bytes : message.wire, at.at);
            const std::uint64_t end = std::uint64_t{pointer.offset} + pointer.size;
            if (end >= top && end <= message.arena.top) ends.push_back(end);
        }
    }
    const std::uint64_t room = ends[chosen / 3 % ends.size()] - top + chosen % 3;
    return room == 0 ? 0 : room - 1;
}

} // namespace

void Check(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const library::Conversions& record = library::Records()[input.Byte() % library::Records().size()];
    const bool isEvent = record.layout == &model::vynEvent;
    const unsigned flags = input.Byte();
    const std::size_t startMod16 = flags & MessageInput::StartMod16;
    const std::size_t top = input.Byte();
    const std::size_t chosen = input.Number(2);
    const std::size_t room = chosen % 3000;
    const unsigned kindOfRoom = input.Byte();
    const model::Value value = Chosen(input).Structure(*record.layout);

    model::Value inOrder;
    if ((flags & MessageInput::NullArena) != 0 && !isEvent) {
        const model::Outcome written = record.write(value, nullptr, &inOrder);
        RequireSame(*record.layout, written, Write(*record.layout, inOrder, nullptr), "writing");
        return;
    }
    if ((flags & MessageInput::UnsetArena) != 0) {
        zt_arena unset{};
        model::Arena modelUnset;
        const model::Outcome written = record.write(value, &unset, &inOrder);
        RequireSame(*record.layout, written, Write(*record.layout, inOrder, &modelUnset), "writing");
        Require(unset.start == nullptr && unset.top == nullptr && unset.end == nullptr, "an unset arena was changed");
        return;
    }

    if ((flags & MessageInput::LastArena) != 0) {
        zt_arena last = LastAddresses(room, startMod16);
        model::Arena modelLast{reinterpret_cast<std::uintptr_t>(last.start), room, std::string(room, '\0')};
        const model::Outcome written = record.write(value, &last, &inOrder);
        RequireSame(*record.layout, written, Write(*record.layout, inOrder, &modelLast), "writing");
        Require(last.top == last.end, "the top of a full arena was moved");
        return;
    }

    std::size_t capacity = top + room;
    if (kindOfRoom >= 0xF0) // a blob at its limit fits, and every execution is slow
        capacity += 70000;
    else if (kindOfRoom >= 0xC0)
        capacity = top + RoomForAPart(record, value, startMod16, top, chosen);
    ArenaBuffer buffer(std::string(capacity, '\xA5'), startMod16, top);
    std::string wire;
    if (!CheckWrite(record, value, buffer, wire)) return;
    const model::Outcome read = CheckRead(record, wire, buffer);
    // A severity above 3 is written, and fails on reading.
    Require(!read.failure.has_value() && (read.status || isEvent), "what was written cannot be read");
}
