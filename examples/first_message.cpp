// The first message: both sides of a connection in one process. A record is encoded, its bytes are looked at and
// decoded again, and a pointer is spoilt to see what a reader raises. Needs the library and nothing else.
#include <common/message.h>
#include <common/vyn_connector_common.h>

#include <cstdio>
#include <stdexcept>

using namespace vyn_connector;

int main()
{
    // The sending side. Encode works out how much arena the record needs.
    Credentials login;
    login.userName = "operator";
    login.password = "secret";
    common::Message<Credentials> message = common::Encode(login);

    // What is sent: the wire structure, whose pointers lead into the arena, and the arena's bytes.
    const zt_ptr_t& password = message.wire.password;
    std::printf("wire structure: %zu bytes, password at offset %u, size %u\n", sizeof(message.wire), password.offset,
                password.size);
    std::printf("arena: %zu bytes:", message.arena.size());
    for (const std::uint8_t byte : message.arena)
        std::printf(" %02x", static_cast<unsigned>(byte));
    std::printf("\n");

    // The receiving side gets a record of its own: nothing in it points into the message.
    const Credentials received = common::Decode(message);
    std::printf("decoded: user \"%s\", %s\n", received.userName.c_str(), received == login ? "equal" : "different");

    // Received bytes may be anything. A pointer that leads outside the arena is refused before it is followed.
    message.wire.password.offset = 4000000000;
    try {
        common::Decode(message);
    } catch (const std::out_of_range& error) {
        std::printf("refused: %s\n", error.what());
    }
    return 0;
}
