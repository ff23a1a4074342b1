// error: (use of deleted function|call to deleted constructor).*RecordView.*
//
// What CastToZt returns is gone at the end of the line.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

bool HasUser(const Credentials& credentials, zt_arena* arena)
{
    const RecordView<Credentials> view(CastToZt(credentials, arena), arena);
    return !view.Get<&Credentials::userName>().empty();
}

} // namespace vyn_connector::common
