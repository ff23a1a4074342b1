#include "counting_allocator.h"
#include "replaced_new.h"

#include <mur/exception.h>
#include <mur/raise.h>
#include <mur/result_code.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

using mur::Exception;
using mur::InvalidArgumentException;
using mur::ResultCodeException;
using mur::types::wide_string;
using testing::ElementsAre;
using namespace std::string_view_literals;

namespace {

std::size_t lastNewBytes = 0;
int newCalls = 0;
int newCallsUntilFailure = -1;

} // namespace

void* replaced::Allocate(std::size_t bytes)
{
    ++newCalls;
    lastNewBytes = bytes;
    if (newCallsUntilFailure == 0) return nullptr;
    void* const memory = FromHeap(bytes);
    if (memory != nullptr && newCallsUntilFailure > 0) --newCallsUntilFailure;
    return memory;
}

void replaced::Free(void* memory) noexcept
{
    std::free(memory);
}

namespace {

using ResultCodeBase = mur::ExceptionBase<ResultCodeException, Exception>;
using InvalidArgumentBase = mur::ExceptionBase<InvalidArgumentException, ResultCodeException>;

static_assert(std::is_base_of_v<std::exception, Exception>);
static_assert(std::is_base_of_v<Exception, ResultCodeBase>);
static_assert(std::is_base_of_v<ResultCodeBase, ResultCodeException>);
static_assert(std::is_base_of_v<ResultCodeException, InvalidArgumentBase>);
static_assert(std::is_base_of_v<InvalidArgumentBase, InvalidArgumentException>);
static_assert(std::is_abstract_v<Exception>);
static_assert(!std::is_abstract_v<ResultCodeException> && !std::is_abstract_v<InvalidArgumentException>);
static_assert(std::has_virtual_destructor_v<Exception>);
static_assert(std::is_same_v<decltype(Exception::file), const char*>);
static_assert(std::is_same_v<decltype(Exception::line), std::int32_t>);
static_assert(std::is_same_v<decltype(Exception::detail), std::int32_t>);
static_assert(std::is_same_v<decltype(Exception::message), wide_string>);
static_assert(std::is_same_v<decltype(Exception::nested), std::unique_ptr<Exception>>);
static_assert(std::is_same_v<decltype(ResultCodeException::resultCode), std::int32_t>);
static_assert(std::is_same_v<decltype(std::declval<const ResultCodeException&>().Clone()), Exception*>);
static_assert(std::is_same_v<decltype(std::declval<const InvalidArgumentException&>().Clone()), Exception*>);
static_assert(std::is_same_v<decltype(std::declval<const Exception&>().Text()), wide_string>);

bool Holds(const wide_string& string, std::u16string_view text)
{
    return std::u16string_view(string) == text && string.data[string.size] == u'\0';
}

const std::type_info& ClassOf(const Exception& error)
{
    return typeid(error);
}

// A nested exception that knows how many of its kind there are.
class Counted : public mur::ExceptionBase<Counted, Exception> {
public:
    Counted() { ++alive; }
    Counted(const Counted& other) : ExceptionBase(other), generation(other.generation + 1)
    {
        if (copyFails) throw std::runtime_error("not copied");
        ++alive;
        ++copies;
    }
    ~Counted() override { --alive; }

    int generation = 0;

    static inline int alive = 0;
    static inline int copies = 0;
    static inline bool copyFails = false;
};

// Fills in all fields of an exception.
template <typename Error>
void Fill(Error& error)
{
    error.file = "some/file";
    error.line = 17;
    error.detail = -3;
    error.resultCode = static_cast<int>(0x80000045);
    error.nested = std::make_unique<Counted>();
}

void ExpectFilled(const ResultCodeException& error, std::u16string_view message)
{
    EXPECT_STREQ(error.file, "some/file");
    EXPECT_EQ(error.line, 17);
    EXPECT_EQ(error.detail, -3);
    EXPECT_EQ(static_cast<std::uint32_t>(error.resultCode), 0x80000045);
    EXPECT_TRUE(Holds(error.message, message));
    ASSERT_NE(error.nested, nullptr);
    EXPECT_EQ(ClassOf(*error.nested), typeid(Counted));
}

template <typename Error>
class EveryException : public testing::Test {
protected:
    void SetUp() override
    {
        Counted::alive = 0;
        Counted::copies = 0;
    }
    void TearDown() override { EXPECT_EQ(Counted::alive, 0); }
};

using ExceptionClasses = testing::Types<ResultCodeException, InvalidArgumentException>;
// The empty last argument: before C++20 a variadic macro wants one.
TYPED_TEST_SUITE(EveryException, ExceptionClasses, );

} // namespace

