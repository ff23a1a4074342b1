// A record is written straight where it can be, and by the steps of the codecs where it cannot: both must leave the
// same bytes, fail at the same byte and raise the same. The steps write alone into an arena that starts at address 0
// and into one of more than 4 GiB. Each is compared with an ordinary arena in which the message has the same offset.
#include "any_record.h"
#include "arena.h"
#include "conversion.h"
#include "errors.h"

#include <common/all_records.h>
#include <common/arena_size.h>

#include <random>
#include <sys/mman.h>

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;

// Memory of zeros from `address` on, or anywhere; it is there once it is touched.
class Memory {
public:
    explicit Memory(std::size_t byteCount, std::uintptr_t address = 0)
        : bytes(byteCount),
          start(mmap(reinterpret_cast<void*>(address), byteCount, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | (address == 0 ? 0 : MAP_FIXED_NOREPLACE), -1, 0))
    {
    }
    ~Memory()
    {
        if (IsThere()) munmap(start, bytes);
    }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    bool IsThere() const { return start != MAP_FAILED; }
    std::uint8_t* Start() const { return static_cast<std::uint8_t*>(start); }

private:
    std::size_t bytes;
    void* start;
};

// What writing came to: the wire structure, or what was raised instead.
template <typename Record>
Bytes Write(const Record& record, zt_arena& arena)
{
    try {
        return BytesOf(Conversion<Record>::Write(record, &arena));
    } catch (const mur::ResultCodeException& error) {
        const std::string raised = std::string(typeid(error).name()) + errors::Ascii(error.Text()) +
                                   (error.file == nullptr ? "" : error.file) + std::to_string(error.line);
        return Bytes(raised.data(), raised.size());
    } catch (const std::exception& error) {
        const std::string raised = std::string(typeid(error).name()) + error.what();
        return Bytes(raised.data(), raised.size());
    }
}

// Two arenas that take the same message, from the same offset and the same remainder by 16 on.
struct Arenas {
    zt_arena straight;
    zt_arena steps;
};

constexpr std::size_t bytesBehind = 32;

// Writes the record into both, where `room` bytes from the tops on are there, and a few behind them. What is there, up
// to the last of them, must be the same.
template <typename Record>
void ExpectTheSame(const Record& record, Arenas arenas, std::size_t room)
{
    std::uint8_t* const straightTop = arenas.straight.top;
    std::uint8_t* const stepsTop = arenas.steps.top;
    const std::size_t size = room + bytesBehind;
    std::memset(straightTop, TestArena::stale, size);
    std::memset(stepsTop, TestArena::stale, size);

    EXPECT_EQ(Write(record, arenas.straight), Write(record, arenas.steps));
    EXPECT_EQ(arenas.straight.top - straightTop, arenas.steps.top - stepsTop);
    EXPECT_EQ(Bytes(straightTop, size), Bytes(stepsTop, size));
}

// An empty range of identifiers cannot be written.
template <typename Record>
constexpr std::uint64_t least = std::is_same_v<Record, VynUpdateIdentifiers> ? 1 : 0;

template <typename Record>
std::vector<Record> Samples()
{
    std::vector<Record> samples{any_record::Make<Record>([](std::uint64_t) { return least<Record>; }),
                                conversion::Full<Record>()};
    std::mt19937 random(11);
    for (int i = 0; i < 4; ++i) {
        samples.push_back(any_record::Make<Record>([&](std::uint64_t limit) {
            const auto most = std::min<std::uint64_t>(limit, 9);
            return std::uniform_int_distribution<std::uint64_t>(least<Record>, most)(random);
        }));
    }
    return samples;
}

// --- In an arena that starts at address 0, of any size ---

template <typename Record>
class FromAddressZero : public testing::Test {
protected:
    void SetUp() override
    {
        if (!low.IsThere() || !ordinary.IsThere()) GTEST_SKIP() << "no memory at low addresses";
    }

