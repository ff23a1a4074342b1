// error: (use of|call to) deleted function.*Verified.*
//
// A budget makes no difference.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

bool IsGood(const Credentials& credentials, zt_arena* arena)
{
    return Verified<Credentials>(CastToZt(credentials, arena), arena, 100).has_value();
}

} // namespace vyn_connector::common
