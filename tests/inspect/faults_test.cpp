// Each reason why the inspector finds fault with a message: at which field, in which words, and what the reader throws.
#include <diff.h>
#include <json.h>
#include <map.h>
#include <message.h>
#include <page.h>
#include <printable.h>
#include <tree.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

namespace {

using inspect::Capture;
using inspect::Finding;
using inspect::Message;
using inspect::Reason;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

inspect::ByteString Bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

// 32-bit numbers, as they lie in a message.
std::string Words(const std::vector<std::uint32_t>& words)
{
    std::string bytes(4 * words.size(), '\0');
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return bytes;
}

Capture Make(const std::string& record, const std::string& wire, const std::string& arena)
{
    Capture capture;
    capture.record = record;
    capture.wire = Bytes(wire);
    capture.arena = Bytes(arena);
    return capture;
}

// "! path: words" of what readers refuse, "~ path: words" of what they tolerate.
std::vector<std::string> FaultsOf(const Message& message)
{
    std::vector<std::string> faults;
    for (const Finding& finding : message.findings) {
        std::string fault = IsRefused(finding.reason) ? "! " : "~ ";
        if (!finding.path.empty()) fault += finding.path + ": ";
        faults.push_back(fault + finding.words);
    }
    return faults;
}
std::vector<std::string> FaultsOf(const std::string& record, const std::string& wire, const std::string& arena)
{
    return FaultsOf(Inspect(Make(record, wire, arena)));
}

TEST(InspectFaults, OutsideTheArena)
{
    const Message message = Inspect(Make("FileInfoParams", Words({2, 5}), "abcd"));
    EXPECT_THAT(FaultsOf(message), ElementsAre("! FileInfoParams.fileName: outside the arena by 3 bytes",
                                               "~ 4 bytes of the arena at offset 0 that no field owns"));
    EXPECT_EQ(message.findings[0].exception, "std::out_of_range");
    EXPECT_EQ(message.findings[0].text, "zt string: zt_arena does not contain an element with the address 2");
    EXPECT_EQ(message.exceptionPath, "FileInfoParams.fileName");
    EXPECT_EQ(message.IsA(), inspect::Standing::Refused);
    EXPECT_EQ(message.refused, 1u);
    EXPECT_EQ(message.tolerated, 1u);
}

TEST(InspectFaults, PartOfAnElement)
{
    const Message message = Inspect(Make("ProductUpdCfgArray", Words({0, 17}), std::string(17, '\0')));
    EXPECT_EQ(FaultsOf(message)[0],
              "! ProductUpdCfgArray.items: not a whole number of elements of 16 bytes: 1 byte too many");
    EXPECT_EQ(message.exceptionText, "zt vector: zt_arena does not contain an element with the address 0");
    EXPECT_EQ(
        FaultsOf("ProductUpdCfgArray", Words({0, 33}), "")[0],
        "! ProductUpdCfgArray.items: outside the arena by 33 bytes, and not a whole number of elements of 16 bytes: 1 "
        "byte too many");
}

TEST(InspectFaults, ARangesReaderThrowsAResultCode)
{
    const Message message = Inspect(Make("VynUpdateIdentifierContainer", Words({1, 16}), ""));
    EXPECT_EQ(message.exception, "mur::ResultCodeException");
    EXPECT_FALSE(message.exceptionText.empty());
    EXPECT_THAT(FaultsOf("VynUpdateIdentifierContainer", Words({0, 0}), ""),
                ElementsAre("~ VynUpdateIdentifierContainer.identifiers: empty, which no writer writes"));
}

TEST(InspectFaults, OverTheWritersLimit)
{
    EXPECT_THAT(FaultsOf("Credentials", Words({0, 128, 128, 0}), std::string(128, 'a')), ElementsAre());
    EXPECT_THAT(FaultsOf("Credentials", Words({0, 130, 130, 0}), std::string(130, 'a')),
                ElementsAre("~ Credentials.userName: over the writer's limit of 128: 2 bytes too many"));
    EXPECT_EQ(FaultsOf("ProductHsdpInfo", Words({1, 0, 6 * 16}), std::string(6 * 16, '\0'))[0],
              "~ ProductHsdpInfo.statuses: over the writer's limit of 5: 1 element too many");
}

TEST(InspectFaults, Unaligned)
{
    const std::vector<std::string> faults =
        FaultsOf("ProductUpdCfgArray", Words({1, 16}), '\0' + Words({17, 0, 17, 0}));
    EXPECT_THAT(faults, ElementsAre("~ ProductUpdCfgArray.items: unaligned: its elements are aligned to 4 bytes",
                                    "~ 1 byte of the arena at offset 0 that no field owns"));
    Capture three = Make("ProductUpdCfgArray", Words({1, 16}), '\0' + Words({17, 0, 17, 0}));
    three.start = 3; // where offset 1 is aligned
    EXPECT_THAT(FaultsOf(Inspect(three)), ElementsAre());
}

TEST(InspectFaults, AnotherOrderThanTheWriters)
{
    EXPECT_THAT(FaultsOf("VynParam", Words({3, 2, 0, 3}), "abcde"),
                ElementsAre("~ VynParam.name: 3 bytes behind the offset 0 where a writer puts it",
                            "~ VynParam.value: order other than the writer's: at offset 0, where the fields before it "
                            "end at 5"));
}

TEST(InspectFaults, OverlappingAnotherField)
{
    EXPECT_THAT(FaultsOf("VynParam", Words({0, 4, 2, 3}), "abcde"),
                ElementsAre("~ VynParam.value: order other than the writer's: at offset 2, where the fields before it "
                            "end at 4",
                            "~ VynParam.value: overlaps VynParam.name by 2 bytes"));
}

TEST(InspectFaults, BytesThatNoFieldOwns)
{
    EXPECT_THAT(FaultsOf("FileInfoParams", Words({0, 3}), "abcde"),
                ElementsAre("~ 2 bytes of the arena at offset 3 that no field owns"));
}

TEST(InspectFaults, BehindTheUsedPart)
{
    Capture capture = Make("FileInfoParams", Words({0, 5}), "abcde");
    capture.top = 3;
    EXPECT_THAT(FaultsOf(Inspect(capture)),
                ElementsAre("~ FileInfoParams.fileName: behind the used part of the arena by 2 bytes"));
}

TEST(InspectFaults, PaddingAndGapsThatAreNotZero)
{
    const std::string proxy = Words({0, 0}) + std::string("\x50\0\0\1", 4) + Words({0, 0, 0, 0});
    EXPECT_THAT(FaultsOf("ProxySettings", proxy, ""), ElementsAre("~ ProxySettings.padding: not zero"));
    const std::string gap = std::string("ab\0\1", 4) + std::string(8, '\0');
    const std::string cert = Words({1, 0, 2, 2, 0, 4, 8});
    EXPECT_THAT(FaultsOf("ClientCertInfo", cert, gap + ""),
                testing::Contains("~ ClientCertInfo.field4: the gap before it, 2 bytes at offset 2, is not zero"));
}

TEST(InspectFaults, Flags)
{
    const std::string info = Words({0, 0, 0x00000201, 0, 0, 0, 0, 0});
    EXPECT_THAT(FaultsOf("FileInfo", info, ""), ElementsAre("~ FileInfo.field3: neither 0 nor 1"));
}

TEST(InspectFaults, AbsentWithAnOffset)
{
    EXPECT_THAT(FaultsOf("LicenseInfo", Words({0, 0, 1, 0}), "a"),
                ElementsAre("~ LicenseInfo.keyInfo2: absent, with the offset 1",
                            "~ 1 byte of the arena at offset 0 that no field owns"));
}

TEST(InspectFaults, RepeatedNamesAndSeverities)
{
    EXPECT_THAT(FaultsOf("VynSubscription", Words({0, 0, 24}), Words({24, 1, 25, 1, 26, 1}) + "aba"),
                ElementsAre("~ VynSubscription.eventTypes[2]: occurs before"));
    const std::string entry = Words({2, 0, 0});
    EXPECT_THAT(FaultsOf("VynSubscriptions", entry + entry + std::string(24, '\0'), ""),
                ElementsAre("~ VynSubscriptions.entries[1]: occurs before"));
}

TEST(InspectFaults, AnUnusedEntryBeforeAUsedOne)
{
    const std::string empty(12, '\0');
    const std::string used = Words({1, 0, 8});
    EXPECT_THAT(FaultsOf("VynSubscriptions", used + empty + Words({2, 12, 0}) + empty,
                         Words({8, 1}) + "a" + std::string(3, '\0')),
                ElementsAre("~ VynSubscriptions.entries[1]: unused, with used ones behind it"));
}

TEST(InspectFaults, AnEventsSeverityAndStrings)
{
    std::string wire(136, '\0');
    const std::string pointers = Words({0, 1});
    for (std::size_t i = 0; i < 15; ++i) {
        const std::size_t at = i == 0 ? 0 : i < 6 ? 4 + 8 * i : 64 + 8 * (i - 6);
        wire.replace(at, 8, Words({static_cast<std::uint32_t>(i), 1}));
    }
    wire.replace(8, 4, Words({4}));
    const Message message = Inspect(Make("VynEvent", wire, std::string(14, 'x')));
    EXPECT_THAT(FaultsOf(message),
                ElementsAre("! VynEvent.severity: 4 is greater than 3",
                            "! VynEvent.stringArray[8]: outside the used part of the arena by 1 byte"));
    EXPECT_EQ(message.exceptionText, "vyn event: severity: 4 is greater than 3");
    EXPECT_EQ(message.findings[1].text,
              "vyn event: stringArray[8]: zt_arena does not contain an element with the address 14");
}

TEST(InspectFaults, States)
{
    EXPECT_THAT(FaultsOf("VynConnectorState", Words({7}), ""), ElementsAre());
    EXPECT_THAT(FaultsOf("VynConnectorState", Words({99}), "a"),
                ElementsAre("! VynConnectorState.state: 99 is no state's code: reading it gives none",
                            "~ 1 byte of the arena at offset 0 that no field owns"));
    EXPECT_THAT(Tree(Inspect(Make("VynConnectorState", Words({7}), "")), {}),
                HasSubstr("  wire 0000  state  State  6\n"));
}

// The parameter's value comes before its name, so its error is the one that is thrown.
TEST(InspectFaults, TheReadersOrderDecidesWhatIsThrown)
{
    const Message message = Inspect(Make("VynParam", Words({9, 1, 8, 1}), ""));
    EXPECT_EQ(message.exceptionPath, "VynParam.value");
    EXPECT_EQ(message.exceptionText, "zt blob: zt_arena does not contain an element with the address 8");
    EXPECT_EQ(message.findings[0].text, "zt string: zt_arena does not contain an element with the address 9");
}

TEST(InspectFaults, AFileThatIsNone)
{
    const auto faults = [](const std::string& file) {
        return FaultsOf(Inspect(inspect::ParseFrame(reinterpret_cast<const std::uint8_t*>(file.data()), file.size())));
    };
    const std::string whole = "VYN1" + Words({14, 8, 3}) + "FileInfoParams" + Words({0, 3}) + "abc";
    EXPECT_THAT(faults(whole), ElementsAre());
    EXPECT_THAT(faults(""), ElementsAre("! 0 bytes, where a frame begins with 16", "! no record has this name"));
    EXPECT_THAT(faults("X" + whole.substr(1)), ElementsAre("! does not begin with VYN1"));
    EXPECT_THAT(faults(whole + "d"), ElementsAre("! 1 byte behind the message"));
    EXPECT_EQ(faults(whole.substr(0, whole.size() - 1))[0], "! the file ends 1 byte before the end of the arena");
    EXPECT_EQ(faults("VYN1" + Words({14, 8, 0xFFFFFFFF}) + "FileInfoParams" + Words({0, 3}))[0],
              "! the arena of 4294967295 bytes, at most 16777216");
    EXPECT_EQ(FaultsOf("FileInfoParams", "abc", "")[0], "! a wire structure of 3 bytes, where FileInfoParams has 8");
    EXPECT_EQ(FaultsOf("FileInfoParams", "a", "")[0], "! a wire structure of 1 byte, where FileInfoParams has 8");
    EXPECT_EQ(faults("V")[0], "! 1 byte, where a frame begins with 16");
    EXPECT_THAT(FaultsOf("Nobody", "", ""), ElementsAre("! no record has this name"));
}

// --- what is shown of it ---

Message Faulty()
{
    return Inspect(Make("VynParams", Words({0, 32}), Words({32, 3, 90, 4, 35, 2, 37, 1}) + "one" + "two"));
}

TEST(InspectTree, ShowsFieldsAndFaults)
{
    EXPECT_EQ(Tree(Faulty(), {}),
              R"(VynParams, 8 bytes and an arena of 38: refused (1 fault)
reading it throws std::out_of_range at VynParams.params[0].value: zt blob: zt_arena does not contain an element with the address 90
   wire 0000  params     List<2147483647>  2 elements of 2147483647 -> 0x0000..0x0020
  arena 0000    [0]      VynParam
  arena 0000      name   Text<128>         "one"  3 of 128 bytes -> 0x0020..0x0023
  arena 0008      value  Blob              4 of 65536 bytes -> 0x005a..0x005e
!!                  VynParams.params[0].value: outside the arena by 56 bytes
                      std::out_of_range: zt blob: zt_arena does not contain an element with the address 90
  arena 0010    [1]      VynParam
  arena 0010      name   Text<128>         "tw"  2 of 128 bytes -> 0x0023..0x0025
  arena 0018      value  Blob              6f  1 of 65536 bytes -> 0x0025..0x0026
)");
}

TEST(InspectTree, IsColouredWhereThatIsAskedFor)
{
    EXPECT_THAT(Tree(Faulty(), {}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(Tree(Faulty(), {true, false}), HasSubstr("\x1b[1;31m"));
}

TEST(InspectTree, WritesOutWhatIsNotPrintable)
{
    const std::string text = "a\x1b[2J\"\\\xff\xe2\x80\xae\xc3\xa9";
    EXPECT_EQ(inspect::Printable(text), "a\\x1b[2J\\\"\\\\\\xff\\xe2\\x80\\xae\xc3\xa9");
    EXPECT_EQ(inspect::Printable("\xed\xa0\x80"), "\\xed\\xa0\\x80"); // half a character of UTF-16
    EXPECT_EQ(inspect::Printable("\xc0\x80\xf4\x90\x80\x80"), "\\xc0\\x80\\xf4\\x90\\x80\\x80"); // none
    EXPECT_EQ(inspect::Printable("\xc2\x85\xe2"), "\\xc2\\x85\\xe2");
}

// A secret, and a field that leads to the same bytes.
TEST(InspectSecrets, AreMaskedInAllThatIsShown)
{
    const Message message = Inspect(Make("Credentials", Words({2, 6, 3, 7}), "bobHUNTER2"));
    for (const std::string& shown : {Tree(message, {}), ToJson(message, false), Map(message, false),
                                     Page(message, false), Diff(message, message, {})}) {
        EXPECT_THAT(shown, Not(HasSubstr("HUNT")));
        EXPECT_THAT(shown, Not(HasSubstr("48 55 4e 54")));
        EXPECT_THAT(shown, HasSubstr("********"));
    }
    EXPECT_THAT(Tree(message, {false, true}), HasSubstr("HUNTER2"));
    EXPECT_THAT(Page(message, true), HasSubstr("48 55 4e 54"));
    EXPECT_THAT(Map(message, true), HasSubstr("HUNTER2"));
}

void ExpectHidden(const Message& message, const std::string& how)
{
    for (const std::string& shown : {Tree(message, {}), ToJson(message, false), Map(message, false),
                                     Page(message, false), Diff(message, message, {})})
        for (const char* part : {"Qz", "51 7a", "517a", "z7", "7a 37"})
            EXPECT_THAT(shown, Not(HasSubstr(part))) << how;
}

// Whose pointer leads past the end of what is there, for each end there can be.
TEST(InspectSecrets, AreMaskedWhereTheArenaIsCutOff)
{
    const std::string arena = "bobQz7Kx9Wv2Jp4Y";
    for (std::size_t size = 0; size < arena.size(); ++size)
        ExpectHidden(Inspect(Make("Credentials", Words({0, 3, 3, 13}), arena.substr(0, size))), std::to_string(size));
    EXPECT_THAT(Page(Inspect(Make("Credentials", Words({0, 3, 3, 13}), "bobQz")), true), HasSubstr("51 7a"));
}

TEST(InspectSecrets, AreMaskedWhereverTheirPointerLeads)
{
    const std::string arena = "bobQz7Kx9Wv2Jp4Y";
    for (const std::uint32_t offset : {3u, 4u, 15u, 16u, 17u, 0x40000000u, 0xFFFFFFFFu})
        for (const std::uint32_t size : {1u, 2u, 13u, 14u, 0xFFFFFFFFu})
            ExpectHidden(Inspect(Make("Credentials", Words({0, 3, offset, size}), arena)),
                         std::to_string(offset) + " " + std::to_string(size));
    // What is left of it, and another field leads there as well.
    ExpectHidden(Inspect(Make("Credentials", Words({0, 16, 3, 14}), arena)), "userName");
}

TEST(InspectSecrets, AreMaskedInARecordAroundAndInOneThatNobodyKnows)
{
    ExpectHidden(Inspect(Make("ProxySettings", Words({0xFFFFFFFF, 9, 0, 0, 0, 0, 0}), "Qz7Kx9W")), "around");
    ExpectHidden(Inspect(Make("Credentialz", "Qz7Kx9W", "Qz7Kx9W")), "unknown");
    EXPECT_THAT(Page(Inspect(Make("FileInfoParams", Words({9, 9}), "Qz7Kx9W")), false), HasSubstr("51 7a"));
}

TEST(InspectMarkup, WhatAMessageHoldsCannotLeaveItsPlace)
{
    const std::string text = "</script><svg onload='x'>&\"";
    const Message message = Inspect(Make("FileInfoParams", Words({0, static_cast<std::uint32_t>(text.size())}), text));
    EXPECT_THAT(Page(message, false), Not(HasSubstr("<svg onload")));
    EXPECT_THAT(Page(message, false), HasSubstr("&lt;svg onload=&#39;x&#39;&gt;&amp;"));
    EXPECT_THAT(Map(message, false), Not(HasSubstr("<svg onload")));
}

TEST(InspectMap, DrawsEachFieldOnceAndHatchesTheRest)
{
    const std::string map = Map(Inspect(Make("FileInfoParams", Words({1, 3}), "xabcy")), false);
    EXPECT_THAT(map,
                HasSubstr("<title>FileInfoParams.fileName Text&lt;1024&gt;\n&quot;abc&quot;\n3 of 1024 bytes -&gt; "
                          "0x0001..0x0004\nbytes 0x0001..0x0004"));
    EXPECT_THAT(map, HasSubstr("<title>no field\nbytes 0x0000..0x0001</title><path class=\"cell nobody\""));
    EXPECT_THAT(map, HasSubstr("class=\"tolerated\""));
    EXPECT_THAT(map, Not(HasSubstr("path class=\"refused\"")));
    EXPECT_THAT(Map(Faulty(), false), HasSubstr("path class=\"refused\""));
    EXPECT_THAT(Map(Inspect(Make("VynParam", Words({0, 4, 2, 3}), "abcde")), false),
                HasSubstr("path class=\"shared\""));
}

TEST(InspectDiff, MarksWhatChangedAndWhatMoved)
{
    const Message a = Inspect(Make("VynParam", Words({0, 1, 1, 2}), "abc"));
    const Message b = Inspect(Make("VynParam", Words({0, 2, 2, 2}), "axbc"));
    EXPECT_EQ(Diff(a, b, {}), R"(a: VynParam, 16 bytes and an arena of 3: canonical
b: VynParam, 16 bytes and an arena of 4: canonical
* name                                "a"  1 byte -> 0x0000                               "ax"  2 bytes -> 0x0000
> value                               6263  2 bytes -> 0x0001                             6263  2 bytes -> 0x0002
1 field with another value, 1 elsewhere in the arena, 0 only in a, 0 only in b
)");
}

TEST(InspectDiff, ShowsElementsOfOneAlone)
{
    const Message a = Inspect(Make("VynParams", Words({0, 0}), ""));
    const Message b = Inspect(Make("VynParams", Words({0, 16}), Words({16, 0, 16, 0})));
    EXPECT_THAT(Diff(a, b, {}), HasSubstr("+   [0]"));
    EXPECT_THAT(Diff(b, a, {}), HasSubstr("-   [0]"));
}

// --- bounds ---

std::string OfParams(std::uint32_t count, const std::vector<std::uint32_t>& param)
{
    std::vector<std::uint32_t> params;
    for (std::uint32_t i = 0; i < count; ++i)
        params.insert(params.end(), param.begin(), param.end());
    return Words(params);
}

TEST(InspectBounds, ElementsAreCutAndTheirFaultsCounted)
{
    const std::uint32_t count = 5000;
    const Message message = Inspect(Make("VynParams", Words({0, count * 16}), OfParams(count, {0xFFFFFFFF, 1, 0, 0})));
    EXPECT_EQ(message.refused, count);
    EXPECT_THAT(Tree(message, {}), HasSubstr("... 4000 more\n"));
    EXPECT_THAT(Tree(message, {}), HasSubstr("faults that are not shown"));
    EXPECT_LE(message.findings.size(), inspect::Extent{}.mostFindings + 2 * message.nodes.size());
}

// Behind thousands of faults, shown and not.
TEST(InspectBounds, EveryRefusedFieldThatIsShownSaysWhatItsReaderThrows)
{
    const std::uint32_t size = 3000 * 16;
    const std::string wire = Words({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, size, 7, 0x50000000, 16, 0});
    const std::string arena = OfParams(3000, {0x40000000, 1, 0, 0});
    for (const inspect::Extent& extent :
         {inspect::Extent{}, inspect::Extent{10, 50000, 1000}, inspect::Extent{2, 9, 0}}) {
        const Message message = Inspect(Make("ProductInfo", wire, arena), extent);
        const Finding* last = nullptr;
        for (const Finding& finding : message.findings) {
            EXPECT_EQ(IsRefused(finding.reason), !finding.exception.empty()) << finding.path;
            if (finding.path == "ProductInfo.hsdpInfo.statuses") last = &finding;
        }
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(last->exception, "std::out_of_range");
        EXPECT_EQ(last->text, "zt vector: zt_arena does not contain an element with the address 1342177280");
        for (const inspect::Node& node : message.nodes)
            EXPECT_FALSE(node.hasPointer && !node.resolves && node.findings.empty()) << node.name;
        EXPECT_THAT(ToJson(message, false), HasSubstr("with the address 1342177280"));
    }
}

// Pointers, as offset and size, whose numbers all have the same remainder by the number of buckets that a table would
// have for them; and texts of one beginning.
TEST(InspectBounds, ASetsElementsTakeNoLongerWhereSomebodyChoseThem)
{
    const std::uint64_t buckets = 85229;
    const std::uint32_t count = 85200;
    const std::uint32_t size = count * 8;
    std::vector<std::uint32_t> words;
    for (std::uint32_t offset = 0; words.size() < 2 * count; offset = (offset + 1) % size) {
        const std::uint64_t rest = (std::uint64_t{offset} << 32) % buckets;
        for (std::uint64_t length = (buckets - rest) % buckets; length <= size - offset && words.size() < 2 * count;
             length += buckets)
            words.insert(words.end(), {offset, static_cast<std::uint32_t>(length)});
    }
    const auto begin = std::chrono::steady_clock::now();
    const Message message = Inspect(Make("VynSubscription", Words({0, 0, size}), Words(words)), {10, 10, 10});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_GT(message.tolerated, count);
}

// Over a hundred thousand elements, each of them nearly all of the arena, and all of them in four sets.
TEST(InspectBounds, AliasedElementsTakeNoTimeOfTheirOwn)
{
    const std::uint32_t size = 1 << 20;
    std::string arena(size, '\0');
    for (std::uint32_t at = 0; at < size; at += 8)
        std::memcpy(arena.data() + at, Words({at / 8 % 64, size - 64}).data(), 8);
    std::string wire;
    for (std::uint32_t i = 0; i < 4; ++i)
        wire += Words({i, 0, size});
    const auto begin = std::chrono::steady_clock::now();
    const Message message = Inspect(Make("VynSubscriptions", wire, arena));
    const std::size_t shown = Tree(message, {}).size() + ToJson(message, false).size() + Map(message, false).size();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(120));
    EXPECT_LT(shown, std::size_t{64} << 20);
    EXPECT_GT(message.tolerated, 250000u);
}

} // namespace
