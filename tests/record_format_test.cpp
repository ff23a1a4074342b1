// Records and views in words: as a tree, on one line, through fmt and through a stream. What they show is the same for
// both, nothing in a text steers a terminal, and no secret is shown.
#include <common/message.h>
#include <common/record_format.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace vyn_connector {

// A list whose elements have entries, as none of the library's has.
struct Subscribers {
    std::vector<VynSubscriptions> all;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Subscribers {
    zt_ptr_t all;
};

namespace vyn_connector::common {

VYN_RECORD(Subscribers, Subscribers, 8, 4,
    VYN_FIELD(0, 8, all, List<4>));

} // namespace vyn_connector::common

namespace {

using namespace vyn_connector;
using common::RawVynParam;
using testing::HasSubstr;
using testing::Not;

static_assert(noexcept(common::MemberId<&Credentials::userName>()));

// fmt would show what is only one of the two in its own way as well.
static_assert(!common::detail::AreShownAsRecords(common::RecordList<std::vector<Credentials>>()));
static_assert(!common::detail::AreShownAsRecords(common::RecordList<std::pair<int, Credentials>>()));
static_assert(common::detail::AreShownAsRecords(common::RecordList<Credentials, ProxySettings>()));

// As the record itself, and as a view of its message.
template <typename Record>
void ExpectShown(const Record& record, const std::string& tree, const std::string& line)
{
    EXPECT_EQ(fmt::format("{}", record), tree);
    EXPECT_EQ(fmt::format("{:c}", record), line);

    const common::Message<Record> message = common::Encode(record);
    const zt_arena arena = common::ArenaOf(message.arena.data(), message.arena.size());
    const common::RecordView<Record> view(message.wire, &arena);
    EXPECT_EQ(fmt::format("{}", view), tree);
    EXPECT_EQ(fmt::format("{:c}", view), line);

    std::ostringstream out;
    {
        using vyn_connector::operator<<; // std::array<std::byte, 16> has no namespace to look in
        out << record << '|' << view;
    }
    EXPECT_EQ(out.str(), tree + '|' + tree);
}

TEST(RecordFormat, NumbersTextsNestedAndAbsent)
{
    ServerConnectionParameters parameters;
    parameters.address = "host";
    parameters.proxy = ProxySettings{"proxy", 3128, {"jo", "secret"}};
    parameters.timeouts = VynRequestsTimeouts{1, 2};
    ExpectShown(parameters,
                "address                         host\n"
                "proxy\n"
                "  address                       proxy\n"
                "  port                          3128\n"
                "  credentials\n"
                "    userName                    jo\n"
                "    password                    ********\n"
                "ssl                             (absent)\n"
                "timeouts\n"
                "  field1                        1\n"
                "  field2                        2",
                "{address: \"host\", proxy: {address: \"proxy\", port: 3128, credentials: {userName: \"jo\", "
                "password: ********}}, ssl: (absent), timeouts: {field1: 1, field2: 2}}");
}

TEST(RecordFormat, FlagsTimesAndEmptyTexts)
{
    ExpectShown(FileInfo{"", true, false, wem::types::Timestamp{1'000'000'000'999'999'999}, 9},
                "fileName                        (empty)\n"
                "field2                          true\n"
                "field3                          false\n"
                "timestamp                       2001-09-09 01:46:40 UTC\n"
                "fileSize                        9",
                "{fileName: \"\", field2: true, field3: false, timestamp: 2001-09-09 01:46:40 UTC, fileSize: 9}");
}

TEST(RecordFormat, TextsThatLookLikeOurWordsAreQuoted)
{
    EXPECT_EQ(fmt::format("{}", FileInfoParams{"(empty)"}), "fileName                        \"(empty)\"");
    EXPECT_EQ(fmt::format("{}", FileInfoParams{"********"}), "fileName                        \"********\"");
    EXPECT_EQ(fmt::format("{}", FileInfoParams{"empty)"}), "fileName                        empty)");
}

TEST(RecordFormat, TimesBefore1970)
{
    FileInfo info;
    info.timestamp = wem::types::Timestamp{-1};
    EXPECT_THAT(fmt::format("{}", info), HasSubstr("1969-12-31 23:59:59 UTC"));
}

TEST(RecordFormat, ListsWithoutARecordAround)
{
    ExpectShown(std::vector<RawVynParam>{{{7}, "name"}, {{}, "b"}},
                "params\n"
                "  name: (1 byte)\n"
                "  b: (0 bytes)",
                "{params: [{name: \"name\", value: (1 byte)}, {name: \"b\", value: (0 bytes)}]}");
    ExpectShown(std::vector<RawVynParam>{}, "params                          (none)", "{params: []}");
}

TEST(RecordFormat, ListsInARecordAndOptionalTexts)
{
    ClientCertInfo certificate;
    certificate.field1 = 4;
    certificate.field2 = "pem";
    certificate.field4 = "a";
    ExpectShown(std::vector<ClientCertInfo>{certificate},
                "certs\n"
                "  4: pem: (empty): a",
                "{certs: [{field1: 4, field2: \"pem\", field3: \"\", field4: \"a\"}]}");
}

TEST(RecordFormat, Identifiers)
{
    VynUpdateIdentifier identifier{};
    identifier[0] = std::byte{0x0A};
    identifier[15] = std::byte{0xF0};
    ExpectShown(identifier, "bytes                           0a0000000000000000000000000000f0",
                "{bytes: 0a0000000000000000000000000000f0}");
    ExpectShown(VynUpdateIdentifiers{identifier},
                "identifiers\n"
                "  0a0000000000000000000000000000f0",
                "{identifiers: [{bytes: 0a0000000000000000000000000000f0}]}");
}

// A set is shown in the order of its texts, whatever its own is.
TEST(RecordFormat, Subscriptions)
{
    ExpectShown(VynSubscription{VynEventSeverity::Severity1, {}},
                "severity                        1\n"
                "eventTypes                      (none)",
                "{severity: 1, eventTypes: []}");
    ExpectShown(VynSubscription{VynEventSeverity::Severity2, {"b", "a", "c, d"}},
                "severity                        2\n"
                "eventTypes                      a, b, \"c, d\"",
                "{severity: 2, eventTypes: [\"a\", \"b\", \"c, d\"]}");

    VynSubscriptionsWithHash subscriptions;
    subscriptions.first = 5;
    for (const auto severity : {VynEventSeverity::Severity0, VynEventSeverity::Severity1, VynEventSeverity::Severity2,
                                VynEventSeverity::Severity3})
        subscriptions.second.emplace(severity, std::unordered_set<std::string>{});
    EXPECT_THAT(fmt::format("{}", subscriptions), HasSubstr("hash                            5\n"
                                                            "subscriptions\n"
                                                            "  entries\n"
                                                            "    severity "));
    EXPECT_THAT(fmt::format("{}", subscriptions), HasSubstr("    severity 1                  (none)"));
    EXPECT_THAT(fmt::format("{:c}", subscriptions), HasSubstr("{severity: 1, eventTypes: []}"));
}

// Of the elements of a list, the values alone.
TEST(RecordFormat, SubscriptionsInAList)
{
    Subscribers subscribers;
    subscribers.all.resize(1);
    subscribers.all[0].emplace(VynEventSeverity::Severity2, std::unordered_set<std::string>{"a", "b"});
    EXPECT_EQ(fmt::format("{}", subscribers), "all\n"
                                              "  2: a, b");
    EXPECT_EQ(fmt::format("{:c}", subscribers), "{all: [{entries: [{severity: 2, eventTypes: [\"a\", \"b\"]}]}]}");
}

TEST(RecordFormat, AnEventsStrings)
{
    VynEvent event;
    event.field1 = "one";
    event.stringArray[8] = "a, \"b\"";
    const std::string strings = R"(["", "", "", "", "", "", "", "", "a, \"b\""])";
    EXPECT_THAT(fmt::format("{}", event), HasSubstr("field1                          one\n"
                                                    "severity                        0\n"));
    EXPECT_THAT(fmt::format("{}", event), testing::EndsWith("stringArray                     " + strings));
    EXPECT_THAT(fmt::format("{:c}", event), testing::EndsWith("stringArray: " + strings + "}"));
}

