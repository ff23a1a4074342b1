#include "counting_allocator.h"
#include "replaced_new.h"

#include <mur/basic_string.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

using mur::abi_v1_allocator;
using mur::types::wide_string;
using testing::ElementsAre;
using testing::IsEmpty;
using Keep = mur::types::auto_delete<char16_t, abi_v1_allocator>;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

int newCalls = 0;

} // namespace

void* replaced::Allocate(std::size_t bytes)
{
    ++newCalls;
    return FromHeap(bytes);
}

void replaced::Free(void* memory) noexcept
{
    std::free(memory);
}

// Without an allocator object the longest string asks malloc for more than there is; sanitizers are to answer
// null as the C library does.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

constexpr std::size_t longest = 0x7FFFFFFFFFFFFFFE;
constexpr const char* lengthMessage = "mur::basic_string_t::reserve_extra()";

static_assert(std::is_same_v<wide_string,
                             mur::types::basic_string_t<char16_t, mur::char_traits<char16_t>, mur::abi_v1_allocator>>);
static_assert(!std::is_copy_assignable_v<wide_string>);
static_assert(!std::is_move_assignable_v<wide_string>);
static_assert(std::is_copy_constructible_v<wide_string>);
static_assert(std::is_nothrow_default_constructible_v<wide_string>);
static_assert(std::is_nothrow_constructible_v<wide_string, mur::allocator_interface*>);
static_assert(noexcept(static_cast<std::u16string_view>(std::declval<const wide_string&>())));
static_assert(noexcept(std::declval<Keep&>().reset(nullptr, nullptr, 0)));
static_assert(noexcept(abi_v1_allocator::AddReference(nullptr)) && noexcept(abi_v1_allocator::Allocate(nullptr, 0)));
static_assert(noexcept(abi_v1_allocator::ReleaseReference(nullptr)) && noexcept(abi_v1_allocator::Free({}, {})));
static_assert(!std::is_convertible_v<mur::allocator_interface*, wide_string>);
static_assert(std::is_convertible_v<wide_string, std::u16string_view>);
static_assert(!std::is_copy_constructible_v<Keep> && !std::is_copy_assignable_v<Keep>);

template <typename Action>
void ExpectLengthError(Action action)
{
    try {
        action();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), lengthMessage);
    }
}

std::u16string Letters(std::size_t count)
{
    std::u16string letters;
    for (std::size_t i = 0; i < count; ++i)
        letters += static_cast<char16_t>(u'a' + i % 26);
    return letters;
}

void ExpectHolds(const wide_string& string, std::u16string_view expected)
{
    ASSERT_EQ(string.size, expected.size());
    EXPECT_TRUE(std::u16string_view(string.data, string.size) == expected);
    EXPECT_EQ(string.data[string.size], u'\0');
    EXPECT_LE(string.size, string.capacity);
}

// A string's fields and characters, to be compared after an operation that must have left them alone.
struct Snapshot {
    explicit Snapshot(const wide_string& string)
        : data(string.data), capacity(string.capacity), text(string.data, string.size + 1)
    {
    }

    void ExpectUnchanged(const wide_string& string) const
    {
        EXPECT_EQ(string.data, data);
        EXPECT_EQ(string.capacity, capacity);
        ASSERT_EQ(string.size + 1, text.size());
        EXPECT_TRUE(std::u16string(string.data, string.size + 1) == text);
    }

    char16_t* data;
    std::size_t capacity;
    std::u16string text;
};

} // namespace

TEST(MessageString, HasItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(wide_string, data), 0u);
    EXPECT_EQ(offsetof(wide_string, size), 8u);
    EXPECT_EQ(offsetof(wide_string, capacity), 16u);
    EXPECT_EQ(offsetof(wide_string, allocator), 24u);
    EXPECT_EQ(offsetof(wide_string, inlineBuffer), 32u);
    EXPECT_EQ(sizeof(wide_string), 48u);
    EXPECT_EQ(sizeof(wide_string::inlineBuffer), 16u);
}

TEST(MessageString, IsEmptyInAZeroedInlineBufferByDefault)
{
    alignas(wide_string) unsigned char storage[sizeof(wide_string)];
    std::memset(storage, 0xEE, sizeof(storage));
    auto* const string = new (storage) wide_string();

    EXPECT_EQ(string->data, string->inlineBuffer);
    EXPECT_EQ(string->size, 0u);
    EXPECT_EQ(string->capacity, 7u);
    EXPECT_EQ(string->allocator, nullptr);
    for (const char16_t c : string->inlineBuffer)
        EXPECT_EQ(c, u'\0');

    string->~wide_string();
}

