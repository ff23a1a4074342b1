#include "channel.h"

#include <exception>

namespace exchange {

namespace {

// In the byte order of the machine, as wire structures are.
struct FrameHeader {
    char magic[4];
    std::uint32_t nameSize;
    std::uint32_t wireSize;
    std::uint32_t arenaSize;
};
static_assert(sizeof(FrameHeader) == 16);

constexpr char magic[4] = {'V', 'Y', 'N', '1'};

// No message of this conversation comes near; without them a broken peer could make us allocate anything.
constexpr std::uint32_t maxNameSize = 64;
constexpr std::uint32_t maxWireSize = 1024;
constexpr std::uint32_t maxArenaSize = 16 << 20;

void Append(std::vector<std::uint8_t>& frame, const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    frame.insert(frame.end(), bytes, bytes + size);
}

} // namespace

// An arena's addresses must not be null, not even those of an empty one, which is what the vector would give.
zt_arena FullArena(std::vector<std::uint8_t>& bytes)
{
    bytes.reserve(1);
    return {bytes.data(), bytes.data() + bytes.size(), bytes.data() + bytes.size()};
}

zt_arena EmptyArena(std::vector<std::uint8_t>& bytes)
{
    bytes.reserve(1);
    return {bytes.data(), bytes.data(), bytes.data() + bytes.size()};
}

void RaiseAbout(std::string_view record)
{
    try {
        throw;
    } catch (const mur::Exception& error) {
        std::string text;
        for (const char16_t character : std::u16string_view(error.Text()))
            text += static_cast<char>(character); // the library's own texts are ASCII
        throw std::runtime_error(fmt::format("{}: {}", record, text));
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("{}: {}", record, error.what()));
    }
}

void Channel::SendMessage(const Message& message)
{
    FrameHeader header{};
    std::memcpy(header.magic, magic, sizeof(magic));
    header.nameSize = static_cast<std::uint32_t>(message.record.size());
    header.wireSize = static_cast<std::uint32_t>(message.wire.size());
    header.arenaSize = static_cast<std::uint32_t>(message.arena.size());

    std::vector<std::uint8_t> frame;
    frame.reserve(sizeof(header) + message.record.size() + message.wire.size() + message.arena.size());
    Append(frame, &header, sizeof(header));
    Append(frame, message.record.data(), message.record.size());
    Append(frame, message.wire.data(), message.wire.size());
    Append(frame, message.arena.data(), message.arena.size());
    transport_.Send(frame.data(), frame.size());
}

Message Channel::ReceiveMessage(std::string_view record)
{
    FrameHeader header;
    transport_.Receive(&header, sizeof(header));
    if (std::memcmp(header.magic, magic, sizeof(magic)) != 0)
        throw std::runtime_error("the peer does not speak this protocol");
    if (header.nameSize > maxNameSize || header.wireSize > maxWireSize || header.arenaSize > maxArenaSize)
        throw std::runtime_error(fmt::format("the peer announces a message of impossible size: {} + {} + {} bytes",
                                             header.nameSize, header.wireSize, header.arenaSize));
    Message message;
    message.record.resize(header.nameSize);
    message.wire.resize(header.wireSize);
    message.arena.resize(header.arenaSize);
    transport_.Receive(message.record.data(), message.record.size());
    transport_.Receive(message.wire.data(), message.wire.size());
    transport_.Receive(message.arena.data(), message.arena.size());
    if (message.record != record)
        throw std::runtime_error(fmt::format("the peer sent \"{}\" where {} is due", message.record, record));
    return message;
}

} // namespace exchange
