#include "counting_allocator.h"
#include "result_code_table.h"

#include <mur/exception.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

using mur::Exception;
using mur::InvalidArgumentException;
using mur::ResultCodeException;
using mur::types::wide_string;
using testing::ElementsAre;
using namespace std::string_view_literals;

namespace {

// What the replaced mbrtowc answers to the byte that it is to treat specially.
struct Answer {
    std::size_t result;
    std::int64_t wide;
};

struct Widening {
    std::string bytes;          // all that were converted, in order
    bool oneByteEach = true;    // each call was given exactly one byte
    bool freshStates = true;    // and a state that nothing had been converted with
    char specialByte = '\0';    // '\0': none
    std::size_t occurrence = 0; // which one of these bytes, from 0
    Answer answer{};
};

Widening widening;

} // namespace

// Stands in for the C library's in this program, so that conversions can be seen and can fail.
extern "C" std::size_t mbrtowc(wchar_t* wide, const char* bytes, std::size_t count, std::mbstate_t* state) noexcept
{
    const std::mbstate_t fresh{};
    widening.oneByteEach = widening.oneByteEach && count == 1;
    widening.freshStates = widening.freshStates && state != nullptr && std::memcmp(state, &fresh, sizeof(fresh)) == 0;
    if (state != nullptr) std::memset(state, 0x55, sizeof(*state));
    std::size_t earlier = 0;
    for (const char byte : widening.bytes)
        earlier += byte == *bytes;
    widening.bytes += *bytes;
    if (*bytes == widening.specialByte && earlier == widening.occurrence) {
        if (wide != nullptr) *wide = static_cast<wchar_t>(widening.answer.wide);
        return widening.answer.result;
    }
    if (wide != nullptr) *wide = static_cast<unsigned char>(*bytes);
    return 1;
}

namespace {

std::u16string Wide(std::string_view ascii)
{
    return std::u16string(ascii.begin(), ascii.end());
}

std::u16string Characters(const wide_string& string)
{
    EXPECT_EQ(string.data[string.size], u'\0');
    return std::u16string(string.data, string.size);
}

ResultCodeException WithCode(std::uint32_t code, std::u16string_view message = {})
{
    ResultCodeException error(0, wide_string(message));
    error.resultCode = static_cast<std::int32_t>(code);
    return error;
}

std::u16string TextOf(std::uint32_t code, std::u16string_view message = {})
{
    widening = Widening();
    return Characters(WithCode(code, message).Text());
}

// The text of code 0x80000046 with the message "abc" when mbrtowc gives `answer` to one of the bytes.
std::u16string TextWith(char byte, std::size_t occurrence, Answer answer)
{
    widening = Widening();
    widening.specialByte = byte;
    widening.occurrence = occurrence;
    widening.answer = answer;
    return Characters(WithCode(0x80000046, u"abc").Text());
}

std::string EightHexDigits(std::uint32_t code)
{
    std::string digits;
    for (int shift = 28; shift >= 0; shift -= 4)
        digits += "0123456789abcdef"[code >> shift & 0xF];
    return digits;
}

// The plain exception of the tree, with its own Text().
class PlainException : public mur::ExceptionBase<PlainException, Exception> {
public:
    using ExceptionBase::ExceptionBase;
};

} // namespace

TEST(ExceptionText, IsACopyOfTheMessage)
{
    CountingAllocator allocator;
    const PlainException error(5, wide_string(u"what happened"sv, &allocator));
    {
        const wide_string text = error.Text();
        EXPECT_EQ(Characters(text), u"what happened");
        EXPECT_EQ(text.allocator, &allocator);
        EXPECT_NE(text.data, error.message.data);
        EXPECT_EQ(text.capacity, 14u);
        EXPECT_EQ(allocator.references, 2);
    }
    EXPECT_EQ(allocator.references, 1);
    EXPECT_EQ(Characters(PlainException().Text()), u"");
    EXPECT_EQ(Characters(WithCode(0x80000062, u"abc").Exception::Text()), u"abc");
}

TEST(ExceptionText, FailsLikeACopyOfTheMessage)
{
    CountingAllocator allocator;
    PlainException error(0, wide_string(u"what happened"sv, &allocator));
    allocator.allocationsUntilFailure = 0;
    EXPECT_THROW(error.Text(), std::bad_alloc);
    EXPECT_EQ(allocator.references, 1);
    const std::size_t size = error.message.size;
    error.message.size = 0x7FFFFFFFFFFFFFFF;
    try {
        error.Text();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& thrown) {
        EXPECT_STREQ(thrown.what(), "mur::basic_string_t::reserve_extra()");
    }
    error.message.size = size;
}