TYPED_TEST(EveryException, IsZeroOrEmptyInEveryFieldByDefault)
{
    alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
    std::memset(storage, 0xEE, sizeof(storage));
    auto* const error = new (storage) TypeParam();
    EXPECT_EQ(error->file, nullptr);
    EXPECT_EQ(error->line, 0);
    EXPECT_EQ(error->detail, 0);
    EXPECT_TRUE(Holds(error->message, u""));
    EXPECT_EQ(error->message.allocator, nullptr);
    EXPECT_EQ(error->message.data, error->message.inlineBuffer);
    EXPECT_EQ(error->nested, nullptr);
    EXPECT_EQ(error->resultCode, 0);
    error->~TypeParam();
}

TYPED_TEST(EveryException, TakesItsDetailAndACopyOfTheMessage)
{
    CountingAllocator allocator;
    wide_string message(u"a message of some length"sv, &allocator);
    {
        alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
        std::memset(storage, 0xEE, sizeof(storage));
        auto* const error = new (storage) TypeParam(-7, message);
        message.data[0] = u'A';
        EXPECT_EQ(error->detail, -7);
        EXPECT_TRUE(Holds(error->message, u"a message of some length"));
        EXPECT_EQ(error->message.allocator, &allocator);
        EXPECT_EQ(allocator.references, 2);
        EXPECT_EQ(error->file, nullptr);
        EXPECT_EQ(error->line, 0);
        EXPECT_EQ(error->nested, nullptr);
        EXPECT_EQ(error->resultCode, 0);
        error->~TypeParam();
    }
    EXPECT_EQ(allocator.references, 1);
    EXPECT_EQ(allocator.buffers.size(), 1u);
}

TYPED_TEST(EveryException, CopiesEveryFieldAndSharesTheAllocator)
{
    CountingAllocator allocator;
    {
        TypeParam error(0, wide_string(u"a message of some length"sv, &allocator));
        Fill(error);
        auto copy = std::make_unique<TypeParam>(error);
        ExpectFilled(*copy, u"a message of some length");
        EXPECT_EQ(copy->message.allocator, &allocator);
        EXPECT_NE(copy->message.data, error.message.data);
        EXPECT_EQ(allocator.references, 2);
        EXPECT_NE(copy->nested, error.nested);
        EXPECT_EQ(Counted::copies, 1);
        EXPECT_EQ(Counted::alive, 2);

        copy.reset();
        EXPECT_EQ(allocator.references, 1);
        EXPECT_EQ(Counted::alive, 1);
        ExpectFilled(error, u"a message of some length");
    }
    EXPECT_EQ(allocator.references, 0);
    EXPECT_EQ(Counted::alive, 0);
}

TYPED_TEST(EveryException, CopiesTheNestedOfTheNested)
{
    TypeParam error;
    error.nested = std::make_unique<Counted>();
    error.nested->nested = std::make_unique<InvalidArgumentException>();
    error.nested->nested->nested = std::make_unique<Counted>();
    EXPECT_EQ(Counted::alive, 2);

    const TypeParam copy(error);
    EXPECT_EQ(Counted::alive, 4);
    ASSERT_NE(copy.nested, nullptr);
    EXPECT_EQ(dynamic_cast<Counted&>(*copy.nested).generation, 1);
    ASSERT_NE(copy.nested->nested, nullptr);
    EXPECT_EQ(ClassOf(*copy.nested->nested), typeid(InvalidArgumentException));
    ASSERT_NE(copy.nested->nested->nested, nullptr);
    EXPECT_EQ(ClassOf(*copy.nested->nested->nested), typeid(Counted));
    EXPECT_EQ(copy.nested->nested->nested->nested, nullptr);
}

TYPED_TEST(EveryException, ClonesItselfOnTheHeapWithEveryField)
{
    CountingAllocator allocator;
    TypeParam error(0, wide_string(u"a message of some length"sv, &allocator));
    Fill(error);
    const Exception& base = error;
    std::unique_ptr<Exception> clone(base.Clone());

    EXPECT_EQ(ClassOf(*clone), typeid(TypeParam));
    ExpectFilled(dynamic_cast<TypeParam&>(*clone), u"a message of some length");
    EXPECT_EQ(allocator.references, 2);
    EXPECT_EQ(Counted::alive, 2);
    clone.reset();
    EXPECT_EQ(allocator.references, 1);
    EXPECT_EQ(Counted::alive, 1);
}

TYPED_TEST(EveryException, ClonesItselfWithPlainNew)
{
    TypeParam error;
    newCalls = 0;
    const std::unique_ptr<Exception> clone(error.Clone());
    EXPECT_EQ(newCalls, 1);
    EXPECT_EQ(lastNewBytes, sizeof(TypeParam));
}

