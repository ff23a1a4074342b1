#include "settings.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>

namespace exchange {

Settings::Settings(const std::string& path) : path_(path)
{
    std::ifstream file(path);
    std::ostringstream text;
    if (file) text << file.rdbuf();
    if (!file || text.fail()) throw std::system_error(errno, std::generic_category(), path);
    try {
        root_ = nlohmann::json::parse(text.str());
    } catch (const nlohmann::json::parse_error& error) {
        // Its text quotes what was read last.
        throw std::runtime_error(fmt::format("{}: not JSON: syntax error at byte {}", path, error.byte));
    }
}

std::string Settings::Text(const std::string& pointer) const
{
    const nlohmann::json& value = At(pointer);
    if (!value.is_string()) Refuse(pointer, "not a string");
    return value.get<std::string>();
}

std::uint16_t Settings::Number16(const std::string& pointer) const
{
    constexpr auto max = std::numeric_limits<std::uint16_t>::max();
    const nlohmann::json& value = At(pointer);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > max)
        Refuse(pointer, fmt::format("not a whole number from 0 to {}", max));
    return value.get<std::uint16_t>();
}

const nlohmann::json& Settings::At(const std::string& pointer) const
{
    const nlohmann::json::json_pointer place(pointer);
    if (!root_.contains(place)) Refuse(pointer, "missing");
    return root_.at(place);
}

void Settings::Refuse(const std::string& pointer, const std::string& problem) const
{
    throw std::runtime_error(fmt::format("{}: {}: {}", path_, pointer, problem));
}

} // namespace exchange
