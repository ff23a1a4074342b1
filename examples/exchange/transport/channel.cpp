#include "transport/channel.h"

#include "host/printable.h"

#include <mur/utf8.h>

#include <algorithm>

namespace exchange {

namespace {

// In the byte order of the machine, as wire structures are. All three sizes are 0 in the frame that ends a series.
struct FrameHeader {
    char magic[4];
    std::uint32_t nameSize;
    std::uint32_t wireSize;
    std::uint32_t arenaSize;
};
static_assert(sizeof(FrameHeader) == 16);

constexpr char frameMagic[4] = {'V', 'Y', 'N', '1'};

constexpr std::size_t maxNameSize = 64;
constexpr std::size_t maxArenaSize = std::size_t{16} << 20; // for records that could have gigabytes

void Append(std::vector<std::uint8_t>& frame, const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    frame.insert(frame.end(), bytes, bytes + size);
}

std::vector<std::uint8_t> FrameOf(const Message& message)
{
    FrameHeader header{};
    std::memcpy(header.magic, frameMagic, sizeof(frameMagic));
    header.nameSize = static_cast<std::uint32_t>(message.record.size());
    header.wireSize = static_cast<std::uint32_t>(message.wire.size());
    header.arenaSize = static_cast<std::uint32_t>(message.arena.size());

    std::vector<std::uint8_t> frame;
    frame.reserve(sizeof(header) + message.record.size() + message.wire.size() + message.arena.size());
    Append(frame, &header, sizeof(header));
    Append(frame, message.record.data(), message.record.size());
    Append(frame, message.wire.data(), message.wire.size());
    Append(frame, message.arena.data(), message.arena.size());
    return frame;
}

} // namespace

void Channel::SendEnd()
{
    const std::vector<std::uint8_t> frame = FrameOf({});
    transport_.Send(frame.data(), frame.size());
}

void Channel::ReceiveEnd()
{
    ReceiveMessage({"", 0, 0});
}

void Channel::SendMessage(const Message& message)
{
    const std::vector<std::uint8_t> frame = FrameOf(message);
    transport_.Send(frame.data(), frame.size());
    if (capture_ != nullptr) capture_->Write("sent", message.record, frame);
}

// Nothing is allocated on the word of the peer alone: the record has to be the one that is due, and its sizes possible.
std::optional<Message> Channel::ReceiveMessage(const Expected& expected)
{
    FrameHeader header{};
    transport_.AwaitMessage();
    transport_.Receive(&header, sizeof(header));
    if (std::memcmp(header.magic, frameMagic, sizeof(frameMagic)) != 0)
        throw std::runtime_error("the peer does not speak this protocol");
    if (header.nameSize > maxNameSize)
        throw std::runtime_error(fmt::format("the peer sent a record name of {} bytes", header.nameSize));

    Message message;
    message.record.resize(header.nameSize);
    transport_.Receive(message.record.data(), message.record.size());
    const bool isEnd = message.record.empty();
    if (!isEnd && message.record != expected.record) RaiseUnexpected(message.record, expected.record);
    const std::size_t wireSize = isEnd ? 0 : expected.wireSize;
    const std::size_t maxSize = isEnd ? 0 : std::min(expected.maxArenaSize, maxArenaSize);
    if (header.wireSize != wireSize)
        throw std::runtime_error(fmt::format("{}: the wire structure has {} bytes instead of {}", expected.record,
                                             header.wireSize, wireSize));
    if (header.arenaSize > maxSize)
        throw std::runtime_error(fmt::format("{}: the arena has {} bytes, which is more than {}", expected.record,
                                             header.arenaSize, maxSize));
    if (isEnd) return std::nullopt;

    message.wire.resize(header.wireSize);
    message.arena.resize(header.arenaSize);
    transport_.Receive(message.wire.data(), message.wire.size());
    transport_.Receive(message.arena.data(), message.arena.size());
    if (capture_ != nullptr) capture_->Write("received", message.record, FrameOf(message));
    return message;
}

void Channel::RaiseAbout(std::string_view record)
{
    try {
        throw;
    } catch (const mur::Exception& error) {
        throw std::runtime_error(fmt::format("{}: {}", record, mur::to_utf8(error.Text())));
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("{}: {}", record, error.what()));
    }
}

void Channel::RaiseUnexpected(std::string_view received, std::string_view due)
{
    const auto name = [](std::string_view record) {
        return record.empty() ? "the end" : fmt::format("\"{}\"", Printable(record));
    };
    throw std::runtime_error(fmt::format("the peer sent {} where {} is due", name(received), name(due)));
}

} // namespace exchange
