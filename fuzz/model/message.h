// Values and messages made of the model's layouts alone: a full value of every record, and where the wire pointers of
// a message lie, which is what a test spoils and a fuzzer turns.
#pragma once

#include "model.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace model {

// Everything present, lists and sets of two elements, every number and text different from all others.
class Full {
public:
    Value Structure(const Layout& layout)
    {
        Value value;
        for (const Field& field : layout.fields)
            value.items.push_back(Member(field));
        return value;
    }

private:
    Value Member(const Field& field)
    {
        ++count;
        Value value;
        switch (field.kind) {
        case Kind::Number:
            for (std::size_t i = 0; i < field.width; ++i)
                value.number = value.number << 8 | ((0x80 + count * 8 + i) & 0xFF);
            break;
        case Kind::Severity:
            value.number = severity++ % 4;
            break;
        case Kind::Flag:
            value.number = 1;
            break;
        case Kind::Raw:
            for (std::size_t i = 0; i < field.width; ++i)
                value.bytes += static_cast<char>(count * 16 + i);
            break;
        case Kind::Text:
        case Kind::Blob:
            value = Text();
            break;
        case Kind::Nested:
            return Structure(*field.element);
        case Kind::Optional:
            value.items = {Structure(*field.element)};
            break;
        case Kind::List:
        case Kind::Range:
            value.items = {Structure(*field.element), Structure(*field.element)};
            break;
        case Kind::Set:
            value.items = {Text(), Text()};
            break;
        case Kind::Entries:
        case Kind::Texts:
            for (std::size_t i = 0; i < field.limit; ++i)
                value.items.push_back(field.element == nullptr ? Text() : Structure(*field.element));
            break;
        case Kind::NotCarried:
            value.number = count;
            break;
        }
        return value;
    }

    // Of 3 to 9 bytes, so that what follows has to be aligned in every way.
    Value Text()
    {
        ++count;
        std::string text = std::to_string(count) + ":";
        while (text.size() < 3 + count % 7)
            text += static_cast<char>(0x80 + text.size());
        return Value{0, text, {}};
    }

    std::uint64_t count = 0;
    std::uint64_t severity = 1; // a bit away from 3, the highest
};

inline Value FullValue(const Layout& layout)
{
    return Full().Structure(layout);
}

struct Message {
    std::string wire;
    Arena arena; // `bytes` are those in use and no more
};

// Written into an arena of just the size, `startMod16` past a multiple of 16.
inline Message MakeMessage(const Layout& layout, const Value& value, std::uint64_t startMod16)
{
    Message message;
    message.arena.start = 0x10000 + startMod16;
    message.arena.bytes.assign(1 << 20, '\0');
    message.wire = Write(layout, value, &message.arena).wire;
    message.arena.bytes.resize(message.arena.top);
    return message;
}

// A wire pointer of a message, in the structure or in the arena, and what an element of it is.
struct PointerAt {
    bool inArena;
    std::size_t at;
    std::size_t elementSize;
};

inline void FindPointers(const Layout& layout, const Message& message, bool inArena, std::size_t at,
                         std::vector<PointerAt>& found);

// Those of the elements that a pointer leads to, where it leads to any. Found are as many as a fuzzer has use for.
inline void FollowPointer(const Layout& element, const Message& message, bool inArena, std::size_t at,
                          std::vector<PointerAt>& found)
{
    found.push_back({inArena, at, element.size});
    const WirePointer pointer = GetPointer(inArena ? message.arena.bytes : message.wire, at);
    if (std::uint64_t{pointer.offset} + pointer.size > message.arena.bytes.size()) return;
    for (std::size_t i = 0; i < pointer.size / element.size && found.size() < 500; ++i)
        FindPointers(element, message, true, pointer.offset + i * element.size, found);
}

inline void FindPointers(const Layout& layout, const Message& message, bool inArena, std::size_t at,
                         std::vector<PointerAt>& found)
{
    for (const Field& field : layout.fields) {
        switch (field.kind) {
        case Kind::Number:
        case Kind::Severity:
        case Kind::Flag:
        case Kind::Raw:
        case Kind::NotCarried:
            break;
        case Kind::Text:
        case Kind::Blob:
            found.push_back({inArena, at + field.offset, 1});
            break;
        case Kind::Nested:
            FindPointers(*field.element, message, inArena, at + field.offset, found);
            break;
        case Kind::List:
        case Kind::Range:
        case Kind::Optional:
            FollowPointer(*field.element, message, inArena, at + field.offset, found);
            break;
        case Kind::Set:
            FollowPointer(textSlot, message, inArena, at + field.offset, found);
            break;
        case Kind::Entries:
            for (std::size_t i = 0; i < field.limit; ++i)
                FindPointers(*field.element, message, inArena, at + field.offset + i * field.element->size, found);
            break;
        case Kind::Texts:
            for (std::size_t i = 0; i < field.limit; ++i)
                found.push_back({inArena, at + field.offset + i * 8, 1});
            break;
        }
    }
}

inline std::vector<PointerAt> PointersOf(const Layout& layout, const Message& message)
{
    std::vector<PointerAt> found;
    FindPointers(layout, message, false, 0, found);
    return found;
}

} // namespace model
