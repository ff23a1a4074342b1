// Chains of nested exceptions: of any length when they are destroyed, in the order that short ones keep; of a stated
// length when they are copied, for each level of a copy is made inside the one before.
#include "counting_allocator.h"

#include <mur/exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <pthread.h>
#include <string>

using mur::Exception;
using mur::InvalidArgumentException;
using mur::ResultCodeException;
using mur::types::wide_string;
using testing::ElementsAre;

namespace {

std::unique_ptr<Exception> Chain(int length)
{
    std::unique_ptr<Exception> chain;
    for (int level = length; level > 0; --level) {
        auto outer = std::make_unique<ResultCodeException>();
        outer->resultCode = level;
        outer->nested = std::move(chain);
        chain = std::move(outer);
    }
    return chain;
}

// Calls `body` on a stack of `bytes`.
template <typename Body>
void OnAStackOf(std::size_t bytes, Body&& body)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
    pthread_t thread{};
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::remove_reference_t<Body>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &body), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

// Puts its number into a list when it is destroyed.
class Numbered : public mur::ExceptionBase<Numbered, Exception> {
public:
    Numbered(int numberInChain, std::vector<int>& listOfDestroyed) : number(numberInChain), destroyed(&listOfDestroyed)
    {
    }
    Numbered(const Numbered&) = default;
    ~Numbered() override { destroyed->push_back(number); }

private:
    int number;
    std::vector<int>* destroyed;
};

TEST(ExceptionChain, OfAMillionIsDestroyed)
{
    std::unique_ptr<Exception> chain = Chain(1000000);
    chain = nullptr;

    ResultCodeException outermost;
    outermost.nested = Chain(1000000);
}

TEST(ExceptionChain, DeletesEachOfItsExceptionsOnce)
{
    std::vector<int> destroyed;
    {
        Numbered outermost(1, destroyed);
        outermost.nested = std::make_unique<Numbered>(2, destroyed);
        outermost.nested->nested = std::make_unique<Numbered>(3, destroyed);
        outermost.nested->nested->nested = std::make_unique<Numbered>(4, destroyed);
    }
    EXPECT_THAT(destroyed, ElementsAre(1, 4, 3, 2));
}

TEST(ExceptionChain, DeletesWhatIsNestedBeforeItFreesTheMessageAroundIt)
{
    CountingAllocator allocator;
    const auto text = [&](std::size_t length) { return wide_string(std::u16string(length, u'x'), &allocator); };
    {
        ResultCodeException outermost(0, text(20));
        outermost.nested = std::make_unique<InvalidArgumentException>(0, text(30));
        outermost.nested->nested = std::make_unique<ResultCodeException>(0, text(40));
        allocator.calls.clear();
    }
    EXPECT_THAT(allocator.calls, ElementsAre("free 82", "release", "free 62", "release", "free 42", "release"));
}

TEST(ExceptionChain, OfAThousandIsCopiedOnAStackOfAMebibyte)
{
    const std::unique_ptr<Exception> chain = Chain(1000);
    OnAStackOf(std::size_t{1} << 20, [&] {
        const std::unique_ptr<Exception> copy(chain->Clone());
        int level = 0;
        for (const Exception* error = copy.get(); error != nullptr; error = error->nested.get())
            EXPECT_EQ(dynamic_cast<const ResultCodeException&>(*error).resultCode, ++level);
        EXPECT_EQ(level, 1000);
    });
}

} // namespace
