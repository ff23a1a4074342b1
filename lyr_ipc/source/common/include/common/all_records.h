// The one list of the described records, for whatever goes through all of them: tests, examples, tools.
#pragma once

#include <common/app_info.h>
#include <common/client_certs.h>
#include <common/connection_settings.h>
#include <common/connector_parameters.h>
#include <common/event.h>
#include <common/file_transfer.h>
#include <common/license_info.h>
#include <common/product_status.h>
#include <common/server_connection.h>
#include <common/subscriptions.h>
#include <common/update_identifiers.h>

namespace vyn_connector::common {

template <typename... Records>
struct RecordList {
    static constexpr std::size_t size = sizeof...(Records);
};

using AllRecords = RecordList<Credentials, ProxySettings, SslSettings,                                  //
                              VynRequestsTimeouts, ServerConnectionParameters, VynConnectionParameters, //
                              VynConnectorSettings, VynServerData,                                      //
                              RawVynParam, std::vector<RawVynParam>,                                    //
                              ProductUpdCfg, ProductUpdCfgArray, ProductHsdpStatus, ProductHsdpInfo,    //
                              LicenseKeyInfo, LicenseInfo,                                              //
                              ProductInfo, DeviceInfo, AppInfo, DynamicAppInfo,                         //
                              FileInfoParams, FileInfo, FileChunkParams, FileChunk,                     //
                              ClientCertParams, ClientCertInfo, std::vector<ClientCertInfo>,            //
                              VynSubscription, VynSubscriptions, VynSubscriptionsWithHash,              //
                              VynUpdateIdentifier, VynUpdateIdentifiers,                                //
                              VynEvent>;

// `std::vector<ClientCertInfo>` and the like have no name that can be handed on but this.
template <typename Record>
struct RecordTag {
    using Type = Record;
};

// Calls `visit(RecordTag<Record>{})` for each record of the list.
template <typename Visit, typename... Records>
constexpr void ForEach(RecordList<Records...>, Visit&& visit)
{
    (visit(RecordTag<Records>{}), ...);
}

} // namespace vyn_connector::common
