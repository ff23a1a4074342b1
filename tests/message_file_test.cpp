// The parser of message files: what it takes from a file, and that it passes over nothing.
#include "message_file.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

const std::string example = "# Two lines of text that is\n"
                            "# no part of the message.\n"
                            "record: ProxySettings\n"
                            "start: 5\n"
                            "top: 17\n"
                            "encode: yes\n"
                            "\n"
                            "wire: 8 bytes\n"
                            "  0000: 00 01 fe ff  # port: 4711\n"
                            "  0004: 61 *4\n"
                            "\n"
                            "arena: 20 bytes\n"
                            "  0000: 2a 00 *15\n"
                            "  0010: .. 7f 80  # an unwritten byte\n"
                            "  0013: 23\n"
                            "\n"
                            "decoded:\n"
                            "  address = \"a # b = c\"\n"
                            "  port = 4711\n";

std::string With(std::string_view from, std::string_view to)
{
    std::string text = example;
    const std::size_t at = text.find(from);
    if (at == text.npos) throw std::logic_error("not in the example: " + std::string(from));
    return text.replace(at, from.size(), to);
}

void ExpectError(const std::string& text, const std::string& expected)
{
    try {
        ParseMessage(text, "a.msg");
    } catch (const MessageFileError& error) {
        EXPECT_EQ(error.what(), "a.msg:" + expected);
        return;
    }
    ADD_FAILURE() << "no error, expected " << expected;
}

} // namespace

TEST(MessageFile, TakesEveryPartOfAFile)
{
    const MessageFile file = ParseMessage(example, "a.msg");
    EXPECT_EQ(file.path, "a.msg");
    EXPECT_EQ(file.record, "ProxySettings");
    EXPECT_EQ(file.start, 5u);
    EXPECT_EQ(file.top, 17u);
    EXPECT_TRUE(file.encode);
    EXPECT_EQ(file.wire, (std::vector<MessageFile::Byte>{0, 1, 0xFE, 0xFF, 'a', 'a', 'a', 'a'}));
    EXPECT_EQ(file.wireLine, 8u);
    EXPECT_EQ(file.arenaKind, MessageFile::Arena::Bytes);
    std::vector<MessageFile::Byte> arena(20, 0);
    arena[0] = 0x2A;
    arena[16] = std::nullopt;
    arena[17] = 0x7F;
    arena[18] = 0x80;
    arena[19] = 0x23;
    EXPECT_EQ(file.arena, arena);
    EXPECT_EQ(file.arenaLine, 12u);
    EXPECT_EQ(file.raised, "");
    EXPECT_EQ(file.outcomeLine, 17u);
    ASSERT_EQ(file.outcome.size(), 2u);
    EXPECT_EQ(file.outcome.at("address").value, "\"a # b = c\"");
    EXPECT_EQ(file.outcome.at("address").line, 18u);
    EXPECT_EQ(file.outcome.at("port").value, "4711");
}

TEST(MessageFile, HasAnAlignedAndFullArenaWhereNothingElseIsSaid)
{
    const MessageFile file = ParseMessage(With("start: 5\ntop: 17\n", ""), "a.msg");
    EXPECT_EQ(file.start, 0u);
    EXPECT_EQ(file.top, 20u);
}

TEST(MessageFile, MayHaveNoArenaInThreeWays)
{
    using Arena = MessageFile::Arena;
    const std::string plain = With("top: 17\n", "");
    const std::size_t begin = plain.find("arena:");
    const std::size_t end = plain.find("\ndecoded:");
    for (const auto& [word, kind] : {std::pair("null", Arena::Null), {"unset", Arena::Unset}, {"none", Arena::None}}) {
        std::string text = plain;
        text.replace(begin, end - begin, std::string("arena: ") + word + "\n");
        const MessageFile file = ParseMessage(text, "a.msg");
        EXPECT_EQ(file.arenaKind, kind) << word;
        EXPECT_TRUE(file.arena.empty()) << word;
        EXPECT_EQ(file.top, 0u) << word;
    }
    ExpectError(With("arena: 20 bytes", "arena: null"), "12: followed by 20 bytes");
}

TEST(MessageFile, MayEndInAnException)
{
    const MessageFile file = ParseMessage("record: VynParams\n"
                                          "encode: no\n"
                                          "wire: 1 bytes\n"
                                          "  0000: 00\n"
                                          "arena: null\n"
                                          "raises: std::out_of_range\n"
                                          "  text = a: b {}\n",
                                          "a.msg");
    EXPECT_FALSE(file.encode);
    EXPECT_EQ(file.raised, "std::out_of_range");
    EXPECT_EQ(file.outcomeLine, 6u);
    EXPECT_EQ(file.outcome.at("text").value, "a: b {}");
}

