#include "host/part_file.h"

#include "host/files.h"

#include <fcntl.h>
#include <sys/file.h>

namespace exchange {

namespace {

Descriptor OpenPart(const std::filesystem::path& destination, const std::string& path)
{
    if (destination.has_parent_path()) std::filesystem::create_directories(destination.parent_path());
    return Descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0644), path);
}

} // namespace

PartFile::PartFile(const std::filesystem::path& destination, bool resume)
    : destination_(destination), path_(destination_ + ".part"), file_(OpenPart(destination, path_))
{
    if (flock(file_.Get(), LOCK_EX | LOCK_NB) != 0) RaiseErrno(path_);
    const off_t end = lseek(file_.Get(), 0, SEEK_END);
    if (end < 0) RaiseErrno(path_);
    size_ = static_cast<std::uint64_t>(end);
    if (!resume) Restart();
}

void PartFile::Append(const std::vector<std::uint8_t>& data)
{
    WriteAll(file_.Get(), path_, data.data(), data.size());
    size_ += data.size();
}

void PartFile::Restart()
{
    if (ftruncate(file_.Get(), 0) != 0) RaiseErrno(path_);
    size_ = 0;
}

void PartFile::Commit()
{
    if (fsync(file_.Get()) != 0) RaiseErrno(path_);
    if (rename(path_.c_str(), destination_.c_str()) != 0) RaiseErrno(destination_);
}

void PartFile::Discard() noexcept
{
    unlink(path_.c_str());
}

} // namespace exchange
