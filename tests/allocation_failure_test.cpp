// Running out of memory, anywhere: each allocation of each conversion, of copying, cloning, throwing and showing an
// exception fails once, whether it is made with operator new or through an allocator object. What comes out is
// std::bad_alloc, nothing is left behind, and what there was is as it was. Messages are read from memory that cannot be
// written.
#include "conversion.h"

#include "arena.h"
#include "replaced_new.h"

#include <common/arena_size.h>
#include <mur/raise.h>
#include <mur/stream.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <sys/mman.h>
#include <typeinfo>
#include <unistd.h>

namespace {

struct Allocations {
    std::size_t made = 0;
    long live = 0;
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
        ++allocations.live;
    }
    return FromHeap(size);
}

void replaced::Free(void* memory) noexcept
{
    if (counting && memory != nullptr) --allocations.live;
    std::free(memory);
}

namespace {

using namespace vyn_connector;
using common::Conversion;
using mur::InvalidArgumentException;
using mur::ResultCodeException;
using mur::types::wide_string;

// Lets the first allocation of `call` fail, then the second and so on until it succeeds. Returns how many allocations
// the success took. `call` keeps nothing that it allocates.
template <typename Call>
std::size_t FailEachAllocation(Call&& call)
{
    for (std::size_t failing = 1;; ++failing) {
        bool failed = false;
        bool exactly = false;
        allocations = {};
        allocations.failing = failing;
        counting = true;
        try {
            call();
        } catch (const std::exception& error) {
            failed = true;
            exactly = typeid(error) == typeid(std::bad_alloc);
        }
        counting = false;
        const Allocations after = allocations;

        EXPECT_EQ(after.live, 0) << "left behind when allocation " << failing << " failed";
        if (!failed) return after.made;
        EXPECT_TRUE(exactly) << "something else was thrown when allocation " << failing << " failed";
        EXPECT_EQ(after.made, failing) << "allocated after allocation " << failing << " had failed";
        if (testing::Test::HasFailure()) return 0;
    }
}

// Its calls count and fail with those of operator new.
class SharedAllocator : public mur::allocator_interface {
public:
    void AddReference() override { ++references; }
    void ReleaseReference() override { --references; }
    void* Allocate(std::size_t bytes) override { return replaced::Allocate(bytes); }
    void Free(void* memory) override { replaced::Free(memory); }

    int references = 0;
};

// --- Conversions ---

// A written message in memory that a reader cannot change: the arena's bytes, the arena and the wire structure.
template <typename Record>
class ReadOnlyMessage {
public:
    explicit ReadOnlyMessage(const Record& record)
        : size((sizeof(Content) + room) / page * page + page),
          memory(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
        if (memory == MAP_FAILED) throw std::bad_alloc();
        auto* const written = new (memory) Content{};
        auto* const start = static_cast<std::uint8_t*>(memory) + sizeof(Content);
        written->arena = {start, start, start + room};
        const common::WireOf<Record> wire = Conversion<Record>::Write(record, &written->arena);
        std::memcpy(&written->wire, &wire, sizeof(wire));
        content = written;
        EXPECT_EQ(mprotect(memory, size, PROT_READ), 0);
    }
    ~ReadOnlyMessage() { munmap(memory, size); }
    ReadOnlyMessage(const ReadOnlyMessage&) = delete;
    ReadOnlyMessage& operator=(const ReadOnlyMessage&) = delete;

    Record Read() const { return Conversion<Record>::Read(content->wire, &content->arena); }

private:
    struct Content {
        zt_arena arena;
        common::WireOf<Record> wire;
    };

    static constexpr std::size_t room = std::size_t{1} << 16;
    static constexpr std::size_t page = 1 << 12;

