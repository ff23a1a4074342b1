// The tables that describe the records: what they say about the first three, and what any table yields. That a wrong
// table does not compile is tested in description_errors.
#include "arena.h"

#include <common/connection_settings.h>
#include <common/record.h>

#include <gtest/gtest.h>

#include <map>

namespace vyn_connector {

// Declared in another order than it travels, with a member that does not.
struct Shuffled {
    std::uint32_t last{};
    std::string first;
    std::int32_t atHome{};
    bool middle{};
};

struct Whole : std::vector<std::uint8_t> {
    using std::vector<std::uint8_t>::vector;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_ShuffledWire {
    zt_ptr_t first;
    std::uint8_t inTheMiddle;
    std::uint32_t last;
    std::uint8_t unused[4];
};

struct tq_vyn_connector_VynTypes_Whole {
    std::uint8_t reserved[16];
    std::int32_t count;
};

namespace vyn_connector::common {

// A kind of its own, as a record with a rule of its own has.
namespace kind {
struct Count : InPlace {
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        return std::is_same_v<Domain, Whole> && std::is_same_v<Wire, std::int32_t>;
    }
};
} // namespace kind

VYN_RECORD(Shuffled, ShuffledWire, 20, 4,
    VYN_FIELD      ( 0, 8, first, Text<32>),
    VYN_FIELD_AS   ( 8, 1, middle, inTheMiddle, Flag),
    VYN_PADDING    ( 9, 3),
    VYN_FIELD      (12, 4, last, Number),
    VYN_PADDING    (16, 4),
    VYN_DOMAIN_ONLY(atHome));

VYN_RECORD(Whole, Whole, 20, 4,
    VYN_PADDING( 0, 16),
    VYN_WHOLE  (16,  4, count, Count));

} // namespace vyn_connector::common

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;

template <std::size_t Limit>
std::string NameOf(kind::Text<Limit> text)
{
    return "Text " + std::to_string(text.limit);
}
std::string NameOf(kind::Number)
{
    return "Number";
}
std::string NameOf(kind::Flag)
{
    return "Flag";
}
std::string NameOf(kind::Nested)
{
    return "Nested";
}
std::string NameOf(kind::Count)
{
    return "Count";
}

// "name: offset+width kind", with the parts that the row has.
template <typename Row>
std::string Line(const Row& row)
{
    std::string line;
    if constexpr (isInDomain<Row>) line += row.name;
    if constexpr (detail::isOnWire<Row>) line += ": " + std::to_string(row.offset) + "+" + std::to_string(row.width);
    if constexpr (isField<Row>) line += " " + NameOf(typename Row::Kind{});
    return line;
}

template <typename Domain>
std::vector<std::string> Lines()
{
    std::vector<std::string> lines;
    ForEachRow<Domain>([&](auto row) { lines.push_back(Line(row)); });
    return lines;
}

using StringList = std::vector<std::string>;

TEST(Description, OfCredentialsFollowsTheWire)
{
    EXPECT_STREQ(Description<Credentials>::name, "Credentials");
    EXPECT_EQ(Lines<Credentials>(), (StringList{"userName: 0+8 Text 128", "password: 8+8 Text 128"}));
    EXPECT_TRUE((std::is_same_v<WireOf<Credentials>, tq_vyn_connector_VynTypes_Credentials>));
}

TEST(Description, OfProxySettingsFollowsTheWire)
{
    EXPECT_STREQ(Description<ProxySettings>::name, "ProxySettings");
    EXPECT_EQ(Lines<ProxySettings>(),
              (StringList{"address: 0+8 Text 128", "port: 8+2 Number", ": 10+2", "credentials: 12+16 Nested"}));
    EXPECT_TRUE((std::is_same_v<WireOf<ProxySettings>, tq_vyn_connector_VynTypes_ProxySettings>));
}

TEST(Description, OfSslSettingsFollowsTheWire)
{
    EXPECT_STREQ(Description<SslSettings>::name, "SslSettings");
    EXPECT_EQ(Lines<SslSettings>(),
              (StringList{"field1: 0+2 Number", ": 2+2", "field2: 4+8 Text 128", "field3: 12+8 Text 128",
                          "field4: 20+8 Text 128", "field5: 28+8 Text 128"}));
    EXPECT_TRUE((std::is_same_v<WireOf<SslSettings>, tq_vyn_connector_VynTypes_SslSettings>));
}

TEST(Description, KeepsTheOrderOfTheTable)
{
    EXPECT_STREQ(Description<Shuffled>::name, "ShuffledWire");
    EXPECT_EQ(Lines<Shuffled>(), (StringList{"first: 0+8 Text 32", "inTheMiddle: 8+1 Flag", ": 9+3",
                                             "last: 12+4 Number", ": 16+4", "atHome"}));
    EXPECT_TRUE((std::is_same_v<WireOf<Shuffled>, tq_vyn_connector_VynTypes_ShuffledWire>));
}

template <typename... Rows>
StringList LinesOf(vyn_connector::common::detail::RowList<Rows...>,
                   const std::map<std::size_t, std::string>& nameAtOffset)
{
    return {nameAtOffset.at(Rows::domainOffset)...};
}

TEST(Description, SortsTheMembersByTheirPlaceInTheRecord)
{
    EXPECT_EQ(LinesOf(detail::MembersInOrder<Shuffled>{}, {{offsetof(Shuffled, last), "last"},
                                                           {offsetof(Shuffled, first), "first"},
                                                           {offsetof(Shuffled, atHome), "atHome"},
                                                           {offsetof(Shuffled, middle), "middle"}}),
              (StringList{"last", "first", "atHome", "middle"}));
    EXPECT_EQ(LinesOf(detail::MembersInOrder<ProxySettings>{}, {{offsetof(ProxySettings, address), "address"},
                                                                {offsetof(ProxySettings, port), "port"},
                                                                {offsetof(ProxySettings, credentials), "credentials"}}),
              (StringList{"address", "port", "credentials"}));
}

TEST(Description, OfAListWithoutARecordHoldsTheListItself)
{
    EXPECT_EQ(Lines<Whole>(), (StringList{": 0+16", "count: 16+4 Count"}));

    const Whole value{1, 2, 3};
    ForEachRow<Whole>([&](auto row) {
        using Row = decltype(row);
        if constexpr (isField<Row>) {
            EXPECT_EQ(&Row::InDomain::Of(value), &value);
        }
    });
}

TEST(Description, LeadsToTheMembersOfBothSides)
{
    Shuffled domain;
    const Shuffled& constant = domain;
    tq_vyn_connector_VynTypes_ShuffledWire wire{};
    std::vector<const void*> domainMembers;
    std::vector<const void*> wireMembers;

    ForEachRow<Shuffled>([&](auto row) {
        using Row = decltype(row);
        if constexpr (isInDomain<Row>) {
            domainMembers.push_back(&Row::InDomain::Of(domain));
            EXPECT_EQ(&Row::InDomain::Of(constant), domainMembers.back());
        }
        if constexpr (isField<Row>) wireMembers.push_back(&Row::OnWire::Of(wire));
    });

    EXPECT_EQ(domainMembers, (std::vector<const void*>{&domain.first, &domain.middle, &domain.last, &domain.atHome}));
    EXPECT_EQ(wireMembers, (std::vector<const void*>{&wire.first, &wire.inTheMiddle, &wire.last}));
}

TEST(Description, IsThereForRecordsAlone)
{
    EXPECT_TRUE(isDescribed<Credentials>);
    EXPECT_TRUE(isDescribed<Shuffled>);
    EXPECT_TRUE(isDescribed<Whole>);
    EXPECT_FALSE(isDescribed<std::string>);
    EXPECT_FALSE(isDescribed<tq_vyn_connector_VynTypes_Credentials>);
}

TEST(Comparison, LooksAtEveryMemberAlsoAtThoseThatDoNotTravel)
{
    const Shuffled record{1, "a", 2, true};

    EXPECT_TRUE((record == Shuffled{1, "a", 2, true}));
    EXPECT_FALSE((record != Shuffled{1, "a", 2, true}));
    for (const Shuffled& other : {Shuffled{9, "a", 2, true}, Shuffled{1, "b", 2, true}, Shuffled{1, "a", 9, true},
                                  Shuffled{1, "a", 2, false}}) {
        EXPECT_FALSE(record == other);
        EXPECT_FALSE(other == record);
        EXPECT_TRUE(record != other);
        EXPECT_TRUE(other != record);
    }
}

// --- Which members a kind joins ---

template <typename Kind, typename Domain, typename Wire>
constexpr bool fits = Kind::template fits<Domain, Wire>;

enum class Narrow : std::int16_t {};
enum class Wide : std::int32_t {};

TEST(Kind, NumberJoinsTheSameIntegerType)
{
    EXPECT_TRUE((fits<kind::Number, std::uint16_t, std::uint16_t>));
    EXPECT_TRUE((fits<kind::Number, std::uint64_t, std::uint64_t>));
    EXPECT_TRUE((fits<kind::Number, std::uint8_t, std::uint8_t>));
    EXPECT_FALSE((fits<kind::Number, std::uint16_t, std::uint32_t>));
    EXPECT_FALSE((fits<kind::Number, std::uint32_t, std::int32_t>));
    EXPECT_FALSE((fits<kind::Number, bool, bool>));
    EXPECT_FALSE((fits<kind::Number, bool, std::uint8_t>));
    EXPECT_FALSE((fits<kind::Number, double, double>));
    EXPECT_FALSE((fits<kind::Number, Wide, Wide>));
    EXPECT_FALSE((fits<kind::Number, zt_ptr_t, zt_ptr_t>));
}

TEST(Kind, FlagJoinsABoolAndAByte)
{
    EXPECT_TRUE((fits<kind::Flag, bool, std::uint8_t>));
    EXPECT_FALSE((fits<kind::Flag, bool, bool>));
    EXPECT_FALSE((fits<kind::Flag, bool, std::int8_t>));
    EXPECT_FALSE((fits<kind::Flag, bool, std::uint32_t>));
    EXPECT_FALSE((fits<kind::Flag, std::uint8_t, std::uint8_t>));
}

TEST(Kind, FlagWritesNoByteButItsOwn)
{
    std::uint8_t wire[] = {0xA5, 0xA5, 0xA5};
    kind::Flag::Write<std::uint8_t>(true, wire + 1, nullptr);
    EXPECT_EQ(BytesOf(wire), Bytes("A5 01 A5"));
}

TEST(Kind, EnumerationJoinsAnEnumerationAndAnIntegerOfItsWidth)
{
    EXPECT_TRUE((fits<kind::Enumeration, Wide, std::int32_t>));
    EXPECT_TRUE((fits<kind::Enumeration, Wide, std::uint32_t>));
    EXPECT_TRUE((fits<kind::Enumeration, Narrow, std::int16_t>));
    EXPECT_FALSE((fits<kind::Enumeration, Wide, std::int16_t>));
    EXPECT_FALSE((fits<kind::Enumeration, Narrow, std::int32_t>));
    EXPECT_FALSE((fits<kind::Enumeration, std::int32_t, std::int32_t>));
    EXPECT_FALSE((fits<kind::Enumeration, Wide, Wide>));
    EXPECT_FALSE((fits<kind::Enumeration, Wide, float>));
}

TEST(Kind, BytesJoinsTwoBlocksOfSixteen)
{
    using Block = std::array<std::byte, 16>;
    EXPECT_TRUE((fits<kind::Bytes, Block, std::uint8_t[16]>));
    EXPECT_FALSE((fits<kind::Bytes, Block, std::uint8_t[15]>));
    EXPECT_FALSE((fits<kind::Bytes, Block, std::int8_t[16]>));
    EXPECT_FALSE((fits<kind::Bytes, std::array<std::byte, 15>, std::uint8_t[16]>));
    EXPECT_FALSE((fits<kind::Bytes, std::array<std::uint8_t, 16>, std::uint8_t[16]>));
}

TEST(Kind, TimeJoinsATimeStampAndASignedCount)
{
    EXPECT_TRUE((fits<kind::Time, wem::types::Timestamp, std::int64_t>));
    EXPECT_FALSE((fits<kind::Time, wem::types::Timestamp, std::uint64_t>));
    EXPECT_FALSE((fits<kind::Time, std::int64_t, std::int64_t>));
}

TEST(Kind, TextJoinsAStringAndAPointer)
{
    EXPECT_TRUE((fits<kind::Text<128>, std::string, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Text<128>, std::vector<std::uint8_t>, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Text<128>, std::optional<std::string>, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Text<128>, std::string, std::uint64_t>));
    EXPECT_EQ(kind::Text<128>::limit, 128u);
    EXPECT_EQ(kind::Text<16384>::limit, 16384u);
}

TEST(Kind, BlobJoinsBytesAndAPointer)
{
    EXPECT_TRUE((fits<kind::Blob, std::vector<std::uint8_t>, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Blob, std::string, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Blob, std::vector<std::uint8_t>, std::uint64_t>));
    EXPECT_EQ(kind::Blob::limit, 65536u);
}

TEST(Kind, NestedJoinsARecordAndItsWireStructure)
{
    EXPECT_TRUE((fits<kind::Nested, Credentials, tq_vyn_connector_VynTypes_Credentials>));
    EXPECT_FALSE((fits<kind::Nested, Credentials, tq_vyn_connector_VynTypes_SslSettings>));
    EXPECT_FALSE((fits<kind::Nested, Credentials, zt_ptr_t>));
}

TEST(Kind, ListJoinsAVectorOfRecordsAndAPointer)
{
    EXPECT_TRUE((fits<kind::List<5>, std::vector<Credentials>, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::List<5>, std::vector<Credentials>, std::uint64_t>));
    EXPECT_FALSE((fits<kind::List<5>, std::vector<std::string>, zt_ptr_t>));
    EXPECT_EQ(kind::List<5>::limit, 5u);
}

TEST(Kind, OptionalJoinsAnOptionalAndAPointer)
{
    EXPECT_TRUE((fits<kind::Optional<kind::Nested>, std::optional<Credentials>, zt_ptr_t>));
    EXPECT_TRUE((fits<kind::Optional<kind::Text<128>>, std::optional<std::string>, zt_ptr_t>));
    EXPECT_TRUE((fits<kind::Optional<kind::Time>, std::optional<wem::types::Timestamp>, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Optional<kind::Nested>, std::vector<Credentials>, zt_ptr_t>));
    EXPECT_FALSE((fits<kind::Optional<kind::Nested>, std::optional<Credentials>, std::uint64_t>));
}

} // namespace
