// How the server is reached, with the proxy, the TLS settings and the timeouts optional, and the records beside it
// that are the same bytes in both forms.
#include <common/server_connection.h>

#include "arena.h"
#include "errors.h"
#include "record_test.h"

#include <limits>

namespace {

using vyn_connector::Credentials;
using vyn_connector::ProxySettings;
using vyn_connector::ServerConnectionParameters;
using vyn_connector::SslSettings;
using vyn_connector::VynConnectionParameters;
using vyn_connector::VynConnectorSettings;
using vyn_connector::VynRequestsTimeouts;
using vyn_connector::VynServerData;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using WireCredentials = tq_vyn_connector_VynTypes_Credentials;
using WireProxy = tq_vyn_connector_VynTypes_ProxySettings;
using WireSsl = tq_vyn_connector_VynTypes_SslSettings;
using WireServer = tq_vyn_connector_VynTypes_ServerConnectionParameters;
using WireConnection = tq_vyn_connector_VynTypes_VynConnectionParameters;
using WireTimeouts = tq_vyn_connector_VynTypes_VynRequestsTimeouts;
using WireSettings = tq_vyn_connector_VynTypes_VynConnectorSettings;
using WireServerData = tq_vyn_connector_VynTypes_VynServerData;

PIN_WIRE(WireServer, 32, 4);
PIN_WIRE_FIELD(WireServer, 0, zt_ptr_t, address);
PIN_WIRE_FIELD(WireServer, 8, zt_ptr_t, proxy);
PIN_WIRE_FIELD(WireServer, 16, zt_ptr_t, ssl);
PIN_WIRE_FIELD(WireServer, 24, zt_ptr_t, timeouts);
PIN_MEMBER(ServerConnectionParameters, std::string, address);
PIN_MEMBER(ServerConnectionParameters, std::optional<ProxySettings>, proxy);
PIN_MEMBER(ServerConnectionParameters, std::optional<SslSettings>, ssl);
PIN_MEMBER(ServerConnectionParameters, std::optional<VynRequestsTimeouts>, timeouts);

PIN_WIRE(WireConnection, 48, 4);
PIN_WIRE_FIELD(WireConnection, 0, WireServer, serverParameters);
PIN_WIRE_FIELD(WireConnection, 32, WireCredentials, credentials);
PIN_MEMBER(VynConnectionParameters, ServerConnectionParameters, serverParameters);
PIN_MEMBER(VynConnectionParameters, Credentials, credentials);

// The slots of an optional proxy and optional TLS settings are of just these sizes.
PIN_WIRE(WireProxy, 28, 4);
PIN_WIRE(WireSsl, 36, 4);

PIN_WIRE(WireTimeouts, 16, 8);
PIN_WIRE_FIELD(WireTimeouts, 0, std::uint64_t, field1);
PIN_WIRE_FIELD(WireTimeouts, 8, std::uint64_t, field2);
static_assert(sizeof(VynRequestsTimeouts) == 16 && alignof(VynRequestsTimeouts) == 8);
PIN_MEMBER(VynRequestsTimeouts, std::uint64_t, field1);
PIN_MEMBER(VynRequestsTimeouts, std::uint64_t, field2);

PIN_WIRE(WireSettings, 48, 8);
PIN_WIRE_FIELD(WireSettings, 0, std::uint64_t, field1);
PIN_WIRE_FIELD(WireSettings, 8, std::uint64_t, field2);
PIN_WIRE_FIELD(WireSettings, 16, std::uint64_t, field3);
PIN_WIRE_FIELD(WireSettings, 24, std::uint64_t, field4);
PIN_WIRE_FIELD(WireSettings, 32, std::uint64_t, field5);
PIN_WIRE_FIELD(WireSettings, 40, std::uint64_t, field6);
static_assert(sizeof(VynConnectorSettings) == 48);

PIN_WIRE(WireServerData, 8, 8);
PIN_WIRE_FIELD(WireServerData, 0, std::uint64_t, field1);
static_assert(sizeof(VynServerData) == 8);

// Three pairs take an arena and two do not.
static_assert(IsDeclared<WireServer(const ServerConnectionParameters&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<WireConnection(const VynConnectionParameters&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<WireTimeouts(const VynRequestsTimeouts&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<WireSettings(const VynConnectorSettings&)>(&CastToZt));
static_assert(IsDeclared<WireServerData(const VynServerData&)>(&CastToZt));
static_assert(IsDeclared<ServerConnectionParameters(const WireServer&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<VynConnectionParameters(const WireConnection&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<VynRequestsTimeouts(const WireTimeouts&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<VynConnectorSettings(const WireSettings&)>(&CastFromZt));
static_assert(IsDeclared<VynServerData(const WireServerData&)>(&CastFromZt));

const VynRequestsTimeouts timeouts{0x0102030405060708, 0x1112131415161718};

ServerConnectionParameters FullServer()
{
    return {"abc", ProxySettings{"prx", 8080, {"ann", "pwd"}}, SslSettings{0xBEEF, "f2", "f-3", "f4__", "five5"},
            timeouts};
}

const std::vector<layout::Part> fullServerParts{
    {"address", layout::Text, "'abc'"},
    {"proxy", layout::Optional(28, 4), "[proxy.address] 90 1F 00*2 [proxy.userName] [proxy.password]"},
    {"proxy.address", layout::Text, "'prx'"},
    {"proxy.userName", layout::Text, "'ann'"},
    {"proxy.password", layout::Text, "'pwd'"},
    {"ssl", layout::Optional(36, 4), "EF BE 00*2 [ssl.field2] [ssl.field3] [ssl.field4] [ssl.field5]"},
    {"ssl.field2", layout::Text, "'f2'"},
    {"ssl.field3", layout::Text, "'f-3'"},
    {"ssl.field4", layout::Text, "'f4__'"},
    {"ssl.field5", layout::Text, "'five5'"},
    {"timeouts", layout::Optional(16, 8), "08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"},
};

const layout::Message fullServer("[address] [proxy] [ssl] [timeouts]", fullServerParts);

layout::Message FullConnection()
{
    layout::Message message("[address] [proxy] [ssl] [timeouts] [userName] [password]", fullServerParts);
    message.parts.push_back({"userName", layout::Text, "'login'"});
    message.parts.push_back({"password", layout::Text, "'secret'"});
    return message;
}

// --- ServerConnectionParameters: writing ---

TEST(ServerConnectionParameters, IsWrittenFieldByFieldWithEachSlotBeforeItsStrings)
{
    TestArena arena(128);

    const WireServer wire = CastToZt(FullServer(), arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 03 00 00 00" // address
                                   "04 00 00 00 1C 00 00 00" // proxy
                                   "2C 00 00 00 24 00 00 00" // ssl
                                   "60 00 00 00 10 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("'abc' 00"
                                      // 4: the proxy's slot, then its strings
                                      "20 00 00 00 03 00 00 00  90 1F 00 00"
                                      "23 00 00 00 03 00 00 00  26 00 00 00 03 00 00 00"
                                      "'prx' 'ann' 'pwd' 00 00 00"
                                      // 44: the slot of the TLS settings, then their strings
                                      "EF BE 00 00  50 00 00 00 02 00 00 00  52 00 00 00 03 00 00 00"
                                      "55 00 00 00 04 00 00 00  59 00 00 00 05 00 00 00"
                                      "'f2' 'f-3' 'f4__' 'five5' 00 00"
                                      // 96: the timeouts
                                      "08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"
                                      "A5*16"));
    EXPECT_EQ(arena.Top(), 112u);
}

TEST(ServerConnectionParameters, AreWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(FullServer(), fullServer);
    ExpectReads(FullServer(), fullServer);
}

TEST(ServerConnectionParameters, MayLackAnyOfTheirOptionalMembers)
{
    for (int present = 0; present < 8; ++present) {
        SCOPED_TRACE(present);
        ServerConnectionParameters record = FullServer();
        layout::Message message("[address]", {});
        const auto keep = [&](bool kept, auto& member, const std::string& name) {
            if (!kept) member.reset();
            message.wire += kept ? " [" + name + "]" : " 00*8";
            return kept ? name : "absent";
        };
        const std::string prefixes[] = {"address", keep((present & 1) != 0, record.proxy, "proxy"),
                                        keep((present & 2) != 0, record.ssl, "ssl"),
                                        keep((present & 4) != 0, record.timeouts, "timeouts")};
        for (const layout::Part& part : fullServerParts)
            for (const std::string& prefix : prefixes)
                if (part.name.rfind(prefix, 0) == 0) message.parts.push_back(part);

        ExpectWrites(record, message);
        ExpectReads(record, message);
    }
}

TEST(ServerConnectionParameters, WithoutOptionalMembersTakeOnlyTheAddressBytes)
{
    TestArena arena(16, 0, 2);

    const WireServer wire = CastToZt(ServerConnectionParameters{"server", {}, {}, {}}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("02 00 00 00 06 00 00 00 00*24"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'server' A5*8"));
    EXPECT_EQ(arena.Top(), 8u);
}

TEST(ServerConnectionParameters, PutTheProxySlotAtTheNextMultipleOfFour)
{
    TestArena arena(40);

    const WireServer wire = CastToZt(ServerConnectionParameters{"abc", ProxySettings{}, {}, {}}, arena.Get());

    EXPECT_EQ(wire.proxy, (zt_ptr_t{4, 28}));
    EXPECT_EQ(arena.Contents(), Bytes("'abc' 00"
                                      "20 00*7 00*4 20 00*7 20 00*7"
                                      "A5*8"));
}

TEST(ServerConnectionParameters, PutTheTimeoutsSlotAtTheNextMultipleOfEight)
{
    TestArena arena(32);

    const WireServer wire = CastToZt(ServerConnectionParameters{"server123", {}, {}, timeouts}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 09 00 00 00  00*8  00*8  10 00 00 00 10 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("'server123' 00*7 08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"));
}

TEST(ServerConnectionParameters, AlignTheAddressOfASlotAndNotItsOffset)
{
    TestArena arena(40, 3);

    const WireServer wire = CastToZt(ServerConnectionParameters{"", {}, {}, timeouts}, arena.Get());

    EXPECT_EQ(wire.timeouts, (zt_ptr_t{5, 16}));
    EXPECT_EQ(arena.Used(), Bytes("00*5 08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"));
}

TEST(ServerConnectionParameters, RunOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(FullServer(), fullServer);
}

TEST(ServerConnectionParameters, TakeOneHundredAndTwentyEightBytesInEveryString)
{
    const auto limit = [](const char* part, auto member) {
        ExpectLimit(fullServer, part, 128, [&](std::size_t size) {
            ServerConnectionParameters record = FullServer();
            member(record).assign(size, 'x');
            return record;
        });
    };
    using Record = ServerConnectionParameters;
    limit("address", [](Record& record) -> std::string& { return record.address; });
    limit("proxy.address", [](Record& record) -> std::string& { return record.proxy->address; });
    limit("proxy.userName", [](Record& record) -> std::string& { return record.proxy->credentials.userName; });
    limit("proxy.password", [](Record& record) -> std::string& { return record.proxy->credentials.password; });
    limit("ssl.field2", [](Record& record) -> std::string& { return record.ssl->field2; });
    limit("ssl.field3", [](Record& record) -> std::string& { return record.ssl->field3; });
    limit("ssl.field4", [](Record& record) -> std::string& { return record.ssl->field4; });
    limit("ssl.field5", [](Record& record) -> std::string& { return record.ssl->field5; });
}

TEST(ServerConnectionParameters, ReserveNothingForTheOptionalMembersOfATooLongAddress)
{
    TestArena arena(256, 0, 3);
    ServerConnectionParameters record = FullServer();
    record.address.assign(129, 'x');

    ExpectOverLimit([&] { CastToZt(record, arena.Get()); }, stringCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5*256"));
    EXPECT_EQ(arena.Top(), 3u);
}

TEST(ServerConnectionParameters, RefuseANullArenaBeforeTheyLookAtAnyLength)
{
    ServerConnectionParameters record = FullServer();
    record.address.assign(129, 'x');

    ExpectInvalidArgument([&] { CastToZt(record, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastToZt(ServerConnectionParameters{}, nullptr); }, stringCodec, 21);
}

// --- ServerConnectionParameters: reading ---

TEST(ServerConnectionParameters, RefuseBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<ServerConnectionParameters>(fullServer);
}

TEST(ServerConnectionParameters, RefuseToBeReadFromANullArena)
{
    ExpectInvalidArgument([] { CastFromZt(WireServer{}, nullptr); }, stringCodec, 39);
}

TEST(ServerConnectionParameters, AreReadWithStringsLongerThanMayBeWritten)
{
    ServerConnectionParameters record = FullServer();
    record.address.assign(129, 'a');
    record.proxy->credentials.password.assign(200, 'p');
    record.ssl->field5.assign(1000, 's');

    ExpectReads(record,
                fullServer.With("address", "'a'*129").With("proxy.password", "'p'*200").With("ssl.field5", "'s'*1000"));
}

TEST(ServerConnectionParameters, ReadTheFirstOfSeveralElements)
{
    const auto doubled = [](const char* part, const char* second) {
        const std::string first = fullServer.parts[fullServer.IndexOf(part)].content;
        ExpectReads(FullServer(), fullServer.With(part, first + " " + second));
    };
    doubled("proxy", "FF*28");
    doubled("ssl", "FF*36 FF*36");
    doubled("timeouts", "21 22 23 24 25 26 27 28 31 32 33 34 35 36 37 38");
}

TEST(ServerConnectionParameters, ReadNoPartOfAnElement)
{
    TestArena arena(96);
    const auto readWith = [&](zt_ptr_t WireServer::*member, zt_ptr_t pointer) {
        WireServer wire{};
        wire.*member = pointer;
        CastFromZt(wire, arena.Get());
    };

    ExpectOutside([&] { readWith(&WireServer::timeouts, {8, 8}); }, optionalCodec, 8);
    ExpectOutside([&] { readWith(&WireServer::timeouts, {8, 24}); }, optionalCodec, 8);
    ExpectOutside([&] { readWith(&WireServer::proxy, {8, 20}); }, optionalCodec, 8);
    ExpectOutside([&] { readWith(&WireServer::proxy, {8, 36}); }, optionalCodec, 8);
    ExpectOutside([&] { readWith(&WireServer::ssl, {8, 28}); }, optionalCodec, 8);
    ExpectOutside([&] { readWith(&WireServer::ssl, {8, 16}); }, optionalCodec, 8);
}

TEST(ServerConnectionParameters, ReadAnOptionalMemberOfSizeZeroAsAbsent)
{
    ExpectReads(
        ServerConnectionParameters{"server", {}, {}, {}},
        layout::Message("[address] 01 00*3 00*4 05 00*3 00*4 06 00*3 00*4", {{"address", layout::Text, "'server'"}}));
}

TEST(ServerConnectionParameters, ReadAProxyWithWhateverBytesAreInItsPadding)
{
    ExpectReads(FullServer(), fullServer.With("proxy", "[proxy.address] 90 1F FF*2 [proxy.userName] [proxy.password]"));
}

// The readers that other conversions share with this one.
TEST(ServerConnectionParameters, ShareTheReadersOfOptionalProxyAndTlsSettings)
{
    using vyn_connector::common::ZtToOptional;
    const layout::Image image(fullServer, {});
    TestArena arena(image.Top());
    arena.Put(0, image.Contents(arena.Capacity()));
    ProxySettings (*const readProxy)(const WireProxy&, const zt_arena*) = &CastFromZt;
    SslSettings (*const readSsl)(const WireSsl&, const zt_arena*) = &CastFromZt;
    const zt_ptr_t proxy = image.PointerTo("proxy");
    const zt_ptr_t ssl = image.PointerTo("ssl");

    EXPECT_TRUE((ZtToOptional<WireProxy, ProxySettings>(&proxy, arena.Get(), readProxy)) == FullServer().proxy);
    EXPECT_TRUE((ZtToOptional<WireSsl, SslSettings>(&ssl, arena.Get(), readSsl)) == FullServer().ssl);
}

TEST(ServerConnectionParameters, AreUnequalWhereOneMemberDiffers)
{
    using Record = ServerConnectionParameters;
    ExpectEveryMemberIsCompared(
        FullServer(), [](Record& record) { record.address = "abd"; }, [](Record& record) { record.proxy.reset(); },
        [](Record& record) { ++record.proxy.value().port; }, [](Record& record) { record.ssl.reset(); },
        [](Record& record) { record.ssl->field5 = ""; }, [](Record& record) { record.timeouts.reset(); },
        [](Record& record) { ++record.timeouts.value().field2; });
}

TEST(ServerConnectionParameters, DeclareTheirMembersInTheOrderOfTheWire)
{
    const ServerConnectionParameters record;
    const auto& [address, proxy, ssl, requestsTimeouts] = record;

    EXPECT_EQ(AddressesOf(address, proxy, ssl, requestsTimeouts),
              AddressesOf(record.address, record.proxy, record.ssl, record.timeouts));
}

// --- VynConnectionParameters ---

TEST(VynConnectionParameters, PutTheLoginBehindEverythingOfTheServer)
{
    TestArena arena(48, 0, 1);
    const VynConnectionParameters record{{"host", {}, {}, timeouts}, {"me", "pass"}};

    const WireConnection wire = CastToZt(record, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("01 00 00 00 04 00 00 00  00*8  00*8  08 00 00 00 10 00 00 00"
                                   "18 00 00 00 02 00 00 00  1A 00 00 00 04 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'host' 00*3 08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11 'mepass' A5*18"));
    EXPECT_EQ(arena.Top(), 30u);
}

TEST(VynConnectionParameters, AreWrittenAndReadWhereverTheArenaLies)
{
    const VynConnectionParameters record{FullServer(), {"login", "secret"}};

    ExpectWrites(record, FullConnection());
    ExpectReads(record, FullConnection());
    ExpectNeedsAllItsSpace(record, FullConnection());
    ExpectRefusesBadPointers<VynConnectionParameters>(FullConnection());
}

TEST(VynConnectionParameters, TakeOneHundredAndTwentyEightBytesInTheLogin)
{
    ExpectLimit(FullConnection(), "userName", 128, [](std::size_t size) {
        return VynConnectionParameters{FullServer(), {std::string(size, 'x'), "secret"}};
    });
    ExpectLimit(FullConnection(), "password", 128, [](std::size_t size) {
        return VynConnectionParameters{FullServer(), {"login", std::string(size, 'x')}};
    });
}

TEST(VynConnectionParameters, RefuseANullArena)
{
    ExpectInvalidArgument([] { CastToZt(VynConnectionParameters{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireConnection{}, nullptr); }, stringCodec, 39);
}

TEST(VynConnectionParameters, AreUnequalWhereOneMemberDiffers)
{
    using Record = VynConnectionParameters;
    ExpectEveryMemberIsCompared(
        Record{FullServer(), {"login", "secret"}}, [](Record& record) { record.serverParameters.timeouts.reset(); },
        [](Record& record) { record.credentials.userName = "logout"; },
        [](Record& record) { record.credentials.password = ""; });

    const Record record;
    const auto& [serverParameters, credentials] = record;
    EXPECT_EQ(AddressesOf(serverParameters, credentials), AddressesOf(record.serverParameters, record.credentials));
}

// --- The plain records ---

TEST(VynRequestsTimeouts, AreTheSameBytesInBothForms)
{
    const WireTimeouts wire = CastToZt(timeouts, nullptr);
    EXPECT_EQ(BytesOf(wire), Bytes("08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11"));
    EXPECT_EQ(BytesOf(wire), BytesOf(timeouts));

    const VynRequestsTimeouts read = CastFromZt(wire, nullptr);
    EXPECT_EQ(read.field1, 0x0102030405060708u);
    EXPECT_EQ(read.field2, 0x1112131415161718u);
}

TEST(VynRequestsTimeouts, DoNotTouchTheArena)
{
    TestArena arena(8, 0, 3);

    EXPECT_TRUE(CastFromZt(CastToZt(timeouts, arena.Get()), arena.Get()) == timeouts);

    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 3u);
}

TEST(VynRequestsTimeouts, AreUnequalWhereOneMemberDiffers)
{
    using Record = VynRequestsTimeouts;
    ExpectEveryMemberIsCompared(
        timeouts, [](Record& record) { ++record.field1; }, [](Record& record) { ++record.field2; });
}

TEST(VynConnectorSettings, AreTheSameBytesInBothForms)
{
    const VynConnectorSettings record{0x0102030405060708, 0x1112131415161718, 0x2122232425262728,
                                      0x3132333435363738, 0x4142434445464748, 0xF1F2F3F4F5F6F7F8};

    const WireSettings wire = CastToZt(record);
    EXPECT_EQ(BytesOf(wire), Bytes("08 07 06 05 04 03 02 01 18 17 16 15 14 13 12 11 28 27 26 25 24 23 22 21"
                                   "38 37 36 35 34 33 32 31 48 47 46 45 44 43 42 41 F8 F7 F6 F5 F4 F3 F2 F1"));
    EXPECT_EQ(BytesOf(wire), BytesOf(record));

    const VynConnectorSettings read = CastFromZt(wire);
    EXPECT_EQ(read.field1, 0x0102030405060708u);
    EXPECT_EQ(read.field2, 0x1112131415161718u);
    EXPECT_EQ(read.field3, 0x2122232425262728u);
    EXPECT_EQ(read.field4, 0x3132333435363738u);
    EXPECT_EQ(read.field5, 0x4142434445464748u);
    EXPECT_EQ(read.field6, 0xF1F2F3F4F5F6F7F8u);
}

TEST(VynConnectorSettings, AreUnequalWhereOneMemberDiffers)
{
    using Record = VynConnectorSettings;
    ExpectEveryMemberIsCompared(
        Record{}, [](Record& record) { ++record.field1; }, [](Record& record) { ++record.field2; },
        [](Record& record) { ++record.field3; }, [](Record& record) { ++record.field4; },
        [](Record& record) { ++record.field5; }, [](Record& record) { ++record.field6; });
}

TEST(VynServerData, IsTheSameBytesInBothForms)
{
    for (const std::uint64_t value :
         {std::uint64_t{0}, std::uint64_t{0xF1F2F3F4F5F6F7F8}, std::numeric_limits<std::uint64_t>::max()}) {
        const VynServerData record{value};
        const WireServerData wire = CastToZt(record);
        EXPECT_EQ(wire.field1, value);
        EXPECT_EQ(BytesOf(wire), BytesOf(record));
        EXPECT_EQ(CastFromZt(wire).field1, value);
    }
}

TEST(VynServerData, IsUnequalWhereItsMemberDiffers)
{
    ExpectEveryMemberIsCompared(VynServerData{}, [](VynServerData& record) { ++record.field1; });
}

} // namespace