TEST(RecordFormat, WhatWouldSteerATerminalIsEscaped)
{
    const std::string text = "\x1b[1m\r\n\t\x7f\xc2\x9b\xff \xe2\x80\xae \"q\" \\ \xc3\xa9\\";
    const std::string escaped = R"(\x1b[1m\r\n\t\x7f\x9b\xff \u202e "q" \\ )"
                                "\xc3\xa9"
                                R"(\\)";
    EXPECT_EQ(fmt::format("{}", FileInfoParams{text}), "fileName                        " + escaped);
    EXPECT_EQ(fmt::format("{:c}", FileInfoParams{"\x1b\""}), R"({fileName: "\x1b\""})");
}

TEST(RecordFormat, LongTextsAreShortenedBetweenCharacters)
{
    const std::string whole(128, 'x');
    EXPECT_EQ(fmt::format("{}", ClientCertParams{whole, "", false, 0}).substr(0, 32 + 128 + 1),
              "field1                          " + whole + "\n");
    EXPECT_THAT(fmt::format("{}", ClientCertParams{whole + "y", "", false, 0}),
                HasSubstr("field1                          " + whole + "... (129 bytes)\n"));
    // Characters of two to four bytes, the last of which would be cut off.
    for (const std::string character : {"\xc3\xa9", "\xe2\x82\xac", "\xe2\x82\xad", "\xf0\x9f\x98\x81"}) {
        const std::string before(129 - character.size(), 'x');
        EXPECT_THAT(fmt::format("{:c}", ClientCertParams{before + character, "", false, 0}),
                    HasSubstr("{field1: \"" + before + "\"... (129 bytes), "));
    }
}

TEST(RecordFormat, AnEmptyTextIsEmptyWhateverFollowsItInTheArena)
{
    ExpectShown(Credentials{"", "(x"},
                "userName                        (empty)\n"
                "password                        ********",
                "{userName: \"\", password: ********}");
}

