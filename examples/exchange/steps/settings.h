// The settings that the connector reads from its JSON file. Every error names the file and the place in it, and
// none quotes it: it holds passwords.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

namespace exchange {

class Settings {
public:
    // Throws std::runtime_error where the file cannot be read, is too large, or is not JSON.
    explicit Settings(const std::string& path);

    // `pointer` is a JSON pointer ("/credentials/userName"). Throws std::runtime_error where there is no such value
    // or it is of another type.
    std::string Text(const std::string& pointer) const;
    std::uint16_t Number16(const std::string& pointer) const;
    std::uint64_t Number64(const std::string& pointer) const;
    const nlohmann::json& Object(const std::string& pointer) const;

    [[noreturn]] void Refuse(const std::string& pointer, const std::string& problem) const;

private:
    const nlohmann::json& At(const std::string& pointer) const;
    std::uint64_t Number(const std::string& pointer, std::uint64_t max) const;

    std::string path_;
    nlohmann::json root_;
};

} // namespace exchange
