#include "host/part_file.h"

#include "host/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace exchange {

namespace {

// The lock is on a file and not on a name: before this process gets it, another one may have completed the file and
// given it its final name. So it counts only while the name still leads to the file.
Descriptor OpenLocked(const std::string& path)
{
    for (;;) {
        Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0644), path);
        if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) RaiseErrno(path);
        struct stat opened {};
        struct stat named {};
        if (fstat(file.Get(), &opened) != 0) RaiseErrno(path);
        if (lstat(path.c_str(), &named) != 0 || named.st_dev != opened.st_dev || named.st_ino != opened.st_ino)
            continue;
        if (!S_ISREG(opened.st_mode)) throw std::runtime_error(path + ": not a regular file");
        if (opened.st_nlink != 1)
            throw std::runtime_error(path + ": has a second name, whose file would change as well");
        return file;
    }
}

Descriptor OpenPart(const std::filesystem::path& destination, const std::string& path)
{
    if (destination.has_parent_path()) std::filesystem::create_directories(destination.parent_path());
    return OpenLocked(path);
}

} // namespace

PartFile::PartFile(const std::filesystem::path& destination)
    : destination_(destination), path_(destination_ + ".part"), file_(OpenPart(destination, path_))
{
    const off_t end = lseek(file_.Get(), 0, SEEK_END);
    if (end < 0) RaiseErrno(path_);
    size_ = static_cast<std::uint64_t>(end);
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
