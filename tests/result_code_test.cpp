#include "result_code_table.h"

#include <mur/result_code.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string_view>

namespace {

constexpr std::string_view unknown = "Unknown result code";

static_assert(noexcept(mur::rtl_result_code_message(0)));
static_assert(std::size(runtimeResultCodes) == 60);
static_assert(std::size(platformResultCodes) == 17);

std::string_view Message(std::uint32_t code)
{
    return mur::rtl_result_code_message(static_cast<int>(code));
}

const std::map<std::uint32_t, std::string_view>& Table()
{
    static const std::map<std::uint32_t, std::string_view> table = [] {
        std::map<std::uint32_t, std::string_view> rows;
        for (const ResultCodeRow& row : runtimeResultCodes)
            rows[row.code] = row.message;
        return rows;
    }();
    return table;
}

// Compares every code from `first` to `last`, both included, with the table.
void ExpectTableFrom(std::uint32_t first, std::uint32_t last)
{
    for (std::uint64_t code = first; code <= last; ++code) {
        const auto row = Table().find(static_cast<std::uint32_t>(code));
        const std::string_view expected = row != Table().end() ? row->second : unknown;
        ASSERT_EQ(Message(static_cast<std::uint32_t>(code)), expected) << std::hex << code;
    }
}

} // namespace

TEST(ResultCode, HasItsTextForEveryRowOfTheTable)
{
    ASSERT_EQ(Table().size(), 60u);
    for (const ResultCodeRow& row : runtimeResultCodes)
        EXPECT_EQ(Message(row.code), row.message) << std::hex << row.code;
}

TEST(ResultCode, NamesTheCodesThatTheLibraryRaises)
{
    EXPECT_EQ(Message(0x80000062), "Out of space");
    EXPECT_EQ(static_cast<std::uint32_t>(mur::resultOutOfSpace), 0x80000062);
    EXPECT_EQ(static_cast<std::uint32_t>(mur::resultInvalidArgument), 0x80000046);
    EXPECT_EQ(static_cast<std::uint32_t>(mur::resultFound), 0x8000004D);
    EXPECT_EQ(static_cast<std::uint32_t>(mur::resultNotFound), 0x8000004C);
    EXPECT_EQ(static_cast<std::uint32_t>(mur::resultNotMatched), 0x8000004A);
}

TEST(ResultCode, IsUnknownAtTheEdgesOfTheTable)
{
    for (const std::uint32_t code : {0x80000000u, 0x80000002u, 0x8000003Fu, 0x80000181u, 0x80000220u, 0x80000222u,
                                     0x800002FFu, 0x80000304u, 0x8000030Fu, 0x80000314u})
        EXPECT_EQ(Message(code), unknown) << std::hex << code;
}

TEST(ResultCode, IsUnknownInTheGapsOfTheTable)
{
    for (const std::uint32_t code :
         {0x80000047u, 0x80000048u, 0x80000049u, 0x8000004Eu, 0x8000005Fu, 0x80000060u, 0x80000061u})
        EXPECT_EQ(Message(code), unknown) << std::hex << code;
}

TEST(ResultCode, IsASuccessOnlyWithZeroAndOne)
{
    EXPECT_EQ(mur::rtl_result_code_message(0), "No error");
    EXPECT_EQ(mur::rtl_result_code_message(1), "False");
    EXPECT_EQ(mur::rtl_result_code_message(2), unknown);
    EXPECT_EQ(mur::rtl_result_code_message(-1), unknown);
    EXPECT_EQ(mur::rtl_result_code_message(INT_MAX), unknown);
    EXPECT_EQ(mur::rtl_result_code_message(INT_MIN), unknown);
    for (const ResultCodeRow& row : runtimeResultCodes) {
        if (row.code > 0x80000001) {
            EXPECT_EQ(Message(row.code & 0x7FFFFFFF), unknown) << std::hex << row.code;
        }
    }
}

TEST(ResultCode, AnswersUnknownToEveryPlatformCode)
{
    for (const ResultCodeRow& row : platformResultCodes)
        EXPECT_EQ(Message(row.code), unknown) << std::hex << row.code;
}

TEST(ResultCode, KeepsToTheTableOverBothEndsOfTheIntegers)
{
    ExpectTableFrom(0x80000000, 0x8002FFFF);
    ExpectTableFrom(0x00000000, 0x0002FFFF);
    ExpectTableFrom(0x7FFF0000, 0x7FFFFFFF);
    ExpectTableFrom(0xFFFF0000, 0xFFFFFFFF);
}

TEST(ResultCode, IsUnknownInEveryOtherFacility)
{
    for (std::uint32_t upper = 0; upper <= 0xFFFF; ++upper) {
        if (upper == 0 || upper == 0x8000) continue;
        for (const ResultCodeRow& row : runtimeResultCodes) {
            const std::uint32_t code = upper << 16 | (row.code & 0xFFFF);
            ASSERT_EQ(Message(code), unknown) << std::hex << code;
        }
    }
}

TEST(ResultCode, HasItsTextInStaticMemory)
{
    for (const std::uint32_t code : {0u, 1u, 0x80000062u, 0x80000313u, 0x80000314u}) {
        ASSERT_NE(Message(code).data(), nullptr);
        EXPECT_EQ(static_cast<const void*>(Message(code).data()), static_cast<const void*>(Message(code).data()));
    }
}
