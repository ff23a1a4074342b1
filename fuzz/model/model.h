// The format a second time, as simply as it can be said, for tests and fuzzers to hold the library against. It knows
// integers and byte strings; it shares no code with the library, and where the library compares addresses so that
// wrapping shows, this counts the bytes that are there. Slow, and meant to be. Arenas are smaller than 4 GiB.
//
//     Reading  : bytes of a wire structure + arena  ->  value, or failure
//     Writing  : value + arena                      ->  bytes of a wire structure, or failure; the arena as it is then
#pragma once

#include "layout.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace model {

// A tree that can hold any record. Number, flag, severity: `number`. Text, blob, raw: `bytes`. Structure: one item per
// field. List, range, set, texts: one per element. Optional: one or none. Entries: one for each, of two items.
struct Value {
    std::uint64_t number = 0;
    std::string bytes;
    std::vector<Value> items;

    friend bool operator==(const Value& a, const Value& b)
    {
        return a.number == b.number && a.bytes == b.bytes && a.items == b.items;
    }
    friend bool operator!=(const Value& a, const Value& b) { return !(a == b); }
    friend bool operator<(const Value& a, const Value& b)
    {
        if (a.number != b.number) return a.number < b.number;
        if (a.bytes != b.bytes) return a.bytes < b.bytes;
        return a.items < b.items;
    }
};

// What is thrown: the exception's type and text, and for the runtime's own what it records. Those show their text
// through Text().
struct Failure {
    std::string type;
    std::string text;
    std::uint32_t code = 0;
    std::string file{};
    int line = 0;

    friend bool operator==(const Failure& a, const Failure& b)
    {
        return a.type == b.type && a.text == b.text && a.code == b.code && a.file == b.file && a.line == b.line;
    }
};

struct Outcome {
    std::optional<Failure> failure;
    bool status = true; // of an event
    Value value;        // what was read
    std::string wire;   // what was written
};

inline std::string Describe(const Outcome& outcome)
{
    if (!outcome.failure.has_value()) return outcome.status ? "done" : "done, and failed";
    const Failure& failure = *outcome.failure;
    return failure.type + ": " + failure.text + ", " + failure.file + ":" + std::to_string(failure.line);
}

// The arena's bytes from its start to its end. Only the remainder of `start` and whether it is null matter.
struct Arena {
    std::uint64_t start = 0;
    std::uint64_t top = 0; // counted from the start
    std::string bytes;
};

// Requests for more memory than this fail. Only the identifiers' reader, which makes room before it tests, comes near.
constexpr std::uint64_t memoryLimit = 1 << 26;

struct Codec {
    std::string name;
    std::string file;
    int writerLine; // of the check for a null arena
    int readerLine;
};
inline const std::string headers = "lyr_ipc/source/common/include/common/";
inline const Codec stringCodec{"string", headers + "zt_string", 21, 39};
inline const Codec blobCodec{"blob", "lyr_ipc/source/common/source/zt_blob", 14, 32};
inline const Codec vectorCodec{"vector", headers + "zt_vector", 18, 39};
inline const Codec rangeCodec{"range", headers + "zt_range", 20, 49};
inline const Codec optionalCodec{"optional", headers + "zt_optional", 17, 39};
inline const Codec setCodec{"set", headers + "zt_set", 19, 43};

inline Failure InvalidArgument(const Codec& codec, int line)
{
    return {"mur::InvalidArgumentException", "0x00000000 (No error)", 0, codec.file, line};
}
inline Failure OutOfSpace()
{
    return {"mur::ResultCodeException", "0x80000062 (Out of space)", 0x80000062};
}
inline Failure TooLarge(const Codec& codec)
{
    return {"std::length_error", "zt " + codec.name + ": " + codec.name + " size larger than zt buffer"};
}
inline Failure Outside(const Codec& codec, std::uint32_t offset)
{
    if (codec.name == "range") return OutOfSpace();
    return {"std::out_of_range",
            "zt " + codec.name + ": zt_arena does not contain an element with the address " + std::to_string(offset)};
}

