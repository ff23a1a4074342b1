// Uses the installed library as a stranger would: converts a record and back, and catches by type what the library
// throws. Built as C++17 and as C++20; exits with 0 when all went as it should.
#include <common/vyn_connector_common.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;

bool passes(bool condition, const char* what)
{
    if (!condition) std::fprintf(stderr, "consumer: %s\n", what);
    return condition;
}

// Messages that own what they hold, which is what a stranger reads about first.
bool encodesAndDecodes()
{
    using vyn_connector::common::Decode;
    using vyn_connector::common::Encode;
    const vyn_connector::Credentials sent{"user", "secret"};
    const auto message = Encode(sent);
    vyn_connector::VynEvent event;
    event.field5 = std::string(65, 'x');
    std::string refused;
    try {
        Encode(event);
    } catch (const std::length_error& error) {
        refused = error.what();
    }
    return passes(message.arena.size() == 10, "the message does not hold the record's ten bytes") &&
           passes(Decode(message) == sent, "the message is not read as the record that it was made of") &&
           passes(Decode<vyn_connector::Credentials>(message.wire, message.arena.data(), 10) == sent,
                  "the message's bytes are not read as the record") &&
           passes(Decode(Encode(vyn_connector::Credentials{"", ""})) == vyn_connector::Credentials{},
                  "a record that needs no arena does not come back") &&
           passes(Decode(Encode(vyn_connector::VynServerData{7})) == vyn_connector::VynServerData{7},
                  "a record whose conversions take no arena does not come back") &&
           passes(refused == "vyn event: field5: 65 bytes, at most 64", "the event's refusal has another text");
}

// The same with an arena of the caller's own.
bool convertsBothWays()
{
    std::array<std::uint8_t, 64> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
#if __cplusplus >= 202002L
    const vyn_connector::Credentials sent{.userName = "user", .password = "secret"};
#else
    const vyn_connector::Credentials sent{"user", "secret"};
#endif
    const tq_vyn_connector_VynTypes_Credentials wire = CastToZt(sent, &arena);
    return passes(arena.top == arena.start + 10, "the arena does not hold the record's ten bytes") &&
           passes(CastFromZt(wire, &arena) == sent, "the record did not come back as it was sent");
}

template <typename Record>
bool travels(const Record& sent, const char* name)
{
    std::array<std::uint8_t, 256> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    return passes(CastFromZt(CastToZt(sent, &arena), &arena) == sent, name);
}

template <typename Record>
bool travelsWithoutArena(const Record& sent, const char* name)
{
    return passes(CastFromZt(CastToZt(sent)) == sent, name);
}

bool eventTravels()
{
    std::array<std::uint8_t, 64> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    auto status = lyr::ipc::arena::conv::Status::Ok;
    vyn_connector::VynEvent sent;
    sent.field7 = "text";
    const auto wire = lyr::ipc::arena::conv::ToZt(arena, sent, status);
    return passes(lyr::ipc::arena::conv::FromZt(arena, wire, status) == sent &&
                      status == lyr::ipc::arena::conv::Status::Ok,
                  "VynEvent");
}

