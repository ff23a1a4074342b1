// What the readers of arrays have in common, whether the array is a list, a range, a set or an optional: which pointers
// they take, which they refuse and how, and what they do with the elements. What each does of its own is tested in the
// file of its codec.
#include <common/zt_optional.h>
#include <common/zt_range.h>
#include <common/zt_set.h>
#include <common/zt_string.h>
#include <common/zt_vector.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"

#include <iterator>
#include <limits>
#include <optional>
#include <unordered_set>

template <>
struct std::hash<Small> {
    std::size_t operator()(const Small& small) const { return small.value; }
};
template <>
struct std::hash<Large> {
    std::size_t operator()(const Large& large) const { return large.id; }
};

// Each reader with the lines of its argument checks and the number of elements that it reads at most. What it reads is
// returned as a vector, a set's values in the order of the elements that they were converted from.
namespace readers {

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();

struct Vector {
    static constexpr Codec codec = vectorCodec;
    static constexpr int arenaLine = 39;
    static constexpr int pointerLine = 40;
    static constexpr std::size_t most = any;

    template <typename Wire, typename Domain, typename Convert>
    static std::vector<Domain> Read(const zt_ptr_t* pointer, const zt_arena* arena, Convert convert)
    {
        return vyn_connector::common::ZtToVector<Wire, Domain>(pointer, arena, convert);
    }
};

struct Range {
    static constexpr Codec codec = rangeCodec;
    static constexpr int arenaLine = 49;
    static constexpr int pointerLine = 50;
    static constexpr std::size_t most = any;

    template <typename Wire, typename Domain, typename Convert>
    static std::vector<Domain> Read(const zt_ptr_t* pointer, const zt_arena* arena, Convert convert)
    {
        std::vector<Domain> values;
        vyn_connector::common::ZtToRange<Wire, Domain>(pointer, std::back_inserter(values), arena, convert);
        return values;
    }
};

struct Set {
    static constexpr Codec codec = setCodec;
    static constexpr int arenaLine = 43;
    static constexpr int pointerLine = 44;
    static constexpr std::size_t most = any;

    template <typename Wire, typename Domain, typename Convert>
    static std::vector<Domain> Read(const zt_ptr_t* pointer, const zt_arena* arena, Convert convert)
    {
        std::unordered_set<Domain> values = vyn_connector::common::ZtToSet<Wire, Domain>(pointer, arena, convert);
        std::vector<Domain> inOrder;
        for (std::uint32_t at = 0; at < pointer->size; at += sizeof(Wire)) {
            Wire wire;
            std::memcpy(&wire, arena->start + pointer->offset + at, sizeof(wire));
            const Domain value = convert(wire, arena);
            if (values.erase(value) > 0) inOrder.push_back(value);
        }
        EXPECT_TRUE(values.empty()) << "values that no element has";
        return inOrder;
    }
};

struct Optional {
    static constexpr Codec codec = optionalCodec;
    static constexpr int arenaLine = 39;
    static constexpr int pointerLine = 40;
    static constexpr std::size_t most = 1;

    template <typename Wire, typename Domain, typename Convert>
    static std::vector<Domain> Read(const zt_ptr_t* pointer, const zt_arena* arena, Convert convert)
    {
        const std::optional<Domain> value = vyn_connector::common::ZtToOptional<Wire, Domain>(pointer, arena, convert);
        return value ? std::vector<Domain>{*value} : std::vector<Domain>{};
    }
};

} // namespace readers

namespace {

using ReadString = std::string (*)(const zt_ptr_t&, const zt_arena*);

template <typename Reader>
class ListReader : public testing::Test {
protected:
    using Smalls = std::vector<Small>;
    using Larges = std::vector<Large>;
    using Strings = std::vector<std::string>;

    static Smalls ReadSmalls(zt_ptr_t pointer, const zt_arena* arena)
    {
        return Reader::template Read<SmallWire, Small>(&pointer, arena, &SmallFromWire);
    }
    static Larges ReadLarges(zt_ptr_t pointer, const zt_arena* arena)
    {
        return Reader::template Read<LargeWire, Large>(&pointer, arena, &LargeFromWire);
    }
    // Of sets and optionals these are the instantiations that the library exports.
    static Strings ReadStrings(zt_ptr_t pointer, const zt_arena* arena)
    {
        return Reader::template Read<zt_ptr_t, std::string, ReadString>(&pointer, arena,
                                                                        &vyn_connector::common::CastFromZt);
    }

