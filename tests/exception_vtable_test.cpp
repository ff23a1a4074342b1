// Callers built by other compilers and in other languages reach exceptions and allocator objects through the slots
// of their virtual tables and the offsets of their fields. This pins both, as the Itanium C++ ABI lays them out on
// 64-bit machines, by calling the slots as such a caller does.
#include "counting_allocator.h"
#include "replaced_new.h"

#include <mur/exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string_view>
#include <typeinfo>

using mur::Exception;
using mur::InvalidArgumentException;
using mur::ResultCodeException;
using mur::types::wide_string;
using testing::ElementsAre;
using namespace std::string_view_literals;

// A function from a slot is called through a plain function pointer, whose type is not the member function's.
#if defined(__clang__)
#define CALLS_SLOTS __attribute__((no_sanitize("function")))
#else
#define CALLS_SLOTS
#endif

namespace {

void* watched = nullptr;
int watchedDeletes = 0;

} // namespace

void* replaced::Allocate(std::size_t bytes)
{
    return FromHeap(bytes);
}

void replaced::Free(void* memory) noexcept
{
    watchedDeletes += memory == watched;
    std::free(memory);
}

namespace {

enum Slot { completeDestructor, deletingDestructor, whatSlot, textSlot, throwSlot, cloneSlot };

const void* const* Slots(const void* object)
{
    const void* const* slots = nullptr;
    std::memcpy(&slots, object, sizeof(slots));
    return slots;
}

template <typename Result, typename... Arguments>
CALLS_SLOTS Result Call(const void* object, int slot, Arguments... arguments)
{
    using Function = Result (*)(const void*, Arguments...);
    Function function = nullptr;
    std::memcpy(&function, Slots(object) + slot, sizeof(function));
    return function(object, arguments...);
}

std::ptrdiff_t Offset(const void* object, const void* field)
{
    return static_cast<const char*>(field) - static_cast<const char*>(object);
}

template <typename Error>
class ExceptionLayout : public testing::Test {
};

using ExceptionClasses = testing::Types<ResultCodeException, InvalidArgumentException>;
// The empty last argument: before C++20 a variadic macro wants one.
TYPED_TEST_SUITE(ExceptionLayout, ExceptionClasses, );

} // namespace

TYPED_TEST(ExceptionLayout, HasTheFieldsAtTheirOffsets)
{
    const TypeParam error;
    EXPECT_EQ(Offset(&error, static_cast<const std::exception*>(&error)), 0);
    EXPECT_EQ(Offset(&error, static_cast<const Exception*>(&error)), 0);
    EXPECT_EQ(Offset(&error, static_cast<const ResultCodeException*>(&error)), 0);
    EXPECT_EQ(Offset(&error, &error.file), 8);
    EXPECT_EQ(Offset(&error, &error.line), 16);
    EXPECT_EQ(Offset(&error, &error.detail), 20);
    EXPECT_EQ(Offset(&error, &error.message), 24);
    EXPECT_EQ(Offset(&error, &error.nested), 72);
    EXPECT_EQ(Offset(&error, &error.resultCode), 80);
    EXPECT_EQ(sizeof(Exception), 80u);
    EXPECT_EQ(sizeof(TypeParam), 88u);
    EXPECT_EQ(sizeof(error.nested), 8u);
}

TYPED_TEST(ExceptionLayout, HasTheCompleteDestructorInTheFirstSlot)
{
    CountingAllocator allocator;
    void* const memory = std::malloc(sizeof(TypeParam));
    new (memory) TypeParam(0, wide_string(u"a message of some length"sv, &allocator));
    watched = memory;
    watchedDeletes = 0;
    Call<void>(memory, completeDestructor);
    EXPECT_EQ(allocator.references, 0);
    EXPECT_TRUE(allocator.buffers.empty());
    EXPECT_EQ(watchedDeletes, 0);
    watched = nullptr;
    std::free(memory);
}

TYPED_TEST(ExceptionLayout, HasTheDeletingDestructorInTheSecondSlot)
{
    CountingAllocator allocator;
    void* const error = new TypeParam(0, wide_string(u"a message of some length"sv, &allocator));
    watched = error;
    watchedDeletes = 0;
    Call<void>(error, deletingDestructor);
    EXPECT_EQ(allocator.references, 0);
    EXPECT_TRUE(allocator.buffers.empty());
    EXPECT_EQ(watchedDeletes, 1);
    watched = nullptr;
}

TYPED_TEST(ExceptionLayout, HasWhatInTheThirdSlot)
{
    const TypeParam error;
    EXPECT_EQ(Call<const char*>(&error, whatSlot), error.what());
}

TYPED_TEST(ExceptionLayout, HasTextInTheFourthSlot)
{
    CountingAllocator allocator;
    TypeParam error(0, wide_string(u"message"sv, &allocator));
    error.resultCode = static_cast<int>(0x80000046);
    const auto result = Call<wide_string>(&error, textSlot);
    EXPECT_TRUE(std::u16string_view(result) == u"message: 0x80000046 (Invalid argument)"sv);
    EXPECT_EQ(result.allocator, &allocator);
}

TYPED_TEST(ExceptionLayout, HasThrowInTheFifthSlot)
{
    TypeParam error;
    error.line = 12;
    try {
        Call<void>(&error, throwSlot);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& thrown) {
        EXPECT_EQ(typeid(thrown), typeid(TypeParam));
        EXPECT_EQ(thrown.line, 12);
    }
}

TYPED_TEST(ExceptionLayout, HasCloneInTheSixthSlot)
{
    TypeParam error;
    error.line = 13;
    const std::unique_ptr<Exception> copy(Call<Exception*>(&error, cloneSlot));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy.get(), &error);
    EXPECT_NE(dynamic_cast<TypeParam*>(copy.get()), nullptr);
    EXPECT_EQ(Slots(copy.get()), Slots(&error));
    EXPECT_EQ(copy->line, 13);
}

TYPED_TEST(ExceptionLayout, HasItsTypeInformationBeforeTheFirstSlot)
{
    const TypeParam error;
    EXPECT_EQ(Slots(&error)[-1], &typeid(TypeParam));
}

TEST(ExceptionLayout, InheritsThrowAndCloneFromTheSameSlotsOfExceptionBase)
{
    const ResultCodeException result;
    const InvalidArgumentException invalid;
    // Each class has its own; the text is the result code's in both.
    EXPECT_NE(Slots(&result)[throwSlot], Slots(&invalid)[throwSlot]);
    EXPECT_NE(Slots(&result)[cloneSlot], Slots(&invalid)[cloneSlot]);
    EXPECT_NE(Slots(&result)[whatSlot], Slots(&invalid)[whatSlot]);
    EXPECT_EQ(Slots(&result)[textSlot], Slots(&invalid)[textSlot]);
}

TEST(AllocatorInterfaceLayout, HasItsFourFunctionsFirstAndInOrder)
{
    CountingAllocator allocator;
    mur::allocator_interface* const object = &allocator;
    Call<void>(object, 0);
    EXPECT_THAT(allocator.calls, ElementsAre("add"));
    void* const memory = Call<void*>(object, 2, std::size_t{10});
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 10"));
    Call<void>(object, 3, memory);
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 10", "free 10"));
    Call<void>(object, 1);
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 10", "free 10", "release"));
}
