// Update identifiers: sixteen bytes copied as they stand, and the list of them, which is written from two iterators and
// whose reader reserves its capacity before it looks at anything.
#include <common/update_identifiers.h>

#include "record_test.h"
#include "replaced_new.h"

#include <cstdlib>
#include <limits>
#include <new>

// The requests for memory that a test looks at.
namespace allocations {

std::size_t largest = 0;
std::size_t refusedFrom = std::numeric_limits<std::size_t>::max(); // bytes

// While it lives, memory of that many bytes cannot be had.
class RefusedFrom {
public:
    explicit RefusedFrom(std::size_t bytes) { refusedFrom = bytes; }
    ~RefusedFrom() { refusedFrom = std::numeric_limits<std::size_t>::max(); }
    RefusedFrom(const RefusedFrom&) = delete;
    RefusedFrom& operator=(const RefusedFrom&) = delete;
};

} // namespace allocations

void* replaced::Allocate(std::size_t size)
{
    if (size > allocations::largest) allocations::largest = size;
    return size < allocations::refusedFrom ? FromHeap(size) : nullptr;
}

void replaced::Free(void* memory) noexcept
{
    std::free(memory);
}

namespace {

using vyn_connector::VynUpdateIdentifier;
using vyn_connector::VynUpdateIdentifiers;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using vyn_connector::common::RangeToZt;
using vyn_connector::common::ReaderOf;
using vyn_connector::common::WriterOf;
using vyn_connector::common::ZtToRange;

using IdentifierWire = tq_vyn_connector_VynTypes_VynUpdateIdentifier;
using ListWire = tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer;
using Iterator = std::vector<std::array<std::byte, 16>>::const_iterator;
using Range = std::pair<Iterator, Iterator>;

// --- What never changes ---

static_assert(std::is_same_v<VynUpdateIdentifier, std::array<std::byte, 16>>);
static_assert(std::is_same_v<VynUpdateIdentifiers, std::vector<std::array<std::byte, 16>>>);

PIN_WIRE(IdentifierWire, 16, 1);
PIN_WIRE_FIELD(IdentifierWire, 0, std::uint8_t[16], bytes);

PIN_WIRE(ListWire, 8, 4);
PIN_WIRE_FIELD(ListWire, 0, zt_ptr_t, identifiers);

// --- Helpers ---

// Sixteen bytes that count up from `first`.
VynUpdateIdentifier IdentifierFrom(unsigned first)
{
    VynUpdateIdentifier identifier;
    for (unsigned i = 0; i < 16; ++i)
        identifier[i] = static_cast<std::byte>(first + i);
    return identifier;
}

// The first begins with 0x00, the second with 0x10, and so on; after sixteen of them again.
VynUpdateIdentifiers Identifiers(unsigned count)
{
    VynUpdateIdentifiers identifiers;
    for (unsigned i = 0; i < count; ++i)
        identifiers.push_back(IdentifierFrom(i * 16));
    return identifiers;
}

// The same as the wire has them.
std::string Notation(unsigned count)
{
    std::string notation;
    for (unsigned i = 0; i < count; ++i)
        for (const char digit : std::string_view("0123456789ABCDEF"))
            notation += {"0123456789ABCDEF"[i % 16], digit, ' '};
    return notation;
}

layout::Message MessageOf(unsigned count)
{
    return layout::Message("[identifiers]", {{"identifiers", layout::Range(16, 1), Notation(count)}});
}

Range All(const VynUpdateIdentifiers& identifiers)
{
    return {identifiers.begin(), identifiers.end()};
}

// --- One identifier ---

TEST(UpdateIdentifier, IsCopiedByteForByteBothWays)
{
    TestArena arena(8, 0, 3);
    const VynUpdateIdentifier identifier = IdentifierFrom(0xF8);

    const IdentifierWire wire = CastToZt(identifier, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("F8 F9 FA FB FC FD FE FF 00 01 02 03 04 05 06 07"));
    EXPECT_EQ(CastFromZt(wire, arena.Get()), identifier);
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 3u);
}

TEST(UpdateIdentifier, NeedsNoArena)
{
    const VynUpdateIdentifier identifier = IdentifierFrom(0x20);

    const IdentifierWire wire = CastToZt(identifier, nullptr);

    EXPECT_EQ(BytesOf(wire), Bytes("20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F"));
    EXPECT_EQ(CastFromZt(wire, nullptr), identifier);
}

// --- Writing the list ---

TEST(UpdateIdentifierWriter, LaysTheIdentifiersSideBySide)
{
    TestArena arena(36, 0, 1);
    const VynUpdateIdentifiers identifiers = {IdentifierFrom(0x40), IdentifierFrom(0xA0)};

    EXPECT_EQ(BytesOf(CastToZt(All(identifiers), arena.Get())), Bytes("01 00 00 00 20 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 |"
                                      "40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F |"
                                      "A0 A1 A2 A3 A4 A5 A6 A7 A8 A9 AA AB AC AD AE AF |"
                                      "A5*3"));
    EXPECT_EQ(arena.Top(), 33u);
}

