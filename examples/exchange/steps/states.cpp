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
    std::string states = "state:        ";
    std::string codes = "on the wire:  ";
    while (const auto received = session.channel.ReceiveOrEnd<vyn_connector::VynConnectorState>()) {
        states += fmt::format("{:>4}", static_cast<int>(received->record));
        codes += fmt::format("{:>4}", vyn_connector::common::CastToZt(received->record).value_or(0));
    }
    session.console.Line(states);
    session.console.Line(codes);
}

} // namespace exchange