TEST(MessageString, TakesAReferenceOfItsOwnToTheAllocatorObject)
{
    CountingAllocator allocator;
    {
        alignas(wide_string) unsigned char storage[sizeof(wide_string)];
        std::memset(storage, 0xEE, sizeof(storage));
        auto* const string = new (storage) wide_string(&allocator);
        EXPECT_EQ(string->allocator, &allocator);
        EXPECT_EQ(string->data, string->inlineBuffer);
        EXPECT_EQ(string->size, 0u);
        EXPECT_EQ(string->capacity, 7u);
        for (const char16_t c : string->inlineBuffer)
            EXPECT_EQ(c, u'\0');
        EXPECT_THAT(allocator.calls, ElementsAre("add"));
        string->~wide_string();
    }
    EXPECT_THAT(allocator.calls, ElementsAre("add", "release"));
}

TEST(MessageString, UsesMallocAndFreeWithoutAnAllocatorObject)
{
    const std::u16string text = Letters(20);
    const int newCallsBefore = newCalls;
    wide_string string(static_cast<mur::allocator_interface*>(nullptr));
    EXPECT_EQ(string.allocator, nullptr);
    string.append(text.data(), text.size());
    wide_string copy(string);
    copy.append(text.data(), text.size());
    EXPECT_EQ(newCalls, newCallsBefore);
    ExpectHolds(string, text);
    ExpectHolds(copy, text + text);

    // What it gives up, free takes; what malloc gave, it frees.
    std::free(string.data);
    string.data = static_cast<char16_t*>(std::malloc((string.capacity + 1) * sizeof(char16_t)));
}