TYPED_TEST(EveryException, ThrowsACopyOfItsOwnClass)
{
    CountingAllocator allocator;
    TypeParam error(0, wide_string(u"a message of some length"sv, &allocator));
    Fill(error);
    const Exception& base = error;
    try {
        base.Throw();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& thrown) {
        EXPECT_EQ(ClassOf(thrown), typeid(TypeParam));
        EXPECT_NE(&thrown, &base);
        ExpectFilled(dynamic_cast<const TypeParam&>(thrown), u"a message of some length");
        EXPECT_EQ(allocator.references, 2);
        EXPECT_EQ(Counted::alive, 2);
        EXPECT_EQ(Counted::copies, 1);
    }
    EXPECT_EQ(allocator.references, 1);
    EXPECT_EQ(Counted::alive, 1);
}

TYPED_TEST(EveryException, DeletesTheNestedFirstAndTheMessageLast)
{
    CountingAllocator allocator;
    {
        TypeParam error(0, wide_string(u"a message of some length"sv, &allocator));
        error.nested = std::make_unique<ResultCodeException>(0, wide_string(u"another message"sv, &allocator));
        allocator.calls.clear();
    }
    EXPECT_THAT(allocator.calls, ElementsAre("free 32", "release", "free 50", "release"));
}

TYPED_TEST(EveryException, IsDestroyedThroughAnyBase)
{
    CountingAllocator allocator;
    for (int base = 0; base < 3; ++base) {
        auto* const error = new TypeParam(0, wide_string(u"a message of some length"sv, &allocator));
        error->nested = std::make_unique<Counted>();
        if (base == 0) delete static_cast<std::exception*>(error);
        if (base == 1) delete static_cast<Exception*>(error);
        if (base == 2) delete static_cast<ResultCodeException*>(error);
        EXPECT_EQ(allocator.references, 0);
        EXPECT_EQ(Counted::alive, 0);
    }
}

TYPED_TEST(EveryException, StaysAsItWasWithoutMemoryForACopy)
{
    CountingAllocator allocator;
    TypeParam error(0, wide_string(u"a message of some length"sv, &allocator));
    Fill(error);
    allocator.allocationsUntilFailure = 0;
    EXPECT_THROW(TypeParam{error}, std::bad_alloc);
    EXPECT_THROW(delete error.Clone(), std::bad_alloc);
    EXPECT_THROW(error.Throw(), std::bad_alloc);
    EXPECT_THROW(TypeParam(0, error.message), std::bad_alloc);
    ExpectFilled(error, u"a message of some length");
    EXPECT_EQ(allocator.references, 1);
    EXPECT_EQ(allocator.buffers.size(), 1u);
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(Counted::copies, 0);
}

TYPED_TEST(EveryException, GivesItsMessageBackWhenTheNestedThrows)
{
    CountingAllocator allocator;
    TypeParam error(0, wide_string(u"a message of some length"sv, &allocator));
    Fill(error);
    Counted::copyFails = true;
    EXPECT_THROW(TypeParam{error}, std::runtime_error);
    EXPECT_THROW(delete error.Clone(), std::runtime_error);
    EXPECT_THROW(error.Throw(), std::runtime_error);
    Counted::copyFails = false;
    ExpectFilled(error, u"a message of some length");
    EXPECT_EQ(allocator.references, 1);
    EXPECT_EQ(allocator.buffers.size(), 1u);
    EXPECT_EQ(Counted::alive, 1);
}

TYPED_TEST(EveryException, GivesEverythingBackWhenTheCloneFails)
{
    TypeParam error(0, wide_string(u"a message of some length"sv));
    Fill(error);
    // The clone itself, then its nested exception.
    for (const int calls : {0, 1}) {
        bool failed = false;
        newCallsUntilFailure = calls;
        try {
            delete error.Clone();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        newCallsUntilFailure = -1;
        EXPECT_TRUE(failed);
        EXPECT_EQ(Counted::alive, 1);
        EXPECT_EQ(Counted::copies, 0);
    }
    ExpectFilled(error, u"a message of some length");
}

TYPED_TEST(EveryException, RefusesAMessageThatIsTooLong)
{
    wide_string message(u"abc"sv);
    message.size = 0x7FFFFFFFFFFFFFFF;
    try {
        TypeParam error(0, message);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "mur::basic_string_t::reserve_extra()");
    }
    message.size = 3;
}

TEST(ResultCodeException, NamesItsClass)
{
    EXPECT_STREQ(ResultCodeException().what(), "ResultCodeException");
}

TEST(InvalidArgumentException, NamesItsClass)
{
    EXPECT_STREQ(InvalidArgumentException().what(), "InvalidArgumentException");
}

