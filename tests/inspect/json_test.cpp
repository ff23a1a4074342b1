// What the inspector prints as JSON of the corpus of readable messages, and of full messages of all records, is what it
// makes the same bytes of again; and what it cannot make a message of, it names by the field's path.
#include "../any_record.h"
#include "corpus.h"
#include "reader.h"

#include <encode.h>
#include <json.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

std::string Json(const inspect::Capture& capture, bool showsSecrets = true)
{
    return inspect::ToJson(inspect::InspectForJson(capture), showsSecrets);
}

TEST(InspectJson, EveryCanonicalMessageOfTheCorpusComesBack)
{
    std::size_t count = 0;
    for (const MessageFile& file : corpus::Files()) {
        const inspect::Capture capture = corpus::CaptureOf(file);
        const inspect::Message message = inspect::InspectForJson(capture);
        if (message.IsA() != inspect::Standing::Canonical) continue;
        ++count;
        const inspect::Capture again = inspect::Encode(inspect::ToJson(message, true));
        EXPECT_EQ(again.record, capture.record) << file.path;
        EXPECT_EQ(again.wire, capture.wire) << file.path;
        EXPECT_EQ(again.arena, inspect::ByteString(capture.arena.begin(),
                                                   capture.arena.begin() + static_cast<std::ptrdiff_t>(file.top)))
            << file.path;
    }
    EXPECT_GT(count, 100u);
}

TEST(InspectJson, FullAndEmptyMessagesOfAllRecordsComeBack)
{
    namespace common = vyn_connector::common;
    const auto expectSame = [](const auto& record) {
        using Record = std::decay_t<decltype(record)>;
        const auto written = common::Encode(record);
        inspect::Capture capture;
        capture.record = common::Description<Record>::name;
        capture.wire.resize(sizeof(written.wire));
        std::memcpy(capture.wire.data(), &written.wire, sizeof(written.wire));
        capture.arena = written.arena;
        const inspect::Capture again = inspect::Encode(Json(capture));
        EXPECT_EQ(again.wire, capture.wire) << capture.record;
        EXPECT_EQ(again.arena, capture.arena) << capture.record;
    };
    common::ForEach(common::AllRecords{}, [&](auto tag) {
        using Record = typename decltype(tag)::Type;
        expectSame(any_record::Make<Record>([](std::uint64_t limit) { return std::min<std::uint64_t>(limit, 3); }));
        if constexpr (!std::is_same_v<Record, vyn_connector::VynUpdateIdentifiers>)
            expectSame(any_record::Make<Record>([](std::uint64_t) { return 0; }));
    });
}

// A canonical message however long its lists are; of another one they are cut.
TEST(InspectJson, ACanonicalListIsNeverCut)
{
    const inspect::Extent extent{1000, 3000, 10};
    const std::uint32_t count = 1500;
    const std::uint32_t end = count * 16;
    inspect::Capture capture{"VynParams", inspect::ByteString(8), inspect::ByteString(end), {}, 0, {}};
    std::memcpy(capture.wire.data() + 4, &end, 4);
    for (std::size_t at = 0; at < end; at += 8)
        std::memcpy(capture.arena.data() + at, &end, 4);
    const std::string json = ToJson(InspectForJson(capture, extent), true, extent.mostNodes);
    EXPECT_THAT(json, HasSubstr("{\"cut\":500}\n  ],\n  \"value\""));
    EXPECT_EQ(nlohmann::json::parse(json)["value"]["params"].size(), count);
    const inspect::Capture again = inspect::Encode(json);
    EXPECT_EQ(again.wire, capture.wire);
    EXPECT_EQ(again.arena, capture.arena);
    capture.arena.push_back(1);
    const std::string tolerated = ToJson(InspectForJson(capture, extent), true);
    EXPECT_EQ(nlohmann::json::parse(tolerated)["value"]["params"].back()["cut"], 500);
}

// Their byte is one that no writer touches.
TEST(InspectJson, AnEventsEmptyStringsComeBack)
{
    inspect::Capture capture{"VynEvent", inspect::ByteString(136), inspect::ByteString(15), {}, 0, {}};
    for (std::uint8_t i = 0; i < 15; ++i) {
        capture.wire[i == 0 ? 0u : i < 6 ? 4u + 8u * i : 64u + 8u * (i - 6u)] = i;
        capture.arena[i] = i % 2 == 0 ? static_cast<std::uint8_t>(0x41 + i) : std::uint8_t{0};
    }
    EXPECT_EQ(inspect::Inspect(capture).IsA(), inspect::Standing::Canonical);
    EXPECT_EQ(nlohmann::json::parse(Json(capture))["arena"]["left"][1],
              (nlohmann::json{{"offset", 2}, {"byte", 0x43}}));
    const inspect::Capture again = inspect::Encode(Json(capture));
    EXPECT_EQ(again.wire, capture.wire);
    EXPECT_EQ(again.arena, capture.arena);
}

