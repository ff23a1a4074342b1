// The arena operations, step by step and in the order of the steps. Where a sum has to wrap around the address
// space, the arena's addresses are made up, and whatever touched memory there would crash.
#include <common/zt_arena.h>

#include "arena.h"

#include <cstddef>
#include <limits>
#include <tuple>

namespace {

constexpr std::uintptr_t lastAddress = std::numeric_limits<std::uintptr_t>::max();
constexpr std::size_t untouched = 0x5EED;

std::uint8_t* Address(std::uintptr_t address)
{
    return reinterpret_cast<std::uint8_t*>(address);
}

zt_arena MadeUp(std::uintptr_t start, std::uintptr_t top, std::uintptr_t end)
{
    return {Address(start), Address(top), Address(end)};
}

void ExpectSame(const zt_arena& arena, const zt_arena& before)
{
    EXPECT_EQ(arena.start, before.start);
    EXPECT_EQ(arena.top, before.top);
    EXPECT_EQ(arena.end, before.end);
}

void ExpectRefused(zt_arena arena, std::size_t size, std::size_t alignment)
{
    const zt_arena before = arena;
    EXPECT_EQ(zt_arena_reserve(&arena, size, alignment), nullptr);
    ExpectSame(arena, before);
}

// The address and the count; a null address comes with the count that was there before.
struct Resolved {
    std::uintptr_t address;
    std::size_t count;

    friend bool operator==(Resolved a, Resolved b) { return a.address == b.address && a.count == b.count; }
    friend void PrintTo(Resolved value, std::ostream* out)
    {
        *out << "address " << value.address << ", count " << value.count;
    }
};

constexpr Resolved refused{0, untouched};

Resolved Resolve(const zt_arena& arena, zt_ptr_t pointer, std::size_t elementSize = 1)
{
    const zt_arena before = arena;
    std::size_t count = untouched;
    const void* const address = zt_arena_resolve(&arena, &pointer, elementSize, &count);
    ExpectSame(arena, before);
    return {reinterpret_cast<std::uintptr_t>(address), count};
}

// --- The types ---

TEST(ArenaTypes, TheWirePointerIsEightBytesOffsetFirst)
{
    EXPECT_EQ(sizeof(zt_ptr_t), 8u);
    EXPECT_EQ(alignof(zt_ptr_t), 4u);
    EXPECT_EQ(BytesOf(zt_ptr_t{0x04030201, 0x08070605}), Bytes("01 02 03 04 05 06 07 08"));
}

TEST(ArenaTypes, TheArenaIsThreeAddressesInTheOrderStartTopEnd)
{
    EXPECT_EQ(offsetof(zt_arena, start), 0u);
    EXPECT_EQ(offsetof(zt_arena, top), sizeof(void*));
    EXPECT_EQ(offsetof(zt_arena, end), 2 * sizeof(void*));
    EXPECT_EQ(sizeof(zt_arena), 3 * sizeof(void*));
}

TEST(ArenaTypes, NoOperationThrows)
{
    zt_arena arena{};
    const zt_ptr_t pointer{};
    std::size_t count = 0;
    EXPECT_TRUE(noexcept(zt_arena_reserve(&arena, 0, 1)));
    EXPECT_TRUE(noexcept(vyn_connector::common::detail::Claim(&arena, 0, 1)));
    EXPECT_TRUE(noexcept(vyn_connector::common::detail::BoundsBetween(0, 0)));
    EXPECT_TRUE(noexcept(vyn_connector::common::detail::Holds({}, pointer, 1)));
    EXPECT_TRUE(noexcept(vyn_connector::common::detail::Resolve({}, pointer, 1)));
    EXPECT_TRUE(noexcept(vyn_connector::common::detail::AlignUp(0, 1)));
    EXPECT_TRUE(noexcept(zt_arena_resolve(&arena, &pointer, 1, &count)));
}

// --- Reserve ---

TEST(ArenaReserve, WithoutAlignmentTakesTheBytesAtTheTop)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 3, 1), arena.Start() + 5);
    EXPECT_EQ(arena.Top(), 8u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*3 A5*8"));
}

TEST(ArenaReserve, RoundsTheTopUpAndZeroesTheGapWithTheBytes)
{
    TestArena arena(24, 8, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 8, 4), arena.Start() + 8);
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*11 A5*8"));
}

