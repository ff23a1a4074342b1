// Wire pointers are cut to 32 bits, arenas are not. A writer stores the cut pointer, resolves it again and writes where
// a reader will look; where that fails it has run out of space, with its reservation made and its pointer written.
#include <common/zt_blob.h>
#include <common/zt_optional.h>
#include <common/zt_range.h>
#include <common/zt_set.h>
#include <common/zt_string.h>
#include <common/zt_vector.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"

#include <iterator>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace vyn_connector::common;

constexpr std::size_t fourGiB = std::size_t{1} << 32;
constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

using Strings = std::vector<std::string>;
using Set = std::unordered_set<std::string>;
using WriteString = zt_ptr_t (*)(const std::string&, zt_arena*);
using ReadString = std::string (*)(const zt_ptr_t&, const zt_arena*);

zt_arena MadeUp(std::uintptr_t start, std::uintptr_t top, std::uintptr_t end)
{
    const auto address = [](std::uintptr_t value) { return reinterpret_cast<std::uint8_t*>(value); };
    return {address(start), address(top), address(end)};
}

// Address space without memory behind it, but for the pages that a test asks for.
class AddressSpace {
public:
    // `wanted` null: anywhere. Without `IsThere()` the machine refused.
    explicit AddressSpace(std::size_t byteCount, std::uintptr_t wanted = 0)
        : bytes(byteCount),
          start(mmap(reinterpret_cast<void*>(wanted), byteCount, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
                     -1, 0))
    {
    }
    ~AddressSpace()
    {
        if (IsThere()) munmap(start, bytes);
    }
    AddressSpace(const AddressSpace&) = delete;
    AddressSpace& operator=(const AddressSpace&) = delete;

    bool IsThere() const { return start != MAP_FAILED; }
    std::uint8_t* Start() const { return static_cast<std::uint8_t*>(start); }

    // Memory from the page at `offset` on, filled with stale bytes.
    bool Populate(std::size_t offset, std::size_t size)
    {
        if (mprotect(Start() + offset, size, PROT_READ | PROT_WRITE) != 0) return false;
        std::memset(Start() + offset, TestArena::stale, size);
        return true;
    }

private:
    std::size_t bytes;
    void* start;
};

// An arena whose top stands `gap` bytes past the first 4 GiB. There is memory at its start and around its top.
class FarTop : public testing::Test {
protected:
    static constexpr std::size_t page = 65536;

    void SetUp() override
    {
        if (!space.IsThere() || !space.Populate(0, page) || !space.Populate(fourGiB, page))
            GTEST_SKIP() << "no address space for an arena of more than 4 GiB";
        arena = {space.Start(), space.Start() + fourGiB + 100, space.Start() + fourGiB + page};
    }

    Bytes At(std::size_t offset, std::size_t size) const { return Bytes(space.Start() + offset, size); }
    std::size_t Top() const { return static_cast<std::size_t>(arena.top - arena.start); }

    AddressSpace space{fourGiB + page};
    zt_arena arena{};
    zt_ptr_t out = untouched;
};

TEST_F(FarTop, AStringLandsWhereAReaderLooks)
{
    StringToZt<128>("hello", &out, &arena);

    EXPECT_EQ(out, (zt_ptr_t{100, 5}));
    EXPECT_EQ(Top(), fourGiB + 105);
    EXPECT_EQ(At(99, 7), Bytes("A5 'hello' A5"));
    EXPECT_EQ(At(fourGiB + 99, 7), Bytes("A5 00*5 A5")); // reserved, and not written
    EXPECT_EQ(ZtToString(&out, &arena), "hello");
}

TEST_F(FarTop, AStringByValueLandsWhereAReaderLooks)
{
    EXPECT_EQ(CastToZt(std::string("hello"), &arena), (zt_ptr_t{100, 5}));

    EXPECT_EQ(At(99, 7), Bytes("A5 'hello' A5"));
    EXPECT_EQ(At(fourGiB + 99, 7), Bytes("A5 00*5 A5"));
}

TEST_F(FarTop, AnEmptyStringHasTheCutOffsetOfTheTop)
{
    StringToZt<128>("", &out, &arena);

    EXPECT_EQ(out, (zt_ptr_t{100, 0}));
    EXPECT_EQ(Top(), fourGiB + 100);
}