TEST(ResultCodeText, IsTheCodeAndItsTextInParentheses)
{
    EXPECT_EQ(TextOf(0x80000062), u"0x80000062 (Out of space)");
    EXPECT_EQ(TextOf(0x00000000), u"0x00000000 (No error)");
    EXPECT_EQ(TextOf(0x00000001), u"0x00000001 (False)");
    EXPECT_EQ(TextOf(0x8001FFFF), u"0x8001ffff (Unknown result code)");
    EXPECT_EQ(TextOf(0xFFFFFFFF), u"0xffffffff (Unknown result code)");
}

TEST(ResultCodeText, BeginsWithTheMessageWhenThereIsOne)
{
    EXPECT_EQ(TextOf(0x80000046, u"abc"), u"abc: 0x80000046 (Invalid argument)");
    EXPECT_EQ(TextOf(0x80000046, u"a"), u"a: 0x80000046 (Invalid argument)");
    EXPECT_EQ(TextOf(0x80000046, u"\0"sv), u"\0: 0x80000046 (Invalid argument)"sv);
    EXPECT_EQ(TextOf(0x80000046, u"\xD83D\xDE00\xFFFF"), u"\xD83D\xDE00\xFFFF: 0x80000046 (Invalid argument)");
    const std::u16string longMessage(1000, u'm');
    EXPECT_EQ(TextOf(0x80000062, longMessage), longMessage + u": 0x80000062 (Out of space)");
}

TEST(ResultCodeText, IsTheSameForAnInvalidArgumentWithoutItsFileAndLine)
{
    InvalidArgumentException error(3, wide_string(u"abc"sv));
    error.file = "some/file";
    error.line = 12;
    EXPECT_EQ(Characters(error.Text()), u"abc: 0x00000000 (No error)");
    error.nested = std::make_unique<InvalidArgumentException>();
    EXPECT_EQ(Characters(error.Text()), u"abc: 0x00000000 (No error)");
}

TEST(ResultCodeText, HasTheTextOfEveryCodeOfTheRuntime)
{
    for (const ResultCodeRow& row : runtimeResultCodes) {
        EXPECT_EQ(TextOf(row.code), Wide("0x" + EightHexDigits(row.code) + " (" + std::string(row.message) + ")"));
    }
}

TEST(ResultCodeText, HasTheTextOfEveryCodeOfThePlatform)
{
    for (const ResultCodeRow& row : platformResultCodes) {
        EXPECT_EQ(TextOf(row.code), Wide("0x" + EightHexDigits(row.code) + " (" + std::string(row.message) + ")"));
    }
}

TEST(ResultCodeText, IsUnknownForEveryOtherCodeOfThePlatform)
{
    for (std::uint32_t code = 0x80010000; code <= 0x80010400; ++code) {
        std::string_view message = "Unknown result code";
        for (const ResultCodeRow& row : platformResultCodes)
            if (row.code == code) message = row.message;
        ASSERT_EQ(TextOf(code), Wide("0x" + EightHexDigits(code) + " (" + std::string(message) + ")"));
    }
}

TEST(ResultCodeText, IsUnknownForThePlatformsCodesWithoutTheTopBit)
{
    for (const ResultCodeRow& row : platformResultCodes) {
        const std::uint32_t code = row.code & 0x7FFFFFFF;
        EXPECT_EQ(TextOf(code), Wide("0x" + EightHexDigits(code) + " (Unknown result code)"));
    }
}

TEST(ResultCodeText, IsUnknownInEveryOtherFacility)
{
    for (std::uint32_t facility = 2; facility <= 0x7FFF; facility = facility < 64 ? facility + 1 : facility * 2 + 1) {
        for (const std::uint32_t low : {0x0001u, 0x0046u, 0x0062u, 0x0100u, 0x0110u}) {
            const std::uint32_t code = 0x80000000 | facility << 16 | low;
            ASSERT_EQ(TextOf(code), Wide("0x" + EightHexDigits(code) + " (Unknown result code)"));
        }
        EXPECT_EQ(TextOf(facility << 16), Wide("0x" + EightHexDigits(facility << 16) + " (Unknown result code)"));
    }
}

TEST(ResultCodeText, SharesTheAllocatorOfTheMessage)
{
    CountingAllocator allocator;
    ResultCodeException error(0, wide_string(&allocator));
    {
        const wide_string text = error.Text();
        EXPECT_EQ(text.allocator, &allocator);
        EXPECT_EQ(allocator.references, 2);
        EXPECT_EQ(Characters(text), u"0x00000000 (No error)");
        EXPECT_EQ(allocator.buffers.count(text.data), 1u);
    }
    EXPECT_EQ(allocator.references, 1);
    EXPECT_TRUE(allocator.buffers.empty());
    EXPECT_EQ(WithCode(0).Text().allocator, nullptr);
}

