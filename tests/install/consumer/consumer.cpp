// Uses the installed library as a stranger would: converts every record and back, and catches by type whatever the
// library throws. Built as C++17 and as C++20; exits with 0 when all went as it should.
#include <common/vyn_connector_common.h>
#include <mur/utf8.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <sys/resource.h>

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

    bool passed = true;
    passed &= travels(ProxySettings{"host", 1, {"u", "p"}}, "ProxySettings");
    passed &= travels(SslSettings{1, "2", "3", "4", "5"}, "SslSettings");
    passed &= travels(VynRequestsTimeouts{1, 2}, "VynRequestsTimeouts");
    passed &= travels(VynConnectionParameters{{"a", ProxySettings{}, SslSettings{}, VynRequestsTimeouts{3, 4}}, {}},
                      "VynConnectionParameters");
    passed &= travelsWithoutArena(VynConnectorSettings{1, 2, 3, 4, 5, 6}, "VynConnectorSettings");
    passed &= travelsWithoutArena(VynServerData{7}, "VynServerData");
    passed &= travels(std::vector<common::RawVynParam>{{{1, 2}, "name"}}, "VynParams");
    passed &= travels(ProductInfo{"1", "2", 3, "4", "5", {{{"a", "b"}}}, {6, {{"c", "d"}}}, 7}, "ProductInfo");
    passed &= travels(LicenseInfo{LicenseKeyInfo{1, 2, 3, wem::types::Timestamp{4}, {}, 6, 7, "8"}, {}}, "LicenseInfo");
    passed &= travels(DeviceInfo{}, "DeviceInfo");
    passed &= travels(AppInfo{}, "AppInfo");
    passed &= travelsWithoutArena(DynamicAppInfo{8}, "DynamicAppInfo");
    passed &= travels(FileInfoParams{"f"}, "FileInfoParams");
    passed &= travels(FileInfo{"f", true, false, wem::types::Timestamp{-1}, 9}, "FileInfo");
    passed &= travels(FileChunkParams{"f", 1, 2}, "FileChunkParams");
    passed &= travels(FileChunk{0, "f", 1, 2, {3}}, "FileChunk");
    passed &= travels(ClientCertParams{"1", "2", true, 4}, "ClientCertParams");
    passed &= travels(std::vector<ClientCertInfo>{{1, "2", "3", "4", 0}}, "ClientCertsInfo");
    passed &= travels(VynUpdateIdentifier{std::byte{1}}, "VynUpdateIdentifier");
    passed &= passes(CastFromZt(range, &arena) == identifiers, "VynUpdateIdentifierContainer");
    passed &= travels(VynSubscription{VynEventSeverity::Severity1, {"type"}}, "VynSubscription");
    passed &= travels(VynSubscriptionsWithHash{5, subscriptions}, "VynSubscriptionsWithHash");
    passed &= eventTravels();
    passed &= passes(CastToZt(VynConnectorState::State12) == 13 && CastFromZt(1) == VynConnectorState::State0,
                     "VynConnectorState");
    return passed;
}

// What a call throws, by the first type that catches it, with all that the exception holds.
template <typename Call>
std::string raised(Call&& call)
{
    const auto fields = [](const mur::Exception& error) {
        return std::string(error.what()) + " \"" + mur::to_utf8(error.Text()) + "\" at " +
               (error.file == nullptr ? "none" : error.file) + ':' + std::to_string(error.line) + ", detail " +
               std::to_string(error.detail) + ", message of " + std::to_string(error.message.size) +
               (error.nested == nullptr ? ", alone" : ", nested");
    };
    try {
        call();
    } catch (const mur::InvalidArgumentException& error) {
        return "argument: " + fields(error) + ", code " + std::to_string(error.resultCode);
    } catch (const mur::ResultCodeException& error) {
        return "result: " + fields(error) + ", code " + std::to_string(error.resultCode);
    } catch (const mur::Exception& error) {
        return "runtime: " + fields(error);
    } catch (const std::length_error& error) {
        return std::string("length: ") + error.what();
    } catch (const std::out_of_range& error) {
        return std::string("range: ") + error.what();
    } catch (const std::bad_alloc& error) {
        return std::string("memory: ") + error.what();
    } catch (const std::exception& error) {
        return std::string("other: ") + error.what();
    }
    return "nothing";
}

template <typename Call>
bool raises(const std::string& expected, Call&& call)
{
    const std::string found = raised(call);
    if (found != expected)
        std::fprintf(stderr, "consumer: raised is\n  %s\nand not\n  %s\n", found.c_str(), expected.c_str());
    return found == expected;
}