    std::size_t size;
    void* memory;
    Content* content = nullptr;
};

template <typename Record>
class EveryRecord : public testing::Test {
};
TYPED_TEST_SUITE(EveryRecord, conversion::Records, );

TYPED_TEST(EveryRecord, IsReadFromReadOnlyMemoryOrNotAtAllWhenAnAllocationFails)
{
    const ReadOnlyMessage<TypeParam> message(conversion::Full<TypeParam>());
    const TypeParam expected = message.Read();

    if constexpr (!std::is_same_v<TypeParam, VynEvent>) {
        bool same = false;
        FailEachAllocation([&] { same = message.Read() == expected; });
        EXPECT_TRUE(same);
    } else {
        EXPECT_EQ(expected, conversion::Full<TypeParam>());
    }
}

TYPED_TEST(EveryRecord, IsWrittenInsideItsArenaOrNotAtAllWhenAnAllocationFails)
{
    const TypeParam record = conversion::Full<TypeParam>();
    TestArena first(1 << 16);
    const Bytes wire = BytesOf(Conversion<TypeParam>::Write(record, first.Get()));

    TestArena arena(1 << 16);
    const zt_arena empty = *arena.Get();
    common::WireOf<TypeParam> again{};
    FailEachAllocation([&] {
        *arena.Get() = empty;
        again = Conversion<TypeParam>::Write(record, arena.Get());
    });
    EXPECT_EQ(BytesOf(again), wire);
    EXPECT_EQ(arena.Used(), first.Used());
}

// 128 bytes in each text, 128 elements in each list and set, where the limits allow it.
template <typename Record>
Record Large()
{
    return any_record::Make<Record>([](std::uint64_t limit) { return std::min<std::uint64_t>(limit, 128); });
}

TYPED_TEST(EveryRecord, IsWrittenWithoutAnAllocation)
{
    const TypeParam record = Large<TypeParam>();
    TestArena arena(common::ArenaSize(record, 0));
    common::WireOf<TypeParam> wire{};
    EXPECT_EQ(FailEachAllocation([&] { wire = Conversion<TypeParam>::Write(record, arena.Get()); }), 0u);
    EXPECT_EQ(arena.Top(), arena.Capacity());
}

// Where the last byte of the room is missing, the record is written straight first and then again by the steps. An
// event is told by its status.
TYPED_TEST(EveryRecord, IsRefusedWithoutAnAllocation)
{
    const TypeParam record = Large<TypeParam>();
    const std::size_t need = common::ArenaSize(record, 0);
    if (need == 0) return;
    TestArena arena(need - 1);
    bool refused = false;
    const auto write = [&] {
        if constexpr (std::is_same_v<TypeParam, VynEvent>) {
            auto status = lyr::ipc::arena::conv::Status::Ok;
            lyr::ipc::arena::conv::ToZt(*arena.Get(), record, status);
            refused = status == lyr::ipc::arena::conv::Status::Failed;
        } else {
            try {
                Conversion<TypeParam>::Write(record, arena.Get());
            } catch (const ResultCodeException&) {
                refused = true;
            }
        }
    };
    EXPECT_EQ(FailEachAllocation(write), 0u);
    EXPECT_TRUE(refused);
}

TEST(Subscriptions, OfFourSeveritiesHold512NamesWhenLarge)
{
    const VynSubscriptions subscriptions = Large<VynSubscriptions>();
    std::size_t names = 0;
    for (const auto& entry : subscriptions)
        names += entry.second.size();
    EXPECT_EQ(subscriptions.size(), 4u);
    EXPECT_EQ(names, 512u);
}

TEST(EventDeathTest, EndsTheProcessWhicheverAllocationFails)
{
    const ReadOnlyMessage<VynEvent> message(conversion::Full<VynEvent>());
    const auto read = [&](std::size_t failing) {
        std::set_terminate([] { _exit(42); });
        allocations = {};
        allocations.failing = failing;
        counting = true;
        {
            const VynEvent event = message.Read();
        }
        counting = false;
        _exit(allocations.live == 0 ? static_cast<int>(allocations.made) : 99);
    };
    constexpr int texts = 15;
    EXPECT_EXIT(read(0), testing::ExitedWithCode(texts), "^$");
    for (std::size_t failing = 1; failing <= texts; ++failing)
        EXPECT_EXIT(read(failing), testing::ExitedWithCode(42), "^$") << failing;
}

// --- Exceptions ---

constexpr std::u16string_view longText = u"a message that is longer than its inline buffer";

// Three levels, each with a message from the allocator object.
template <typename Error>
void FillChain(Error& error, SharedAllocator& allocator)
{
    error.nested = std::make_unique<ResultCodeException>(0, wide_string(longText, &allocator));
    error.nested->nested = std::make_unique<InvalidArgumentException>(0, wide_string(longText, &allocator));
}

void ExpectChain(const mur::Exception& error)
{
    int levels = 0;
    for (const mur::Exception* level = &error; level != nullptr; level = level->nested.get(), ++levels)
        EXPECT_EQ(std::u16string_view(level->message), longText);
    EXPECT_EQ(levels, 3);
}

template <typename Error>
class EveryError : public testing::Test {
protected:
    EveryError() { FillChain(error, allocator); }
    ~EveryError() override
    {
        ExpectChain(error);
        EXPECT_EQ(allocator.references, 3) << "references are left";
    }

