#include "counting_allocator.h"

#include <mur/stream.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

using mur::stream::format_options_t;
using mur::stream::stream_put_int;
using mur::types::wide_string;
using testing::ElementsAre;
using tokens = mur::stream::formatting_tokens<char16_t>;
using namespace std::string_view_literals;

namespace {

static_assert(std::is_same_v<decltype(tokens::negative), const char16_t[2]>);
static_assert(std::is_same_v<decltype(tokens::base_lower), const char16_t[3]>);
static_assert(std::is_same_v<decltype(tokens::digits_lower), const char16_t[39]>);

// What `value` looks like, together with the returned count, which must be that of the appended characters.
std::u16string Put(const format_options_t& options, int value)
{
    wide_string out(u"|"sv);
    const std::size_t appended = stream_put_int(out, options, value);
    EXPECT_EQ(appended, out.size - 1);
    EXPECT_EQ(out.data[0], u'|');
    EXPECT_EQ(out.data[out.size], u'\0');
    return std::u16string(out.data + 1, out.size - 1);
}

// The same rules the other way round: the number is built by prepending, the padding by inserting.
std::u16string Reference(const format_options_t& options, std::int64_t value)
{
    const std::u16string digits = std::u16string(u"0123456789abcdefghijklmnopqrstuvwxyz") + std::u16string(3, u'\0');
    const bool negative = value < 0 && options.radix == 10;
    std::int64_t rest = negative ? -value : value < 0 ? value + (std::int64_t{1} << 32) : value;
    const std::int64_t radix = options.radix < 2 ? 2 : options.radix > 39 ? 39 : options.radix;

    std::u16string text;
    while (rest >= radix) {
        text.insert(text.begin(), digits[static_cast<std::size_t>(rest % radix)]);
        rest /= radix;
    }
    text.insert(text.begin(), digits[static_cast<std::size_t>(rest)]);

    std::u16string prefix;
    if (negative) prefix = u"-";
    if (options.showBase && options.radix == 8) prefix = u"0";
    if (options.showBase && options.radix == 16) prefix = u"0x";
    text = prefix + text;

    if (options.fill <= 0xFFFF) {
        const std::size_t position = options.alignment > 0 ? 0 : options.alignment == 0 ? prefix.size() : text.size();
        const std::size_t missing = options.width > text.size() ? options.width - text.size() : 0;
        text.insert(position, missing, static_cast<char16_t>(options.fill));
    }
    return text;
}

constexpr int values[] = {0,  1,   -1,   7,     8,          -8,         9,       10,      -10,        35,     36,
                          38, 39,  -5,   255,   256,        1520,       1521,    -32768,  65535,      100000, -100000,
                          40, 0x7, 0x62, 65536, 0x7FFFFFFE, 0x3FFFFFFF, INT_MAX, INT_MIN, INT_MIN + 1};

} // namespace

TEST(FormatOptions, HaveTheirFieldsInOrderAndTheirDefaults)
{
    const format_options_t options;
    EXPECT_EQ(options.width, 0u);
    EXPECT_EQ(options.radix, 10u);
    EXPECT_EQ(options.precision, -1);
    EXPECT_EQ(options.alignment, 1);
    EXPECT_EQ(options.fill, std::uint32_t{U' '});
    EXPECT_FALSE(options.showBase);

    EXPECT_EQ(offsetof(format_options_t, width), 0u);
    EXPECT_EQ(offsetof(format_options_t, radix), 4u);
    EXPECT_EQ(offsetof(format_options_t, precision), 8u);
    EXPECT_EQ(offsetof(format_options_t, alignment), 12u);
    EXPECT_EQ(offsetof(format_options_t, fill), 16u);
    EXPECT_EQ(offsetof(format_options_t, showBase), 20u);
    EXPECT_EQ(sizeof(format_options_t), 24u);
}

TEST(FormattingTokens, AreTheSignTheBaseAndTheDigitsWithThreeZeroCharacters)
{
    EXPECT_TRUE(std::u16string_view(tokens::negative, 2) == u"-\0"sv);
    EXPECT_TRUE(std::u16string_view(tokens::base_lower, 3) == u"0x\0"sv);
    EXPECT_TRUE(std::u16string_view(tokens::digits_lower, 39) == u"0123456789abcdefghijklmnopqrstuvwxyz\0\0\0"sv);
}

