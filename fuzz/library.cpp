#include "library.h"

#include "check_looks.h"
#include "library_values.h"

#include <cstring>

namespace library {
namespace {

// Events have a pair of their own; plain numbers take no arena; identifiers are written from a range.
template <typename Record, typename Wire>
Record Read(const Wire& wire, const zt_arena* arena, bool& status)
{
    if constexpr (std::is_same_v<Record, VynEvent>) {
        namespace conv = lyr::ipc::arena::conv;
        auto result = conv::Status::Ok;
        Record record = conv::FromZt(*arena, wire, result);
        status = result == conv::Status::Ok;
        return record;
    } else if constexpr (std::is_same_v<Record, VynConnectorSettings> || std::is_same_v<Record, VynServerData> ||
                         std::is_same_v<Record, DynamicAppInfo>) {
        return common::CastFromZt(wire);
    } else {
        return common::CastFromZt(wire, arena);
    }
}

template <typename Record>
auto Write(const Record& record, zt_arena* arena, bool& status)
{
    if constexpr (std::is_same_v<Record, VynEvent>) {
        namespace conv = lyr::ipc::arena::conv;
        auto result = conv::Status::Ok;
        const auto wire = conv::ToZt(*arena, record, result);
        status = result == conv::Status::Ok;
        return wire;
    } else if constexpr (std::is_same_v<Record, VynConnectorSettings> || std::is_same_v<Record, VynServerData> ||
                         std::is_same_v<Record, DynamicAppInfo>) {
        return common::CastToZt(record);
    } else if constexpr (std::is_same_v<Record, VynUpdateIdentifiers>) {
        return common::CastToZt(common::VynUpdateIdentifierRange(record.begin(), record.end()), arena);
    } else {
        return common::CastToZt(record, arena);
    }
}

template <typename Record>
model::Outcome ReadValue(const std::string& bytes, const zt_arena* arena)
{
    common::WireOf<Record> wire;
    std::memcpy(&wire, bytes.data(), sizeof(wire));
    model::Outcome outcome;
    std::optional<Record> record;
    const std::uint64_t before = bytesAskedFor;
    outcome.failure = FailureOf([&] { record = Read<Record>(wire, arena, outcome.status); });
    const std::uint64_t taken = bytesAskedFor - before;
    if (record) Require(taken <= common::DecodedSize<Record>(wire, arena), "reading takes more than DecodedSize");
    CheckLooks<Record>(wire, arena, outcome.failure, outcome.status, record ? &*record : nullptr);
    if (!record) return outcome;
    if (arena != nullptr && outcome.status) CheckCanonical<Record>(wire, *arena, *record);
    outcome.value = FromRecord(*record, Order::Sorted);
    return outcome;
}

template <typename Record>
model::Outcome WriteValue(const model::Value& value, zt_arena* arena, model::Value* written)
{
    const auto record = ToRecord<Record>(value);
    *written = FromRecord(record, Order::AsStored);
    model::Outcome outcome;
    outcome.failure = FailureOf([&] {
        const auto wire = Write(record, arena, outcome.status);
        outcome.wire.assign(reinterpret_cast<const char*>(&wire), sizeof(wire));
    });
    return outcome;
}

template <typename Record>
std::size_t ArenaSizeOf(const model::Value& value, std::uintptr_t top)
{
    return common::ArenaSize(ToRecord<Record>(value), top);
}

template <typename Record>
bool IsCanonical(const std::string& bytes, const zt_arena* arena)
{
    common::WireOf<Record> wire;
    std::memcpy(&wire, bytes.data(), sizeof(wire));
    return !common::VerifyCanonical<Record>(wire, arena).has_value();
}

template <typename Record>
Conversions Of(const model::Layout& layout)
{
    return {&layout, &ReadValue<Record>, &WriteValue<Record>, &ArenaSizeOf<Record>, &IsCanonical<Record>};
}

} // namespace

const std::vector<Conversions>& Records()
{
    static const std::vector<Conversions> records{
        Of<AppInfo>(model::appInfo),
        Of<ClientCertInfo>(model::clientCertInfo),
        Of<ClientCertParams>(model::clientCertParams),
        Of<std::vector<ClientCertInfo>>(model::clientCertsInfo),
        Of<Credentials>(model::credentials),
        Of<DeviceInfo>(model::deviceInfo),
        Of<DynamicAppInfo>(model::dynamicAppInfo),
        Of<FileChunk>(model::fileChunk),
        Of<FileChunkParams>(model::fileChunkParams),
        Of<FileInfo>(model::fileInfo),
        Of<FileInfoParams>(model::fileInfoParams),
        Of<LicenseInfo>(model::licenseInfo),
        Of<LicenseKeyInfo>(model::licenseKeyInfo),
        Of<ProductHsdpInfo>(model::productHsdpInfo),
        Of<ProductHsdpStatus>(model::productHsdpStatus),
        Of<ProductInfo>(model::productInfo),
        Of<ProductUpdCfg>(model::productUpdCfg),
        Of<ProductUpdCfgArray>(model::productUpdCfgArray),
        Of<ProxySettings>(model::proxySettings),
        Of<ServerConnectionParameters>(model::serverConnectionParameters),
        Of<SslSettings>(model::sslSettings),
        Of<VynConnectionParameters>(model::vynConnectionParameters),
        Of<VynConnectorSettings>(model::vynConnectorSettings),
        Of<VynEvent>(model::vynEvent),
        Of<RawVynParam>(model::vynParam),
        Of<std::vector<RawVynParam>>(model::vynParams),
        Of<VynRequestsTimeouts>(model::vynRequestsTimeouts),
        Of<VynServerData>(model::vynServerData),
        Of<VynSubscription>(model::vynSubscription),
        Of<VynSubscriptions>(model::vynSubscriptions),
        Of<VynSubscriptionsWithHash>(model::vynSubscriptionsWithHash),
        Of<VynUpdateIdentifier>(model::vynUpdateIdentifier),
        Of<VynUpdateIdentifiers>(model::vynUpdateIdentifierContainer),
    };
    return records;
}

} // namespace library
