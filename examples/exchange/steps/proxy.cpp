#include "steps/proxy.h"

#include <curl/curl.h>

#include <charconv>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>

namespace exchange {

namespace {

void Check(CURLUcode code)
{
    if (code != CURLUE_OK) throw std::runtime_error(std::string("the proxy's URL: ") + curl_url_strerror(code));
}

// Empty where the URL does not have this part.
std::string Part(CURLU* url, CURLUPart part, CURLUcode absent, unsigned flags = 0)
{
    char* text = nullptr;
    const CURLUcode code = curl_url_get(url, part, &text, flags);
    if (code == absent) return {};
    Check(code);
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return text;
}

} // namespace

std::string ProxyUrlOfThisMachine()
{
    for (const char* name : {"https_proxy", "HTTPS_PROXY"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr) return value;
    }
    return {};
}

vyn_connector::ProxySettings ParseProxyUrl(const std::string& text)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
    if (url == nullptr) throw std::bad_alloc();
    Check(curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME));

    vyn_connector::ProxySettings proxy;
    proxy.address = Part(url.get(), CURLUPART_HOST, CURLUE_NO_HOST);
    proxy.credentials.userName = Part(url.get(), CURLUPART_USER, CURLUE_NO_USER, CURLU_URLDECODE);
    proxy.credentials.password = Part(url.get(), CURLUPART_PASSWORD, CURLUE_NO_PASSWORD, CURLU_URLDECODE);

    // curl has checked that it fits 16 bits, and knows the default ports of the schemes, except those of SOCKS.
    const std::string port = Part(url.get(), CURLUPART_PORT, CURLUE_NO_PORT, CURLU_DEFAULT_PORT);
    proxy.port = 1080;
    std::from_chars(port.data(), port.data() + port.size(), proxy.port);
    if (proxy.port == 0) throw std::runtime_error("the proxy's URL: there is no port 0");
    return proxy;
}

} // namespace exchange
