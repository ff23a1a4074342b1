// The conversation between connector and server: its steps, in their order. A step is written down from both sides in
// one file; the two functions mirror each other, message by message.
#pragma once

#include "host/console.h"
#include "options.h"
#include "transport/channel.h"

#include <string_view>
#include <vector>

namespace exchange {

struct Session {
    Channel& channel;
    Console& console;
    const Options& options;
    bool peerIsOurs; // one program is both sides
};

struct Step {
    std::string_view name;
    std::vector<std::string_view> records; // those that it sends as messages
    void (*connector)(Session& session);
    void (*server)(Session& session);
};

const std::vector<Step>& Steps();

// What --record can name: steps and records.
std::vector<std::string> StepNames();

// Hold the conversation, or the one step that the options name, and print the table of what went over the channel. They
// throw when the conversation cannot go on.
void TalkAsConnector(Session& session);
void TalkAsServer(Session& session);

void SendConnection(Session& session);
void ReceiveConnection(Session& session);
void SendInventory(Session& session);
void ReceiveInventory(Session& session);
void SendSubscriptions(Session& session);
void ReceiveSubscriptions(Session& session);
void SendEvents(Session& session);
void ReceiveEvents(Session& session);
void SendCertificates(Session& session);
void ReceiveCertificates(Session& session);
void GiveFile(Session& session);
void FetchFile(Session& session);
void SendStates(Session& session);
void ReceiveStates(Session& session);

} // namespace exchange
