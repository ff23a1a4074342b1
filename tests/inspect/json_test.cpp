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
    return inspect::ToJson(inspect::Inspect(capture, inspect::jsonExtent), showsSecrets);
}

TEST(InspectJson, EveryCanonicalMessageOfTheCorpusComesBack)
{
    std::size_t count = 0;
    for (const MessageFile& file : corpus::Files()) {
        const inspect::Capture capture = corpus::CaptureOf(file);
        const inspect::Message message = inspect::Inspect(capture, inspect::jsonExtent);
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