TEST(ArenaReserve, RoundsTheAddressAndNotItsDistanceFromTheStart)
{
    TestArena arena(24, 3, 4);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 8, 8), arena.Start() + 5);
    EXPECT_EQ(arena.Top(), 13u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 00*9 A5*11"));
}

TEST(ArenaReserve, LeavesAnAlignedTopWhereItIs)
{
    TestArena arena(24, 0, 8);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 8, 8), arena.Start() + 8);
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*8 00*8 A5*8"));
}

TEST(ArenaReserve, AlignsEveryTopOfEveryStart)
{
    for (std::size_t startMod16 = 0; startMod16 < 16; ++startMod16)
        for (std::size_t top = 0; top < 8; ++top)
            for (const std::size_t alignment : {1u, 2u, 4u, 8u})
                for (const std::size_t size : {0u, 1u, 12u, 16u}) {
                    SCOPED_TRACE(testing::Message() << "start " << startMod16 << ", top " << top << ", alignment "
                                                    << alignment << ", size " << size);
                    TestArena arena(48, startMod16, top);
                    std::size_t aligned = top;
                    while ((startMod16 + aligned) % alignment != 0)
                        ++aligned;

                    EXPECT_EQ(zt_arena_reserve(arena.Get(), size, alignment), arena.Start() + aligned);

                    const std::size_t newTop = aligned + size;
                    EXPECT_EQ(arena.Top(), newTop);
                    EXPECT_EQ(arena.Contents(),
                              Bytes("A5*" + std::to_string(top) + " 00*" + std::to_string(newTop - top) + " A5*" +
                                    std::to_string(48 - newTop)));
                }
}

TEST(ArenaReserve, PlacesReservationsOneAfterTheOther)
{
    TestArena arena(32, 0, 0);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 3, 1), arena.Start());
    EXPECT_EQ(zt_arena_reserve(arena.Get(), 8, 4), arena.Start() + 4);
    EXPECT_EQ(zt_arena_reserve(arena.Get(), 8, 8), arena.Start() + 16);
    EXPECT_EQ(arena.Top(), 24u);
    EXPECT_EQ(arena.Contents(), Bytes("00*24 A5*8"));
}

TEST(ArenaReserve, TakesExactlyWhatIsLeft)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 11, 1), arena.Start() + 5);
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*11"));
}

TEST(ArenaReserve, RefusesOneByteMoreThanIsLeft)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 12, 1), nullptr);
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
}

TEST(ArenaReserve, TakesExactlyWhatIsLeftBehindTheGap)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 8, 8), arena.Start() + 8);
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*11"));
}

TEST(ArenaReserve, RefusesWhatOnlyFitsWithoutTheGap)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 9, 8), nullptr);
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
}

TEST(ArenaReserve, OfNothingReturnsTheTopAndMovesNothing)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 0, 1), arena.Start() + 5);
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
}

TEST(ArenaReserve, OfNothingMovesTheTopByTheGapAlone)
{
    TestArena arena(16, 0, 5);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 0, 8), arena.Start() + 8);
    EXPECT_EQ(arena.Top(), 8u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*3 A5*8"));
}

TEST(ArenaReserve, OfNothingSucceedsInAFullArena)
{
    TestArena arena(16, 0, 16);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 0, 8), arena.Start() + 16);
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
}

TEST(ArenaReserve, OfNothingFailsWhereTheGapAlonePassesTheEnd)
{
    TestArena arena(15, 0, 13);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 0, 8), nullptr);
    EXPECT_EQ(arena.Top(), 13u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*15"));
}

TEST(ArenaReserve, OfOneByteFailsInAFullArena)
{
    TestArena arena(16, 0, 16);

    EXPECT_EQ(zt_arena_reserve(arena.Get(), 1, 1), nullptr);
    EXPECT_EQ(arena.Top(), 16u);
}

TEST(ArenaReserve, RefusesATopWhoseRoundingWrapsAroundTheAddressSpace)
{
    const zt_arena arena = MadeUp(lastAddress - 15, lastAddress, lastAddress);

    ExpectRefused(arena, 0, 2);
    ExpectRefused(arena, 0, 8);
    ExpectRefused(arena, 1, 8);
    ExpectRefused(arena, lastAddress - 16, 8);
}

