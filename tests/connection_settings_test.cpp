// The login, the proxy with its own login, and the TLS settings.
#include <common/connection_settings.h>

#include "arena.h"
#include "errors.h"
#include "record_test.h"

namespace {

using vyn_connector::Credentials;
using vyn_connector::ProxySettings;
using vyn_connector::SslSettings;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using WireCredentials = tq_vyn_connector_VynTypes_Credentials;
using WireProxy = tq_vyn_connector_VynTypes_ProxySettings;
using WireSsl = tq_vyn_connector_VynTypes_SslSettings;

PIN_WIRE(WireCredentials, 16, 4);
PIN_WIRE_FIELD(WireCredentials, 0, zt_ptr_t, userName);
PIN_WIRE_FIELD(WireCredentials, 8, zt_ptr_t, password);
PIN_MEMBER(Credentials, std::string, userName);
PIN_MEMBER(Credentials, std::string, password);

PIN_WIRE(WireProxy, 28, 4);
PIN_WIRE_FIELD(WireProxy, 0, zt_ptr_t, address);
PIN_WIRE_FIELD(WireProxy, 8, std::uint16_t, port);
PIN_WIRE_FIELD(WireProxy, 12, WireCredentials, credentials);
PIN_MEMBER(ProxySettings, std::string, address);
PIN_MEMBER(ProxySettings, std::uint16_t, port);
PIN_MEMBER(ProxySettings, Credentials, credentials);

PIN_WIRE(WireSsl, 36, 4);
PIN_WIRE_FIELD(WireSsl, 0, std::uint16_t, field1);
PIN_WIRE_FIELD(WireSsl, 4, zt_ptr_t, field2);
PIN_WIRE_FIELD(WireSsl, 12, zt_ptr_t, field3);
PIN_WIRE_FIELD(WireSsl, 20, zt_ptr_t, field4);
PIN_WIRE_FIELD(WireSsl, 28, zt_ptr_t, field5);
PIN_MEMBER(SslSettings, std::uint16_t, field1);
PIN_MEMBER(SslSettings, std::string, field2);
PIN_MEMBER(SslSettings, std::string, field3);
PIN_MEMBER(SslSettings, std::string, field4);
PIN_MEMBER(SslSettings, std::string, field5);

// The three pairs, as they are called.
template <typename Result, typename Source, typename Arena>
constexpr bool Converts(Result (*)(const Source&, Arena*))
{
    return true;
}
static_assert(Converts<WireCredentials, Credentials, zt_arena>(&CastToZt));
static_assert(Converts<Credentials, WireCredentials, const zt_arena>(&CastFromZt));
static_assert(Converts<WireProxy, ProxySettings, zt_arena>(&CastToZt));
static_assert(Converts<ProxySettings, WireProxy, const zt_arena>(&CastFromZt));
static_assert(Converts<WireSsl, SslSettings, zt_arena>(&CastToZt));
static_assert(Converts<SslSettings, WireSsl, const zt_arena>(&CastFromZt));

const Credentials login{"user", "secret"};
const layout::Message loginMessage("[userName] [password]",
                                   {{"userName", layout::Text, "'user'"}, {"password", layout::Text, "'secret'"}});

const ProxySettings proxy{"proxy", 0x1F90, {"ann", "pw"}};
const layout::Message proxyMessage("[address] 90 1F 00*2 [userName] [password]", {{"address", layout::Text, "'proxy'"},
                                                                                  {"userName", layout::Text, "'ann'"},
                                                                                  {"password", layout::Text, "'pw'"}});

const SslSettings ssl{0xBEEF, "f2", "f-3", "f4__", "five5"};
const layout::Message sslMessage("EF BE 00*2 [field2] [field3] [field4] [field5]",
                                 {{"field2", layout::Text, "'f2'"},
                                  {"field3", layout::Text, "'f-3'"},
                                  {"field4", layout::Text, "'f4__'"},
                                  {"field5", layout::Text, "'five5'"}});

// --- Credentials ---

TEST(Credentials, AreWrittenFieldByField)
{
    TestArena arena(16, 0, 3);

    const WireCredentials wire = CastToZt(login, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("03 00 00 00 04 00 00 00" // userName
                                   "07 00 00 00 06 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 'user' 'secret' A5*3"));
    EXPECT_EQ(arena.Top(), 13u);
}

TEST(Credentials, AreReadFieldByField)
{
    TestArena arena(16);
    arena.Put(1, "'secret' 'user'");

    EXPECT_EQ(CastFromZt(WireCredentials{{7, 4}, {1, 6}}, arena.Get()), login);
}

TEST(Credentials, AreWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(login, loginMessage);
    ExpectReads(login, loginMessage);
}

TEST(Credentials, OfEmptyStringsPointAtTheTop)
{
    TestArena arena(8, 0, 5);

    EXPECT_EQ(BytesOf(CastToZt(Credentials{}, arena.Get())), Bytes("05 00*3 00*4 05 00*3 00*4"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 5u);

    const layout::Message empty("[userName] [password]",
                                {{"userName", layout::Text, ""}, {"password", layout::Text, ""}});
    ExpectWrites(Credentials{}, empty);
    ExpectReads(Credentials{}, empty);
}

TEST(Credentials, CarryZeroBytesInTheirStrings)
{
    const Credentials record{std::string("a\0", 2), std::string("\0b", 2)};
    const layout::Message message = loginMessage.With("userName", "'a' 00").With("password", "00 'b'");

    ExpectWrites(record, message);
    ExpectReads(record, message);
}

TEST(Credentials, TakeOneHundredAndTwentyEightBytesInEachString)
{
    ExpectLimit(loginMessage, "userName", 128, [](std::size_t size) {
        return Credentials{std::string(size, 'x'), "secret"};
    });
    ExpectLimit(loginMessage, "password", 128, [](std::size_t size) {
        return Credentials{"user", std::string(size, 'x')};
    });
}

TEST(Credentials, RunOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(login, loginMessage);
}

TEST(Credentials, RefuseBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<Credentials>(loginMessage);
}

TEST(Credentials, RefuseANullArenaBeforeTheyLookAtAnyLength)
{
    ExpectInvalidArgument([] { CastToZt(Credentials{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastToZt(Credentials{std::string(129, 'x'), ""}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireCredentials{}, nullptr); }, stringCodec, 39);
    ExpectInvalidArgument([] { CastFromZt(WireCredentials{{9, 9}, {9, 9}}, nullptr); }, stringCodec, 39);
}

TEST(Credentials, AreReadWithStringsLongerThanMayBeWritten)
{
    ExpectReads(Credentials{"user", std::string(200, 'p')}, loginMessage.With("password", "'p'*200"));
    ExpectReads(Credentials{std::string(129, 'u'), "secret"}, loginMessage.With("userName", "'u'*129"));
}

TEST(Credentials, OfTwoConversionsLieOneBehindTheOther)
{
    TestArena arena(24);

    const WireCredentials first = CastToZt(login, arena.Get());
    const WireCredentials second = CastToZt(Credentials{"me", "pass"}, arena.Get());

    EXPECT_EQ(BytesOf(first), Bytes("00*4 04 00*3 04 00*3 06 00*3"));
    EXPECT_EQ(BytesOf(second), Bytes("0A 00*3 02 00*3 0C 00*3 04 00*3"));
    EXPECT_EQ(arena.Contents(), Bytes("'usersecretmepass' A5*8"));
    EXPECT_EQ(CastFromZt(first, arena.Get()), login);
}

TEST(Credentials, AreUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        login, [](Credentials& record) { record.userName = "usez"; },
        [](Credentials& record) { record.password = "secre"; });

    const auto& [userName, password] = login;
    EXPECT_EQ(AddressesOf(userName, password), AddressesOf(login.userName, login.password));
}

// --- ProxySettings ---

TEST(ProxySettings, AreWrittenFieldByFieldWithTheirLoginInside)
{
    TestArena arena(16, 0, 2);

    const WireProxy wire = CastToZt(proxy, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("02 00 00 00 05 00 00 00" // address
                                   "90 1F 00 00"             // port, padding
                                   "07 00 00 00 03 00 00 00" // credentials: userName
                                   "0A 00 00 00 02 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'proxy' 'ann' 'pw' A5*4"));
    EXPECT_EQ(arena.Top(), 12u);
}

TEST(ProxySettings, AreReadFieldByFieldWhateverIsInTheirPadding)
{
    TestArena arena(16);
    arena.Put(0, "'pwannproxy'");
    const Bytes bytes("05 00*3 05 00*3 | 90 1F FF FF | 02 00*3 03 00*3 | 00 00*3 02 00*3");
    WireProxy wire;
    std::memcpy(&wire, bytes.data(), sizeof(wire));

    EXPECT_EQ(CastFromZt(wire, arena.Get()), proxy);
}

TEST(ProxySettings, AreWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(proxy, proxyMessage);
    ExpectReads(proxy, proxyMessage);
}

TEST(ProxySettings, OfEmptyStringsHoldThreePointersOfSizeZero)
{
    TestArena arena(8, 0, 5);

    EXPECT_EQ(BytesOf(CastToZt(ProxySettings{}, arena.Get())),
              Bytes("05 00*3 00*4 | 00*4 | 05 00*3 00*4 05 00*3 00*4"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 5u);
}

TEST(ProxySettings, CarryEveryPort)
{
    for (const auto& [port, bytes] : {std::pair(0, "00 00"), std::pair(1, "01 00"), std::pair(0x7FFF, "FF 7F"),
                                      std::pair(0x8000, "00 80"), std::pair(65535, "FF FF")}) {
        ProxySettings record = proxy;
        record.port = static_cast<std::uint16_t>(port);
        layout::Message message = proxyMessage;
        message.wire = std::string("[address] ") + bytes + " 00*2 [userName] [password]";

        ExpectWrites(record, message);
        ExpectReads(record, message);
    }
}

TEST(ProxySettings, TakeOneHundredAndTwentyEightBytesInEachString)
{
    ExpectLimit(proxyMessage, "address", 128, [](std::size_t size) {
        return ProxySettings{std::string(size, 'x'), 0x1F90, {"ann", "pw"}};
    });
    ExpectLimit(proxyMessage, "userName", 128, [](std::size_t size) {
        return ProxySettings{"proxy", 0x1F90, {std::string(size, 'x'), "pw"}};
    });
    ExpectLimit(proxyMessage, "password", 128, [](std::size_t size) {
        return ProxySettings{"proxy", 0x1F90, {"ann", std::string(size, 'x')}};
    });
}

TEST(ProxySettings, WithATooLongUserNameFailWhenTheAddressIsInTheArena)
{
    TestArena arena(400, 0, 1);

    ExpectOverLimit(
        [&] {
            CastToZt(ProxySettings{"proxy", 1, {std::string(129, 'x'), "pw"}}, arena.Get());
        },
        stringCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5 'proxy' A5*394"));
    EXPECT_EQ(arena.Top(), 6u);
}

TEST(ProxySettings, RunOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(proxy, proxyMessage);
}

TEST(ProxySettings, RefuseBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<ProxySettings>(proxyMessage);
}

TEST(ProxySettings, RefuseANullArenaBeforeTheyLookAtAnyLength)
{
    ExpectInvalidArgument([] { CastToZt(ProxySettings{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastToZt(ProxySettings{std::string(129, 'x'), 1, {}}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireProxy{}, nullptr); }, stringCodec, 39);
}

TEST(ProxySettings, AreReadWithStringsLongerThanMayBeWritten)
{
    ExpectReads(ProxySettings{std::string(129, 'a'), 0x1F90, {std::string(300, 'u'), std::string(200, 'p')}},
                proxyMessage.With("address", "'a'*129").With("userName", "'u'*300").With("password", "'p'*200"));
}

TEST(ProxySettings, AreUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        proxy, [](ProxySettings& record) { record.address = ""; }, [](ProxySettings& record) { ++record.port; },
        [](ProxySettings& record) { record.credentials.userName = "bob"; },
        [](ProxySettings& record) { record.credentials.password = "pw2"; });

    const auto& [address, port, credentials] = proxy;
    EXPECT_EQ(AddressesOf(address, port, credentials), AddressesOf(proxy.address, proxy.port, proxy.credentials));
}

// --- SslSettings ---

TEST(SslSettings, AreWrittenFieldByField)
{
    TestArena arena(20, 0, 2);

    const WireSsl wire = CastToZt(ssl, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("EF BE 00 00"             // field1, padding
                                   "02 00 00 00 02 00 00 00" // field2
                                   "04 00 00 00 03 00 00 00" // field3
                                   "07 00 00 00 04 00 00 00" // field4
                                   "0B 00 00 00 05 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'f2' 'f-3' 'f4__' 'five5' A5*4"));
    EXPECT_EQ(arena.Top(), 16u);
}

TEST(SslSettings, AreReadFieldByFieldWhateverIsInTheirPadding)
{
    TestArena arena(16);
    arena.Put(0, "'five5f4__f-3f2'");
    const Bytes bytes("EF BE FF FF | 0C 00*3 02 00*3 | 09 00*3 03 00*3 | 05 00*3 04 00*3 | 00 00*3 05 00*3");
    WireSsl wire;
    std::memcpy(&wire, bytes.data(), sizeof(wire));

    EXPECT_EQ(CastFromZt(wire, arena.Get()), ssl);
}

TEST(SslSettings, AreWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(ssl, sslMessage);
    ExpectReads(ssl, sslMessage);
}

TEST(SslSettings, OfEmptyStringsPointAtTheTop)
{
    TestArena arena(8, 0, 5);

    EXPECT_EQ(BytesOf(CastToZt(SslSettings{}, arena.Get())),
              Bytes("00*4 05 00*3 00*4 05 00*3 00*4 05 00*3 00*4 05 00*3 00*4"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 5u);
}

TEST(SslSettings, CarryEveryNumberOfField1)
{
    for (const auto& [field1, bytes] : {std::pair(0, "00 00"), std::pair(1, "01 00"), std::pair(0x7FFF, "FF 7F"),
                                        std::pair(0x8000, "00 80"), std::pair(65535, "FF FF")}) {
        SslSettings record = ssl;
        record.field1 = static_cast<std::uint16_t>(field1);
        layout::Message message = sslMessage;
        message.wire = bytes + std::string(" 00*2 [field2] [field3] [field4] [field5]");

        ExpectWrites(record, message);
        ExpectReads(record, message);
    }
}

TEST(SslSettings, TakeOneHundredAndTwentyEightBytesInEachString)
{
    const auto limit = [](const char* part, std::string SslSettings::*member) {
        ExpectLimit(sslMessage, part, 128, [&](std::size_t size) {
            SslSettings record = ssl;
            (record.*member).assign(size, 'x');
            return record;
        });
    };
    limit("field2", &SslSettings::field2);
    limit("field3", &SslSettings::field3);
    limit("field4", &SslSettings::field4);
    limit("field5", &SslSettings::field5);
}

TEST(SslSettings, RunOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(ssl, sslMessage);
}

TEST(SslSettings, RefuseBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<SslSettings>(sslMessage);
}

TEST(SslSettings, RefuseANullArenaBeforeTheyLookAtAnyLength)
{
    ExpectInvalidArgument([] { CastToZt(SslSettings{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument(
        [] {
            CastToZt(SslSettings{1, std::string(129, 'x'), "", "", ""}, nullptr);
        },
        stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireSsl{}, nullptr); }, stringCodec, 39);
}

TEST(SslSettings, AreReadWithStringsLongerThanMayBeWritten)
{
    ExpectReads(SslSettings{0xBEEF, std::string(129, '2'), std::string(130, '3'), std::string(131, '4'),
                            std::string(1000, '5')},
                sslMessage.With("field2", "'2'*129")
                    .With("field3", "'3'*130")
                    .With("field4", "'4'*131")
                    .With("field5", "'5'*1000"));
}

TEST(SslSettings, AreUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        ssl, [](SslSettings& record) { ++record.field1; }, [](SslSettings& record) { record.field2 += 'x'; },
        [](SslSettings& record) { record.field3 += 'x'; }, [](SslSettings& record) { record.field4 += 'x'; },
        [](SslSettings& record) { record.field5 += 'x'; });

    const auto& [field1, field2, field3, field4, field5] = ssl;
    EXPECT_EQ(AddressesOf(field1, field2, field3, field4, field5),
              AddressesOf(ssl.field1, ssl.field2, ssl.field3, ssl.field4, ssl.field5));
}

// Equal members make equal records, and two empty ones are equal.
TEST(ConnectionSettings, OfEqualMembersAreEqual)
{
    EXPECT_TRUE(Credentials{} == Credentials{});
    EXPECT_TRUE((ProxySettings{"a", 1, {"b", "c"}} == ProxySettings{"a", 1, {"b", "c"}}));
    EXPECT_FALSE((SslSettings{1, "2", "3", "4", "5"} != SslSettings{1, "2", "3", "4", "5"}));
}

} // namespace
