// compiles
//
// The wire structures outlive what is made of them.
#include <common/connection_settings.h>
#include <common/verify.h>

namespace vyn_connector::common {

bool HasProxyUser(const WireOf<ProxySettings>& wire, const zt_arena* arena)
{
    const RecordView<ProxySettings> view(wire, arena);
    const auto verified = Verified<ProxySettings>(wire, arena);
    return verified.has_value() && !view.Get<&ProxySettings::credentials>().Get<&Credentials::userName>().empty();
}

RecordView<ProxySettings> ViewOf(const WireOf<ProxySettings>& wire, const zt_arena* arena)
{
    return RecordView<ProxySettings>(wire, arena);
}

} // namespace vyn_connector::common