TEST_F(FarTop, ABlobLandsWhereAReaderLooks)
{
    BlobToZt({1, 2, 3}, &out, &arena);

    EXPECT_EQ(out, (zt_ptr_t{100, 3}));
    EXPECT_EQ(Top(), fourGiB + 103);
    EXPECT_EQ(At(99, 5), Bytes("A5 01 02 03 A5"));
    EXPECT_EQ(At(fourGiB + 99, 5), Bytes("A5 00*3 A5"));
    EXPECT_EQ(ZtToBlob(&out, &arena), (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST_F(FarTop, AListLandsWhereAReaderLooks)
{
    VectorToZt<5, zt_ptr_t, std::string, WriteString>({"ab", "c"}, &out, &arena, &CastToZt);

    EXPECT_EQ(out, (zt_ptr_t{100, 16}));
    EXPECT_EQ(Top(), fourGiB + 119);
    EXPECT_EQ(At(99, 21), Bytes("A5 | 74 00*3 02 00*3 | 76 00*3 01 00*3 | 'abc' A5"));
    EXPECT_EQ(At(fourGiB + 99, 21), Bytes("A5 00*19 A5"));
    EXPECT_EQ((ZtToVector<zt_ptr_t, std::string, ReadString>(&out, &arena, &CastFromZt)), (Strings{"ab", "c"}));
}

TEST_F(FarTop, ARangeLandsWhereAReaderLooks)
{
    const Small values[] = {{1, 2, 3}, {4, 5, 6}};

    RangeToZt<2, SmallWire>(std::begin(values), std::end(values), &out, &arena, &SmallToWire);

    EXPECT_EQ(out, (zt_ptr_t{100, 24}));
    EXPECT_EQ(Top(), fourGiB + 124);
    EXPECT_EQ(At(99, 26), Bytes("A5 | 01 00*3 02 00*3 03 00*3 | 04 00*3 05 00*3 06 00*3 | A5"));
    EXPECT_EQ(At(fourGiB + 99, 26), Bytes("A5 00*24 A5"));
}

TEST_F(FarTop, AnOptionalLandsWhereAReaderLooks)
{
    OptionalToZt<zt_ptr_t, std::string, WriteString>("abc", &out, &arena, &CastToZt);

    EXPECT_EQ(out, (zt_ptr_t{100, 8}));
    EXPECT_EQ(Top(), fourGiB + 111);
    EXPECT_EQ(At(99, 13), Bytes("A5 | 6C 00*3 03 00*3 | 'abc' A5"));
    EXPECT_EQ(At(fourGiB + 99, 13), Bytes("A5 00*11 A5"));
    EXPECT_EQ((ZtToOptional<zt_ptr_t, std::string, ReadString>(&out, &arena, &CastFromZt)), "abc");
}

TEST_F(FarTop, ASetLandsWhereAReaderLooks)
{
    SetToZt<1, zt_ptr_t, std::string, WriteString>({"abc"}, &out, &arena, &CastToZt);

    EXPECT_EQ(out, (zt_ptr_t{100, 8}));
    EXPECT_EQ(Top(), fourGiB + 111);
    EXPECT_EQ(At(99, 13), Bytes("A5 | 6C 00*3 03 00*3 | 'abc' A5"));
    EXPECT_EQ(At(fourGiB + 99, 13), Bytes("A5 00*11 A5"));
    EXPECT_EQ((ZtToSet<zt_ptr_t, std::string, ReadString>(&out, &arena, &CastFromZt)), (Set{"abc"}));
}

TEST(Offset, HasAllThirtyTwoBits)
{
    constexpr std::uintptr_t start = 0x10000;
    for (const std::uint32_t offset : {0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
        zt_arena arena = MadeUp(start, start + offset, start + offset);
        zt_ptr_t out = untouched;

        StringToZt<128>("", &out, &arena);

        EXPECT_EQ(out, (zt_ptr_t{offset, 0}));
    }
}

// --- Where the cut pointer does not resolve: the start is null, and so is the start plus the cut offset ---

class NullAddress : public testing::Test {
protected:
    void ExpectOutOfSpaceWithPointerWritten(void (*write)(zt_ptr_t*, zt_arena*))
    {
        zt_ptr_t out = untouched;
        zt_arena arena = MadeUp(0, fourGiB, fourGiB);

        ExpectOutOfSpace([&] { write(&out, &arena); });

        EXPECT_EQ(out, (zt_ptr_t{0, 0}));
        EXPECT_EQ(arena.start, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arena.top), fourGiB);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arena.end), fourGiB);
    }
};

TEST_F(NullAddress, RefusesAnEmptyString)
{
    ExpectOutOfSpaceWithPointerWritten([](zt_ptr_t* out, zt_arena* arena) { StringToZt<128>("", out, arena); });
    ExpectOutOfSpaceWithPointerWritten([](zt_ptr_t* out, zt_arena* arena) { StringToZt<32>("", out, arena); });
}

TEST_F(NullAddress, RefusesAnEmptyBlob)
{
    ExpectOutOfSpaceWithPointerWritten([](zt_ptr_t* out, zt_arena* arena) { BlobToZt({}, out, arena); });
}

TEST_F(NullAddress, RefusesAnEmptyList)
{
    ExpectOutOfSpaceWithPointerWritten(
        [](zt_ptr_t* out, zt_arena* arena) { VectorToZt<5, SmallWire, Small>({}, out, arena, &SmallToWire); });
}

TEST_F(NullAddress, RefusesAnEmptySet)
{
    ExpectOutOfSpaceWithPointerWritten([](zt_ptr_t* out, zt_arena* arena) {
        SetToZt<5, zt_ptr_t, std::string, WriteString>({}, out, arena, &CastToZt);
    });
}

TEST_F(NullAddress, DoesNotLieOneByteFurther)
{
    zt_ptr_t out = untouched;
    zt_arena arena = MadeUp(0, fourGiB + 1, fourGiB + 1);

    StringToZt<128>("", &out, &arena);

    EXPECT_EQ(out, (zt_ptr_t{1, 0}));
}

// The same with memory at the top, which is a multiple of 4 GiB: what was reserved stays so.
class NullAddressWithMemory : public testing::Test {
protected:
    static constexpr std::size_t page = 65536;
    static constexpr std::uintptr_t top = 0x7EC000000000;

    void SetUp() override
    {
        if (!space.IsThere() || space.Start() != reinterpret_cast<std::uint8_t*>(top) || !space.Populate(0, page))
            GTEST_SKIP() << "no memory at a multiple of 4 GiB";
    }

    void ExpectReservedAndOutOfSpace(void (*write)(zt_ptr_t*, zt_arena*), std::uint32_t size)
    {
        zt_ptr_t out = untouched;
        zt_arena arena = MadeUp(0, top, top + page);

        ExpectOutOfSpace([&] { write(&out, &arena); });

        EXPECT_EQ(out, (zt_ptr_t{0, size}));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arena.top), top + size);
        EXPECT_EQ(Bytes(space.Start(), size), Bytes("00*" + std::to_string(size)));
        EXPECT_EQ(Bytes(space.Start() + size, 1), Bytes("A5"));
    }

    AddressSpace space{page, top};
};

