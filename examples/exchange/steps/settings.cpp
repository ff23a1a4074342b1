#include "steps/settings.h"

#include "host/files.h"

#include <fmt/format.h>

#include <limits>

namespace exchange {

namespace {

constexpr std::size_t maxFileSize = std::size_t{4} << 20U;
constexpr int maxDepth = 64; // printing a value takes some stack for each level

} // namespace

Settings::Settings(const std::string& path) : path_(path)
{
    const std::string text = ReadFile(path, maxFileSize);
    const auto checkDepth = [&](int depth, nlohmann::json::parse_event_t, const nlohmann::json&) {
        if (depth > maxDepth) throw std::runtime_error(fmt::format("{}: nested deeper than {}", path, maxDepth));
        return true;
    };
    try {
        root_ = nlohmann::json::parse(text, checkDepth);
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
    return static_cast<std::uint16_t>(Number(pointer, std::numeric_limits<std::uint16_t>::max()));
}

std::uint64_t Settings::Number64(const std::string& pointer) const
{
    return Number(pointer, std::numeric_limits<std::uint64_t>::max());
}

const nlohmann::json& Settings::Object(const std::string& pointer) const
{
    const nlohmann::json& value = At(pointer);
    if (!value.is_object()) Refuse(pointer, "not an object");
    return value;
}

void Settings::Refuse(const std::string& pointer, const std::string& problem) const
{
    throw std::runtime_error(fmt::format("{}: {}: {}", path_, pointer, problem));
}

const nlohmann::json& Settings::At(const std::string& pointer) const
{
    const nlohmann::json::json_pointer place(pointer);
    if (!root_.contains(place)) Refuse(pointer, "missing");
    return root_.at(place);
}

std::uint64_t Settings::Number(const std::string& pointer, std::uint64_t max) const
{
    const nlohmann::json& value = At(pointer);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > max)
        Refuse(pointer, fmt::format("not a whole number from 0 to {}", max));
    return value.get<std::uint64_t>();
}

} // namespace exchange
