// error from Clang: address of stack memory associated with local variable 'wire' returned.*
//
// The wire structure is gone when the function returns.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

std::optional<VerifiedView<Credentials>> ViewOf(const Credentials& credentials, zt_arena* arena)
{
    const WireOf<Credentials> wire = CastToZt(credentials, arena);
    return Verified<Credentials>(wire, arena);
}

} // namespace vyn_connector::common
