// Step 1: how the connector reaches its server, and with which settings it runs. The proxy is the machine's, the rest
// stands in the settings file.
#include "steps/conversation.h"
#include "steps/proxy.h"
#include "steps/settings.h"
#include "steps/show.h"

namespace exchange {

namespace {

// The records carry numbered fields; what they mean is agreed between those who use them. Here it is what the keys of
// the settings file say.
constexpr std::tuple labels = {
    Label<&vyn_connector::VynConnectionParameters::serverParameters>{"the server"},
    Label<&vyn_connector::VynConnectionParameters::credentials>{"the connector's"},
    Label<&vyn_connector::ServerConnectionParameters::ssl>{"TLS"},
    Label<&vyn_connector::ServerConnectionParameters::timeouts>{"in milliseconds"},
    Label<&vyn_connector::SslSettings::field1>{"minimum version"},
    Label<&vyn_connector::SslSettings::field2>{"trusted"},
    Label<&vyn_connector::SslSettings::field3>{"certificate"},
    Label<&vyn_connector::SslSettings::field4>{"private key"},
    Label<&vyn_connector::SslSettings::field5>{"ciphers"},
    Label<&vyn_connector::VynRequestsTimeouts::field1>{"to connect"},
    Label<&vyn_connector::VynRequestsTimeouts::field2>{"for a request"},
    Label<&vyn_connector::VynConnectorSettings::field1>{"heartbeat, s"},
    Label<&vyn_connector::VynConnectorSettings::field2>{"reconnect, s"},
    Label<&vyn_connector::VynConnectorSettings::field3>{"at most, s"},
    Label<&vyn_connector::VynConnectorSettings::field4>{"queued events"},
    Label<&vyn_connector::VynConnectorSettings::field5>{"queued bytes"},
    Label<&vyn_connector::VynConnectorSettings::field6>{"log level"},
    Label<&vyn_connector::VynServerData::field1>{"identifier"},
};

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

vyn_connector::VynConnectionParameters ParametersFrom(const Settings& settings, const std::string& proxyUrl)
{
    vyn_connector::VynConnectionParameters parameters;
    parameters.serverParameters.address = settings.Text("/server/address");
    if (!proxyUrl.empty()) parameters.serverParameters.proxy = ParseProxyUrl(proxyUrl);
    parameters.serverParameters.ssl = TlsFrom(settings);
    parameters.serverParameters.timeouts = {settings.Number64("/timeouts/connectMilliseconds"),
                                            settings.Number64("/timeouts/requestMilliseconds")};
    parameters.credentials = {settings.Text("/credentials/userName"), settings.Text("/credentials/password")};
    return parameters;
}

vyn_connector::VynConnectorSettings ConnectorFrom(const Settings& settings)
{
    return {settings.Number64("/connector/heartbeatSeconds"),    settings.Number64("/connector/reconnectSeconds"),
            settings.Number64("/connector/maxReconnectSeconds"), settings.Number64("/connector/maxQueuedEvents"),
            settings.Number64("/connector/maxQueuedBytes"),      settings.Number64("/connector/logLevel")};
}

// Of the free-form section any value goes: a string as its bytes, everything else as the JSON that it is.
std::vector<vyn_connector::common::RawVynParam> FreeFormFrom(const Settings& settings)
{
    std::vector<vyn_connector::common::RawVynParam> params;
    for (const auto& [name, value] : settings.Object("/parameters").items()) {
        const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        params.push_back({{text.begin(), text.end()}, name});
    }
    return params;
}

} // namespace

void SendConnection(Session& session)
{
    const Settings settings(session.options.settings);
    const std::string url = session.options.proxy.empty() ? ProxyUrlOfThisMachine() : session.options.proxy;
    if (url.empty()) session.console.Line("no proxy: https_proxy is not set");

    session.channel.Send(ParametersFrom(settings, url));
    session.channel.Send(ConnectorFrom(settings));
    session.channel.Send(vyn_connector::VynServerData{settings.Number64("/server/identifier")});
    session.channel.Send(FreeFormFrom(settings));
}

void ReceiveConnection(Session& session)
{
    Show(session.console, session.channel.Receive<vyn_connector::VynConnectionParameters>(), labels);
    Show(session.console, session.channel.Receive<vyn_connector::VynConnectorSettings>(), labels);
    Show(session.console, session.channel.Receive<vyn_connector::VynServerData>(), labels);
    Show(session.console, session.channel.Receive<std::vector<vyn_connector::common::RawVynParam>>());
}

} // namespace exchange
