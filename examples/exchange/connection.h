// The connection: how the connector reaches the server.
#pragma once

#include "channel.h"
#include "console.h"

#include <string>

namespace exchange {

struct Options {
    std::string settings; // path of the JSON file
    std::string proxy;    // URL; empty: the machine's own
};

void SendConnection(Channel& channel, Console& console, const Options& options);
void ReceiveConnection(Channel& channel, Console& console);

} // namespace exchange