TEST(InspectJson, IsAsciiAndComesBack)
{
    const std::string text = "\x7f\xc2\x9b[31m\xe2\x80\xae\xc3\xa9\xf0\x9f\x98\x80";
    inspect::Capture capture{"FileInfoParams",
                             {0, 0, 0, 0, static_cast<std::uint8_t>(text.size()), 0, 0, 0},
                             {text.begin(), text.end()},
                             {},
                             0,
                             {}};
    const std::string json = Json(capture);
    for (const char c : json)
        EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7f)) << static_cast<int>(c);
    EXPECT_EQ(inspect::Encode(json).arena, capture.arena);
}

TEST(InspectJson, StatesComeBack)
{
    const inspect::Capture state{"VynConnectorState", {7, 0, 0, 0}, {}, {}, 0, {}};
    const inspect::Capture again = inspect::Encode(Json(state));
    EXPECT_EQ(again.wire, state.wire);
    EXPECT_EQ(again.arena, state.arena);
}

std::string ErrorOf(const std::string& json)
{
    try {
        inspect::Encode(json);
    } catch (const inspect::EncodeError& error) {
        return error.what();
    }
    return "none";
}

std::string Credentials(const std::string& userName, const std::string& password)
{
    return R"({"record":"Credentials","value":{"userName":)" + userName + R"(,"password":)" + password + "}}";
}

TEST(InspectJson, EveryErrorNamesItsField)
{
    EXPECT_EQ(ErrorOf("{"), "not JSON");
    EXPECT_EQ(ErrorOf("[]"), "not an object with a \"record\" and a \"value\"");
    EXPECT_EQ(ErrorOf(R"({"record":"No\u001bne","value":{}})"), R"(there is no record "No\x1bne")");
    EXPECT_EQ(ErrorOf(R"({"record":"Credentials","value":[]})"), "Credentials: not an object");
    EXPECT_EQ(ErrorOf(R"({"record":"Credentials","value":{"userName":"a"}})"), "Credentials.password: missing");
    EXPECT_EQ(ErrorOf(R"({"record":"Credentials","value":{"userName":"a","password":"","x":1}})"),
              R"(Credentials: there is no field "x")");
    EXPECT_EQ(ErrorOf(Credentials("7", "\"\"")), "Credentials.userName: not a string");
    EXPECT_EQ(ErrorOf(Credentials('"' + std::string(128, 'a') + '"', "\"\"")), "none");
    EXPECT_EQ(ErrorOf(Credentials('"' + std::string(129, 'a') + '"', "\"\"")),
              "Credentials.userName: 129 bytes, at most 128");
    EXPECT_EQ(ErrorOf(Credentials(R"({"hex":"0g"})", "\"\"")),
              "Credentials.userName: not a string of hexadecimal digits");
    EXPECT_EQ(ErrorOf(Credentials("\"\"", R"({"masked":true})")),
              "Credentials.password: masked; print the message with --secrets");
    EXPECT_EQ(ErrorOf(R"({"record":"VynServerData","value":{}})").substr(0, 14), "VynServerData.");
    EXPECT_EQ(ErrorOf(R"({"record":"VynParams","value":{"params":[{"name":"a","value":"00"},{"name":"b"}]}})"),
              "VynParams.params[1].value: missing");
    EXPECT_EQ(ErrorOf(R"({"record":"VynUpdateIdentifierContainer","value":{"identifiers":[]}})"),
              "VynUpdateIdentifierContainer.identifiers: empty, which no writer writes");
    EXPECT_EQ(ErrorOf(R"({"record":"VynSubscription","value":{"severity":0,"eventTypes":["a","a"]}})"),
              "VynSubscription.eventTypes[1]: occurs before");
    EXPECT_EQ(ErrorOf(R"({"record":"DynamicAppInfo","value":{"field1":-1}})"),
              "DynamicAppInfo.field1: not an integer from 0 to 18446744073709551615");
    EXPECT_EQ(ErrorOf(R"({"record":"VynConnectorState","value":{"state":13}})"),
              "VynConnectorState.state: there is no state 13");
}

