// What readers allocate, and what they do when they cannot: this program's operator new counts, fills with stale bytes
// and fails on demand, also for the library's allocations.
#include <common/connection_settings.h>
#include <common/zt_range.h>
#include <common/zt_set.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"
#include "replaced_new.h"

#include <cstdlib>
#include <functional>
#include <iterator>
#include <limits>
#include <new>

namespace {

struct Allocations {
    std::size_t made = 0;
    std::size_t live = 0;
    std::size_t bytes = 0;
    std::size_t failing = std::numeric_limits<std::size_t>::max(); // the number of the one that fails, from 1
};
Allocations allocations;
bool counting = false;

} // namespace

void* replaced::Allocate(std::size_t size)
{
    if (counting) {
        ++allocations.made;
        if (allocations.made == allocations.failing) return nullptr;
        allocations.bytes += size;
        ++allocations.live;
    }
    void* const memory = FromHeap(size);
    if (memory != nullptr) std::memset(memory, TestArena::stale, size);
    return memory;
}

void replaced::Free(void* memory) noexcept
{
    if (counting && memory != nullptr) --allocations.live;
    std::free(memory);
}

namespace {

using namespace vyn_connector::common;
using vyn_connector::Credentials;
using vyn_connector::ProxySettings;
using vyn_connector::SslSettings;
using ReadText = std::string (*)(const zt_ptr_t&, const zt_arena*);

// Counts what happens between its construction and its destruction.
class Counted {
public:
    explicit Counted(std::size_t failing = std::numeric_limits<std::size_t>::max())
    {
        allocations = {};
        allocations.failing = failing;
        counting = true;
    }
    ~Counted() { counting = false; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
};

// Lets the first allocation of `read` fail, then the second and so on until it succeeds: each failure is std::bad_alloc
// and leaves nothing behind. Returns how many allocations the success took.
template <typename Read>
std::size_t FailEachAllocation(Read&& read)
{
    for (std::size_t failing = 1;; ++failing) {
        bool failed = false;
        std::size_t live = 0;
        {
            const Counted counted(failing);
            try {
                read();
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            live = allocations.live;
        }
        EXPECT_EQ(live, 0u) << "left behind when allocation " << failing << " failed";
        if (!failed) return allocations.made;
        EXPECT_EQ(allocations.made, failing) << "allocated after allocation " << failing << " had failed";
        if (testing::Test::HasFailure()) return 0;
    }
}

// What the reading of small strings takes is not pinned: that they fit into the string itself is the standard library's
// doing. Those of fifty characters take one allocation each.
const char* const fifty = "'x'*50";

// `count` string pointers from offset 0 on, then a string of fifty characters to which all of them point.
void PutStrings(TestArena& arena, std::uint32_t count)
{
    Bytes pointers;
    for (std::uint32_t i = 0; i < count; ++i)
        pointers = pointers + BytesOf(zt_ptr_t{count * 8, 50});
    arena.Put(0, pointers + Bytes(fifty));
}

TEST(ReaderAllocation, OfAStringIsOne)
{
    TestArena arena(64);
    arena.Put(0, fifty);
    const zt_ptr_t pointer{0, 50};
    const zt_ptr_t empty{0, 0};

    EXPECT_EQ(FailEachAllocation([&] { ZtToString(&pointer, arena.Get()); }), 1u);
    EXPECT_EQ(FailEachAllocation([&] { CastFromZt(pointer, arena.Get()); }), 1u);
    EXPECT_EQ(FailEachAllocation([&] { ZtToString(&empty, arena.Get()); }), 0u);
}

TEST(ReaderAllocation, OfABlobIsOneAndOfAnEmptyBlobNone)
{
    TestArena arena(64);
    const zt_ptr_t pointer{0, 64};
    const zt_ptr_t empty{64, 0};

    EXPECT_EQ(FailEachAllocation([&] { ZtToBlob(&pointer, arena.Get()); }), 1u);
    EXPECT_EQ(FailEachAllocation([&] { ZtToBlob(&empty, arena.Get()); }), 0u);
}

TEST(ReaderAllocation, OfAListIsOneBesideThoseOfItsElements)
{
    TestArena arena(100);
    PutStrings(arena, 3);
    const zt_ptr_t pointer{0, 24};
    const zt_ptr_t small{0, 60};
    const zt_ptr_t empty{0, 0};

    EXPECT_EQ(FailEachAllocation([&] {
                  EXPECT_EQ((ZtToVector<zt_ptr_t, std::string, ReadText>(&pointer, arena.Get(), &CastFromZt).size()),
                            3u);
              }),
              4u);
    EXPECT_EQ(FailEachAllocation([&] { ZtToVector<SmallWire, Small>(&small, arena.Get(), &SmallFromWire); }), 1u);
    EXPECT_EQ(FailEachAllocation([&] { ZtToVector<SmallWire, Small>(&empty, arena.Get(), &SmallFromWire); }), 0u);
}

TEST(ReaderAllocation, OfASetIsNoMoreThanThatOfInsertingItsElements)
{
    TestArena arena(100);
    arena.Put(0, "18 00*3 32 00*3 | 19 00*3 32 00*3 | 18 00*3 32 00*3 | 'abcdef' 'x'*60");
    const zt_ptr_t pointer{0, 24};
    const zt_ptr_t empty{0, 0};
    std::unordered_set<std::string> expected;
    std::size_t inserting = 0;
    {
        const Counted counted;
        const char* const first = reinterpret_cast<const char*>(arena.Start()) + 24;
        expected.insert(std::string(first, 50));
        expected.insert(std::string(first + 1, 50));
        expected.insert(std::string(first, 50));
        inserting = allocations.made;
    }

    EXPECT_EQ(FailEachAllocation([&] {
                  const auto values = ZtToSet<zt_ptr_t, std::string, ReadText>(&pointer, arena.Get(), &CastFromZt);
                  if (values != expected) throw ConverterFailed{0};
              }),
              inserting);
    EXPECT_EQ(FailEachAllocation([&] { ZtToSet<zt_ptr_t, std::string, ReadText>(&empty, arena.Get(), &CastFromZt); }),
              0u);
}

TEST(ReaderAllocation, OfAnOptionalIsThatOfItsValue)
{
    TestArena arena(64);
    PutStrings(arena, 1);
    const zt_ptr_t pointer{0, 8};
    const zt_ptr_t absent{0, 0};

    EXPECT_EQ(
        FailEachAllocation([&] { ZtToOptional<zt_ptr_t, std::string, ReadText>(&pointer, arena.Get(), &CastFromZt); }),
        1u);
    EXPECT_EQ(
        FailEachAllocation([&] { ZtToOptional<zt_ptr_t, std::string, ReadText>(&absent, arena.Get(), &CastFromZt); }),
        0u);
}

TEST(ReaderAllocation, OfARangeIsThatOfItsOutput)
{
    TestArena arena(100);
    PutStrings(arena, 3);
    const zt_ptr_t pointer{0, 24};

    EXPECT_EQ(FailEachAllocation([&] {
                  std::string values[3];
                  ZtToRange<zt_ptr_t, std::string>(&pointer, &values[0], arena.Get(),
                                                   static_cast<ReadText>(&CastFromZt));
              }),
              3u);
}

TEST(ReaderAllocation, OfARecordIsThatOfItsStrings)
{
    TestArena arena(64);
    arena.Put(0, fifty);
    const zt_ptr_t text{0, 50};

    EXPECT_EQ(FailEachAllocation([&] {
                  CastFromZt(tq_vyn_connector_VynTypes_Credentials{text, text}, arena.Get());
              }),
              2u);
    EXPECT_EQ(FailEachAllocation([&] {
                  CastFromZt(tq_vyn_connector_VynTypes_ProxySettings{text, 1, {text, text}}, arena.Get());
              }),
              3u);
    EXPECT_EQ(FailEachAllocation([&] {
                  CastFromZt(tq_vyn_connector_VynTypes_SslSettings{1, text, text, text, text}, arena.Get());
              }),
              4u);
}

// Remembers what it was before a converted value was put in.
struct Target {
    int value;
    Target& operator=(int number)
    {
        before |= value;
        value = number;
        return *this;
    }
    static inline int before = 0;
};

TEST(ReaderAllocation, OfAListGivesValuesThatAreZeroBeforeTheyAreRead)
{
    TestArena arena(36);
    arena.Put(0, "01 00*11 02 00*11 03 00*11");
    const zt_ptr_t pointer{0, 36};
    Target::before = 0;

    const auto values = ZtToVector<SmallWire, Target>(
        &pointer, arena.Get(), [](const SmallWire& wire, const zt_arena*) { return +wire.kind; });

    EXPECT_EQ(Target::before, 0); // the memory was 0xA5
    ASSERT_EQ(values.size(), 3u);
    EXPECT_EQ(values[2].value, 3);
}

// Beside the text of the error nothing is allocated, whatever the pointer says.
template <typename Read>
void ExpectNoMoreThanTheText(Read&& read)
{
    std::size_t bytes = 0;
    bool refused = false;
    {
        const Counted counted;
        try {
            read();
        } catch (const std::out_of_range&) {
            bytes = allocations.bytes;
            refused = true;
        }
    }
    EXPECT_TRUE(refused);
    EXPECT_LE(bytes, 512u);
    EXPECT_EQ(allocations.live, 0u);
}

TEST(ReaderAllocation, IsNoneForAHostileSize)
{
    const TestArena arena(64);
    // The greatest sizes that are whole numbers of the elements, so that nothing but the arena's end refuses them.
    for (const zt_ptr_t pointer : {zt_ptr_t{0, 0xFFFFFFFF}, zt_ptr_t{0xFFFFFFFF, 0xFFFFFFFF}}) {
        ExpectNoMoreThanTheText([&] { ZtToString(&pointer, arena.Get()); });
        ExpectNoMoreThanTheText([&] { CastFromZt(pointer, arena.Get()); });
        ExpectNoMoreThanTheText([&] { ZtToBlob(&pointer, arena.Get()); });
        ExpectNoMoreThanTheText([&] { CastFromZt(tq_vyn_connector_VynTypes_Credentials{pointer, {}}, arena.Get()); });
    }
    const zt_ptr_t pointers{0, 0xFFFFFFF8};
    ExpectNoMoreThanTheText([&] { ZtToSet<zt_ptr_t, std::string, ReadText>(&pointers, arena.Get(), &CastFromZt); });
    ExpectNoMoreThanTheText(
        [&] { ZtToOptional<zt_ptr_t, std::string, ReadText>(&pointers, arena.Get(), &CastFromZt); });
    ExpectNoMoreThanTheText([&] { ZtToVector<zt_ptr_t, std::string, ReadText>(&pointers, arena.Get(), &CastFromZt); });
    const zt_ptr_t small{0, 0xFFFFFFFC};
    ExpectNoMoreThanTheText([&] { ZtToVector<SmallWire, Small>(&small, arena.Get(), &SmallFromWire); });
}

TEST(ReaderAllocation, OfABadRangeIsNone)
{
    const TestArena arena(64);
    const zt_ptr_t small{0, 0xFFFFFFFC};
    std::vector<Small> values;
    {
        const Counted counted;
        try {
            ZtToRange<SmallWire, Small>(&small, std::back_inserter(values), arena.Get(), &SmallFromWire);
        } catch (const mur::ResultCodeException&) {
        }
    }
    EXPECT_EQ(allocations.made, 0u);
}

TEST(ReaderAllocation, OfTheErrorTextMayFail)
{
    const TestArena arena(64);
    const zt_ptr_t outside{65, 0};
    std::size_t outOfRange = 0;

    const std::size_t made = FailEachAllocation([&] {
        try {
            ZtToString(&outside, arena.Get());
        } catch (const std::out_of_range&) {
            ++outOfRange;
        }
    });

    EXPECT_EQ(outOfRange, 1u);
    EXPECT_GE(made, 1u);
}

} // namespace