inline std::uint64_t GetNumber(const std::string& bytes, std::size_t at, std::size_t width)
{
    std::uint64_t number = 0;
    for (std::size_t i = width; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return number;
}
inline void PutNumber(std::string& bytes, std::size_t at, std::size_t width, std::uint64_t number)
{
    for (std::size_t i = 0; i < width; ++i, number >>= 8)
        bytes.at(at + i) = static_cast<char>(number & 0xFF);
}

struct WirePointer {
    std::uint32_t offset;
    std::uint32_t size;
};
inline WirePointer GetPointer(const std::string& bytes, std::size_t at)
{
    return {static_cast<std::uint32_t>(GetNumber(bytes, at, 4)),
            static_cast<std::uint32_t>(GetNumber(bytes, at + 4, 4))};
}
inline void PutPointer(std::string& bytes, std::size_t at, std::uint64_t offset, std::uint64_t size)
{
    PutNumber(bytes, at, 4, offset);
    PutNumber(bytes, at + 4, 4, size);
}

// Whether `pointer` names whole elements of the arena. Null is no address.
inline bool Resolves(const Arena& arena, WirePointer pointer, std::size_t elementSize)
{
    return std::uint64_t{pointer.offset} + pointer.size <= arena.bytes.size() &&
           !(arena.start == 0 && pointer.offset == 0) && pointer.size % elementSize == 0;
}

// --- reading ----------------------------------------------------------------------------------------------------

// Throws Failure.
class Reader {
public:
    explicit Reader(const Arena* from) : arena(from) {}

    Value Structure(const Layout& layout, const std::string& bytes, std::size_t at = 0) const
    {
        Value value;
        for (const Field& field : layout.fields)
            value.items.push_back(Member(field, bytes, at + field.offset));
        return value;
    }

private:
    Value Member(const Field& field, const std::string& bytes, std::size_t at) const
    {
        Value value;
        switch (field.kind) {
        case Kind::Number:
        case Kind::Severity:
            value.number = GetNumber(bytes, at, field.width);
            break;
        case Kind::Flag:
            value.number = GetNumber(bytes, at, 1) != 0 ? 1 : 0;
            break;
        case Kind::Raw:
            value.bytes = bytes.substr(at, field.width);
            break;
        case Kind::Text:
            value.bytes = Bytes(stringCodec, GetPointer(bytes, at));
            break;
        case Kind::Blob:
            value.bytes = Bytes(blobCodec, GetPointer(bytes, at));
            break;
        case Kind::Nested:
            return Structure(*field.element, bytes, at);
        case Kind::List:
            value.items = Elements(vectorCodec, *field.element, GetPointer(bytes, at));
            break;
        case Kind::Range:
            // Room is made for as many elements as the pointer claims bytes, before anything is tested.
            if (GetPointer(bytes, at).size * std::uint64_t{16} > memoryLimit)
                throw Failure{"std::bad_alloc", "std::bad_alloc"};
            value.items = Elements(rangeCodec, *field.element, GetPointer(bytes, at));
            break;
        case Kind::Optional:
            value.items = Elements(optionalCodec, *field.element, GetPointer(bytes, at), 1);
            break;
        case Kind::Set:
            for (const Value& element : Elements(setCodec, textSlot, GetPointer(bytes, at)))
                value.items.push_back(element.items[0]);
            std::sort(value.items.begin(), value.items.end());
            value.items.erase(std::unique(value.items.begin(), value.items.end()), value.items.end());
            break;
        case Kind::Entries:
            for (std::size_t i = 0; i < field.limit; ++i) {
                const Value entry = Structure(*field.element, bytes, at + i * field.element->size);
                const auto same = [&](const Value& other) { return other.items[0] == entry.items[0]; };
                if (std::none_of(value.items.begin(), value.items.end(), same)) value.items.push_back(entry);
            }
            std::sort(value.items.begin(), value.items.end());
            break;
        case Kind::Texts: // events only
        case Kind::NotCarried:
            break;
        }
        return value;
    }

    std::string Bytes(const Codec& codec, WirePointer pointer) const
    {
        Test(codec, pointer, 1);
        return arena->bytes.substr(pointer.offset, pointer.size);
    }

    std::vector<Value> Elements(const Codec& codec, const Layout& layout, WirePointer pointer,
                                std::size_t most = SIZE_MAX) const
    {
        Test(codec, pointer, layout.size);
        std::vector<Value> elements;
        for (std::size_t i = 0; i < std::min(most, pointer.size / layout.size); ++i)
            elements.push_back(Structure(layout, arena->bytes, pointer.offset + i * layout.size));
        return elements;
    }

    void Test(const Codec& codec, WirePointer pointer, std::size_t elementSize) const
    {
        if (arena == nullptr) throw InvalidArgument(codec, codec.readerLine);
        if (!Resolves(*arena, pointer, elementSize)) throw Outside(codec, pointer.offset);
    }

    const Arena* arena;
};

// --- writing ----------------------------------------------------------------------------------------------------

// Throws Failure.
class Writer {
public:
    explicit Writer(Arena* into) : arena(into) {}

    std::string Structure(const Layout& layout, const Value& value) const
    {
        std::string wire(layout.size, '\0');
        std::vector<std::pair<std::size_t, std::size_t>> byOffset;
        for (std::size_t i = 0; i < layout.fields.size(); ++i)
            byOffset.emplace_back(layout.fields[i].offset, i);
        std::sort(byOffset.begin(), byOffset.end());
        for (const auto& [offset, i] : byOffset)
            Member(layout.fields[i], value.items.at(i), wire, offset);
        return wire;
    }

private:
    void Member(const Field& field, const Value& value, std::string& wire, std::size_t at) const
    {
        switch (field.kind) {
        case Kind::Number:
        case Kind::Severity:
        case Kind::Flag:
            return PutNumber(wire, at, field.width, value.number);
        case Kind::Raw:
            wire.replace(at, field.width, value.bytes);
            return;
        case Kind::Text:
            return Bytes(stringCodec, field.limit, value.bytes, wire, at);
        case Kind::Blob:
            return Bytes(blobCodec, field.limit, value.bytes, wire, at);
        case Kind::Nested:
            wire.replace(at, field.width, Structure(*field.element, value));
            return;
        case Kind::List:
            return Elements(vectorCodec, field.limit, *field.element, value.items, wire, at);
        case Kind::Range:
            if (arena == nullptr) throw InvalidArgument(rangeCodec, 20);
            if (value.items.empty()) throw InvalidArgument(rangeCodec, 21);
            return Elements(rangeCodec, field.limit, *field.element, value.items, wire, at);
        case Kind::Optional:
            if (arena == nullptr) throw InvalidArgument(optionalCodec, optionalCodec.writerLine);
            if (value.items.empty()) return;
            return Elements(optionalCodec, field.limit, *field.element, value.items, wire, at);
        case Kind::Set: {
            std::vector<Value> slots;
            for (const Value& text : value.items)
                slots.push_back(Value{0, "", {text}});
            return Elements(setCodec, field.limit, textSlot, slots, wire, at);
        }
        case Kind::Entries:
            if (value.items.size() > field.limit)
                throw Failure{"std::length_error",
                              "vyn subscriptions: Vyn event severity types more than " + std::to_string(field.limit)};
            for (std::size_t i = 0; i < value.items.size(); ++i)
                wire.replace(at + i * field.element->size, field.element->size,
                             Structure(*field.element, value.items[i]));
            return;
        case Kind::Texts: // events only
        case Kind::NotCarried:
            return;
        }
    }

    void Bytes(const Codec& codec, std::uint64_t limit, const std::string& bytes, std::string& wire,
               std::size_t at) const
    {
        const std::uint64_t offset = Reserve(codec, bytes.size(), limit, 1, 1, wire, at);
        arena->bytes.replace(offset, bytes.size(), bytes);
    }

    // The room for all elements first; what they refer to follows it.
    void Elements(const Codec& codec, std::uint64_t limit, const Layout& layout, const std::vector<Value>& values,
                  std::string& wire, std::size_t at) const
    {
        const std::uint64_t offset = Reserve(codec, values.size(), limit, layout.size, layout.alignment, wire, at);
        for (std::size_t i = 0; i < values.size(); ++i)
            arena->bytes.replace(offset + i * layout.size, layout.size, Structure(layout, values[i]));
    }

    // Takes room at the top, fills it and the gap before it with zeros, points at it, and returns its offset.
    std::uint64_t Reserve(const Codec& codec, std::uint64_t count, std::uint64_t limit, std::size_t elementSize,
                          std::size_t alignment, std::string& wire, std::size_t at) const
    {
        if (arena == nullptr) throw InvalidArgument(codec, codec.writerLine);
        if (count > limit) {
            if (codec.name != "range") throw TooLarge(codec);
            throw Failure{"mur::ResultCodeException", "0x80000046 (Invalid argument)", 0x80000046};
        }
        std::uint64_t gap = 0;
        while ((arena->start + arena->top + gap) % alignment != 0)
            ++gap;
        const std::uint64_t taken = gap + count * elementSize;
        if (taken > arena->bytes.size() - arena->top) throw OutOfSpace();
        std::fill_n(arena->bytes.begin() + static_cast<std::ptrdiff_t>(arena->top), taken, '\0');
        const std::uint64_t offset = arena->top + gap;
        arena->top += taken;
        PutPointer(wire, at, offset, count * elementSize);
        if (!Resolves(*arena, GetPointer(wire, at), elementSize)) throw OutOfSpace();
        return offset;
    }

    Arena* arena;
};

// --- events -----------------------------------------------------------------------------------------------------

// The pointers of an event's field: one for a text, nine for its array, none for the others.
inline std::size_t TextsOf(const Field& field)
{
    if (field.kind == Kind::Texts) return field.limit;
    return field.kind == Kind::Text ? 1 : 0;
}

inline Outcome ReadEvent(const std::string& wire, const Arena& arena)
{
    Outcome outcome;
    for (const Field& field : vynEvent.fields) {
        std::vector<Value> texts(TextsOf(field));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const WirePointer pointer = GetPointer(wire, field.offset + 8 * i);
            // Against the used part: an empty text needs a byte behind its offset as well.
            const bool isNull = arena.start == 0 && pointer.offset == 0;
            if (pointer.offset < arena.top && pointer.size <= arena.top - pointer.offset && !isNull)
                texts[i].bytes = arena.bytes.substr(pointer.offset, pointer.size);
            else
                outcome.status = false;
        }
        Value value;
        if (field.kind == Kind::Text)
            value = texts[0];
        else if (field.kind == Kind::Texts)
            value.items = texts;
        else
            value.number = GetNumber(wire, field.offset, field.width);
        if (field.kind == Kind::Severity && value.number > 3) outcome.status = false;
        outcome.value.items.push_back(value);
    }
    return outcome;
}