TEST(InspectJson, RefusesWhatStandsTwice)
{
    EXPECT_EQ(ErrorOf(R"({"record":"Credentials","value":{"userName":"a","userName":"b","password":""}})"),
              "Credentials.userName: occurs twice");
    EXPECT_EQ(ErrorOf(R"({"value":{"params":[{},{"name":"a","value":"","name":"b"}]},"record":"VynParams"})"),
              "VynParams.params[1].name: occurs twice");
    EXPECT_EQ(ErrorOf(R"({"record":"VynParams","record":"Credentials","value":{}})"), "record: occurs twice");
    EXPECT_EQ(ErrorOf(R"({"record":"VynParams","value":{"params":[]},"x":1,"x":[{"y":1,"y":2}]})"), "none");
}

// Not even as much as a message of its size takes.
TEST(InspectJson, RefusesWhatNoMessageIs)
{
    EXPECT_EQ(ErrorOf(std::string(30000000, '[')), "nested deeper than any message");
    EXPECT_EQ(ErrorOf(R"({"x":)" + std::string(30000000, '[')), "nested deeper than any message");
    std::string many = R"({"record":"VynParams","value":[0)";
    for (std::size_t i = 0; i < inspect::mostArenaBytes / 4; ++i)
        many += ",0";
    EXPECT_EQ(ErrorOf(many + "]}"), "more values than any message has");
}

TEST(InspectJson, RefusesAnOrderThatNothingHas)
{
    EXPECT_EQ(ErrorOf(R"({"record":"VynSubscriptions","value":{"entries":[{"severity":0,"eventTypes":[]},)"
                      R"({"severity":1,"eventTypes":[]},{"severity":13,"eventTypes":[]}]}})"),
              "VynSubscriptions.entries: no map has its entries in this order");
}

TEST(InspectJson, RefusesBytesThatCannotBeLeft)
{
    const auto error = [](const std::string& left) {
        return ErrorOf(R"({"record":"VynParams","value":{"params":[]},"arena":{"left":)" + left + "}}");
    };
    EXPECT_EQ(error("1"), "arena.left: not an array");
    EXPECT_EQ(error("[1]"), R"(arena.left[0]: not an object with an "offset" and a "byte")");
    EXPECT_EQ(error(R"([{"offset":0,"byte":1}])"), "arena.left[0].offset: outside the arena");
    EXPECT_EQ(error(R"([{"offset":-1,"byte":1}])"), "arena.left[0].offset: not an integer from 0 to 4294967295");
    EXPECT_EQ(ErrorOf(R"({"record":"VynParams","value":{"params":[]},"arena":1})"), "arena: not an object");
}

TEST(InspectJson, SaysWhatTheReaderThrows)
{
    inspect::Capture capture{"FileInfoParams", {9, 0, 0, 0, 4, 0, 0, 0}, {'a', 'b', 'c'}, {}, 0, {}};
    const nlohmann::json json = nlohmann::json::parse(Json(capture));
    EXPECT_EQ(json["standing"], "refused");
    EXPECT_EQ(json["reader"]["exception"], "std::out_of_range");
    EXPECT_EQ(json["reader"]["text"], "zt string: zt_arena does not contain an element with the address 9");
    EXPECT_EQ(json["reader"]["path"], "FileInfoParams.fileName");
    EXPECT_EQ(json["faults"][0]["words"], "outside the arena by 10 bytes");
    EXPECT_EQ(json["faults"][1]["words"], "3 bytes of the arena at offset 0 that no field owns");
    EXPECT_EQ(json["value"]["fileName"]["refused"], true);
}

// Another field that leads to the password's bytes does not show them either.
TEST(InspectJson, SecretsAreMaskedHoweverOneGetsThere)
{
    const inspect::Capture capture{"Credentials",
                                   {0, 0, 0, 0, 9, 0, 0, 0, 3, 0, 0, 0, 6, 0, 0, 0},
                                   {'b', 'o', 'b', 's', 'e', 'c', 'r', 'e', 't'},
                                   {},
                                   0,
                                   {}};
    EXPECT_THAT(Json(capture, true), HasSubstr("\"bobsecret\""));
    EXPECT_THAT(Json(capture, false), testing::Not(HasSubstr("secret\"")));
    const nlohmann::json json = nlohmann::json::parse(Json(capture, false));
    EXPECT_EQ(json["value"]["userName"]["masked"], true);
    EXPECT_EQ(json["value"]["password"]["masked"], true);
}

TEST(InspectJson, BytesThatAreNoTextComeBack)
{
    const inspect::Capture capture{"FileInfoParams", {0, 0, 0, 0, 3, 0, 0, 0}, {'a', 0xFF, 0x1B}, {}, 0, {}};
    EXPECT_EQ(nlohmann::json::parse(Json(capture))["value"]["fileName"]["hex"], "61ff1b");
    EXPECT_EQ(inspect::Encode(Json(capture)).arena, capture.arena);
}

} // namespace