TEST_F(NullAddressWithMemory, KeepsTheReservationOfAString)
{
    ExpectReservedAndOutOfSpace([](zt_ptr_t* out, zt_arena* arena) { StringToZt<128>("abc", out, arena); }, 3);
}

TEST_F(NullAddressWithMemory, KeepsTheReservationOfABlob)
{
    ExpectReservedAndOutOfSpace([](zt_ptr_t* out, zt_arena* arena) { BlobToZt({1, 2}, out, arena); }, 2);
}

TEST_F(NullAddressWithMemory, KeepsTheReservationOfAListAndConvertsNothing)
{
    ExpectReservedAndOutOfSpace(
        [](zt_ptr_t* out, zt_arena* arena) {
            VectorToZt<5, SmallWire, Small>({{1, 2, 3}}, out, arena,
                                            [](const Small&, zt_arena*) -> SmallWire { throw ConverterFailed{0}; });
        },
        12);
}

TEST_F(NullAddressWithMemory, KeepsTheReservationOfARangeAndConvertsNothing)
{
    ExpectReservedAndOutOfSpace(
        [](zt_ptr_t* out, zt_arena* arena) {
            const Small value;
            RangeToZt<5, SmallWire>(&value, &value + 1, out, arena,
                                    [](const Small&, zt_arena*) -> SmallWire { throw ConverterFailed{0}; });
        },
        12);
}

TEST_F(NullAddressWithMemory, KeepsTheSlotOfAnOptionalAndConvertsNothing)
{
    ExpectReservedAndOutOfSpace(
        [](zt_ptr_t* out, zt_arena* arena) {
            OptionalToZt<LargeWire, Large>(Large{1, 2}, out, arena,
                                           [](const Large&, zt_arena*) -> LargeWire { throw ConverterFailed{0}; });
        },
        16);
}