// Past the last address rounding arrives at null, which is the start of this arena.
TEST(ArenaReserve, RefusesATopWhoseRoundingWrapsToTheStart)
{
    const zt_arena arena = MadeUp(0, lastAddress, lastAddress);

    ExpectRefused(arena, 0, 2);
    ExpectRefused(arena, 0, 8);
    ExpectRefused(arena, 8, 8);
    ExpectRefused(arena, lastAddress, 8);
}

TEST(ArenaReserve, RoundsUpToTheLastAlignedAddress)
{
    zt_arena arena = MadeUp(lastAddress - 7, lastAddress - 7, lastAddress);

    EXPECT_EQ(zt_arena_reserve(&arena, 0, 8), Address(lastAddress - 7));
    EXPECT_EQ(arena.top, Address(lastAddress - 7));
}

TEST(ArenaReserve, RefusesASizeThatWrapsAroundTheAddressSpace)
{
    const zt_arena arena = MadeUp(0x10000, 0x10008, 0x20000);

    ExpectRefused(arena, std::numeric_limits<std::size_t>::max(), 1);  // ends one before the top
    ExpectRefused(arena, std::numeric_limits<std::size_t>::max(), 16); // ends one before the aligned top
    ExpectRefused(arena, std::size_t{0} - 0x8, 8);                     // ends at the start
    ExpectRefused(arena, std::size_t{0} - 0x10008, 1);                 // ends at null
    ExpectRefused(arena, std::size_t{0} - 0x10009, 1);                 // ends at the last address, without wrapping
}

TEST(ArenaReserve, RefusesASizeThatWrapsIntoItsOwnGap)
{
    // Aligned is 0x10010; the size leads back to 0x1000C, which is behind the top.
    ExpectRefused(MadeUp(0x10000, 0x10008, 0x20000), std::size_t{0} - 4, 16);
}

TEST(ArenaReserve, OfNothingTouchesNoMemory)
{
    zt_arena arena = MadeUp(0x10000, 0x10008, 0x10008);

    EXPECT_EQ(zt_arena_reserve(&arena, 0, 8), Address(0x10008));
    ExpectSame(arena, MadeUp(0x10000, 0x10008, 0x10008));
}

TEST(ArenaReserve, FindsNoRoomWhereAllAddressesAreNull)
{
    ExpectRefused(MadeUp(0, 0, 0), 0, 1);
    ExpectRefused(MadeUp(0, 0, 0), 0, 8);
    ExpectRefused(MadeUp(0, 0, 0), 1, 1);
    ExpectRefused(MadeUp(0, 0, 0), 8, 8);
}

// --- Claim: the reservation that leaves the bytes alone ---

TEST(ArenaClaim, MovesTheTopAndLeavesTheBytesAsTheyWere)
{
    TestArena arena(24, 8, 5);

    EXPECT_EQ(vyn_connector::common::detail::Claim(arena.Get(), 8, 4), arena.Start() + 8);
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*24"));
}

TEST(ArenaClaim, TakesWhatAReservationTakes)
{
    for (std::size_t startMod16 = 0; startMod16 < 16; ++startMod16)
        for (std::size_t top = 0; top < 8; ++top)
            for (const std::size_t alignment : {1u, 2u, 4u, 8u})
                for (const std::size_t size : {0u, 1u, 12u, 16u, 17u, 18u, 24u}) {
                    SCOPED_TRACE(testing::Message() << "start " << startMod16 << ", top " << top << ", alignment "
                                                    << alignment << ", size " << size);
                    TestArena arena(24, startMod16, top);
                    std::size_t aligned = top;
                    while ((startMod16 + aligned) % alignment != 0)
                        ++aligned;
                    const bool fits = aligned + size <= 24;

                    EXPECT_EQ(vyn_connector::common::detail::Claim(arena.Get(), size, alignment),
                              fits ? arena.Start() + aligned : nullptr);

                    EXPECT_EQ(arena.Top(), fits ? aligned + size : top);
                    EXPECT_EQ(arena.Contents(), Bytes("A5*24"));
                }
}

