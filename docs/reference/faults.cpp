// The tables of docs/fault-reports.md: what the codecs raise, out of the constants that they raise it with, and the
// texts of the result codes.
#include "reference.h"

#include <common/detail/codec.h>
#include <mur/exception.h>
#include <mur/result_code.h>
#include <mur/utf8.h>

#include <fmt/format.h>

#include <string>

namespace {

using vyn_connector::common::detail::Codec;
namespace codec = vyn_connector::common::detail::codec;

// A check that a codec does not make has the line 0.
void PrintArgument(int line, const char* call, const char* wrong)
{
    if (line != 0) fmt::print("| line {} | {} | {} |\n", line, call, wrong);
}

void PrintText(const char* type, const char* text, const char* call, const char* wrong)
{
    if (text != nullptr) fmt::print("| `{}`: \"{}\" | {} | {} |\n", type, text, call, wrong);
}

void PrintCode(int code, const char* call, const char* wrong)
{
    fmt::print("| `mur::ResultCodeException`: 0x{:08X} | {} | {} |\n", static_cast<std::uint32_t>(code), call, wrong);
}

constexpr const char* overLimit = "the value is over its limit";
constexpr const char* outside = "the pointer leads outside the arena, or not to whole elements";

void PrintCodec(const char* fields, const Codec& codec)
{
    const bool isRange = &codec == &codec::range;
    fmt::print("\n### {}\n\nFile `{}`.\n\n| Report | Call | What was wrong |\n| --- | --- | --- |\n", fields,
               codec.file);
    PrintArgument(codec.writing.arena, "writing", "the arena is null");
    if (isRange) PrintArgument(codec::emptyRange, "writing", "the range is empty or reversed");
    PrintArgument(codec.writing.output, "writing", "the output pointer is null");
    PrintText("std::length_error", codec.tooLarge, "writing", overLimit);
    if (isRange) PrintCode(mur::resultInvalidArgument, "writing", overLimit);
    PrintCode(mur::resultOutOfSpace, "writing", "the arena is full");
    PrintArgument(codec.reading.arena, "reading", "the arena is null");
    PrintArgument(codec.reading.pointer, "reading", "the input pointer is null");
    PrintText("std::out_of_range", codec.outside, "reading", outside);
    if (isRange) PrintCode(mur::resultOutOfSpace, "reading", outside);
}

// The code's text as exceptions have it, which know the platform's codes as well: "0x80000062 (Out of space)".
std::string TextOf(std::uint32_t code)
{
    mur::ResultCodeException error;
    error.resultCode = static_cast<std::int32_t>(code);
    const std::string text = mur::to_utf8(error.Text());
    const std::size_t open = text.find('(') + 1;
    return text.substr(open, text.size() - 1 - open);
}

} // namespace

void PrintChecks()
{
    PrintCodec("Texts", codec::string);
    PrintCodec("Blobs", codec::blob);
    PrintCodec("Lists", codec::vector);
    PrintCodec("Optional members", codec::optional);
    PrintCodec("Sets", codec::set);
    PrintCodec("Update identifiers", codec::range);
}

void PrintResultCodes()
{
    fmt::print("\n| Code | Text |\n| --- | --- |\n");
    for (const std::uint32_t facility : {0x00000000U, 0x80000000U, 0x80010000U})
        for (std::uint32_t number = 0; number <= 0xFFFF; ++number)
            if (const std::string text = TextOf(facility | number); text != "Unknown result code")
                fmt::print("| 0x{:08X} | {} |\n", facility | number, text);
}