TEST(ResultCodeText, WidensItsLiteralsByteByByteWithAFreshState)
{
    TextOf(0x80000046, u"abc");
    EXPECT_EQ(widening.bytes, ": 0x ()");
    EXPECT_TRUE(widening.oneByteEach);
    EXPECT_TRUE(widening.freshStates);

    TextOf(0x80000046);
    EXPECT_EQ(widening.bytes, "0x ()");
    EXPECT_TRUE(widening.oneByteEach);
    EXPECT_TRUE(widening.freshStates);
}

TEST(ResultCodeText, EndsALiteralAtAByteThatHasNoSixteenBitCharacter)
{
    constexpr auto failed = static_cast<std::size_t>(-1);
    constexpr auto incomplete = static_cast<std::size_t>(-2);
    for (const Answer answer :
         {Answer{failed, 'A'}, Answer{incomplete, 'A'}, Answer{0, 'A'}, Answer{0, 0}, Answer{1, 0}, Answer{1, 0x10000},
          Answer{1, 0x10FFFF}, Answer{1, 0x10041}, Answer{1, -1}, Answer{1, INT32_MIN}}) {
        EXPECT_EQ(TextWith(':', 0, answer), u"abc0x80000046 (Invalid argument)");
        EXPECT_EQ(widening.bytes, ":0x ()");
        EXPECT_EQ(TextWith(' ', 0, answer), u"abc:0x80000046 (Invalid argument)");
        EXPECT_EQ(widening.bytes, ": 0x ()");
        EXPECT_EQ(TextWith('0', 0, answer), u"abc: 80000046 (Invalid argument)");
        EXPECT_EQ(widening.bytes, ": 0 ()");
        EXPECT_EQ(TextWith('x', 0, answer), u"abc: 080000046 (Invalid argument)");
        EXPECT_EQ(widening.bytes, ": 0x ()");
        EXPECT_EQ(TextWith(' ', 1, answer), u"abc: 0x80000046Invalid argument)");
        EXPECT_EQ(widening.bytes, ": 0x )");
        EXPECT_EQ(TextWith('(', 0, answer), u"abc: 0x80000046 Invalid argument)");
        EXPECT_EQ(widening.bytes, ": 0x ()");
        EXPECT_EQ(TextWith(')', 0, answer), u"abc: 0x80000046 (Invalid argument");
        EXPECT_EQ(widening.bytes, ": 0x ()");
    }
}

TEST(ResultCodeText, WritesWhateverSixteenBitCharacterAByteConvertsTo)
{
    EXPECT_EQ(TextWith(':', 0, {1, 0xFFFF}), u"abc\xFFFF 0x80000046 (Invalid argument)");
    EXPECT_EQ(TextWith('x', 0, {1, 1}), u"abc: 0\x0001"
                                        u"80000046 (Invalid argument)");
    EXPECT_EQ(TextWith('(', 0, {1, 0x0436}), u"abc: 0x80000046 \x0436Invalid argument)");
}

TEST(ResultCodeText, LeavesEverythingAsItWasWhenItCannotGrow)
{
    for (const std::u16string_view message : {u""sv, u"abc"sv, u"a message of some length"sv}) {
        CountingAllocator allocator;
        ResultCodeException error(0, wide_string(message, &allocator));
        error.resultCode = static_cast<std::int32_t>(0x80010110);
        const std::size_t buffers = allocator.buffers.size();
        int successes = 0;
        int failures = 0;
        for (int allocations = 0; successes == 0; ++allocations) {
            ASSERT_LT(allocations, 20);
            allocator.allocationsUntilFailure = allocations;
            try {
                widening = Widening();
                const wide_string text = error.Text();
                ++successes;
                const std::u16string separator = message.empty() ? u"" : u": ";
                EXPECT_EQ(Characters(text), std::u16string(message) + separator +
                                                u"0x80010110 (Cannot open an anonymous level security token)");
            } catch (const std::bad_alloc&) {
                ++failures;
            }
            EXPECT_EQ(allocator.references, 1);
            EXPECT_EQ(allocator.buffers.size(), buffers);
            EXPECT_EQ(Characters(error.message), message);
        }
        EXPECT_GE(failures, 2);
    }
}

TEST(ResultCodeText, RefusesToBecomeTooLong)
{
    ResultCodeException error(0, wide_string(u"abc"sv));
    error.message.size = 0x7FFFFFFFFFFFFFFF;
    try {
        error.Text();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::length_error& thrown) {
        EXPECT_STREQ(thrown.what(), "mur::basic_string_t::reserve_extra()");
    }
    error.message.size = 3;
}
