// compiles as C++20
//
// The arrays of a view are what the ranges of the standard library ask for.
#include <common/connector_parameters.h>
#include <common/record_view.h>
#include <common/subscriptions.h>

#include <algorithm>
#include <ranges>

namespace vyn_connector::common {

using Params = decltype(std::declval<RecordView<std::vector<RawVynParam>>>().Get());
using Names = decltype(std::declval<RecordView<VynSubscription>>().Get<&VynSubscription::second>());
static_assert(std::ranges::random_access_range<const Params> && std::ranges::sized_range<const Params>);
static_assert(std::ranges::random_access_range<const Names> && std::ranges::sized_range<const Names>);
static_assert(std::ranges::contiguous_range<const BytesView>);

bool Has(const Params& params, std::string_view name)
{
    const auto nameOf = [](const RecordView<RawVynParam>& param) { return param.Get<&RawVynParam::name>(); };
    return std::ranges::find(params, name, nameOf) != params.end();
}

} // namespace vyn_connector::common