inline Outcome WriteEvent(const Value& event, Arena& arena)
{
    Outcome outcome;
    outcome.wire.assign(vynEvent.size, '\0');
    for (std::size_t f = 0; f < vynEvent.fields.size(); ++f) {
        const Field& field = vynEvent.fields[f];
        const Value& value = event.items.at(f);
        if (TextsOf(field) == 0) PutNumber(outcome.wire, field.offset, field.width, value.number);
        for (std::size_t i = 0; i < TextsOf(field); ++i) {
            const std::string& text = field.kind == Kind::Texts ? value.items.at(i).bytes : value.bytes;
            const std::uint64_t limit = field.kind == Kind::Texts ? 512 : field.limit;
            const std::uint64_t need = text.empty() ? 1 : text.size(); // a byte of its own, which stays as it was
            if (need <= limit && need <= arena.bytes.size() - arena.top) {
                PutPointer(outcome.wire, field.offset + 8 * i, arena.top, text.size());
                arena.bytes.replace(arena.top, text.size(), text);
                arena.top += need;
            } else {
                PutPointer(outcome.wire, field.offset + 8 * i, 0xFFFFFFFF, 0xFFFFFFFF);
                outcome.status = false;
            }
        }
    }
    return outcome;
}

// --- any record -------------------------------------------------------------------------------------------------

// `arena` may be null, but not for an event.
inline Outcome Read(const Layout& layout, const std::string& wire, const Arena* arena)
{
    if (&layout == &vynEvent) return ReadEvent(wire, *arena);
    Outcome outcome;
    try {
        outcome.value = Reader(arena).Structure(layout, wire);
    } catch (const Failure& failure) {
        outcome.failure = failure;
    }
    return outcome;
}

inline Outcome Write(const Layout& layout, const Value& value, Arena* arena)
{
    if (&layout == &vynEvent) return WriteEvent(value, *arena);
    Outcome outcome;
    try {
        outcome.wire = Writer(arena).Structure(layout, value);
    } catch (const Failure& failure) {
        outcome.failure = failure;
    }
    return outcome;
}

} // namespace model
