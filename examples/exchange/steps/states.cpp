// Step 7: the connector's states, one after the other, as the codes that they have on the wire.
#include "steps/conversation.h"

namespace exchange {

void SendStates(Session& session)
{
    const auto last = static_cast<int>(vyn_connector::VynConnectorState::State12);
    for (int state = 0; state <= last; ++state)
        session.channel.Send(static_cast<vyn_connector::VynConnectorState>(state));
    session.channel.SendEnd();
}

void ReceiveStates(Session& session)
{
    std::string line = "states, with their codes:";
    while (const auto received = session.channel.ReceiveOrEnd<vyn_connector::VynConnectorState>()) {
        const auto code = vyn_connector::common::CastToZt(received->record);
        line += fmt::format(" {} ({})", static_cast<int>(received->record), code.value_or(0));
    }
    session.console.Line(line);
}

} // namespace exchange