    Arenas WithRoom(std::size_t top, std::size_t room)
    {
        std::uint8_t* const straightTop = ordinary.Start() + address + top;
        std::uint8_t* const stepsTop = low.Start() + top;
        return {{ordinary.Start(), straightTop, straightTop + room}, {nullptr, stepsTop, stepsTop + room}};
    }

    static constexpr std::uintptr_t address = 1 << 20;
    static constexpr std::size_t mapped = 1 << 18;
    Memory low{mapped, address};
    Memory ordinary{address + mapped};
};
TYPED_TEST_SUITE(FromAddressZero, conversion::Records, );

TYPED_TEST(FromAddressZero, IsTheSameInArenasOfEverySize)
{
    for (const TypeParam& record : Samples<TypeParam>()) {
        for (const std::size_t top : {0u, 3u, 13u}) {
            const std::size_t need = ArenaSize(record, top);
            for (std::size_t room = 0; room <= need + 1; ++room) {
                ExpectTheSame(record, this->WithRoom(top, room), room);
                ASSERT_FALSE(this->HasFailure()) << "with room for " << room << " of " << need << " bytes from " << top;
            }
        }
    }
}

TYPED_TEST(FromAddressZero, IsTheSameWithEachPartOverItsLimit)
{
    for (int over = 0;; ++over) {
        int part = 0;
        const auto record = any_record::Make<TypeParam>([&](std::uint64_t limit) {
            const bool isOver = part++ == over && limit <= 65536;
            return isOver ? limit + 1 : std::min<std::uint64_t>(limit, 3);
        });
        const std::size_t room = 100000;
        ASSERT_LE(ArenaSize(record, 5), room);
        ExpectTheSame(record, this->WithRoom(5, room), room);
        ASSERT_FALSE(this->HasFailure()) << "with part " << over << " over its limit";
        if (over >= part) break;
    }
}

// --- In an arena of more than 4 GiB ---

class Beyond4GiB : public testing::Test {
protected:
    void SetUp() override
    {
        if (!far.IsThere()) GTEST_SKIP() << "no address space for an arena of more than 4 GiB";
    }

    Arenas From(std::size_t top)
    {
        return {{ordinary.Start(), ordinary.Start() + top, ordinary.Start() + mapped},
                {far.Start(), far.Start() + top, far.Start() + fourGiB + mapped}};
    }

    static constexpr std::size_t fourGiB = std::size_t{1} << 32;
    static constexpr std::size_t mapped = 1 << 16;
    Memory far{fourGiB + mapped};
    Memory ordinary{mapped + bytesBehind};
};

TEST_F(Beyond4GiB, EveryRecordIsTheSameAtEveryAlignment)
{
    ForEach(AllRecords{}, [&](auto tag) {
        using Record = typename decltype(tag)::Type;
        for (const Record& record : Samples<Record>()) {
            for (std::size_t top = 0; top < 16; ++top) {
                ExpectTheSame(record, From(top), 10000);
                if (HasFailure()) FAIL() << Description<Record>::name << " from " << top;
            }
        }
    });
}

// By each kind that copies bytes, expected to be long or not; where the length is over the limit, the same is raised.
TEST_F(Beyond4GiB, AnyNumberOfBytesIsTheSameAtEveryAlignment)
{
    std::string text;
    for (std::size_t length = 0; length <= 300; ++length) {
        if (length != 0) text += static_cast<char>(length % 251);
        VynEvent event{};
        event.field7 = text;
        event.stringArray[8] = text;
        for (std::size_t top = 0; top < 16; ++top) {
            const auto expectTheSame = [&](const auto& record) { ExpectTheSame(record, From(top), 2 * length + 32); };
            expectTheSame(FileChunkParams{text, 1, 2});
            expectTheSame(ProductUpdCfg{text, "behind it"});
            expectTheSame(RawVynParam{{text.begin(), text.end()}, "behind it"});
            expectTheSame(VynSubscription{VynEventSeverity::Severity1, {text}});
            expectTheSame(event);
            ASSERT_FALSE(HasFailure()) << length << " bytes from " << top;
        }
    }
}

} // namespace