// A process whose memory is limited, as one that reads strangers' messages should be.
bool limitMemory()
{
    const rlimit limit{rlim_t{4} << 30, rlim_t{4} << 30};
    return passes(setrlimit(RLIMIT_AS, &limit) == 0, "the process's memory cannot be limited");
}

// Every type that is thrown inside the library, and from templates that the caller instantiates.
bool catchesWhateverIsThrown()
{
    using namespace vyn_connector;
    std::array<std::uint8_t, 3> three{};
    zt_arena small{three.data(), three.data(), three.data() + three.size()};
    std::array<std::uint8_t, 256> buffer{};
    zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
    const VynUpdateIdentifiers identifiers(11);
    zt_ptr_t pointer{};

    const std::string outOfSpace = "result: ResultCodeException \"0x80000062 (Out of space)\" at none:0, detail 0, "
                                   "message of 0, alone, code -2147483550";
    const std::string nullArena = "argument: InvalidArgumentException \"0x00000000 (No error)\" at "
                                  "lyr_ipc/source/common/include/common/zt_string:21, detail 0, message of 0, alone, "
                                  "code 0";
    return limitMemory() && //
           raises(outOfSpace,
                  [&] {
                      CastToZt(Credentials{"user", ""}, &small);
                  }) &&
           raises(
               "result: ResultCodeException \"0x80000046 (Invalid argument)\" at none:0, detail 0, message of 0, "
               "alone, code -2147483578",
               [&] { CastToZt(common::VynUpdateIdentifierRange(identifiers.begin(), identifiers.end()), &arena); }) &&
           raises(nullArena,
                  [&] {
                      CastToZt(Credentials{"user", ""}, nullptr);
                  }) &&
           raises(nullArena, [&] { common::StringToZt<5>("12345", nullptr, nullptr); }) &&
           raises("length: zt string: string size larger than zt buffer",
                  [&] { common::StringToZt<5>("123456", &pointer, &arena); }) &&
           raises("length: zt string: string size larger than zt buffer",
                  [&] {
                      CastToZt(ProxySettings{std::string(129, 'x'), 1, {}}, &arena);
                  }) &&
           raises("range: zt string: zt_arena does not contain an element with the address 257",
                  [&] {
                      CastFromZt(tq_vyn_connector_VynTypes_Credentials{{257, 0}, {0, 0}}, &arena);
                  }) &&
           raises("range: zt optional: zt_arena does not contain an element with the address 257",
                  [&] {
                      pointer = {257, 0};
                      common::ZtToOptional<std::uint8_t, int>(
                          &pointer, &arena, [](std::uint8_t byte, const zt_arena*) { return static_cast<int>(byte); });
                  }) &&
           raises("memory: std::bad_alloc", [&] {
               CastFromZt(tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer{{0, 0xFFFFFFF0}}, &arena);
           });
}

// By its base alone an exception is still what it is: it tells, clones and throws itself whole.
bool keepsTheTypeOfWhatIsCaughtByItsBase()
{
    try {
        CastToZt(vyn_connector::Credentials{"user", ""}, nullptr);
    } catch (const mur::Exception& error) {
        const std::unique_ptr<mur::Exception> clone(error.Clone());
        const std::string whole = raised([&] { error.Throw(); });
        return passes(whole.rfind("argument: ", 0) == 0, "an argument error did not throw itself") &&
               raises(whole, [&] { clone->Throw(); });
    }
    return passes(false, "a null arena was accepted");
}

// For the preprocessor, at compile time, and as text.
#if VYN_CONNECTOR_COMMON_VERSION_MAJOR > 0 || VYN_CONNECTOR_COMMON_VERSION_MINOR >= 1
static_assert(vyn_connector::common::Version() == VYN_CONNECTOR_COMMON_VERSION);
#else
#error "there was no such version"
#endif
bool saysItsVersion()
{
    return passes(std::string(vyn_connector::common::Version()) ==
                      std::to_string(VYN_CONNECTOR_COMMON_VERSION_MAJOR) + '.' +
                          std::to_string(VYN_CONNECTOR_COMMON_VERSION_MINOR) + '.' +
                          std::to_string(VYN_CONNECTOR_COMMON_VERSION_PATCH),
                  "the version's text is not made of its numbers");
}

} // namespace

int main()
{
    const bool passed = encodesAndDecodes() && convertsBothWays() && everyRecordTravels() &&
                        catchesWhateverIsThrown() && keepsTheTypeOfWhatIsCaughtByItsBase() && saysItsVersion();
    return passed ? 0 : 1;
}