TEST(ArenaClaim, RefusesWhatWrapsAroundTheAddressSpace)
{
    for (const auto& [arena, size, alignment] :
         {std::tuple(MadeUp(lastAddress - 15, lastAddress, lastAddress), std::size_t{0}, std::size_t{8}),
          std::tuple(MadeUp(0x10000, 0x10008, 0x20000), std::numeric_limits<std::size_t>::max(), std::size_t{1}),
          std::tuple(MadeUp(0, 0, 0), std::size_t{1}, std::size_t{1})}) {
        zt_arena changed = arena;
        EXPECT_EQ(vyn_connector::common::detail::Claim(&changed, size, alignment), nullptr);
        ExpectSame(changed, arena);
    }
}

// --- Resolve ---

TEST(ArenaResolve, ReturnsTheAddressAndTheCountOfElements)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x10100);

    EXPECT_EQ(Resolve(arena, {16, 48}, 1), (Resolved{0x10010, 48}));
    EXPECT_EQ(Resolve(arena, {16, 48}, 2), (Resolved{0x10010, 24}));
    EXPECT_EQ(Resolve(arena, {16, 48}, 8), (Resolved{0x10010, 6}));
    EXPECT_EQ(Resolve(arena, {16, 48}, 12), (Resolved{0x10010, 4}));
    EXPECT_EQ(Resolve(arena, {16, 48}, 16), (Resolved{0x10010, 3}));
    EXPECT_EQ(Resolve(arena, {16, 48}, 48), (Resolved{0x10010, 1}));
}

TEST(ArenaResolve, AcceptsBytesUpToTheEndAndNotOneMore)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x10100);

    EXPECT_EQ(Resolve(arena, {0, 256}), (Resolved{0x10000, 256}));
    EXPECT_EQ(Resolve(arena, {0, 257}), refused);
    EXPECT_EQ(Resolve(arena, {1, 255}), (Resolved{0x10001, 255}));
    EXPECT_EQ(Resolve(arena, {1, 256}), refused);
    EXPECT_EQ(Resolve(arena, {255, 1}), (Resolved{0x100FF, 1}));
    EXPECT_EQ(Resolve(arena, {255, 2}), refused);
    EXPECT_EQ(Resolve(arena, {256, 0}), (Resolved{0x10100, 0}));
    EXPECT_EQ(Resolve(arena, {256, 1}), refused);
}

TEST(ArenaResolve, RefusesAnOffsetBehindTheEndAlsoForNoBytes)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x10100);

    EXPECT_EQ(Resolve(arena, {257, 0}), refused);
    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 0}), refused);
}

TEST(ArenaResolve, DoesNotAddOffsetAndSizeInThirtyTwoBits)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x10100);

    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 1}), refused);
    EXPECT_EQ(Resolve(arena, {0xFFFFFFF0, 32}), refused);
    EXPECT_EQ(Resolve(arena, {32, 0xFFFFFFF0}), refused);
    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 0xFFFFFFFF}), refused);
}

TEST(ArenaResolve, ExtendsOffsetAndSizeWithZeros)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x20000FFFE);

    EXPECT_EQ(Resolve(arena, {0x80000000, 0}), (Resolved{0x80010000, 0}));
    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 0}), (Resolved{0x10000FFFF, 0}));
    EXPECT_EQ(Resolve(arena, {0, 0x80000000}), (Resolved{0x10000, 0x80000000}));
    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 0xFFFFFFFF}), (Resolved{0x10000FFFF, 0xFFFFFFFF}));
    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 0xFFFFFFFF}, 15), (Resolved{0x10000FFFF, 0x11111111}));
}

TEST(ArenaResolve, RefusesAnOffsetThatWrapsAroundTheAddressSpace)
{
    const zt_arena arena = MadeUp(lastAddress - 10, lastAddress - 10, lastAddress);

    EXPECT_EQ(Resolve(arena, {10, 0}), (Resolved{lastAddress, 0}));
    EXPECT_EQ(Resolve(arena, {11, 0}), refused);
    EXPECT_EQ(Resolve(arena, {12, 0}), refused);
    EXPECT_EQ(Resolve(arena, {12, 4}), refused);
    EXPECT_EQ(Resolve(arena, {0xFFFFFFFF, 0}), refused);
}

TEST(ArenaResolve, RefusesASizeThatWrapsAroundTheAddressSpace)
{
    const zt_arena arena = MadeUp(lastAddress - 10, lastAddress - 10, lastAddress);

    EXPECT_EQ(Resolve(arena, {0, 10}), (Resolved{lastAddress - 10, 10}));
    EXPECT_EQ(Resolve(arena, {0, 11}), refused);
    EXPECT_EQ(Resolve(arena, {0, 12}), refused);
    EXPECT_EQ(Resolve(arena, {10, 0xFFFFFFFF}), refused);
    EXPECT_EQ(Resolve(arena, {0, 0xFFFFFFFF}), refused);
}

