// error: (use of|call to) deleted function.*Verified.*
//
// What CastToZt returns is gone at the end of the line.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

bool HasUser(const Credentials& credentials, zt_arena* arena)
{
    const auto view = Verified<Credentials>(CastToZt(credentials, arena), arena);
    return view.has_value() && !view->Get<&Credentials::userName>().empty();
}

} // namespace vyn_connector::common
