// error: no matching (function for call to|constructor for initialization of).*
//
// Only Verified makes a view that tests nothing.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

VerifiedView<Credentials> ViewOf(const WireOf<Credentials>& wire, const zt_arena* arena)
{
    return VerifiedView<Credentials>(wire, arena);
}

} // namespace vyn_connector::common