TEST(UpdateIdentifierWriter, AlignsNothingWhereverStartAndTopLie)
{
    for (const unsigned count : {1u, 2u, 9u, 10u}) {
        SCOPED_TRACE(count);
        const VynUpdateIdentifiers identifiers = Identifiers(count);
        ExpectWrites(All(identifiers), MessageOf(count));
        ExpectNeedsAllItsSpace(All(identifiers), MessageOf(count));
    }
}

TEST(UpdateIdentifierWriter, TakesExactly160BytesForTen)
{
    TestArena arena(164, 0, 3);
    const VynUpdateIdentifiers identifiers = Identifiers(10);

    EXPECT_EQ(CastToZt(All(identifiers), arena.Get()).identifiers, (zt_ptr_t{3, 160}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 " + Notation(10) + " A5"));
    EXPECT_EQ(arena.Top(), 163u);
}

TEST(UpdateIdentifierWriter, RefusesElevenBeforeAnythingIsReserved)
{
    for (const unsigned count : {11u, 12u, 100u}) {
        TestArena arena(2000, 0, 3);
        const VynUpdateIdentifiers identifiers = Identifiers(count);

        ExpectResultCode([&] { CastToZt(All(identifiers), arena.Get()); }, 0x80000046, "0x80000046 (Invalid argument)");

        EXPECT_EQ(arena.Contents(), Bytes("A5*2000"));
        EXPECT_EQ(arena.Top(), 3u);
    }
}

TEST(UpdateIdentifierWriter, WritesThePartThatTheIteratorsName)
{
    TestArena arena(40);
    const VynUpdateIdentifiers identifiers = Identifiers(12);

    const ListWire wire = CastToZt(Range(identifiers.begin() + 3, identifiers.begin() + 5), arena.Get());

    EXPECT_EQ(wire.identifiers, (zt_ptr_t{0, 32}));
    EXPECT_EQ(arena.Contents(), Bytes("30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F |"
                                      "40 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F |"
                                      "A5*8"));
}

TEST(UpdateIdentifierWriter, CannotWriteAnEmptyOrReversedPart)
{
    TestArena arena(40, 0, 2);
    const VynUpdateIdentifiers identifiers = Identifiers(12);
    const VynUpdateIdentifiers none;

    ExpectInvalidArgument([&] { CastToZt(All(none), arena.Get()); }, rangeCodec, 21);
    ExpectInvalidArgument([&] { CastToZt(Range(identifiers.end(), identifiers.end()), arena.Get()); }, rangeCodec, 21);
    ExpectInvalidArgument([&] { CastToZt(Range(identifiers.end(), identifiers.begin()), arena.Get()); }, rangeCodec,
                          21);

    EXPECT_EQ(arena.Contents(), Bytes("A5*40"));
    EXPECT_EQ(arena.Top(), 2u);
}

TEST(UpdateIdentifierWriter, LooksForTheArenaFirst)
{
    const VynUpdateIdentifiers none;
    const VynUpdateIdentifiers one = Identifiers(1);
    const VynUpdateIdentifiers eleven = Identifiers(11);
    for (const VynUpdateIdentifiers* identifiers : {&none, &one, &eleven})
        ExpectInvalidArgument([&] { CastToZt(All(*identifiers), nullptr); }, rangeCodec, 20);
}

TEST(UpdateIdentifierWriter, NeedsADestinationBeforeItCounts)
{
    TestArena arena(200);
    const VynUpdateIdentifiers eleven = Identifiers(11);
    const auto write = [&](Iterator first, Iterator last, zt_arena* to) {
        RangeToZt<10, IdentifierWire>(first, last, nullptr, to, WriterOf<VynUpdateIdentifier>{&CastToZt});
    };
    ExpectInvalidArgument([&] { write(eleven.begin(), eleven.end(), nullptr); }, rangeCodec, 20);
    ExpectInvalidArgument([&] { write(eleven.begin(), eleven.begin(), arena.Get()); }, rangeCodec, 21);
    ExpectInvalidArgument([&] { write(eleven.begin(), eleven.end(), arena.Get()); }, rangeCodec, 22);
    EXPECT_EQ(arena.Contents(), Bytes("A5*200"));
}

// --- Reading the list ---

TEST(UpdateIdentifierReader, ReadsTheIdentifiersWhereverTheyLie)
{
    layout::ForEveryPlacement([&](layout::Placement placement) {
        for (const unsigned count : {1u, 2u, 3u, 10u}) {
            const layout::Image image(MessageOf(count), placement);
            TestArena arena(image.Top(), placement.start);
            arena.Put(0, image.Contents(arena.Capacity()));

            EXPECT_EQ(CastFromZt(image.WireAs<ListWire>(), arena.Get()), Identifiers(count));
        }
    });
}

TEST(UpdateIdentifierReader, ReadsAnyNumber)
{
    TestArena arena(420);
    arena.Put(3, Notation(25));

    EXPECT_EQ(CastFromZt(ListWire{{3, 176}}, arena.Get()), Identifiers(11));
    EXPECT_EQ(CastFromZt(ListWire{{3, 400}}, arena.Get()), Identifiers(25));
}

TEST(UpdateIdentifierReader, ReservesAnIdentifierForEveryByte)
{
    TestArena arena(64);
    arena.Put(0, Notation(3));
    for (const auto& [count, size] : {std::pair(1u, 16u), std::pair(3u, 48u)}) {
        allocations::largest = 0;

        const VynUpdateIdentifiers identifiers = CastFromZt(ListWire{{0, size}}, arena.Get());

        EXPECT_EQ(allocations::largest, size * 16);
        EXPECT_EQ(identifiers, Identifiers(count));
        EXPECT_GE(identifiers.capacity(), size);
    }
}

TEST(UpdateIdentifierReader, ReservesNothingForAnEmptyList)
{
    TestArena arena(8);
    allocations::largest = 0;

    const VynUpdateIdentifiers identifiers = CastFromZt(ListWire{{8, 0}}, arena.Get());

    EXPECT_EQ(allocations::largest, 0u);
    EXPECT_TRUE(identifiers.empty());
    EXPECT_EQ(identifiers.capacity(), 0u);
}

TEST(UpdateIdentifierReader, RefusesPointersOutsideTheArenaAndPartsOfIdentifiers)
{
    TestArena arena(64, 1);
    const zt_ptr_t refused[] = {
        {65, 0},  {64, 16}, {49, 16}, {33, 32},         {0, 80},           {0, 1},
        {0, 15},  {0, 17},  {0, 20},  {0, 47},          {0xFFFFFFFF, 0},   {0xFFFFFFFF, 16},
        {64, 32}, {48, 8},  {63, 1},  {0xFFFFFFF0, 16}, {0x80000000, 160},
    };
    for (const zt_ptr_t pointer : refused) {
        SCOPED_TRACE(testing::PrintToString(pointer));
        ExpectOutOfSpace([&] { CastFromZt(ListWire{pointer}, arena.Get()); });
    }
    EXPECT_EQ(CastFromZt(ListWire{{48, 16}}, arena.Get()).size(), 1u);
    EXPECT_EQ(CastFromZt(ListWire{{64, 0}}, arena.Get()).size(), 0u);
}

TEST(UpdateIdentifierReader, RefusesTheNullAddress)
{
    const zt_arena arena{nullptr, nullptr, nullptr};
    ExpectOutOfSpace([&] { CastFromZt(ListWire{{0, 0}}, &arena); });
}

TEST(UpdateIdentifierReader, NeedsAnArenaAndASource)
{
    TestArena arena(16);
    VynUpdateIdentifiers identifiers;
    const auto read = [&](const zt_arena* from) {
        ZtToRange<IdentifierWire, VynUpdateIdentifier>(nullptr, std::back_inserter(identifiers), from,
                                                       ReaderOf<VynUpdateIdentifier>{&CastFromZt});
    };
    ExpectInvalidArgument([&] { CastFromZt(ListWire{{0, 0}}, nullptr); }, rangeCodec, 49);
    ExpectInvalidArgument([&] { read(nullptr); }, rangeCodec, 49);
    ExpectInvalidArgument([&] { read(arena.Get()); }, rangeCodec, 50);
}

TEST(UpdateIdentifierReader, ReservesBeforeItLooksAtTheArena)
{
    for (const std::uint32_t size : {4096u, 4095u}) {
        allocations::largest = 0;
        ExpectInvalidArgument([&] { CastFromZt(ListWire{{0, size}}, nullptr); }, rangeCodec, 49);
        EXPECT_EQ(allocations::largest, size * 16);
    }
}

TEST(UpdateIdentifierReader, RunsOutOfMemoryBeforeItLooksAtTheArena)
{
    TestArena arena(64);
    for (const zt_arena* from : {static_cast<const zt_arena*>(arena.Get()), static_cast<const zt_arena*>(nullptr)})
        for (const std::uint32_t size : {0xFFFFFFF0u, 0xFFFFFFFFu, 0x10000000u, 0x10000001u, 48u, 16u, 15u, 1u}) {
            SCOPED_TRACE(testing::Message() << "size " << size << (from == nullptr ? ", no arena" : ""));
            const auto read = [&] {
                const allocations::RefusedFrom refused(std::size_t{size} * 16);
                allocations::largest = 0;
                CastFromZt(ListWire{{0, size}}, from);
            };
            errors::Expect<std::bad_alloc>(read, [](const std::bad_alloc&) {});
            EXPECT_EQ(allocations::largest, std::size_t{size} * 16);
        }
}

} // namespace