TEST(RecordFormat, ATextOfJustTheLongestIsWholeWhateverFollowsItInTheArena)
{
    const std::string whole(128, 'x');
    ExpectShown(ClientCertParams{whole, "\x81", false, 7},
                "field1                          " + whole + "\n" +
                    "field2                          \\x81\n"
                    "field3                          false\n"
                    "field4                          7",
                "{field1: \"" + whole + "\", field2: \"\\x81\", field3: false, field4: 7}");
}

TEST(RecordFormat, LongTextsWithoutCharactersAreShortenedToo)
{
    std::string shown; // 128 bytes but for the three that could be of one character
    for (int i = 0; i < 125; ++i)
        shown += R"(\x80)";
    EXPECT_EQ(fmt::format("{}", FileInfoParams{std::string(200, '\x80')}),
              "fileName                        " + shown + "... (200 bytes)");
}

TEST(RecordFormat, LongListsAndSetsAreCut)
{
    const std::vector<RawVynParam> most(100, RawVynParam{{}, "n"});
    std::string lines = "params";
    std::string elements;
    for (int i = 0; i < 100; ++i) {
        lines += "\n  n: (0 bytes)";
        elements += i == 0 ? "{params: [" : ", ";
        elements += "{name: \"n\", value: (0 bytes)}";
    }
    EXPECT_EQ(fmt::format("{}", most), lines);
    EXPECT_EQ(fmt::format("{:c}", most), elements + "]}");
    const std::vector<RawVynParam> more(102, RawVynParam{{}, "n"});
    EXPECT_EQ(fmt::format("{}", more), lines + "\n  (2 more)");
    EXPECT_EQ(fmt::format("{:c}", more), elements + ", (2 more)]}");

    VynSubscription subscription;
    for (int i = 0; i < 100; ++i)
        subscription.second.insert(fmt::format("{:03}", i));
    EXPECT_THAT(fmt::format("{}", subscription), testing::EndsWith("098, 099"));
    EXPECT_THAT(fmt::format("{:c}", subscription), testing::EndsWith("\"098\", \"099\"]}"));
    subscription.second.insert("100");
    EXPECT_THAT(fmt::format("{}", subscription), testing::EndsWith("098, 099, (1 more)"));
    EXPECT_THAT(fmt::format("{:c}", subscription), testing::EndsWith("\"099\", (1 more)]}"));
}

TEST(RecordFormat, AFormatThatIsNoneIsRefused)
{
    const Credentials credentials{"u", "p"};
    EXPECT_THROW(
        {
            try {
                static_cast<void>(fmt::format(fmt::runtime("{:x}"), credentials));
            } catch (const fmt::format_error& error) {
                EXPECT_STREQ(error.what(), "a record's format is \"\" or \"c\"");
                throw;
            }
        },
        fmt::format_error);
    EXPECT_THROW(static_cast<void>(fmt::format(fmt::runtime("{:cc}"), credentials)), fmt::format_error);
}

// What its Get throws.
TEST(RecordFormat, AViewOfABadMessageThrows)
{
    std::uint8_t bytes[4] = {};
    const zt_arena arena{bytes, bytes + 4, bytes + 4};
    const common::WireOf<Credentials> wire{{5, 0}, {0, 0}};
    const common::RecordView<Credentials> view(wire, &arena);
    try {
        static_cast<void>(fmt::format("{}", view));
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "zt string: zt_arena does not contain an element with the address 5");
    }
}

TEST(RecordFormat, LinesSayWhoseTheyAre)
{
    std::vector<common::RecordLine> lines;
    common::ForEachLine(ProxySettings{"a", 1, {"u", "p"}},
                        [&](const common::RecordLine& line) { lines.push_back(line); });
    const std::vector<common::RecordLine> expected{
        {0, "address", "a", common::MemberId<&ProxySettings::address>()},
        {0, "port", "1", common::MemberId<&ProxySettings::port>()},
        {0, "credentials", "", common::MemberId<&ProxySettings::credentials>()},
        {1, "userName", "u", common::MemberId<&Credentials::userName>()},
        {1, "password", "********", common::MemberId<&Credentials::password>()},
    };
    EXPECT_EQ(lines, expected);
}

TEST(RecordFormat, LinesAreEqualWhereAllOfThemIs)
{
    const common::RecordLine line{1, "address", "a", common::MemberId<&ProxySettings::address>()};
    const auto isEqual = [&](std::size_t depth, const char* name, const char* value, const void* member) {
        return line == common::RecordLine{depth, name, value, member};
    };
    EXPECT_TRUE(isEqual(1, "address", "a", line.member));
    EXPECT_FALSE(isEqual(2, "address", "a", line.member));
    EXPECT_FALSE(isEqual(1, "name", "a", line.member));
    EXPECT_FALSE(isEqual(1, "address", "b", line.member));
    EXPECT_FALSE(isEqual(1, "address", "a", nullptr));
}

TEST(RecordFormat, GoogleTestPrintsRecordsWithIt)
{
    EXPECT_EQ(testing::PrintToString(Credentials{"u", "p"}), "userName                        u\n"
                                                             "password                        ********");
}

} // namespace
