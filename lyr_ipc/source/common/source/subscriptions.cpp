#include <common/subscriptions.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(VynSubscription)
VYN_DEFINE_CONVERSIONS(VynSubscriptions)
VYN_DEFINE_CONVERSIONS(VynSubscriptionsWithHash)

template std::unordered_set<std::string>
ZtToSet<zt_ptr_t, std::string>(const zt_ptr_t*, const zt_arena*, std::string (*)(const zt_ptr_t&, const zt_arena*));

} // namespace vyn_connector::common
