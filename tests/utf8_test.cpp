#include <mur/exception.h>
#include <mur/utf8.h>

#include <gtest/gtest.h>

using mur::to_utf8;

TEST(Utf8, EachLengthAtItsFirstAndLastCharacter)
{
    EXPECT_EQ(to_utf8(u""), "");
    EXPECT_EQ(to_utf8(std::u16string_view(u"\0\x7F", 2)), std::string("\0\x7F", 2));
    EXPECT_EQ(to_utf8(u"\x80\x7FF"), "\xC2\x80\xDF\xBF");
    EXPECT_EQ(to_utf8(u"\x800\xFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF");
    EXPECT_EQ(to_utf8(u"\xD7FF\xE000"), "\xED\x9F\xBF\xEE\x80\x80");
    EXPECT_EQ(to_utf8(u"\xD800\xDC00\xDBFF\xDFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf8, HalfASurrogatePairBecomesTheReplacementCharacter)
{
    EXPECT_EQ(to_utf8(u"\xD800"), "\xEF\xBF\xBD");
    EXPECT_EQ(to_utf8(u"\xDFFF"), "\xEF\xBF\xBD");
    EXPECT_EQ(to_utf8(u"\xDBFFz"), "\xEF\xBF\xBDz");
    EXPECT_EQ(to_utf8(u"\xD800\xD800\xDC00"), "\xEF\xBF\xBD\xF0\x90\x80\x80");
    EXPECT_EQ(to_utf8(u"\xDC00\xD800"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(to_utf8(u"\xDC00\xDC00"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(to_utf8(u"\xD800\xDBFF"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(to_utf8(u"\xD800\xE000"), "\xEF\xBF\xBD\xEE\x80\x80");
}

TEST(Utf8, TheOtherHalfBehindTheEndIsNotLookedAt)
{
    EXPECT_EQ(to_utf8(std::u16string_view(u"\xD800\xDC00", 1)), "\xEF\xBF\xBD");
}

TEST(Utf8, TakesWhatAnExceptionSays)
{
    mur::ResultCodeException error(0, mur::types::wide_string(u"\u00FCber"));
    error.resultCode = static_cast<int>(0x80000062);
    EXPECT_EQ(to_utf8(error.Text()), "\xC3\xBC"
                                     "ber: 0x80000062 (Out of space)");
}