TEST(ExceptionBase, LeavesTheNameToItsBase)
{
    const InvalidArgumentException invalid;
    EXPECT_STREQ(invalid.InvalidArgumentBase::what(), "ResultCodeException");
    const ResultCodeException result;
    EXPECT_STREQ(result.ResultCodeBase::what(), std::exception().what());
    EXPECT_STREQ(result.Exception::what(), std::exception().what());
}

TEST(ExceptionBase, GivesACallersOwnClassThrowAndClone)
{
    Counted::alive = 0;
    {
        const Counted error;
        const Exception& base = error;
        EXPECT_THROW(base.Throw(), Counted);
        const std::unique_ptr<Exception> clone(base.Clone());
        EXPECT_EQ(ClassOf(*clone), typeid(Counted));
        EXPECT_STREQ(base.what(), std::exception().what());
    }
    EXPECT_EQ(Counted::alive, 0);
}

namespace {

template <typename Base, typename Raise>
bool IsCaughtAs(Raise raise)
{
    try {
        raise();
    } catch (const Base&) {
        return true;
    } catch (...) {
    }
    return false;
}

} // namespace

TEST(Raise, AnInvalidArgumentRecordsFileAndLineAndNothingElse)
{
    static const char file[] = "a/file";
    try {
        mur::raise_invalid_argument(file, 21);
    } catch (const Exception& error) {
        EXPECT_EQ(ClassOf(error), typeid(InvalidArgumentException));
        EXPECT_STREQ(error.what(), "InvalidArgumentException");
        EXPECT_EQ(error.file, file);
        EXPECT_EQ(error.line, 21);
        EXPECT_EQ(error.detail, 0);
        EXPECT_EQ(error.message.size, 0u);
        EXPECT_EQ(error.message.allocator, nullptr);
        EXPECT_EQ(error.nested, nullptr);
        EXPECT_EQ(dynamic_cast<const ResultCodeException&>(error).resultCode, 0);
        EXPECT_TRUE(Holds(error.Text(), u"0x00000000 (No error)"));
    }
}

TEST(Raise, AnInvalidArgumentIsCaughtByEveryBase)
{
    const auto raise = [] { mur::raise_invalid_argument("f", 1); };
    EXPECT_TRUE(IsCaughtAs<InvalidArgumentException>(raise));
    EXPECT_TRUE(IsCaughtAs<InvalidArgumentBase>(raise));
    EXPECT_TRUE(IsCaughtAs<ResultCodeException>(raise));
    EXPECT_TRUE(IsCaughtAs<ResultCodeBase>(raise));
    EXPECT_TRUE(IsCaughtAs<Exception>(raise));
    EXPECT_TRUE(IsCaughtAs<std::exception>(raise));
    EXPECT_FALSE(IsCaughtAs<std::logic_error>(raise));
}

TEST(Raise, AResultCodeIsRecordedWithoutFileAndLine)
{
    try {
        mur::raise_result_code(mur::resultOutOfSpace);
    } catch (const Exception& error) {
        EXPECT_EQ(ClassOf(error), typeid(ResultCodeException));
        EXPECT_STREQ(error.what(), "ResultCodeException");
        EXPECT_EQ(error.file, nullptr);
        EXPECT_EQ(error.line, 0);
        EXPECT_EQ(error.detail, 0);
        EXPECT_EQ(error.message.size, 0u);
        EXPECT_EQ(error.nested, nullptr);
        EXPECT_EQ(static_cast<std::uint32_t>(dynamic_cast<const ResultCodeException&>(error).resultCode), 0x80000062);
        EXPECT_TRUE(Holds(error.Text(), u"0x80000062 (Out of space)"));
    }
}

TEST(Raise, AResultCodeIsCaughtByEveryBaseAndIsNoInvalidArgument)
{
    const auto raise = [] { mur::raise_result_code(mur::resultInvalidArgument); };
    EXPECT_TRUE(IsCaughtAs<ResultCodeException>(raise));
    EXPECT_TRUE(IsCaughtAs<ResultCodeBase>(raise));
    EXPECT_TRUE(IsCaughtAs<Exception>(raise));
    EXPECT_TRUE(IsCaughtAs<std::exception>(raise));
    EXPECT_FALSE(IsCaughtAs<InvalidArgumentException>(raise));
}

TEST(Raise, ACloneOfAnInvalidArgumentIsOneWithTheSameFileLineAndCode)
{
    try {
        mur::raise_invalid_argument("a/file", 40);
    } catch (const ResultCodeException& error) {
        const std::unique_ptr<Exception> clone(error.Clone());
        ASSERT_EQ(ClassOf(*clone), typeid(InvalidArgumentException));
        EXPECT_EQ(clone->file, error.file);
        EXPECT_EQ(clone->line, 40);
        EXPECT_EQ(dynamic_cast<const InvalidArgumentException&>(*clone).resultCode, 0);
    }
}