    SharedAllocator allocator;
    Error error{0, wide_string(longText, &allocator)};
};
using Errors = testing::Types<ResultCodeException, InvalidArgumentException>;
TYPED_TEST_SUITE(EveryError, Errors, );

// A message for each level and the two nested exceptions; the clone is an allocation more.
TYPED_TEST(EveryError, IsCopiedWithEverythingNestedOrNotAtAll)
{
    EXPECT_EQ(FailEachAllocation([&] {
                  const TypeParam copy(this->error);
                  ExpectChain(copy);
              }),
              5u);
}

TYPED_TEST(EveryError, IsClonedWithEverythingNestedOrNotAtAll)
{
    EXPECT_EQ(FailEachAllocation([&] {
                  const std::unique_ptr<mur::Exception> clone(this->error.Clone());
                  ExpectChain(*clone);
              }),
              6u);
}

TYPED_TEST(EveryError, IsThrownWithEverythingNestedOrNotAtAll)
{
    EXPECT_EQ(FailEachAllocation([&] {
                  try {
                      this->error.Throw();
                  } catch (const mur::Exception& thrown) {
                      EXPECT_EQ(typeid(thrown), typeid(TypeParam));
                      ExpectChain(thrown);
                  }
              }),
              5u);
}

TYPED_TEST(EveryError, IsShownAsTextOrNotAtAll)
{
    const std::size_t made = FailEachAllocation([&] {
        EXPECT_EQ(std::u16string_view(this->error.Text()), std::u16string(longText) + u": 0x00000000 (No error)");
    });
    EXPECT_GE(made, 1u);
}

TEST(Raising, NeedsNoMemoryBesideTheExceptionItself)
{
    EXPECT_EQ(FailEachAllocation([] {
                  EXPECT_THROW(mur::raise_invalid_argument("file", 1), InvalidArgumentException);
                  EXPECT_THROW(mur::raise_result_code(1), ResultCodeException);
              }),
              0u);
}

// --- The message string ---

class MessageString : public testing::Test {
protected:
    ~MessageString() override { EXPECT_EQ(allocator.references, 0); }

    SharedAllocator allocator;
};

TEST_F(MessageString, IsBuiltAndCopiedOrNotAtAll)
{
    EXPECT_EQ(FailEachAllocation([&] {
                  const wide_string text(longText, &allocator);
                  const wide_string copy(text);
                  EXPECT_EQ(std::u16string_view(copy), longText);
              }),
              2u);
}

TEST_F(MessageString, KeepsWhatItHeldWhicheverOfItsGrowthsFails)
{
    // The last length that was reached, and nothing else between.
    const auto grow = [&](wide_string& text) {
        std::size_t length = 0;
        try {
            for (; length < 100; length = text.size) {
                EXPECT_EQ(text.size, length);
                text.append(u"0123456789", 10);
            }
            const mur::stream::format_options_t wide{200, 10, -1, 1, U' ', false};
            mur::stream::stream_put_int(text, wide, 7);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(text.size, length);
            EXPECT_EQ(text.data[text.size], u'\0');
            for (std::size_t i = 0; i < text.size; ++i)
                EXPECT_EQ(text.data[i], u'0' + i % 10);
            throw;
        }
    };
    const std::size_t made = FailEachAllocation([&] {
        wide_string text(&allocator);
        grow(text);
        EXPECT_EQ(text.size, 300u);
    });
    EXPECT_EQ(made, 5u); // 14, 28, 56, 112 and 300 characters
}

} // namespace
