// Threads that share everything that may be shared: const records, received messages, the library's constants,
// exceptions and an allocator object. Each writes into an arena of its own. Only the thread sanitizer sees all that
// could be wrong here; scripts/tsan runs this test under it.
#include "conversion.h"

#include "arena.h"

#include <common/vyn_connector_common.h>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <thread>

namespace {

using namespace vyn_connector;
using mur::types::wide_string;

constexpr int threadCount = 8;
constexpr int rounds = 20;

// Runs `body` in all threads, as nearly at once as can be.
template <typename Body>
void InThreads(Body&& body)
{
    std::atomic<int> waiting{threadCount};
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            for (int round = 0; round < rounds; ++round)
                body();
        });
    for (std::thread& thread : threads)
        thread.join();
}

constexpr std::size_t room = std::size_t{1} << 15;

template <typename Record>
class SharedRecord : public testing::Test {
};
TYPED_TEST_SUITE(SharedRecord, conversion::Records, );

TYPED_TEST(SharedRecord, IsWrittenByAllThreadsToTheSameBytes)
{
    const TypeParam record = conversion::Full<TypeParam>();
    TestArena first(room);
    const Bytes wire = BytesOf(common::Conversion<TypeParam>::Write(record, first.Get()));
    const Bytes used = first.Used();
    std::atomic<int> others{0};

    InThreads([&] {
        std::vector<std::uint64_t> buffer(room / 8);
        auto* const start = reinterpret_cast<std::uint8_t*>(buffer.data());
        zt_arena arena{start, start, start + room};
        const Bytes again = BytesOf(common::Conversion<TypeParam>::Write(record, &arena));
        if (again != wire || Bytes(start, static_cast<std::size_t>(arena.top - start)) != used) ++others;
    });

    EXPECT_EQ(others, 0);
}

TYPED_TEST(SharedRecord, IsReadByAllThreadsFromOneArena)
{
    TestArena arena(room);
    const auto wire = common::Conversion<TypeParam>::Write(conversion::Full<TypeParam>(), arena.Get());
    const zt_arena* const received = arena.Get();
    const auto expected = common::Conversion<TypeParam>::Read(wire, received);
    std::atomic<int> others{0};

    InThreads([&] {
        if (!(common::Conversion<TypeParam>::Read(wire, received) == expected)) ++others;
    });

    EXPECT_EQ(others, 0);
}

TEST(SharedConstants, AreReadByAllThreads)
{
    std::atomic<int> others{0};
    InThreads([&] {
        if (!ivo::Root.empty() || ivo::ResultOk.first != 0 || !ivo::ResultOk.second.empty()) ++others;
        if (common::meta::IdSpecification.characters.size() != 6) ++others;
        if (std::string_view(ivo::PathMismatch.what()).empty()) ++others;
        if (mur::rtl_result_code_message(0) != "No error") ++others;
        if (common::CastToZt(VynConnectorState::State12) != 13) ++others;
    });
    EXPECT_EQ(others, 0);
}

// What the interface asks of an object that strings of several threads share: atomic counts.
class AtomicAllocator : public mur::allocator_interface {
public:
    void AddReference() override { ++references; }
    void ReleaseReference() override { --references; }
    void* Allocate(std::size_t bytes) override
    {
        ++buffers;
        return std::malloc(bytes);
    }
    void Free(void* memory) override
    {
        --buffers;
        std::free(memory);
    }

    std::atomic<int> references{0};
    std::atomic<int> buffers{0};
};

TEST(SharedException, IsCopiedClonedThrownAndShownByAllThreads)
{
    AtomicAllocator allocator;
    {
        constexpr std::u16string_view message = u"a message that is longer than its inline buffer";
        mur::ResultCodeException error(0, wide_string(message, &allocator));
        error.nested = std::make_unique<mur::InvalidArgumentException>(0, wide_string(message, &allocator));
        const mur::ResultCodeException& shared = error;
        const std::exception_ptr thrown = std::make_exception_ptr(error);
        const std::u16string expected = std::u16string(message) + u": 0x00000000 (No error)";
        std::atomic<int> others{0};

        InThreads([&] {
            const mur::ResultCodeException copy(shared);
            const std::unique_ptr<mur::Exception> clone(shared.Clone());
            if (std::u16string_view(copy.Text()) != expected || std::u16string_view(clone->Text()) != expected)
                ++others;
            try {
                shared.Throw();
            } catch (const mur::Exception& caught) {
                if (std::u16string_view(caught.nested->Text()) != expected) ++others;
            }
            try {
                std::rethrow_exception(thrown); // one object in all threads
            } catch (const mur::Exception& caught) {
                if (std::u16string_view(caught.Text()) != expected) ++others;
            }
        });

        EXPECT_EQ(others, 0);
        EXPECT_EQ(allocator.references, 4);
    }
    EXPECT_EQ(allocator.references, 0);
    EXPECT_EQ(allocator.buffers, 0);
}

} // namespace
