// Small pieces of file handling that several steps need.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace exchange {

// "etc/hostname" below "/" or another root.
std::string PathBelow(const std::string& root, const std::string& path);

// The whole content of a small file, those of /proc included. Throws std::system_error, or std::runtime_error where
// there is more than `limit` bytes: some files have no end.
std::string ReadFile(const std::string& path, std::size_t limit = std::size_t{64} << 20U);

// Empty where the file cannot be read.
std::optional<std::string> ReadFileIfAny(const std::string& path);

// Writes all of the bytes; `path` is for the error's text. Throws std::system_error, or Interrupted.
void WriteAll(int descriptor, const std::string& path, const void* data, std::size_t size);

} // namespace exchange
