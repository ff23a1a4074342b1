// What a message's pointers claim is summed up through every kind of field.
#include "transport/claims.h"

#include <gtest/gtest.h>

namespace {

using namespace vyn_connector;

template <typename Record>
bool ClaimsAtMost(const common::Message<Record>& message, std::uint64_t limit)
try {
    exchange::Claims claims(message.arena, limit);
    claims.Add<Record>(reinterpret_cast<const std::uint8_t*>(&message.wire));
    return true;
} catch (const std::length_error&) {
    return false;
}

template <typename Record>
std::uint64_t ClaimOf(const Record& record)
{
    const common::Message<Record> message = common::Encode(record);
    std::uint64_t limit = 0;
    while (!ClaimsAtMost(message, limit))
        ++limit;
    return limit;
}

TEST(Claims, ThroughAnOptionalRecord)
{
    VynConnectionParameters parameters;
    parameters.serverParameters.address = "abc";
    EXPECT_EQ(ClaimOf(parameters), 3U);
    parameters.serverParameters.proxy = ProxySettings{"proxy", 1, {"jo", "secret"}};
    EXPECT_EQ(ClaimOf(parameters), 3 + sizeof(tq_vyn_connector_VynTypes_ProxySettings) + 5 + 2 + 6);
}

TEST(Claims, ThroughAnOptionalTextInAList)
{
    ClientCertInfo certificate;
    certificate.field2 = "pem";
    certificate.field3 = "s";
    EXPECT_EQ(ClaimOf(std::vector{certificate}), sizeof(tq_vyn_connector_VynTypes_ClientCertInfo) + 3 + 1);
    certificate.field4 = "a.pem";
    EXPECT_EQ(ClaimOf(std::vector{certificate}),
              sizeof(tq_vyn_connector_VynTypes_ClientCertInfo) + 3 + 1 + sizeof(zt_ptr_t) + 5);
}

TEST(Claims, ThroughABlob)
{
    EXPECT_EQ(ClaimOf(std::vector{common::RawVynParam{{1, 2, 3}, "name"}}), 16U + 3 + 4);
}

TEST(Claims, ThroughTheSetsOfAMap)
{
    VynSubscriptionsWithHash subscriptions;
    subscriptions.second.emplace(VynEventSeverity::Severity1, std::unordered_set<std::string>{"ab", "cde"});
    EXPECT_EQ(ClaimOf(subscriptions), 2 * sizeof(zt_ptr_t) + 2 + 3);
}

TEST(Claims, OfAnEvent)
{
    VynEvent event;
    event.field1 = "ab";
    event.stringArray[8] = "cde";
    EXPECT_EQ(ClaimOf(event), 2U + 3);
}

TEST(Claims, OfIdentifiersAreWhatTheirReaderReserves)
{
    EXPECT_EQ(ClaimOf(VynUpdateIdentifiers(2)), 2U * 16 * 16);
}

} // namespace
