// What a record looks like on the wire, written down once and looked for everywhere. A test describes the wire
// structure and the parts of the arena in the order in which a writer places them; `[name]` is the eight bytes of the
// pointer to the part of that name, the rest is the notation of Bytes. The checks below then compute where the parts
// lie for every alignment of the arena, in every arena that is too small, and with each pointer spoilt in turn.
//
//     const layout::Message message("[address] [timeouts]",
//                                   {{"address", layout::Text, "'srv'"},
//                                    {"timeouts", layout::Optional(16, 8), "01 00*7 02 00*7"}});
//     ExpectWrites(record, message);
#pragma once

#include <common/vyn_connector_common.h>

#include "arena.h"
#include "errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace layout {

// Which codec a part belongs to: the error that its pointer raises, and how its elements lie in the arena.
struct Kind {
    Codec codec;
    std::size_t elementSize;
    std::size_t alignment;
};
inline constexpr Kind Text{stringCodec, 1, 1};
inline constexpr Kind Blob{blobCodec, 1, 1};
inline constexpr Kind Set{setCodec, 8, 4};
constexpr Kind List(std::size_t elementSize, std::size_t alignment)
{
    return {vectorCodec, elementSize, alignment};
}
constexpr Kind Optional(std::size_t elementSize, std::size_t alignment)
{
    return {optionalCodec, elementSize, alignment};
}
constexpr Kind Range(std::size_t elementSize, std::size_t alignment)
{
    return {rangeCodec, elementSize, alignment};
}

struct Part {
    std::string name;
    Kind kind;
    std::string content;
};

struct Message {
    Message(std::string wireContent, std::vector<Part> arenaParts)
        : wire(std::move(wireContent)), parts(std::move(arenaParts))
    {
    }

    std::size_t IndexOf(std::string_view name) const
    {
        for (std::size_t i = 0; i < parts.size(); ++i)
            if (parts[i].name == name) return i;
        throw std::invalid_argument("the message has no part " + std::string(name));
    }

    // The same message with another content of one part.
    Message With(std::string_view name, std::string content) const
    {
        Message changed = *this;
        changed.parts[IndexOf(name)].content = std::move(content);
        return changed;
    }

    std::string wire;
    std::vector<Part> parts;
};

// Where an arena lies: its start that many bytes past a multiple of 16, its top that many bytes behind the start.
struct Placement {
    std::size_t start = 0;
    std::size_t top = 0;
};

// Parts lie at multiples of their alignment, as a writer places them, or one directly behind the other, as a careless
// sender might.
enum class Packing { Aligned, None };

// A message at one placement.
class Image {
public:
    Image(const Message& source, Placement placement, Packing packing = Packing::Aligned)
        : message(source), before(placement.top)
    {
        std::size_t at = before;
        for (const Part& part : message.parts) {
            const std::size_t size = Render(part.content, nullptr).size();
            if (size % part.kind.elementSize != 0)
                throw std::invalid_argument(part.name + " is no whole number of elements");
            if (packing == Packing::Aligned)
                while ((placement.start + at) % part.kind.alignment != 0)
                    ++at;
            offsets.push_back(at);
            sizes.push_back(size);
            pointers[part.name] = {static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(size)};
            at += size;
        }
    }

    // Lets every `[name]` be this pointer; the part itself stays where it is.
    void Redirect(const std::string& name, zt_ptr_t pointer) { pointers.at(name) = pointer; }

    zt_ptr_t PointerTo(const std::string& name) const { return pointers.at(name); }

    Bytes Wire() const { return Render(message.wire, &pointers); }

    template <typename Structure>
    Structure WireAs() const
    {
        const Bytes bytes = Wire();
        if (bytes.size() != sizeof(Structure)) throw std::invalid_argument("the wire structure has another size");
        Structure structure;
        std::memcpy(&structure, bytes.data(), sizeof(structure));
        return structure;
    }

    std::size_t PartCount() const { return offsets.size(); }

    // How many parts an arena of this size takes.
    std::size_t PartsWithin(std::size_t capacity) const
    {
        std::size_t placed = 0;
        while (placed < PartCount() && offsets[placed] + sizes[placed] <= capacity)
            ++placed;
        return placed;
    }

    // The arena's top when the first `placed` parts have got their room.
    std::size_t Top(std::size_t placed) const { return placed == 0 ? before : offsets[placed - 1] + sizes[placed - 1]; }
    std::size_t Top() const { return Top(PartCount()); }

