// The exchange's own test of a record's limits, which can say where, refuses what the library refuses and nothing else.
#include "transport/limits.h"

#include "../any_record.h"

#include <gtest/gtest.h>

namespace {

using namespace vyn_connector;

template <typename Record>
class LimitsOfEveryRecord : public testing::Test {
};
using Records = testing::Types<VynConnectionParameters, AppInfo, VynSubscriptionsWithHash, VynEvent,
                               std::vector<ClientCertInfo>, ClientCertParams, FileInfoParams, FileInfo, FileChunkParams,
                               FileChunk, std::vector<common::RawVynParam>>;
TYPED_TEST_SUITE(LimitsOfEveryRecord, Records, );

// With two items in each list, and each string short.
template <typename Record>
Record Small()
{
    return any_record::Make<Record>([](std::uint64_t limit) { return std::min<std::uint64_t>(limit, 2); });
}

// What the library says to it: empty where the record is written.
template <typename Record>
std::string Refusal(const Record& record)
try {
    common::Encode(record);
    return "";
} catch (const std::length_error& error) {
    return error.what();
}

template <typename Record>
std::string OverTheLimit(const Record& record)
try {
    exchange::CheckLimits(record);
    return "";
} catch (const std::length_error& error) {
    return error.what();
}

// Lists whose limit no memory could reach are left out.
constexpr std::size_t reachable = 100000;

TYPED_TEST(LimitsOfEveryRecord, AreThoseOfTheLibrary)
{
    int count = 0;
    auto countFields = [&](const std::string&, auto&, std::size_t) { ++count; };
    TypeParam record = Small<TypeParam>();
    exchange::ForEachLimited(record, "", countFields);
    ASSERT_GT(count, 0);

    for (int chosen = 0; chosen < count; ++chosen) {
        for (const std::size_t over : {0U, 1U}) {
            TypeParam changed = record;
            std::string expected;
            int field = 0;
            auto grow = [&](const std::string& path, auto& value, std::size_t limit) {
                if (field++ != chosen || limit > reachable) return;
                if constexpr (!std::is_const_v<std::remove_reference_t<decltype(value)>> &&
                              !std::is_same_v<std::decay_t<decltype(value)>, std::unordered_set<std::string>> &&
                              !std::is_same_v<std::decay_t<decltype(value)>, VynSubscriptions>) {
                    value.resize(limit + over);
                    if (over == 0) return;
                    const char* const unit = exchange::unitOf<std::decay_t<decltype(value)>>;
                    expected =
                        path + ": " + std::to_string(limit + 1) + " " + unit + "s, at most " + std::to_string(limit);
                }
            };
            exchange::ForEachLimited(changed, "", grow);
            EXPECT_EQ(OverTheLimit(changed), expected);
            EXPECT_EQ(Refusal(changed).empty(), expected.empty()) << expected;
        }
    }
}

TEST(Limits, OfSetsAndMaps)
{
    VynSubscriptionsWithHash record;
    std::unordered_set<std::string> names;
    for (int i = 0; i < 128; ++i)
        names.insert(std::to_string(i));
    record.second.emplace(VynEventSeverity::Severity2, names);
    EXPECT_EQ(OverTheLimit(record), "");
    EXPECT_EQ(Refusal(record), "");

    names.insert("128");
    VynSubscriptionsWithHash tooMany;
    tooMany.second.emplace(VynEventSeverity::Severity2, names);
    EXPECT_EQ(OverTheLimit(tooMany), "subscriptions.entries[2].eventTypes: 129 items, at most 128");
    EXPECT_NE(Refusal(tooMany), "");

    VynSubscriptionsWithHash tooLong;
    tooLong.second.emplace(VynEventSeverity::Severity1, std::unordered_set<std::string>{std::string(129, 'n')});
    EXPECT_EQ(OverTheLimit(tooLong), "subscriptions.entries[1].eventTypes[]: 129 bytes, at most 128");
    EXPECT_NE(Refusal(tooLong), "");
}

TEST(Limits, OfARangeOfIdentifiers)
{
    EXPECT_EQ(OverTheLimit(VynUpdateIdentifiers(10)), "");
    EXPECT_EQ(Refusal(VynUpdateIdentifiers(10)), "");
    EXPECT_EQ(OverTheLimit(VynUpdateIdentifiers(11)), "identifiers: 11 items, at most 10");
    EXPECT_THROW(common::Encode(VynUpdateIdentifiers(11)), mur::ResultCodeException);
}

} // namespace
