#include "steps/conversation.h"

#include <algorithm>

namespace exchange {

namespace {

std::vector<const Step*> StepsToTake(const std::string& name)
{
    std::vector<const Step*> chosen;
    for (const Step& step : Steps()) {
        const bool named = step.name == name || std::count(step.records.begin(), step.records.end(), name) != 0;
        if (name.empty() || named) chosen.push_back(&step);
    }
    return chosen;
}

// Each side has seen every message, so where both are ours one table says it all: the server's.
void PrintTable(Session& session)
{
    if (session.peerIsOurs && session.console.Side() == "connector") return;
    if (session.options.json)
        Console::Json(session.channel.Counts().ToJson(session.peerIsOurs ? "both" : session.console.Side()));
    else
        session.channel.Counts().Print(session.console);
}

} // namespace

const std::vector<Step>& Steps()
{
    static const std::vector<Step> steps = {
        {"connection",
         {"VynConnectionParameters", "VynConnectorSettings", "VynServerData", "VynParams"},
         SendConnection,
         ReceiveConnection},
        {"inventory", {"AppInfo", "DynamicAppInfo"}, SendInventory, ReceiveInventory},
        {"subscriptions",
         {"VynSubscriptionsWithHash", "VynUpdateIdentifierContainer"},
         SendSubscriptions,
         ReceiveSubscriptions},
        {"events", {"VynEvent"}, SendEvents, ReceiveEvents},
        {"certificates", {"ClientCertsInfo", "ClientCertParams"}, SendCertificates, ReceiveCertificates},
        {"file", {"FileInfoParams", "FileInfo", "FileChunkParams", "FileChunk"}, GiveFile, FetchFile},
        {"states", {"VynConnectorState"}, SendStates, ReceiveStates},
    };
    return steps;
}

std::vector<std::string> StepNames()
{
    std::vector<std::string> names;
    for (const Step& step : Steps()) {
        names.emplace_back(step.name);
        names.insert(names.end(), step.records.begin(), step.records.end());
    }
    return names;
}

// After each step the two wait for one another, so that what they print comes in one order.
void TalkAsConnector(Session& session)
{
    for (const Step* step : StepsToTake(session.options.record)) {
        session.console.Line("");
        session.console.Line(fmt::format("== {}", step->name));
        step->connector(session);
        session.channel.SendEnd();
        session.channel.ReceiveEnd();
    }
    PrintTable(session);
    session.channel.SendEnd();
}

void TalkAsServer(Session& session)
{
    for (const Step* step : StepsToTake(session.options.record)) {
        step->server(session);
        session.channel.ReceiveEnd();
        session.channel.SendEnd();
    }
    session.channel.ReceiveEnd();
    PrintTable(session);
}

} // namespace exchange
