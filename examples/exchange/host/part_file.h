// A file that is being received: "NAME.part" until it is complete, and only then NAME.
#pragma once

#include "host/descriptor.h"
#include "host/sha256.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace exchange {

class PartFile {
public:
    // Opens what an earlier transfer has left, or a new file; makes the directory where there is none. Nothing that is
    // there is changed yet. Throws std::system_error, also where another process is receiving the same file, or
    // std::runtime_error where something else has that name.
    explicit PartFile(const std::filesystem::path& destination);

    std::uint64_t Size() const { return size_; }
    const std::string& Path() const { return path_; }

    // These throw std::system_error, or Interrupted.
    void Append(const std::vector<std::uint8_t>& data);
    void Restart();
    Sha256::Digest Digest() const { return Sha256::OfFile(file_.Get(), path_); }
    void Commit(); // on the disk, and under its final name

    // Leaves nothing.
    void Discard() noexcept;

private:
    std::string destination_;
    std::string path_;
    Descriptor file_;
    std::uint64_t size_ = 0;
};

} // namespace exchange
