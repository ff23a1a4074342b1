// The list of all records, and what every record's table answers beside the bytes: whether its pair takes an arena,
// which of its fields are secret, and what a field accepts.
#include <common/all_records.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;

// --- The list ---

template <typename Record, typename... Records>
constexpr int TimesIn(RecordList<Records...>)
{
    return (0 + ... + (std::is_same_v<Record, Records> ? 1 : 0));
}
template <typename... Records>
constexpr bool IsEachDescribed(RecordList<Records...>)
{
    return (isDescribed<Records> && ...);
}
template <typename... Records>
constexpr bool IsNoneListedTwice(RecordList<Records...> list)
{
    return ((TimesIn<Records>(list) == 1) && ...);
}

static_assert(IsEachDescribed(AllRecords{}));
static_assert(!IsEachDescribed(RecordList<Credentials, std::string>{}));
static_assert(IsNoneListedTwice(AllRecords{}));
static_assert(!IsNoneListedTwice(RecordList<Credentials, VynEvent, Credentials>{}));
static_assert(RecordList<Credentials, VynEvent>::size == 2);

template <typename Visit>
void ForEachRecord(Visit&& visit)
{
    ForEach(AllRecords{}, visit);
}

TEST(AllRecords, AreVisitedEachOnceUnderANameOfItsOwn)
{
    std::set<std::string> names;
    std::size_t visits = 0;
    ForEachRecord([&](auto tag) {
        names.insert(Description<typename decltype(tag)::Type>::name);
        ++visits;
    });
    EXPECT_EQ(visits, AllRecords::size);
    EXPECT_EQ(names.size(), AllRecords::size);
}

TEST(AllRecords, AreVisitedInTheOrderOfTheList)
{
    std::vector<std::string> names;
    ForEach(RecordList<VynEvent, std::vector<RawVynParam>, Credentials>{},
            [&](auto tag) { names.emplace_back(Description<typename decltype(tag)::Type>::name); });
    EXPECT_EQ(names, (std::vector<std::string>{"VynEvent", "VynParams", "Credentials"}));
}

// --- What is asked of a table ---

TEST(TakesArena, IsTrueOfAllRecordsButThreeOfPlainNumbers)
{
    std::set<std::string> without;
    ForEachRecord([&](auto tag) {
        using Record = typename decltype(tag)::Type;
        if (!takesArena<Record>) without.insert(Description<Record>::name);
    });
    EXPECT_EQ(without, (std::set<std::string>{"VynConnectorSettings", "VynServerData", "DynamicAppInfo"}));
}

TEST(IsSecret, IsTrueOfPasswordsAlone)
{
    std::set<std::string> secrets;
    ForEachRecord([&](auto tag) {
        using Record = typename decltype(tag)::Type;
        ForEachRow<Record>([&](auto row) {
            using Row = decltype(row);
            if constexpr (isField<Row>) {
                if (isSecret<typename Row::Kind>)
                    secrets.insert(std::string(Description<Record>::name) + "." + row.name);
            }
        });
    });
    EXPECT_EQ(secrets, (std::set<std::string>{"Credentials.password"}));
}

TEST(IsSecret, IsAskedOfTheKindOfAMember)
{
    EXPECT_TRUE(isSecret<RowOf<&Credentials::password>::Kind>);
    EXPECT_FALSE(isSecret<RowOf<&Credentials::userName>::Kind>);
    EXPECT_FALSE(isSecret<RowOf<&ProxySettings::credentials>::Kind>);
    EXPECT_TRUE(isSecret<kind::Secret<kind::Blob>>);
    EXPECT_FALSE(isSecret<kind::Blob>);
}

TEST(RowOf, LeadsToWhatAMembersWriterAccepts)
{
    EXPECT_EQ(RowOf<&ProxySettings::address>::Kind::limit, 128u);
    EXPECT_EQ(RowOf<&Credentials::password>::Kind::limit, 128u);
    EXPECT_EQ(RowOf<&FileChunkParams::fileName>::Kind::limit, 1024u);
    EXPECT_EQ(RowOf<&VynEvent::field5>::Kind::limit, 64u);
    EXPECT_EQ(RowOf<&VynEvent::stringArray>::Kind::limit, 512u);
    EXPECT_EQ(RowOf<&VynSubscription::second>::Kind::limit, 128u);
    EXPECT_EQ(RowOfWhole<VynSubscriptions>::Kind::limit, 4u);
    EXPECT_EQ(RowOfWhole<VynUpdateIdentifiers>::Kind::limit, 10u);
    EXPECT_EQ(RowOfWhole<std::vector<RawVynParam>>::Kind::limit, 2147483647u);
}

TEST(RowOf, KnowsWhereAMemberStands)
{
    EXPECT_EQ(RowOf<&ProxySettings::credentials>::offset, 12u);
    EXPECT_EQ(RowOf<&ProxySettings::credentials>::width, 16u);
    EXPECT_EQ(RowOf<&VynSubscriptionsWithHash::second>::offset, 8u);
}

} // namespace
