#include "connection.h"

#include "proxy.h"
#include "settings.h"

namespace exchange {

namespace {

// The records carry the fields; what they mean is agreed between those who use them. Here:
vyn_connector::SslSettings TlsFrom(const Settings& settings)
{
    vyn_connector::SslSettings tls;
    tls.field1 = settings.Number16("/tls/minimumVersion"); // as TLS writes it: 0x0303 is TLS 1.2
    tls.field2 = settings.Text("/tls/trustedCertificates");
    tls.field3 = settings.Text("/tls/certificate");
    tls.field4 = settings.Text("/tls/privateKey");
    tls.field5 = settings.Text("/tls/ciphers");
    return tls;
}

vyn_connector::Credentials CredentialsFrom(const Settings& settings)
{
    return {settings.Text("/credentials/userName"), settings.Text("/credentials/password")};
}

template <typename Record>
void Show(Console& console, const Received<Record>& received)
{
    console.Line(fmt::format("{}: {} bytes of wire structure, {} bytes of arena",
                             vyn_connector::common::Description<Record>::name, received.wireBytes,
                             received.arenaBytes));
    console.Fields(received.record);
}

} // namespace

void SendConnection(Channel& channel, Console& console, const Options& options)
{
    const Settings settings(options.settings);
    const std::string url = options.proxy.empty() ? ProxyUrlOfThisMachine() : options.proxy;
    if (url.empty()) console.Line("this machine names no proxy (https_proxy); an empty one is sent");

    channel.Send(url.empty() ? vyn_connector::ProxySettings{} : ParseProxyUrl(url));
    channel.Send(TlsFrom(settings));
    channel.Send(CredentialsFrom(settings));
}

void ReceiveConnection(Channel& channel, Console& console)
{
    Show(console, channel.Receive<vyn_connector::ProxySettings>());
    Show(console, channel.Receive<vyn_connector::SslSettings>());
    Show(console, channel.Receive<vyn_connector::Credentials>());
}

} // namespace exchange