TEST(MessageFile, MustSayWhatItIs)
{
    ExpectError(With("record: ProxySettings\n", ""), "19: no record");
    ExpectError(With("encode: yes\n", ""), "19: no encode");
    ExpectError(With("decoded:\n  address = \"a # b = c\"\n  port = 4711\n", ""), "17: neither decoded nor raises");
    ExpectError(With("  address = \"a # b = c\"\n  port = 4711\n", ""), "17: nothing follows");
    ExpectError("", "1: no record");
    ExpectError("record: A\nencode: no\narena: none\ndecoded:\n  a = 1\n", "6: no wire");
    ExpectError("record: A\nencode: no\nwire: 0 bytes\ndecoded:\n  a = 1\n", "6: no arena");
}

TEST(MessageFile, SaysEverythingOnce)
{
    ExpectError(With("encode: yes\n", "encode: yes\nencode: yes\n"), "7: a second encode");
    ExpectError(With("decoded:\n", "wire: 8 bytes\n\ndecoded:\n"), "17: a second wire");
    ExpectError(With("  port", "  address"), "19: a second address");
    ExpectError(example + "raises: std::out_of_range\n", "20: both decoded and raises");
}

TEST(MessageFile, HasNoOtherKeys)
{
    ExpectError(With("top:", "tops:"), "5: unknown key tops");
    ExpectError(With("top: 17", "top 17"), "5: neither a key nor a row: top 17");
    ExpectError(With("top: 17", "top:17"), "5: no blank behind the colon");
    ExpectError(With("top: 17", " top: 17"), "5: unknown key  top");
}

TEST(MessageFile, HasValuesThatFitTheirKeys)
{
    ExpectError(With("start: 5", "start: 8"), "4: start is not below 8");
    ExpectError(With("start: 5", "start: -1"), "4: no number: -1");
    ExpectError(With("start: 5", "start:"), "4: no number: ");
    ExpectError(With("top: 17", "top: 1234567890"), "5: no number: 1234567890");
    ExpectError(With("top: 17", "top: 21"), "20: top lies behind the arena's end");
    ExpectError(With("encode: yes", "encode: maybe"), "6: encode is neither yes nor no");
    ExpectError(With("decoded:\n", "decoded: all\n"), "17: raises names a type, decoded nothing");
    ExpectError(With("decoded:\n", "raises:\n"), "17: raises names a type, decoded nothing");
    ExpectError(With("decoded:\n", "raises: std::out_of_range\n"),
                "20: encode is yes, but there is no record to encode");
    ExpectError(With("wire: 8 bytes", "wire: 8"), "8: no number of bytes: 8");
    ExpectError(With("wire: 8 bytes", "wire: 8 octets"), "8: no number of bytes: 8 octets");
}

TEST(MessageFile, HasAsManyBytesAsItPromises)
{
    ExpectError(With("wire: 8 bytes", "wire: 9 bytes"), "8: followed by 8 bytes");
    ExpectError(With("wire: 8 bytes", "wire: 7 bytes"), "8: followed by 8 bytes");
    ExpectError(With("arena: 20 bytes", "arena: 21 bytes"), "12: followed by 20 bytes");
    ExpectError(With("  0013: 23\n", ""), "12: followed by 19 bytes");
}

TEST(MessageFile, HasRowsThatBeginWhereTheLastOneEnds)
{
    ExpectError(With("0004: 61", "0005: 61"), "10: the row begins with 0005: where 0004: is due");
    ExpectError(With("0010: ..", "10: .."), "14: the row begins with 10: where 0010: is due");
    ExpectError(With("0000: 00 01", "0000 00 01"), "9: the row begins with 0000 where 0000: is due");
}

TEST(MessageFile, HasBytesOfTwoHexadecimalDigits)
{
    ExpectError(With("fe ff", "fe fg"), "9: no hexadecimal byte: fg");
    ExpectError(With("fe ff", "fe FF"), "9: no hexadecimal byte: FF");
    ExpectError(With("fe ff", "feff"), "9: no hexadecimal byte: feff");
    ExpectError(With("fe ff", "fe f"), "9: no hexadecimal byte: f");
    ExpectError(With("fe ff", "fe .."), "9: no hexadecimal byte: ..");
    ExpectError(With("61 *4", "*4"), "10: nothing to repeat *4");
    ExpectError(With("61 *4", "61 *0"), "10: nothing to repeat *0");
    ExpectError(With("61 *4", "61 *"), "10: no number: ");
    ExpectError(With("61 *4", "  # 61 *4"), "10: a row without bytes");
}

TEST(MessageFile, HasRowsOnlyInItsSections)
{
    ExpectError(With("encode: yes\n", "encode: yes\n  0000: 00\n"), "7: a row outside wire, arena, decoded and raises");
    ExpectError(With("  port = 4711", "  port: 4711"), "19: no \"name = value\": port: 4711");
    ExpectError(With("  port = 4711", "   = 4711"), "19: no \"name = value\":  = 4711");
}

TEST(MessageFile, MustBeThere)
{
    EXPECT_THROW(ReadMessage("no/such.msg"), MessageFileError);
}
