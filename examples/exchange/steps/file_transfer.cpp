// Step 6: the server asks for a file, and fetches it chunk by chunk. A chunk of 0 bytes stands for the SHA-256 of the
// bytes before it; a chunk that is shorter than was asked for says that the file is no longer what it was. What has
// been received gets its name only when size and SHA-256 agree.
#include "host/interrupt.h"
#include "host/part_file.h"
#include "host/printable.h"
#include "host/progress.h"
#include "host/standard_streams.h"
#include "steps/conversation.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

namespace exchange {

namespace {

constexpr std::uint64_t chunkLimit = vyn_connector::common::maxBlobSize;

// The file that the connector gives away.
class Source {
public:
    explicit Source(const std::string& path) : path_(path), file_(open(path.c_str(), flags, 0), path)
    {
        announced_ = Status();
        if (!S_ISREG(announced_.st_mode)) throw std::runtime_error(path + ": not a regular file");
        if (announced_.st_size == 0 && !BytesAt(0, 1).empty())
            throw std::runtime_error(path + ": holds more than its size says, as files under /proc do");
    }

    vyn_connector::FileInfo Info() const
    {
        vyn_connector::FileInfo info;
        info.fileName = path_;
        info.field2 = (announced_.st_mode & S_IWUSR) != 0; // its owner may write it
        info.field3 = (announced_.st_mode & S_IXUSR) != 0; // and run it
        info.timestamp =
            wem::types::Timestamp(std::int64_t{announced_.st_mtim.tv_sec} * 1'000'000'000 + announced_.st_mtim.tv_nsec);
        info.fileSize = static_cast<std::uint64_t>(announced_.st_size);
        return info;
    }

    // The bytes that are asked for, as many of them as there are; or the digest.
    std::vector<std::uint8_t> Read(const vyn_connector::FileChunkParams& wanted)
    {
        if (wanted.chunkSize != 0) return BytesAt(wanted.chunkOffset, wanted.chunkSize);
        const Sha256::Digest digest = DigestBefore(wanted.chunkOffset);
        return {digest.begin(), digest.end()};
    }

    // Why an answer of so many bytes cannot be right; empty where it can: what has become of the file since it was
    // announced.
    std::string Fault(const vyn_connector::FileChunkParams& wanted, std::size_t size) const
    {
        if (wanted.chunkSize != 0 && size == wanted.chunkSize) return "";
        std::string change = Change();
        if (!change.empty() || wanted.chunkSize == 0) return change;
        return path_ + ": holds less than its size says, as files under /sys do";
    }

private:
    static constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK; // opening a pipe must not wait

    std::vector<std::uint8_t> BytesAt(std::uint64_t offset, std::size_t size) const
    {
        std::vector<std::uint8_t> data(size);
        std::size_t have = 0;
        while (have < size) {
            const ssize_t count = pread(file_.Get(), &data[have], size - have, static_cast<off_t>(offset + have));
            if (count < 0) RaiseErrno(path_);
            if (count == 0) break;
            have += static_cast<std::size_t>(count);
        }
        data.resize(have);
        return data;
    }

    // No byte is hashed twice, however often a peer asks: digests go forward only, as a transfer does.
    Sha256::Digest DigestBefore(std::uint64_t end)
    {
        if (end < hashed_) throw std::runtime_error("FileChunkParams: the peer asks for a digest that is over");
        while (hashed_ < end) {
            CheckInterrupt();
            const std::vector<std::uint8_t> data = BytesAt(hashed_, std::min(chunkLimit, end - hashed_));
            if (data.empty()) break; // the file has become shorter, and the answer is refused for that
            sha_.Add(data.data(), data.size());
            hashed_ += data.size();
        }
        return sha_.SoFar();
    }

    std::string Change() const
    {
        const struct stat now = Status();
        if (now.st_size != announced_.st_size)
            return fmt::format("{}: {} from {} to {} during the transfer", path_,
                               now.st_size < announced_.st_size ? "shrank" : "grew", announced_.st_size,
                               Amount(static_cast<std::uint64_t>(now.st_size), "byte"));
        if (now.st_mtim.tv_sec != announced_.st_mtim.tv_sec || now.st_mtim.tv_nsec != announced_.st_mtim.tv_nsec)
            return path_ + ": was changed during the transfer";
        return "";
    }

    struct stat Status() const
    {
        struct stat status {};
        if (fstat(file_.Get(), &status) != 0) RaiseErrno(path_);
        return status;
    }

    std::string path_;
    Descriptor file_;
    struct stat announced_ {};
    Sha256 sha_;
    std::uint64_t hashed_ = 0;
};

std::vector<std::uint8_t> Ask(Channel& channel, const vyn_connector::FileChunkParams& wanted, std::size_t answerSize)
{
    channel.Send(wanted);
    const vyn_connector::FileChunk chunk = channel.Receive<vyn_connector::FileChunk>().record;
    if (chunk.data.empty()) throw PeerRefused(wanted.fileName + ": it has changed during the transfer");
    if (chunk.fileName != wanted.fileName || chunk.chunkOffset != wanted.chunkOffset ||
        chunk.chunkSize != wanted.chunkSize || chunk.data.size() != answerSize)
        throw std::runtime_error("FileChunk: not the bytes that were asked for");
    return chunk.data;
}

// The digest of what is there, where the peer's file begins with it.
std::optional<Sha256::Digest> AgreedDigest(Session& session, const PartFile& part)
{
    const vyn_connector::FileChunkParams wanted{session.options.file, part.Size(), 0};
    const std::vector<std::uint8_t> theirs = Ask(session.channel, wanted, sizeof(Sha256::Digest));
    const Sha256::Digest ours = part.Digest();
    if (!std::equal(ours.begin(), ours.end(), theirs.begin())) return std::nullopt;
    return ours;
}

// Nothing is lost where the part file holds what the file begins with. Anything else is not of this transfer, and not
// ours to change.
void RefuseForeign(Session& session, std::uint64_t fileSize, const PartFile& part)
{
    if (part.Size() == 0 || (part.Size() <= fileSize && AgreedDigest(session, part))) return;
    throw std::runtime_error(fmt::format("{}: not a part of {}; it stays as it is: remove it, or choose another --into",
                                         part.Path(), session.options.file));
}

void Fetch(Session& session, std::uint64_t fileSize, PartFile& part)
{
    const std::string& file = session.options.file;
    if (!session.options.resume) part.Restart();
    if (part.Size() > 0) session.console.Line(fmt::format("goes on after {}", Amount(part.Size(), "byte")));
    Progress progress(session.console, std::filesystem::path(file).filename(), part.Size(), fileSize);
    while (part.Size() < fileSize) {
        const std::uint64_t size = std::min(chunkLimit, fileSize - part.Size());
        part.Append(Ask(session.channel, {file, part.Size(), size}, size));
        progress.Update(part.Size());
    }
    progress.Finish();

    const std::optional<Sha256::Digest> digest = AgreedDigest(session, part);
    if (!digest) throw std::runtime_error(file + ": what was received has another SHA-256");
    part.Commit();
    session.console.Line(fmt::format("SHA-256 {} agrees", ToHex(*digest)));
}

// What an interrupted transfer leaves, and how to go on.
std::string Keep(PartFile& part)
{
    if (part.Size() != 0)
        return fmt::format("kept {} in {}; --resume goes on from there", Amount(part.Size(), "byte"), part.Path());
    part.Discard();
    return "nothing of the file has arrived";
}

} // namespace

void GiveFile(Session& session)
{
    const std::string wanted = session.channel.Receive<vyn_connector::FileInfoParams>().record.fileName;
    if (wanted != session.options.file)
        throw std::runtime_error(fmt::format("the peer asks for {}, which is not offered", Printable(wanted)));
    Source source(wanted);
    const vyn_connector::FileInfo info = source.Info();
    session.channel.Send(info);

    while (const auto request = session.channel.ReceiveOrEnd<vyn_connector::FileChunkParams>()) {
        const vyn_connector::FileChunkParams& chunk = request->record;
        if (chunk.fileName != wanted || chunk.chunkSize > chunkLimit || chunk.chunkOffset > info.fileSize ||
            chunk.chunkSize > info.fileSize - chunk.chunkOffset)
            throw std::runtime_error("FileChunkParams: the peer asks for bytes that do not exist");
        std::vector<std::uint8_t> data = source.Read(chunk);
        const std::string fault = source.Fault(chunk, data.size());
        if (!fault.empty()) data.clear();
        session.channel.Send(vyn_connector::FileChunk{0, wanted, chunk.chunkOffset, chunk.chunkSize, data});
        if (!fault.empty()) throw std::runtime_error(fault);
    }
}

void FetchFile(Session& session)
{
    session.channel.Send(vyn_connector::FileInfoParams{session.options.file});
    const vyn_connector::FileInfo info = session.channel.Receive<vyn_connector::FileInfo>().record;
    if (info.fileName != session.options.file) throw std::runtime_error("FileInfo: not of the file that was asked for");
    const std::filesystem::path destination =
        std::filesystem::path(session.options.destination) / std::filesystem::path(session.options.file).filename();
    session.console.Line(fmt::format("{}: {}", destination.string(), Amount(info.fileSize, "byte")));

    PartFile part(destination);
    RefuseForeign(session, info.fileSize, part);
    try {
        Fetch(session, info.fileSize, part);
    } catch (const Interrupted& error) {
        throw Interrupted(error.Signal(), fmt::format("{}; {}", error.what(), Keep(part)));
    } catch (const PeerGone&) {
        session.console.Line(Keep(part));
        throw;
    } catch (const OutputClosed&) {
        Keep(part);
        throw;
    } catch (...) {
        part.Discard();
        throw;
    }
    session.channel.SendEnd();
}

} // namespace exchange
