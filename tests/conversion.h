// Every record and its pair of conversions under one name each, whatever their signatures. For properties that hold for
// all of them.
#pragma once

#include "any_record.h"

#include <common/vyn_connector_common.h>

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

namespace conversion {

using namespace vyn_connector;

using Records = testing::Types<Credentials, ProxySettings, SslSettings, VynRequestsTimeouts, ServerConnectionParameters,
                               VynConnectionParameters, VynConnectorSettings, VynServerData, common::RawVynParam,
                               std::vector<common::RawVynParam>, ProductUpdCfg, ProductUpdCfgArray, ProductHsdpStatus,
                               ProductHsdpInfo, ProductInfo, DeviceInfo, AppInfo, DynamicAppInfo, LicenseKeyInfo,
                               LicenseInfo, FileInfoParams, FileInfo, FileChunkParams, FileChunk, ClientCertParams,
                               ClientCertInfo, std::vector<ClientCertInfo>, VynUpdateIdentifier, VynUpdateIdentifiers,
                               VynSubscription, VynSubscriptions, VynSubscriptionsWithHash, VynEvent>;

template <typename Record>
inline constexpr bool takesNoArena = std::is_same_v<Record, VynConnectorSettings> ||
                                     std::is_same_v<Record, VynServerData> || std::is_same_v<Record, DynamicAppInfo>;

// An event that does not fit would be a mistake of the test.
template <typename Record>
common::WireOf<Record> Write(const Record& record, zt_arena* arena)
{
    if constexpr (std::is_same_v<Record, VynEvent>) {
        auto status = lyr::ipc::arena::conv::Status::Ok;
        const auto wire = lyr::ipc::arena::conv::ToZt(*arena, record, status);
        EXPECT_EQ(status, lyr::ipc::arena::conv::Status::Ok);
        return wire;
    } else if constexpr (std::is_same_v<Record, VynUpdateIdentifiers>) {
        return common::CastToZt(std::pair(record.cbegin(), record.cend()), arena);
    } else if constexpr (takesNoArena<Record>) {
        return common::CastToZt(record);
    } else {
        return common::CastToZt(record, arena);
    }
}

template <typename Record>
Record Read(const common::WireOf<Record>& wire, const zt_arena* arena)
{
    if constexpr (std::is_same_v<Record, VynEvent>) {
        auto status = lyr::ipc::arena::conv::Status::Ok;
        return lyr::ipc::arena::conv::FromZt(*arena, wire, status);
    } else if constexpr (takesNoArena<Record>) {
        return common::CastFromZt(wire);
    } else {
        return common::CastFromZt(wire, arena);
    }
}

// A record with everything in it: optional members present, lists of some elements, and texts too long for a string to
// hold without allocating.
template <typename Record>
Record Full()
{
    return any_record::Make<Record>([](std::uint64_t limit) { return std::min<std::uint64_t>(limit, 20); });
}

} // namespace conversion
