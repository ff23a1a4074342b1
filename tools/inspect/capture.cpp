#include "capture.h"

#include "printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace inspect {

namespace {

struct FrameHeader {
    char magic[4];
    std::uint32_t nameSize;
    std::uint32_t wireSize;
    std::uint32_t arenaSize;
};
static_assert(sizeof(FrameHeader) == 16);

constexpr std::string_view frameMagic = "VYN1";

// More than any wire structure has.
constexpr std::size_t mostWireBytes = 4096;

constexpr std::size_t mostFileBytes = sizeof(FrameHeader) + mostNameBytes + mostWireBytes + mostArenaBytes;

// Takes the parts of a frame one after another, each as far as it is there.
class FrameReader {
public:
    FrameReader(const std::uint8_t* data, std::size_t size, std::vector<std::string>& damage)
        : next_(data), left_(size), damage_(damage)
    {
    }

    ByteString Take(const char* part, std::size_t claimed, std::size_t most)
    {
        if (claimed > most) damage_.push_back(fmt::format("{} of {}, at most {}", part, Amount(claimed, "byte"), most));
        const std::size_t size = std::min(std::min(claimed, most), left_);
        if (size < std::min(claimed, most))
            damage_.push_back(
                fmt::format("the file ends {} before the end of {}", Amount(claimed - size, "byte"), part));
        ByteString bytes(next_, next_ + size);
        next_ += size;
        left_ -= size;
        return bytes;
    }
    void Finish()
    {
        if (left_ != 0) damage_.push_back(fmt::format("{} behind the message", Amount(left_, "byte")));
    }

private:
    const std::uint8_t* next_;
    std::size_t left_;
    std::vector<std::string>& damage_;
};

} // namespace

Capture ParseFrame(const std::uint8_t* data, std::size_t size)
{
    Capture capture;
    FrameHeader header{};
    if (size < sizeof(header)) {
        capture.damage.push_back(fmt::format("{}, where a frame begins with {}", Amount(size, "byte"), sizeof(header)));
        return capture;
    }
    std::memcpy(&header, data, sizeof(header));
    if (std::string_view(header.magic, sizeof(header.magic)) != frameMagic)
        capture.damage.emplace_back("does not begin with VYN1");

    FrameReader reader(data + sizeof(header), size - sizeof(header), capture.damage);
    const ByteString name = reader.Take("the record's name", header.nameSize, mostNameBytes);
    capture.record.assign(name.begin(), name.end());
    capture.wire = reader.Take("the wire structure", header.wireSize, mostWireBytes);
    capture.arena = reader.Take("the arena", header.arenaSize, mostArenaBytes);
    reader.Finish();
    return capture;
}

ByteString FrameOf(const Capture& capture)
{
    FrameHeader header{};
    std::memcpy(header.magic, frameMagic.data(), sizeof(header.magic));
    header.nameSize = static_cast<std::uint32_t>(capture.record.size());
    header.wireSize = static_cast<std::uint32_t>(capture.wire.size());
    header.arenaSize = static_cast<std::uint32_t>(capture.arena.size());
    ByteString frame(sizeof(header) + capture.record.size() + capture.wire.size() + capture.arena.size());
    std::memcpy(frame.data(), &header, sizeof(header));
    auto next = frame.begin() + sizeof(header);
    next = std::copy(capture.record.begin(), capture.record.end(), next);
    next = std::copy(capture.wire.begin(), capture.wire.end(), next);
    std::copy(capture.arena.begin(), capture.arena.end(), next);
    return frame;
}

FileError::FileError(const std::filesystem::path& file, const std::string& reason)
    : std::runtime_error(fmt::format("{}: {}", Printable(file.string()), reason)), reason_(reason)
{
}

namespace {

// One byte more than `most` shows that there are more.
ByteString ReadUpTo(const std::filesystem::path& file, std::size_t most)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw FileError(file, std::strerror(errno));
    if (std::filesystem::is_directory(file)) throw FileError(file, "a directory");
    ByteString bytes;
    char block[65536];
    while (bytes.size() <= most && (stream.read(block, sizeof(block)), stream.gcount() > 0))
        bytes.insert(bytes.end(), block, block + stream.gcount());
    bytes.resize(std::min(bytes.size(), most + 1));
    return bytes;
}

} // namespace

Capture ReadCapture(const std::filesystem::path& file)
{
    const ByteString bytes = ReadUpTo(file, mostFileBytes);
    return ParseFrame(bytes.data(), bytes.size());
}

ByteString ReadBytes(const std::filesystem::path& file, std::size_t most)
{
    ByteString bytes = ReadUpTo(file, most);
    if (bytes.size() > most) throw FileError(file, fmt::format("more than {} bytes", most));
    return bytes;
}

void WriteFile(const std::filesystem::path& file, std::string_view content)
{
    std::ofstream stream(file, std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    if (!stream) throw FileError(file, std::strerror(errno));
}

} // namespace inspect