TEST(StreamPutInt, PrintsDecimalNumbersWithTheirSign)
{
    const format_options_t options;
    EXPECT_EQ(Put(options, 0), u"0");
    EXPECT_EQ(Put(options, 7), u"7");
    EXPECT_EQ(Put(options, -7), u"-7");
    EXPECT_EQ(Put(options, 1234567890), u"1234567890");
    EXPECT_EQ(Put(options, INT_MAX), u"2147483647");
    EXPECT_EQ(Put(options, INT_MIN), u"-2147483648");
}

TEST(StreamPutInt, PadsWhereTheAlignmentSays)
{
    EXPECT_EQ(Put({4, 10, -1, 0, U'0', false}, -5), u"-005");
    EXPECT_EQ(Put({4, 10, -1, 1, U'0', false}, -5), u"00-5");
    EXPECT_EQ(Put({4, 10, -1, -1, U'0', false}, -5), u"-500");
    EXPECT_EQ(Put({4, 10, -1, INT_MAX, U'0', false}, -5), u"00-5");
    EXPECT_EQ(Put({4, 10, -1, INT_MIN, U'0', false}, -5), u"-500");
}

TEST(StreamPutInt, PrintsTheBitsOfANegativeNumberInOtherRadixesThanTen)
{
    EXPECT_EQ(Put({8, 16, -1, 1, U'0', false}, -1), u"ffffffff");
    EXPECT_EQ(Put({0, 16, -1, 1, U'0', false}, INT_MIN), u"80000000");
    EXPECT_EQ(Put({0, 8, -1, 1, U'0', false}, -1), u"37777777777");
    EXPECT_EQ(Put({0, 2, -1, 1, U'0', false}, -2), u"11111111111111111111111111111110");
    EXPECT_EQ(Put({0, 36, -1, 1, U'0', false}, -1), u"1z141z3");
}

TEST(StreamPutInt, ShowsTheBaseOfHexadecimalAndOctalNumbersOnly)
{
    EXPECT_EQ(Put({6, 16, -1, 0, U'0', true}, 255), u"0x00ff");
    EXPECT_EQ(Put({6, 16, -1, 1, U'*', true}, 255), u"**0xff");
    EXPECT_EQ(Put({6, 16, -1, -1, U'*', true}, 255), u"0xff**");
    EXPECT_EQ(Put({0, 8, -1, 1, U' ', true}, 8), u"010");
    EXPECT_EQ(Put({0, 10, -1, 1, U' ', true}, 8), u"8");
    EXPECT_EQ(Put({0, 10, -1, 1, U' ', true}, -8), u"-8");
    EXPECT_EQ(Put({0, 2, -1, 1, U' ', true}, 8), u"1000");
    EXPECT_EQ(Put({0, 36, -1, 1, U' ', true}, 35), u"z");
}

TEST(StreamPutInt, ShowsTheBaseOfZeroToo)
{
    EXPECT_EQ(Put({0, 16, -1, 1, U' ', true}, 0), u"0x0");
    EXPECT_EQ(Put({0, 8, -1, 1, U' ', true}, 0), u"00");
    EXPECT_EQ(Put({5, 16, -1, 0, U'0', true}, 0), u"0x000");
}

TEST(StreamPutInt, DoesNotPadWithACodePointOutsideTheBasicPlane)
{
    for (const int alignment : {-1, 0, 1}) {
        EXPECT_EQ(Put({6, 16, -1, alignment, 0x10000, true}, 255), u"0xff");
        EXPECT_EQ(Put({6, 16, -1, alignment, 0xFFFFFFFF, true}, 255), u"0xff");
    }
    EXPECT_EQ(Put({3, 10, -1, 1, 0xFFFF, false}, 5), u"\xFFFF\xFFFF"
                                                     u"5");
    EXPECT_EQ(Put({3, 10, -1, 1, 0, false}, 5), u"\0\0"
                                                u"5"sv);
}