TEST(ArenaResolve, FindsNothingWhereTheEndLiesBeforeTheStart)
{
    EXPECT_EQ(Resolve(MadeUp(0x200, 0x200, 0x1FF), {0, 0}), refused);
    EXPECT_EQ(Resolve(MadeUp(0x200, 0x200, 0x100), {0, 0}), refused);
    EXPECT_EQ(Resolve(MadeUp(0x200, 0x200, 0x100), {0, 16}), refused);
    EXPECT_EQ(Resolve(MadeUp(0x200, 0x200, 0), {0, 0}), refused);
}

TEST(ArenaResolve, RefusesTheNullAddress)
{
    EXPECT_EQ(Resolve(MadeUp(0, 0, 0), {0, 0}), refused);
    EXPECT_EQ(Resolve(MadeUp(0, 0, 0), {0, 0}, 8), refused);
    EXPECT_EQ(Resolve(MadeUp(0, 0, 0), {0, 1}), refused);
    EXPECT_EQ(Resolve(MadeUp(0, 0, 0), {1, 0}), refused);
    EXPECT_EQ(Resolve(MadeUp(0, 0x100, 0x100), {0, 0}), refused);
    EXPECT_EQ(Resolve(MadeUp(0, 0x100, 0x100), {0, 16}, 8), refused);
}

TEST(ArenaResolve, RefusesTheAddressAndNotTheStartThatIsNull)
{
    EXPECT_EQ(Resolve(MadeUp(0, 0x100, 0x100), {1, 0}), (Resolved{1, 0}));
    EXPECT_EQ(Resolve(MadeUp(0, 0x100, 0x100), {16, 16}, 8), (Resolved{16, 2}));
}

TEST(ArenaResolve, RefusesPartOfAnElement)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x10100);

    EXPECT_EQ(Resolve(arena, {0, 12}, 8), refused);
    EXPECT_EQ(Resolve(arena, {0, 1}, 2), refused);
    EXPECT_EQ(Resolve(arena, {0, 20}, 16), refused);
    EXPECT_EQ(Resolve(arena, {0, 4}, 8), refused);
    EXPECT_EQ(Resolve(arena, {0, 8}, 12), refused);
    EXPECT_EQ(Resolve(arena, {0, 23}, 12), refused);
    EXPECT_EQ(Resolve(arena, {0, 25}, 12), refused);
    EXPECT_EQ(Resolve(arena, {0, 24}, 12), (Resolved{0x10000, 2}));
    EXPECT_EQ(Resolve(arena, {0, 7}, 1), (Resolved{0x10000, 7}));
}

TEST(ArenaResolve, TakesNoBytesAsNoElements)
{
    const zt_arena arena = MadeUp(0x10000, 0x10000, 0x10100);

    EXPECT_EQ(Resolve(arena, {3, 0}, 1), (Resolved{0x10003, 0}));
    EXPECT_EQ(Resolve(arena, {3, 0}, 12), (Resolved{0x10003, 0}));
    EXPECT_EQ(Resolve(arena, {3, 0}, 16), (Resolved{0x10003, 0}));
}

TEST(ArenaResolve, DoesNotAskWhereTheTopIs)
{
    EXPECT_EQ(Resolve(MadeUp(0x10000, 0x10000, 0x10100), {0x80, 0x80}), (Resolved{0x10080, 0x80}));
    EXPECT_EQ(Resolve(MadeUp(0x10000, 0x10080, 0x10100), {0x7F, 2}), (Resolved{0x1007F, 2}));
    EXPECT_EQ(Resolve(MadeUp(0x10000, 0x10100, 0x10100), {0x80, 0x80}), (Resolved{0x10080, 0x80}));
}

TEST(ArenaResolve, DoesNotAskForAnAlignedAddress)
{
    for (std::uint32_t offset = 0; offset < 16; ++offset)
        EXPECT_EQ(Resolve(MadeUp(0x10000, 0x10000, 0x10100), {offset, 16}, 8), (Resolved{0x10000 + offset, 2}));
}

} // namespace