TEST_F(NullAddressWithMemory, KeepsTheReservationOfASetAndConvertsNothing)
{
    ExpectReservedAndOutOfSpace(
        [](zt_ptr_t* out, zt_arena* arena) {
            SetToZt<5, zt_ptr_t, std::string>(
                {"a", "b"}, out, arena, [](const std::string&, zt_arena*) -> zt_ptr_t { throw ConverterFailed{0}; });
        },
        16);
}

// --- Sizes of 4 GiB and more ---

#if defined(__SANITIZE_THREAD__)
constexpr bool underThreadSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
constexpr bool underThreadSanitizer = true;
#else
constexpr bool underThreadSanitizer = false;
#endif
#else
constexpr bool underThreadSanitizer = false;
#endif

// Counts up without a container behind it, so that a range can be of any length.
class Counting {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::int64_t;
    using difference_type = std::int64_t;
    using pointer = const std::int64_t*;
    using reference = std::int64_t;

    explicit Counting(std::int64_t number) : value(number) {}
    std::int64_t operator*() const { return value; }
    Counting& operator++()
    {
        ++value;
        return *this;
    }
    friend std::int64_t operator-(Counting a, Counting b) { return a.value - b.value; }
    friend bool operator<(Counting a, Counting b) { return a.value < b.value; }

private:
    std::int64_t value;
};

// An arena of more than 4 GiB that takes little memory: the same few pages stand behind all of it.
class LargeSize : public testing::Test {
protected:
    static constexpr std::size_t piece = std::size_t{2} << 20;

    void SetUp() override
    {
        // Its shadow of the zeroed bytes would take several times as much memory.
        if (underThreadSanitizer) GTEST_SKIP() << "the thread sanitizer shadows every byte";
        const int file = memfd_create("arena", 0);
        bool mapped = space.IsThere() && file >= 0 && ftruncate(file, piece) == 0;
        for (std::size_t offset = 0; mapped && offset < fourGiB + piece; offset += piece)
            mapped = mmap(space.Start() + offset, piece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED | MAP_POPULATE,
                          file, 0) != MAP_FAILED;
        if (file >= 0) close(file);
        if (!mapped) GTEST_SKIP() << "no address space for an arena of more than 4 GiB";
        arena = {space.Start(), space.Start(), space.Start() + fourGiB + piece};
    }

    std::size_t Top() const { return static_cast<std::size_t>(arena.top - arena.start); }

    AddressSpace space{fourGiB + piece};
    zt_arena arena{};
    zt_ptr_t out = untouched;
};

TEST_F(LargeSize, IsCutToThirtyTwoBits)
{
    const std::int64_t count = (std::int64_t{1} << 28) + 2; // sixteen bytes each
    const auto convert = [](std::int64_t, zt_arena*) -> LargeWire { throw ConverterFailed{0}; };

    EXPECT_THROW(
        (RangeToZt<(std::int64_t{1} << 28) + 2, LargeWire>(Counting(0), Counting(count), &out, &arena, convert)),
        ConverterFailed);

    EXPECT_EQ(out, (zt_ptr_t{0, 32}));
    EXPECT_EQ(Top(), fourGiB + 32);
}

TEST_F(LargeSize, ThatIsNoWholeNumberOfElementsOnceCutIsOutOfSpace)
{
    const std::int64_t count = 357913942; // of twelve bytes: 8 more than 4 GiB
    const auto convert = [](std::int64_t, zt_arena*) -> SmallWire { throw ConverterFailed{0}; };

    ExpectOutOfSpace([&] { RangeToZt<357913942, SmallWire>(Counting(0), Counting(count), &out, &arena, convert); });

    EXPECT_EQ(out, (zt_ptr_t{0, 8}));
    EXPECT_EQ(Top(), fourGiB + 8);
}

TEST_F(LargeSize, OverTheMaximumIsRefusedBeforeAnythingIsReserved)
{
    const auto convert = [](std::int64_t, zt_arena*) -> SmallWire { throw ConverterFailed{0}; };

    ExpectResultCode([&] { RangeToZt<10, SmallWire>(Counting(0), Counting(fourGiB + 1), &out, &arena, convert); },
                     0x80000046, "0x80000046 (Invalid argument)");

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(Top(), 0u);
}

} // namespace
