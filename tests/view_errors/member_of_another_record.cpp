// error: the member is none of this record's
//
// A proxy has a password, but in its credentials.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

bool HasPassword(const RecordView<ProxySettings>& view)
{
    return !view.Get<&Credentials::password>().empty();
}

} // namespace vyn_connector::common