TEST(MessageString, GivesBackWhatItTookFromMalloc)
{
    const auto inUse = [] {
        const auto info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::u16string text = Letters(1000);
    const std::size_t before = inUse();
    {
        const wide_string string(text);
    }
    EXPECT_EQ(inUse(), before);
}

TEST(MessageString, BuiltFromAViewKeepsUpToSevenCharactersInline)
{
    for (std::size_t length = 0; length <= 7; ++length) {
        CountingAllocator allocator;
        const wide_string string(Letters(length), &allocator);
        ExpectHolds(string, Letters(length));
        EXPECT_EQ(string.data, string.inlineBuffer);
        EXPECT_EQ(string.capacity, 7u);
        for (std::size_t i = length; i < 8; ++i)
            EXPECT_EQ(string.inlineBuffer[i], u'\0');
        EXPECT_THAT(allocator.calls, ElementsAre("add"));
    }
}

TEST(MessageString, BuiltFromALongerViewGetsABufferOfAtLeast14Characters)
{
    for (std::size_t length = 8; length <= 40; ++length) {
        const std::size_t capacity = length < 14 ? 14 : length;
        CountingAllocator allocator;
        const wide_string string(Letters(length), &allocator);
        ExpectHolds(string, Letters(length));
        EXPECT_NE(string.data, string.inlineBuffer);
        EXPECT_EQ(string.capacity, capacity);
        EXPECT_EQ(string.allocator, &allocator);
        EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate " + std::to_string(2 * (capacity + 1))));
    }
}

TEST(MessageString, BuiltFromAViewNeedsNoAllocatorObject)
{
    const wide_string string(u"built from a view"sv);
    ExpectHolds(string, u"built from a view");
    EXPECT_EQ(string.allocator, nullptr);
    EXPECT_EQ(string.capacity, 17u);
}

TEST(MessageString, CopiesUpToSevenCharactersInline)
{
    for (std::size_t length = 0; length <= 7; ++length) {
        CountingAllocator allocator;
        wide_string string(&allocator);
        string.reserve_extra(nullptr, 100);
        string.append(Letters(length).data(), length);
        allocator.calls.clear();

        const wide_string copy(string);
        ExpectHolds(copy, Letters(length));
        EXPECT_EQ(copy.data, copy.inlineBuffer);
        EXPECT_EQ(copy.capacity, 7u);
        for (std::size_t i = length; i < 8; ++i)
            EXPECT_EQ(copy.inlineBuffer[i], u'\0');
        EXPECT_EQ(copy.allocator, &allocator);
        EXPECT_THAT(allocator.calls, ElementsAre("add"));
    }
}

TEST(MessageString, CopiesALongerTextIntoABufferOfAtLeast14Characters)
{
    for (std::size_t length = 8; length <= 40; ++length) {
        const std::size_t capacity = length < 14 ? 14 : length;
        CountingAllocator allocator;
        wide_string string(&allocator);
        string.reserve_extra(nullptr, 100);
        string.append(Letters(length).data(), length);
        allocator.calls.clear();

        const wide_string copy(string);
        ExpectHolds(copy, Letters(length));
        EXPECT_NE(copy.data, copy.inlineBuffer);
        EXPECT_NE(copy.data, string.data);
        EXPECT_EQ(copy.capacity, capacity);
        EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate " + std::to_string(2 * (capacity + 1))));
    }
}

TEST(MessageString, HasTheSameCapacityFromAViewAsFromACopy)
{
    for (std::size_t length = 0; length <= 100; ++length) {
        const wide_string fromView(Letters(length));
        EXPECT_EQ(wide_string(fromView).capacity, fromView.capacity);
    }
}

TEST(MessageString, CopiesZeroCharactersInsideTheTextToo)
{
    const std::u16string text = u"before\0after\0"s;
    const wide_string string{std::u16string_view(text)};
    ExpectHolds(string, text);
    ExpectHolds(wide_string(string), text);
}

TEST(MessageString, IsIndependentOfItsCopy)
{
    wide_string string(u"original"sv);
    wide_string copy(string);
    copy.append(u"!", 1);
    string.data[0] = u'O';
    ExpectHolds(string, u"Original");
    ExpectHolds(copy, u"original!");
}

TEST(MessageString, FreesItsBufferBeforeItReleasesTheAllocatorObject)
{
    CountingAllocator allocator;
    {
        const wide_string string(Letters(8), &allocator);
    }
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 30", "free 30", "release"));
}

TEST(MessageString, GivesTheReferenceBackWhenThereIsNoMemoryForTheCopy)
{
    CountingAllocator allocator;
    const wide_string string(Letters(8), &allocator);
    const Snapshot before(string);
    allocator.calls.clear();
    allocator.allocationsUntilFailure = 0;

    EXPECT_THROW(wide_string{string}, std::bad_alloc);
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 30", "release"));
    EXPECT_EQ(allocator.references, 1);
    before.ExpectUnchanged(string);

    EXPECT_THROW(wide_string(u"12345678"sv, &allocator), std::bad_alloc);
    EXPECT_EQ(allocator.references, 1);
}

TEST(MessageString, CopiesNoMoreThanTheLongestText)
{
    CountingAllocator allocator;
    wide_string string(u"abc"sv, &allocator);
    allocator.calls.clear();
    allocator.allocationsUntilFailure = 0;

    string.size = longest;
    EXPECT_THROW(wide_string{string}, std::bad_alloc);
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate " + std::to_string(0xFFFFFFFFFFFFFFFE), "release"));

    for (const std::size_t tooLong : {longest + 1, longest + 2, SIZE_MAX}) {
        allocator.calls.clear();
        string.size = tooLong;
        ExpectLengthError([&] { wide_string copy(string); });
        EXPECT_THAT(allocator.calls, ElementsAre("add", "release"));
    }
    string.size = 3;
}

TEST(MessageString, TakesNoViewLongerThanTheLongestText)
{
    CountingAllocator allocator;
    allocator.allocationsUntilFailure = 0;
    volatile std::size_t length = longest;
    EXPECT_THROW(wide_string(std::u16string_view(u"abc", length), &allocator), std::bad_alloc);
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate " + std::to_string(0xFFFFFFFFFFFFFFFE), "release"));
    EXPECT_THROW(wide_string(std::u16string_view(u"abc", length)), std::bad_alloc);

    allocator.calls.clear();
    length = longest + 1;
    ExpectLengthError([&] { wide_string string(std::u16string_view(u"abc", length), &allocator); });
    EXPECT_THAT(allocator.calls, ElementsAre("add", "release"));
    ExpectLengthError([&] { wide_string string(std::u16string_view(u"abc", length)); });
}

TEST(MessageString, ConvertsToAViewOfItsCharacters)
{
    const wide_string string(u"a\0b"sv);
    const std::u16string_view view = string;
    EXPECT_EQ(view.data(), string.data);
    EXPECT_EQ(view.size(), 3u);
}

TEST(MessageString, GrowsToFourteenWhenTheEighthCharacterIsAppended)
{
    wide_string string;
    for (std::size_t i = 0; i < 7; ++i) {
        string.append(Letters(8).data() + i, 1);
        EXPECT_EQ(string.capacity, 7u);
        EXPECT_EQ(string.data, string.inlineBuffer);
        ExpectHolds(string, Letters(i + 1));
    }
    string.append(u"h", 1);
    EXPECT_EQ(string.capacity, 14u);
    EXPECT_NE(string.data, string.inlineBuffer);
    ExpectHolds(string, u"abcdefgh");
}

TEST(MessageString, DoublesEachTimeASingleCharacterNoLongerFits)
{
    wide_string string;
    for (std::size_t length = 1; length <= 200; ++length) {
        string.append(Letters(length).data() + (length - 1), 1);
        const std::size_t capacity = length <= 7     ? 7
                                     : length <= 14  ? 14
                                     : length <= 28  ? 28
                                     : length <= 56  ? 56
                                     : length <= 112 ? 112
                                                     : 224;
        ASSERT_EQ(string.capacity, capacity);
    }
    ExpectHolds(string, Letters(200));
}

TEST(MessageString, GrowsToWhatIsNeededWhenDoublingIsNotEnough)
{
    wide_string string(u"abcdefg"sv);
    string.append(Letters(7).data(), 7);
    EXPECT_EQ(string.capacity, 14u);

    wide_string other(u"abcdefg"sv);
    other.append(Letters(8).data(), 8);
    EXPECT_EQ(other.capacity, 15u);
    ExpectHolds(other, u"abcdefgabcdefgh");
}

TEST(MessageString, AppendsNothing)
{
    wide_string string(u"abc"sv);
    string.append(nullptr, 0);
    string.append(u"xyz", 0);
    string.append(std::size_t{0}, u'x');
    ExpectHolds(string, u"abc");
}

TEST(MessageString, AppendsExactlyWhatIsLeftWithoutGrowing)
{
    CountingAllocator allocator;
    wide_string string(u"abc"sv, &allocator);
    string.append(u"defgZZZ", 4);
    ExpectHolds(string, u"abcdefg");
    EXPECT_THAT(allocator.calls, ElementsAre("add"));
    string.append(u"hi", 1);
    ExpectHolds(string, u"abcdefgh");
    string.append(u"ijklmnZZ", 6);
    ExpectHolds(string, u"abcdefghijklmn");
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 30"));
}

TEST(MessageString, AppendsACharacterManyTimesWithOneAllocation)
{
    CountingAllocator allocator;
    wide_string string(u"ab"sv, &allocator);
    string.append(std::size_t{5}, u'x');
    ExpectHolds(string, u"abxxxxx");
    EXPECT_EQ(string.data, string.inlineBuffer);
    string.append(std::size_t{1}, u'\xFFFF');
    ExpectHolds(string, u"abxxxxx\xFFFF");
    allocator.calls.clear();
    string.append(std::size_t{100000}, u'y');
    ExpectHolds(string, u"abxxxxx\xFFFF" + std::u16string(100000, u'y'));
    EXPECT_THAT(allocator.calls, ElementsAre("allocate 200018", "free 30"));
}

TEST(MessageString, ReturnsItselfFromAppending)
{
    wide_string string;
    EXPECT_EQ(&string.append(u"a", 1), &string);
    EXPECT_EQ(&string.append(std::size_t{1}, u'a'), &string);
}

TEST(MessageString, AppendsAnyPartOfItselfFromEitherBufferAndAcrossGrowth)
{
    for (std::size_t length = 0; length <= 16; ++length) {
        for (std::size_t first = 0; first <= length; ++first) {
            for (std::size_t count = 0; first + count <= length; ++count) {
                const std::u16string text = Letters(length);
                CountingAllocator allocator;
                wide_string string(text, &allocator);
                string.append(string.data + first, count);
                ExpectHolds(string, text + text.substr(first, count));
            }
        }
    }
}

TEST(MessageString, AppendsItselfWithoutGrowingAHeapBuffer)
{
    wide_string string(u"abcdefgh"sv);
    const char16_t* const data = string.data;
    string.append(string.data + 2, 6);
    EXPECT_EQ(string.data, data);
    ExpectHolds(string, u"abcdefghcdefgh");
}

TEST(MessageString, FreesTheOldBufferAfterAppendingItself)
{
    CountingAllocator allocator;
    wide_string string(Letters(14), &allocator);
    allocator.calls.clear();
    string.append(string.data, string.size);
    ExpectHolds(string, Letters(14) + Letters(14));
    EXPECT_THAT(allocator.calls, ElementsAre("allocate 58", "free 30"));
}

TEST(MessageString, StaysAsItWasWhenThereIsNoMemoryToAppend)
{
    for (const std::size_t length : {0u, 3u, 7u, 14u, 20u}) {
        CountingAllocator allocator;
        wide_string string(Letters(length), &allocator);
        const Snapshot before(string);
        allocator.allocationsUntilFailure = 0;

        EXPECT_THROW(string.append(Letters(15).data(), 15), std::bad_alloc);
        before.ExpectUnchanged(string);
        EXPECT_THROW(string.append(std::size_t{15}, u'x'), std::bad_alloc);
        before.ExpectUnchanged(string);
        EXPECT_THROW(string.reserve_extra(nullptr, 15), std::bad_alloc);
        before.ExpectUnchanged(string);
        Keep keep;
        EXPECT_THROW(string.reserve_extra(&keep, 15), std::bad_alloc);
        before.ExpectUnchanged(string);
        EXPECT_EQ(keep.pointer, nullptr);
        EXPECT_EQ(allocator.references, 1);
    }
}

TEST(MessageString, StaysAsItWasWhenItWouldBecomeTooLong)
{
    for (const std::size_t length : {0u, 5u, 7u, 14u}) {
        CountingAllocator allocator;
        wide_string string(Letters(length), &allocator);
        const Snapshot before(string);
        allocator.calls.clear();
        allocator.allocationsUntilFailure = 0;

        // The longest string is still asked for,
        EXPECT_THROW(string.reserve_extra(nullptr, longest - length), std::bad_alloc);
        EXPECT_THAT(allocator.calls, ElementsAre("allocate " + std::to_string(0xFFFFFFFFFFFFFFFE)));
        EXPECT_THROW(string.append(longest - length, u'x'), std::bad_alloc);
        EXPECT_THROW(string.append(u"x", longest - length), std::bad_alloc);
        before.ExpectUnchanged(string);

        // one character more is not, nor is any greater number.
        allocator.calls.clear();
        for (const std::size_t tooMany : {longest + 1 - length, longest + 1, longest + 2, SIZE_MAX}) {
            ExpectLengthError([&] { string.reserve_extra(nullptr, tooMany); });
            ExpectLengthError([&] { string.append(tooMany, u'x'); });
            ExpectLengthError([&] { string.append(u"x", tooMany); });
        }
        EXPECT_THAT(allocator.calls, IsEmpty());
        before.ExpectUnchanged(string);
    }
}

TEST(MessageString, DoublesNoFurtherThanTheLongestText)
{
    CountingAllocator allocator;
    wide_string string(u"abc"sv, &allocator);
    allocator.calls.clear();
    allocator.allocationsUntilFailure = 0;

    // No memory holds such strings, so they are only pretended.
    string.size = string.capacity = 0x3FFFFFFFFFFFFFFE;
    EXPECT_THROW(string.reserve_extra(nullptr, 1), std::bad_alloc);
    string.size = string.capacity = 0x3FFFFFFFFFFFFFFF;
    EXPECT_THROW(string.reserve_extra(nullptr, 1), std::bad_alloc);
    string.size = string.capacity = 0x4000000000000000;
    EXPECT_THROW(string.reserve_extra(nullptr, 1), std::bad_alloc);
    string.size = string.capacity = longest - 1;
    EXPECT_THROW(string.reserve_extra(nullptr, 1), std::bad_alloc);
    EXPECT_THAT(allocator.calls, ElementsAre("allocate " + std::to_string(0xFFFFFFFFFFFFFFFA),
                                             "allocate " + std::to_string(0xFFFFFFFFFFFFFFFE),
                                             "allocate " + std::to_string(0xFFFFFFFFFFFFFFFE),
                                             "allocate " + std::to_string(0xFFFFFFFFFFFFFFFE)));
    string.size = string.capacity = longest;
    ExpectLengthError([&] { string.reserve_extra(nullptr, 1); });

    string.size = 3;
    string.capacity = 7;
}

TEST(MessageString, ReservesNothingWhenThereIsRoom)
{
    CountingAllocator allocator;
    wide_string string(u"abc"sv, &allocator);
    const Snapshot before(string);
    Keep keep;
    string.reserve_extra(&keep, 0);
    string.reserve_extra(&keep, 4);
    string.reserve_extra(nullptr, 4);
    before.ExpectUnchanged(string);
    EXPECT_EQ(keep.pointer, nullptr);
    EXPECT_THAT(allocator.calls, ElementsAre("add"));

    string.reserve_extra(nullptr, 5);
    EXPECT_EQ(string.capacity, 14u);
    EXPECT_EQ(string.size, 3u);
    string.append(u"", 0);
    ExpectHolds(string, u"abc");
}

TEST(MessageString, LeavesTheTerminatorOfAReservedBufferToTheCaller)
{
    CountingAllocator allocator;
    wide_string string(u"abc"sv, &allocator);
    string.reserve_extra(nullptr, 100);
    EXPECT_EQ(string.capacity, 103u);
    EXPECT_EQ(string.size, 3u);
    EXPECT_TRUE(std::u16string_view(string.data, 3) == u"abc"sv);
    EXPECT_EQ(string.data[3], u'\xCDCD');
    string.append(u"def", 3);
    ExpectHolds(string, u"abcdef");
}

TEST(MessageString, HandsTheOldHeapBufferToTheKeeper)
{
    CountingAllocator allocator;
    wide_string string(Letters(20), &allocator);
    char16_t* const old = string.data;
    allocator.calls.clear();
    {
        Keep keep;
        string.reserve_extra(&keep, 1);
        EXPECT_EQ(string.capacity, 40u);
        EXPECT_NE(string.data, old);
        EXPECT_EQ(keep.pointer, old);
        EXPECT_EQ(keep.allocator, &allocator);
        EXPECT_EQ(keep.count, 21u);
        EXPECT_TRUE(std::u16string(old, 21) == Letters(20) + u'\0');
        EXPECT_THAT(allocator.calls, ElementsAre("allocate 82"));
        EXPECT_EQ(allocator.references, 1);
    }
    EXPECT_THAT(allocator.calls, ElementsAre("allocate 82", "free 42"));
    string.append(u"!", 1);
    ExpectHolds(string, Letters(20) + u'!');
}

TEST(MessageString, FreesWhatTheKeeperHoldsBeforeItHandsOverTheNextBuffer)
{
    CountingAllocator allocator;
    wide_string string(Letters(8), &allocator);
    Keep keep;
    string.reserve_extra(&keep, 7);
    char16_t* const second = string.data;
    allocator.calls.clear();

    string.reserve_extra(&keep, 40);
    EXPECT_THAT(allocator.calls, ElementsAre("allocate 114", "free 30"));
    EXPECT_EQ(keep.pointer, second);
    EXPECT_EQ(keep.count, 29u);
    EXPECT_TRUE(std::u16string_view(keep.pointer, 8) == Letters(8));
    string.data[string.size] = u'\0';
}

TEST(MessageString, LeavesTheKeeperAloneWhenItGrowsOutOfTheInlineBuffer)
{
    CountingAllocator allocator;
    wide_string other(Letters(8), &allocator);
    Keep keep;
    other.reserve_extra(&keep, 7);
    char16_t* const held = keep.pointer;
    allocator.calls.clear();

    wide_string string(u"abcdefg"sv, &allocator);
    string.reserve_extra(&keep, 1);
    EXPECT_EQ(keep.pointer, held);
    EXPECT_EQ(keep.count, 15u);
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 30"));
    EXPECT_TRUE(std::u16string_view(string.inlineBuffer, 8) == u"abcdefg\0"sv);
}

TEST(MessageString, LeavesTheKeeperAloneWhenThereIsNoMemory)
{
    CountingAllocator allocator;
    wide_string string(Letters(8), &allocator);
    Keep keep;
    string.reserve_extra(&keep, 7);
    char16_t* const held = keep.pointer;
    allocator.allocationsUntilFailure = 0;
    EXPECT_THROW(string.reserve_extra(&keep, 1000), std::bad_alloc);
    EXPECT_EQ(keep.pointer, held);
    EXPECT_EQ(keep.count, 15u);
}

TEST(MessageString, FreesTheOldHeapBufferAtOnceWithoutAKeeper)
{
    CountingAllocator allocator;
    wide_string string(Letters(8), &allocator);
    allocator.calls.clear();
    string.reserve_extra(nullptr, 7);
    EXPECT_THAT(allocator.calls, ElementsAre("allocate 58", "free 30"));
}

TEST(MessageString, AKeeperHoldsNothingAtFirst)
{
    const Keep keep;
    EXPECT_EQ(keep.pointer, nullptr);
    EXPECT_EQ(keep.allocator, nullptr);
    EXPECT_EQ(keep.count, 0u);
}

TEST(MessageString, KeepsABufferFromMallocForTheKeeperToFree)
{
    wide_string string(Letters(8));
    Keep keep;
    string.reserve_extra(&keep, 7);
    EXPECT_EQ(keep.allocator, nullptr);
    EXPECT_TRUE(std::u16string_view(keep.pointer, 8) == Letters(8));
}

TEST(MessageString, DoesNotFreeABufferOfCapacityZero)
{
    char16_t borrowed[1] = {u'\0'};
    CountingAllocator allocator;
    {
        wide_string string(&allocator);
        string.data = borrowed;
        string.capacity = 0;
    }
    EXPECT_THAT(allocator.calls, ElementsAre("add", "release"));
    allocator.calls.clear();
    {
        wide_string string(&allocator);
        string.data = borrowed;
        string.capacity = 0;
        Keep keep;
        string.reserve_extra(&keep, 3);
        EXPECT_EQ(string.capacity, 3u);
        EXPECT_EQ(keep.pointer, nullptr);
        string.append(u"abc", 3);
        ExpectHolds(string, u"abc");
    }
    EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 8", "free 8", "release"));
}

namespace {

// Lets an exception out of one of its operations.
class ThrowingAllocator : public CountingAllocator {
public:
    explicit ThrowingAllocator(const char* operation) : throwing(operation) {}

    void AddReference() override
    {
        ThrowIn("add");
        CountingAllocator::AddReference();
    }
    void ReleaseReference() override
    {
        CountingAllocator::ReleaseReference();
        ThrowIn("release");
    }
    void* Allocate(std::size_t bytes) override
    {
        ThrowIn("allocate");
        return CountingAllocator::Allocate(bytes);
    }
    void Free(void* memory) override
    {
        CountingAllocator::Free(memory);
        ThrowIn("free");
    }

private:
    void ThrowIn(std::string_view operation) const
    {
        if (throwing == operation) throw std::runtime_error("out of the allocator object");
    }

    std::string_view throwing;
};

void UseAHeapString(const char* throwingOperation)
{
    try {
        ThrowingAllocator allocator(throwingOperation);
        const wide_string string(u"longer than seven"sv, &allocator);
    } catch (const std::runtime_error&) {
        std::exit(0);
    }
    std::exit(0);
}

void OutgrowAHeapStringWithAKeeper()
{
    try {
        ThrowingAllocator allocator("free");
        wide_string string(u"longer than seven"sv, &allocator);
        {
            Keep keep;
            string.reserve_extra(&keep, 100);
        }
        std::exit(0);
    } catch (const std::runtime_error&) {
        std::exit(0);
    }
}

void OutgrowAHeapStringWithoutAKeeper()
{
    ThrowingAllocator allocator("free");
    wide_string string(u"longer than seven"sv, &allocator);
    try {
        string.append(100, u'x');
    } catch (const std::runtime_error&) { // before the string's own destructor could end the process
    }
    std::exit(0);
}

} // namespace

TEST(MessageStringDeathTest, EndsTheProcessWhenAnExceptionEscapesFromTheAllocatorObject)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(UseAHeapString("none"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(UseAHeapString("add"), testing::KilledBySignal(SIGABRT), "out of the allocator object");
    EXPECT_EXIT(UseAHeapString("release"), testing::KilledBySignal(SIGABRT), "out of the allocator object");
    EXPECT_EXIT(UseAHeapString("allocate"), testing::KilledBySignal(SIGABRT), "out of the allocator object");
    EXPECT_EXIT(UseAHeapString("free"), testing::KilledBySignal(SIGABRT), "out of the allocator object");
    EXPECT_EXIT(OutgrowAHeapStringWithAKeeper(), testing::KilledBySignal(SIGABRT), "out of the allocator object");
    EXPECT_EXIT(OutgrowAHeapStringWithoutAKeeper(), testing::KilledBySignal(SIGABRT), "out of the allocator object");
}