    // The whole arena when a writer got no further than the first `placed` parts: gaps are zero, and so are elements
    // that refer to parts which are missing.
    Bytes Contents(std::size_t capacity, std::size_t placed) const
    {
        Bytes contents = Repeated(TestArena::stale, before);
        for (std::size_t i = 0; i < placed; ++i) {
            const std::size_t filled = FilledElements(i, placed) * message.parts[i].kind.elementSize;
            const std::size_t gap = offsets[i] - contents.size();
            contents = std::move(contents) + Repeated(0, gap) +
                       Bytes(Render(message.parts[i].content, &pointers).data(), filled) +
                       Repeated(0, sizes[i] - filled);
        }
        const std::size_t unused = capacity - contents.size();
        return std::move(contents) + Repeated(TestArena::stale, unused);
    }
    Bytes Contents(std::size_t capacity) const { return Contents(capacity, PartCount()); }

private:
    using Pointers = std::map<std::string, zt_ptr_t>;

    static Bytes Repeated(std::uint8_t byte, std::size_t times)
    {
        const std::vector<std::uint8_t> bytes(times, byte);
        return Bytes(bytes.data(), bytes.size());
    }

    // Calls `reference(name, at)` for each `[name]`, which stands `at` bytes behind the content's start.
    static Bytes Render(std::string_view content, const Pointers* pointers,
                        const std::function<void(const std::string&, std::size_t)>& reference = nullptr)
    {
        Bytes bytes;
        for (std::size_t open = content.find('['); open != content.npos; open = content.find('[')) {
            const std::size_t close = content.find(']', open);
            const std::string name(content.substr(open + 1, close - open - 1));
            bytes = std::move(bytes) + Bytes(content.substr(0, open));
            if (reference) reference(name, bytes.size());
            bytes = std::move(bytes) + BytesOf(pointers == nullptr ? zt_ptr_t{} : pointers->at(name));
            content.remove_prefix(close + 1);
        }
        return std::move(bytes) + Bytes(content);
    }

    std::size_t FilledElements(std::size_t part, std::size_t placed) const
    {
        const std::size_t elementSize = message.parts[part].kind.elementSize;
        std::size_t filled = sizes[part] / elementSize;
        if (placed == PartCount()) return filled;
        Render(message.parts[part].content, nullptr, [&](const std::string& name, std::size_t at) {
            const std::size_t target = message.IndexOf(name);
            if (!IsComplete(target, placed)) filled = std::min(filled, at / elementSize);
        });
        return filled;
    }

    bool IsComplete(std::size_t part, std::size_t placed) const
    {
        return part < placed && FilledElements(part, placed) * message.parts[part].kind.elementSize == sizes[part];
    }

    Message message;
    std::size_t before;
    std::vector<std::size_t> offsets;
    std::vector<std::size_t> sizes;
    Pointers pointers;
};

// `check(placement)` for every alignment of the arena's start and of its top.
template <typename Check>
void ForEveryPlacement(Check&& check)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                               "start " + std::to_string(start) + ", top " + std::to_string(top));
            check(Placement{start, top});
            if (::testing::Test::HasFailure()) return; // the other placements would say the same
        }
}

template <typename Domain>
using WireOf = decltype(vyn_connector::common::CastToZt(std::declval<const Domain&>(), std::declval<zt_arena*>()));

template <typename Domain>
Domain Read(const Image& image, const TestArena& arena)
{
    return vyn_connector::common::CastFromZt(image.WireAs<WireOf<Domain>>(), arena.Get());
}

} // namespace layout

// Writing the record gives the message, byte by byte, wherever the arena lies.
template <typename Domain>
void ExpectWrites(const Domain& record, const layout::Message& message, int testLine = __builtin_LINE(),
                  const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected to be written");
    layout::ForEveryPlacement([&](layout::Placement placement) {
        const layout::Image image(message, placement);
        TestArena arena(image.Top() + 9, placement.start, placement.top);

        const layout::WireOf<Domain> wire = vyn_connector::common::CastToZt(record, arena.Get());

        EXPECT_EQ(BytesOf(wire), image.Wire());
        EXPECT_EQ(arena.Contents(), image.Contents(arena.Capacity()));
        EXPECT_EQ(arena.Top(), image.Top());
    });
}