    template <typename Domain>
    static void Refuses(std::vector<Domain> (*read)(zt_ptr_t, const zt_arena*), zt_ptr_t pointer, const zt_arena* arena)
    {
        SCOPED_TRACE(testing::Message() << "offset " << pointer.offset << ", size " << pointer.size);
        ExpectOutside([&] { read(pointer, arena); }, Reader::codec, pointer.offset);
    }

    // Of these elements, those that the reader looks at.
    template <typename Domain>
    static std::vector<Domain> Read(std::vector<Domain> elements)
    {
        elements.resize(std::min(elements.size(), Reader::most));
        return elements;
    }
};
using Readers = testing::Types<readers::Vector, readers::Range, readers::Set, readers::Optional>;
TYPED_TEST_SUITE(ListReader, Readers, );

TYPED_TEST(ListReader, ReturnsTheElementsInOrder)
{
    TestArena arena(40);
    arena.Put(4, "11 EE*3 25 24 23 22 32 31 EE*2 | 41 EE*3 55 54 53 52 62 61 EE*2");
    const Small first{0x11, 0x22232425, 0x3132};
    const Small second{0x41, 0x52535455, 0x6162};

    EXPECT_EQ(this->ReadSmalls({4, 24}, arena.Get()), this->template Read<Small>({first, second}));
    EXPECT_EQ(this->ReadSmalls({4, 12}, arena.Get()), (std::vector<Small>{first}));
    EXPECT_EQ(this->ReadSmalls({16, 12}, arena.Get()), (std::vector<Small>{second}));
}

TYPED_TEST(ListReader, ReadsElementsAtAnyAddress)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", offset " << offset);
            TestArena arena(40, start);
            arena.Put(offset, "08 07 06 05 04 03 02 01 12 11 00*6 | 18 17 16 15 14 13 12 11 22 21 00*6");

            EXPECT_EQ(this->ReadLarges({offset, 32}, arena.Get()),
                      this->template Read<Large>({{0x0102030405060708, 0x1112}, {0x1112131415161718, 0x2122}}));
        }
}

TYPED_TEST(ListReader, HandsTheArenaToTheConverter)
{
    TestArena arena(32);
    arena.Put(0, "10 00*3 02 00*3 | 12 00*3 01 00*3 | 'abc'");
    const zt_ptr_t pointer{0, 16};

    EXPECT_EQ(this->ReadStrings(pointer, arena.Get()), this->template Read<std::string>({"ab", "c"}));
    TypeParam::template Read<zt_ptr_t, std::string>(&pointer, arena.Get(), [&](const zt_ptr_t&, const zt_arena* given) {
        EXPECT_EQ(given, arena.Get());
        return std::string();
    });
}

TYPED_TEST(ListReader, ReturnsNothingForNoBytes)
{
    const TestArena arena(8);

    for (const std::uint32_t offset : {0u, 3u, 5u, 8u}) {
        EXPECT_TRUE(this->ReadSmalls({offset, 0}, arena.Get()).empty()) << offset;
        EXPECT_TRUE(this->ReadStrings({offset, 0}, arena.Get()).empty()) << offset;
    }
}

TYPED_TEST(ListReader, HasNoLimit)
{
    TestArena arena(12 * 40);
    std::vector<Small> elements;
    for (std::uint8_t i = 0; i < 40; ++i) {
        elements.push_back({i, 1000u + i, 7});
        arena.Put(i * 12u, BytesOf(SmallToWire(elements.back(), nullptr)));
    }

    EXPECT_EQ(this->ReadSmalls({0, 12 * 40}, arena.Get()), this->Read(elements));
}

TYPED_TEST(ListReader, ReadsBehindTheTop)
{
    TestArena arena(24, 0, 2);
    arena.Put(8, "01 00*3 02 00*3 03 00*3");

    EXPECT_EQ(this->ReadSmalls({8, 12}, arena.Get()), (std::vector<Small>{{1, 2, 3}}));
}

