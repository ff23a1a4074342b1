#include "steps/message_around.h"

#include <common/vyn_connector_common.h>

#include <optional>
#include <type_traits>
#include <vector>

namespace exchange {

namespace {

// The record that a list, a map or an optional is made of; any other type is its own.
template <typename Value>
struct Inner {
    using Type = Value;
};
template <typename Value>
struct Inner<std::vector<Value>> {
    using Type = Value;
};
template <typename Value>
struct Inner<std::optional<Value>> {
    using Type = Value;
};
template <>
struct Inner<vyn_connector::VynSubscriptions> {
    using Type = vyn_connector::VynSubscription;
};

template <typename Record>
bool Holds(std::string_view name)
{
    bool holds = false;
    vyn_connector::common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (vyn_connector::common::isField<Row>) {
            if (std::is_base_of_v<vyn_connector::common::kind::InPlace, typename Row::Kind>) return; // bytes, no record
            using Value = typename Row::InDomain::Type;
            using Part = std::conditional_t<vyn_connector::common::isDescribed<Value> && !std::is_same_v<Value, Record>,
                                            Value, typename Inner<Value>::Type>;
            if constexpr (vyn_connector::common::isDescribed<Part> && !std::is_same_v<Part, Record>)
                holds = holds || vyn_connector::common::Description<Part>::name == name || Holds<Part>(name);
        }
    });
    return holds;
}

template <typename... Messages>
std::string_view FirstThatHolds(std::string_view name)
{
    std::string_view found;
    ((found = found.empty() && Holds<Messages>(name) ? vyn_connector::common::Description<Messages>::name : found),
     ...);
    return found;
}

} // namespace

std::string_view MessageAround(std::string_view record)
{
    using namespace vyn_connector;
    return FirstThatHolds<VynConnectionParameters, std::vector<common::RawVynParam>, AppInfo, DynamicAppInfo,
                          VynSubscriptionsWithHash, VynUpdateIdentifiers, std::vector<ClientCertInfo>>(record);
}

} // namespace exchange