// Reading the message gives the record, wherever the arena and the parts lie; the arena's top does not matter.
template <typename Domain>
void ExpectReads(const Domain& record, const layout::Message& message, int testLine = __builtin_LINE(),
                 const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected to be read");
    layout::ForEveryPlacement([&](layout::Placement placement) {
        for (const layout::Packing packing : {layout::Packing::Aligned, layout::Packing::None}) {
            const layout::Image image(message, placement, packing);
            TestArena arena(image.Top(), placement.start);
            const Bytes contents = image.Contents(arena.Capacity());
            arena.Put(0, contents);

            const Domain read = layout::Read<Domain>(image, arena);

            EXPECT_TRUE(read == record) << "parts " << (packing == layout::Packing::None ? "not " : "") << "aligned";
            EXPECT_EQ(arena.Contents(), contents);
        }
    });
}

// In every arena that is too small the writer runs out of space, at the part that does not fit: what was placed before
// stays, and nothing else is touched. An arena of just the size is large enough.
template <typename Domain>
void ExpectNeedsAllItsSpace(const Domain& record, const layout::Message& message, int testLine = __builtin_LINE(),
                            const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected to need all its space");
    for (const layout::Placement placement : {layout::Placement{0, 0}, layout::Placement{3, 2}}) {
        const layout::Image image(message, placement);
        ASSERT_GT(image.Top(), placement.top) << "a message that needs no space";
        for (std::size_t capacity = placement.top; capacity < image.Top(); ++capacity) {
            SCOPED_TRACE(testing::Message() << "an arena of " << capacity << " bytes");
            TestArena arena(capacity, placement.start, placement.top);
            const std::size_t placed = image.PartsWithin(capacity);

            ExpectOutOfSpace([&] { vyn_connector::common::CastToZt(record, arena.Get()); });

            EXPECT_EQ(arena.Contents(), image.Contents(capacity, placed));
            EXPECT_EQ(arena.Top(), image.Top(placed));
        }

        TestArena arena(image.Top(), placement.start, placement.top);
        vyn_connector::common::CastToZt(record, arena.Get());
        EXPECT_EQ(arena.Contents(), image.Contents(arena.Capacity()));
    }
}

// The writer refuses the record for the size of one part: the parts before it have been placed, it and the parts behind
// it have not. There is room for the whole message: nothing but the limit stops the writer.
template <typename Domain>
void ExpectTooLarge(const Domain& record, const layout::Message& message, std::string_view part,
                    int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected to be too large: " + std::string(part));
    const std::size_t placed = message.IndexOf(part);
    const Codec& codec = message.parts[placed].kind.codec;
    layout::ForEveryPlacement([&](layout::Placement placement) {
        const layout::Image image(message, placement);
        TestArena arena(image.Top() + 9, placement.start, placement.top);

        ExpectOverLimit([&] { vyn_connector::common::CastToZt(record, arena.Get()); }, codec);

        EXPECT_EQ(arena.Contents(), image.Contents(arena.Capacity(), placed));
        EXPECT_EQ(arena.Top(), image.Top(placed));
    });
}

// A text or blob takes `limit` bytes and not one more. `make(n)` is the record of the message with n times 'x' in that
// part.
template <typename Make>
void ExpectLimit(const layout::Message& message, std::string_view part, std::size_t limit, Make&& make,
                 int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "limit of " + std::string(part));
    ExpectWrites(make(limit), message.With(part, "'x'*" + std::to_string(limit)));
    ExpectTooLarge(make(limit + 1), message.With(part, "'x'*" + std::to_string(limit + 1)), part);
}