TYPED_TEST(ListReader, RefusesWhatEndsBehindTheArena)
{
    TestArena arena(24);
    arena.Put(0, "00*24");
    EXPECT_EQ(this->ReadSmalls({12, 12}, arena.Get()).size(), 1u);
    this->Refuses(&TestFixture::ReadSmalls, {13, 12}, arena.Get());
    this->Refuses(&TestFixture::ReadSmalls, {0, 36}, arena.Get());
    this->Refuses(&TestFixture::ReadSmalls, {25, 0}, arena.Get());
    this->Refuses(&TestFixture::ReadSmalls, {4294967295, 12}, arena.Get());
    this->Refuses(&TestFixture::ReadSmalls, {1, 4294967292}, arena.Get());
    EXPECT_EQ(this->ReadStrings({16, 8}, arena.Get()), (std::vector<std::string>{""}));
    this->Refuses(&TestFixture::ReadStrings, {17, 8}, arena.Get());
    this->Refuses(&TestFixture::ReadStrings, {0, 32}, arena.Get());
    this->Refuses(&TestFixture::ReadStrings, {25, 0}, arena.Get());
    this->Refuses(&TestFixture::ReadStrings, {4294967295, 0}, arena.Get());
    this->Refuses(&TestFixture::ReadStrings, {4294967295, 8}, arena.Get());
    this->Refuses(&TestFixture::ReadStrings, {1, 4294967288}, arena.Get());
}

TYPED_TEST(ListReader, RefusesPartOfAnElement)
{
    const TestArena arena(64);

    for (const std::uint32_t size : {11u, 13u, 16u, 20u})
        this->Refuses(&TestFixture::ReadSmalls, {2, size}, arena.Get());
    for (const std::uint32_t size : {20u, 24u})
        this->Refuses(&TestFixture::ReadLarges, {7, size}, arena.Get());
    for (const std::uint32_t size : {4u, 9u, 12u})
        this->Refuses(&TestFixture::ReadStrings, {9, size}, arena.Get());
}

TYPED_TEST(ListReader, RefusesTheNullAddress)
{
    const zt_arena arena{};

    this->Refuses(&TestFixture::ReadSmalls, {0, 0}, &arena);
    this->Refuses(&TestFixture::ReadStrings, {0, 0}, &arena);
}

TYPED_TEST(ListReader, RefusesTheNullArenaFirst)
{
    const auto read = &TypeParam::template Read<zt_ptr_t, std::string, ReadString>;
    const zt_ptr_t pointer{0, 0};

    ExpectInvalidArgument([&] { this->ReadSmalls(pointer, nullptr); }, TypeParam::codec, TypeParam::arenaLine);
    ExpectInvalidArgument([&] { this->ReadStrings(pointer, nullptr); }, TypeParam::codec, TypeParam::arenaLine);
    ExpectInvalidArgument([&] { read(nullptr, nullptr, nullptr); }, TypeParam::codec, TypeParam::arenaLine);
}

TYPED_TEST(ListReader, RefusesTheNullPointerSecond)
{
    const auto readSmalls = &TypeParam::template Read<SmallWire, Small, Small (*)(const SmallWire&, const zt_arena*)>;
    const auto readStrings = &TypeParam::template Read<zt_ptr_t, std::string, ReadString>;
    const TestArena arena(8);

    ExpectInvalidArgument([&] { readSmalls(nullptr, arena.Get(), nullptr); }, TypeParam::codec, TypeParam::pointerLine);
    ExpectInvalidArgument([&] { readStrings(nullptr, arena.Get(), nullptr); }, TypeParam::codec,
                          TypeParam::pointerLine);
}

TYPED_TEST(ListReader, PassesOnWhatAnElementRaises)
{
    TestArena arena(16);
    arena.Put(0, "00*8 | 11 00*3 01 00*3");
    const zt_ptr_t pointer{0, 16};
    const auto fails = [](const zt_ptr_t&, const zt_arena*) -> std::string { throw ConverterFailed{0}; };

    ExpectOutside([&] { this->ReadStrings({8, 8}, arena.Get()); }, stringCodec, 17);
    if (TypeParam::most > 1) ExpectOutside([&] { this->ReadStrings(pointer, arena.Get()); }, stringCodec, 17);
    EXPECT_THROW((TypeParam::template Read<zt_ptr_t, std::string>(&pointer, arena.Get(), fails)), ConverterFailed);
}

} // namespace