bool everyRecordTravels()
{
    using namespace vyn_connector;
    VynSubscriptions subscriptions;
    subscriptions.emplace(VynEventSeverity::Severity0, std::unordered_set<std::string>{"type"});
    const VynUpdateIdentifiers identifiers(2);
    std::array<std::uint8_t, 32> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    const auto range = CastToZt(common::VynUpdateIdentifierRange(identifiers.begin(), identifiers.end()), &arena);

    const bool results[] = {
        travels(ProxySettings{"host", 1, {"u", "p"}}, "ProxySettings"),
        travels(SslSettings{1, "2", "3", "4", "5"}, "SslSettings"),
        travels(VynRequestsTimeouts{1, 2}, "VynRequestsTimeouts"),
        travels(VynConnectionParameters{{"a", ProxySettings{}, SslSettings{}, VynRequestsTimeouts{3, 4}}, {}},
                "VynConnectionParameters"),
        travelsWithoutArena(VynConnectorSettings{1, 2, 3, 4, 5, 6}, "VynConnectorSettings"),
        travelsWithoutArena(VynServerData{7}, "VynServerData"),
        travels(std::vector<common::RawVynParam>{{{1, 2}, "name"}}, "VynParams"),
        travels(ProductInfo{"1", "2", 3, "4", "5", {{{"a", "b"}}}, {6, {{"c", "d"}}}, 7}, "ProductInfo"),
        travels(LicenseInfo{LicenseKeyInfo{1, 2, 3, wem::types::Timestamp{4}, {}, 6, 7, "8"}, {}}, "LicenseInfo"),
        travels(DeviceInfo{}, "DeviceInfo"),
        travels(AppInfo{}, "AppInfo"),
        travelsWithoutArena(DynamicAppInfo{8}, "DynamicAppInfo"),
        travels(FileInfoParams{"f"}, "FileInfoParams"),
        travels(FileInfo{"f", true, false, wem::types::Timestamp{-1}, 9}, "FileInfo"),
        travels(FileChunkParams{"f", 1, 2}, "FileChunkParams"),
        travels(FileChunk{0, "f", 1, 2, {3}}, "FileChunk"),
        travels(ClientCertParams{"1", "2", true, 4}, "ClientCertParams"),
        travels(std::vector<ClientCertInfo>{{1, "2", "3", "4", 0}}, "ClientCertsInfo"),
        travels(VynUpdateIdentifier{std::byte{1}}, "VynUpdateIdentifier"),
        passes(CastFromZt(range, &arena) == identifiers, "VynUpdateIdentifierContainer"),
        travels(VynSubscription{VynEventSeverity::Severity1, {"type"}}, "VynSubscription"),
        travels(VynSubscriptionsWithHash{5, subscriptions}, "VynSubscriptionsWithHash"),
        eventTravels(),
        passes(CastToZt(VynConnectorState::State12) == 13 && CastFromZt(1) == VynConnectorState::State0,
               "VynConnectorState")};
    return std::all_of(std::begin(results), std::end(results), [](bool passed) { return passed; });
}

bool throwsExhaustion()
{
    std::array<std::uint8_t, 3> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    try {
        CastToZt(vyn_connector::Credentials{"user", ""}, &arena);
    } catch (const mur::InvalidArgumentException&) {
        return passes(false, "exhaustion arrived as an argument error");
    } catch (const mur::ResultCodeException& error) {
        const auto text = error.Text();
        return passes(std::u16string_view(text) == u"0x80000062 (Out of space)", "exhaustion has another text");
    }
    return passes(false, "four bytes went into an arena of three");
}

// Codecs that only the caller instantiates; their errors need the runtime's exceptions and fmt.
bool refusesTextOverCallersOwnLimit()
{
    std::array<std::uint8_t, 8> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    zt_ptr_t pointer{};
    try {
        vyn_connector::common::StringToZt<5>("123456", &pointer, &arena);
    } catch (const std::length_error&) {
        return true;
    }
    return passes(false, "six characters went into a string of at most five");
}

bool refusesPointerOutside()
{
    std::array<std::uint8_t, 8> buffer{};
    const zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    const zt_ptr_t pointer{9, 0};
    try {
        vyn_connector::common::ZtToOptional<std::uint8_t, int>(
            &pointer, &arena, [](std::uint8_t byte, const zt_arena*) { return static_cast<int>(byte); });
    } catch (const std::out_of_range& error) {
        return passes(error.what() ==
                          std::string("zt optional: zt_arena does not contain an element with the address 9"),
                      "a pointer outside the arena has another text");
    }
    return passes(false, "a pointer outside the arena was followed");
}

bool refusesNullArgument()
{
    try {
        vyn_connector::common::StringToZt<5>("12345", nullptr, nullptr);
    } catch (const mur::Exception& error) {
        return passes(error.line == 21, "the argument error names another line");
    }
    return passes(false, "a null arena was accepted");
}

} // namespace

int main()
{
    const bool passed = encodesAndDecodes() && convertsBothWays() && everyRecordTravels() && throwsExhaustion() &&
                        refusesTextOverCallersOwnLimit() && refusesPointerOutside() && refusesNullArgument();
    return passed ? 0 : 1;
}