// Reading refuses each pointer of the message that leads outside the arena or does not hold whole elements, and of two
// bad pointers names the one that stands first in `readingOrder`: every part of the message, each once.
template <typename Domain>
void ExpectRefusesBadPointers(const layout::Message& message, const std::vector<std::string>& readingOrder,
                              int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected to refuse bad pointers");
    ASSERT_EQ(readingOrder.size(), message.parts.size());

    for (const layout::Placement placement : {layout::Placement{0, 0}, layout::Placement{7, 5}}) {
        const layout::Image good(message, placement);
        const std::size_t capacity = good.Top() + 64;
        TestArena arena(capacity, placement.start);
        const auto readWith = [&](std::initializer_list<std::pair<std::string, zt_ptr_t>> changes) {
            layout::Image image = good;
            for (const auto& [name, pointer] : changes)
                image.Redirect(name, pointer);
            arena.Put(0, image.Contents(capacity));
            return layout::Read<Domain>(image, arena);
        };
        const auto end = static_cast<std::uint32_t>(capacity);

        for (std::size_t i = 0; i < readingOrder.size(); ++i) {
            const std::string& name = readingOrder[i];
            const layout::Kind kind = message.parts[message.IndexOf(name)].kind;
            const auto elementSize = static_cast<std::uint32_t>(kind.elementSize);
            const auto refuses = [&](zt_ptr_t pointer) {
                SCOPED_TRACE(testing::Message()
                             << name << " with offset " << pointer.offset << ", size " << pointer.size);
                ExpectOutside([&] { readWith({{name, pointer}}); }, kind.codec, pointer.offset);
            };
            refuses({end + 1, 0});
            refuses({end, elementSize});
            refuses({end - elementSize + 1, elementSize});
            refuses({0xFFFFFFFF, 0});
            refuses({0xFFFFFFFF, 0xFFFFFFFF / elementSize * elementSize});
            if (elementSize > 1) {
                refuses({0, elementSize - 1});
                refuses({0, elementSize + 1});
            }
            EXPECT_NO_THROW(readWith({{name, {end, 0}}})) << name << ", empty and at the end";

            for (std::size_t j = i + 1; j < readingOrder.size(); ++j) {
                SCOPED_TRACE("both " + name + " and " + readingOrder[j]);
                ExpectOutside(
                    [&] {
                        readWith({{name, {end + 1, 0}}, {readingOrder[j], {end + 2, 0}}});
                    },
                    kind.codec, end + 1);
            }
        }
    }
}

// The same where the parts are read in the order of the arena.
template <typename Domain>
void ExpectRefusesBadPointers(const layout::Message& message, int testLine = __builtin_LINE(),
                              const char* testFile = __builtin_FILE())
{
    std::vector<std::string> names;
    for (const layout::Part& part : message.parts)
        names.push_back(part.name);
    ExpectRefusesBadPointers<Domain>(message, names, testLine, testFile);
}

// Each change alone, `change(record)`, makes the record unequal to itself.
template <typename Domain, typename... Changes>
void ExpectEveryMemberIsCompared(const Domain& record, Changes&&... changes)
{
    const Domain same = record;
    EXPECT_TRUE(record == same);
    EXPECT_FALSE(record != same);

    int number = 0;
    const auto differsAfter = [&](auto& change) {
        ++number;
        Domain changed = record;
        change(changed);
        EXPECT_FALSE(record == changed) << "change " << number;
        EXPECT_FALSE(changed == record) << "change " << number;
        EXPECT_TRUE(record != changed) << "change " << number;
        EXPECT_TRUE(changed != record) << "change " << number;
    };
    (differsAfter(changes), ...);
}

// For the members that a structured binding names, whose number the compiler checks, beside the members by their names.
template <typename... Members>
std::vector<const void*> AddressesOf(const Members&... members)
{
    return {&members...};
}

// A wire structure that other languages can lay out as well.
template <typename Wire>
inline constexpr bool isPlain = std::is_trivial_v<Wire>&& std::is_standard_layout_v<Wire>&& std::is_aggregate_v<Wire>;

// `IsDeclared<Wire(const Record&, zt_arena*)>(&CastToZt)`: an overload of exactly this signature.
template <typename Signature>
constexpr bool IsDeclared(Signature*)
{
    return true;
}

// One line for each row of a record's description.
#define PIN_WIRE(STRUCTURE, SIZE, ALIGNMENT)                                                                           \
    static_assert(sizeof(STRUCTURE) == (SIZE) && alignof(STRUCTURE) == (ALIGNMENT) && isPlain<STRUCTURE>)
#define PIN_WIRE_FIELD(STRUCTURE, OFFSET, TYPE, MEMBER)                                                                \
    static_assert(offsetof(STRUCTURE, MEMBER) == (OFFSET) && std::is_same_v<decltype(STRUCTURE::MEMBER), TYPE>)
#define PIN_MEMBER(RECORD, TYPE, MEMBER) static_assert(std::is_same_v<decltype(RECORD::MEMBER), TYPE>)