TEST(StreamPutInt, TakesTheNearestRadixItKnows)
{
    for (const std::uint32_t radix : {0u, 1u, 2u})
        EXPECT_EQ(Put({0, radix, -1, 1, U' ', true}, 5), u"101");
    for (const std::uint32_t radix : {39u, 40u, 0xFFFFFFFFu})
        EXPECT_EQ(Put({0, radix, -1, 1, U' ', true}, 39 * 35 + 10), u"za");
    EXPECT_EQ(Put({0, 38, -1, 1, U' ', true}, 39), u"11");
}

TEST(StreamPutInt, ReachesTheThreeZeroCharactersAboveRadixThirtySix)
{
    EXPECT_EQ(Put({0, 37, -1, 1, U' ', false}, 36), u"\0"sv);
    EXPECT_EQ(Put({0, 39, -1, 1, U' ', false}, 38), u"\0"sv);
    EXPECT_EQ(Put({0, 40, -1, 1, U' ', false}, 39 * 38 + 1), u"\0"
                                                             u"1"sv);
    EXPECT_EQ(Put({0, 39, -1, 1, U' ', false}, 35), u"z");
}

TEST(StreamPutInt, IgnoresThePrecision)
{
    for (const int precision : {INT_MIN, -1, 0, 1, 20, INT_MAX})
        EXPECT_EQ(Put({6, 16, precision, 0, U'0', true}, 255), u"0x00ff");
}

TEST(StreamPutInt, FollowsTheRulesForEveryRadixWidthAlignmentAndFill)
{
    for (std::uint32_t radix = 0; radix <= 42; ++radix) {
        for (std::uint32_t width = 0; width <= 37; ++width) {
            for (const std::int32_t alignment : {-1, 0, 1}) {
                for (const std::uint32_t fill : {0x30u, 0xFFFFu, 0x10000u}) {
                    const format_options_t options{width, radix, -1, alignment, fill, (width + radix) % 2 == 0};
                    const format_options_t other{width, radix, 3, alignment, fill, !options.showBase};
                    for (const int value : values) {
                        ASSERT_TRUE(Put(options, value) == Reference(options, value))
                            << radix << ' ' << width << ' ' << alignment << ' ' << fill << ' ' << value;
                    }
                    ASSERT_TRUE(Put(other, -5) == Reference(other, -5));
                    ASSERT_TRUE(Put(other, INT_MIN) == Reference(other, INT_MIN));
                    ASSERT_TRUE(Put(other, 255) == Reference(other, 255));
                }
            }
        }
    }
}

TEST(StreamPutInt, PadsAnyWidthWithOneAllocation)
{
    for (const int alignment : {-1, 0, 1}) {
        CountingAllocator allocator;
        wide_string out(&allocator);
        const format_options_t options{100000, 16, -1, alignment, U'.', true};
        EXPECT_EQ(stream_put_int(out, options, 255), 100000u);
        EXPECT_TRUE(std::u16string(out.data, out.size) == Reference(options, 255));
        EXPECT_THAT(allocator.calls, ElementsAre("add", "allocate 200002"));
    }
}

TEST(StreamPutInt, LeavesTheStringAsItWasWhenItCannotGrow)
{
    for (const int alignment : {-1, 0, 1}) {
        CountingAllocator allocator;
        wide_string out(u"before"sv, &allocator);
        allocator.allocationsUntilFailure = 0;
        const format_options_t twoWide{2, 10, -1, alignment, U' ', false};
        EXPECT_THROW(stream_put_int(out, twoWide, 5), std::bad_alloc);
        EXPECT_TRUE(std::u16string_view(out) == u"before"sv);
        EXPECT_EQ(out.data[6], u'\0');
        EXPECT_EQ(out.capacity, 7u);

        // The widest field does not wrap.
        allocator.calls.clear();
        const format_options_t widest{0xFFFFFFFF, 10, -1, alignment, U' ', false};
        EXPECT_THROW(stream_put_int(out, widest, 5), std::bad_alloc);
        EXPECT_THAT(allocator.calls, ElementsAre("allocate " + std::to_string((0xFFFFFFFFull + 6 + 1) * 2)));
        EXPECT_TRUE(std::u16string_view(out) == u"before"sv);
    }
}
