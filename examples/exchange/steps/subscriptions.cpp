// Step 3: which events the server is to get, with a hash over them, and the identifiers of the updates that there are.
#include "host/files.h"
#include "host/sha256.h"
#include "steps/conversation.h"
#include "steps/field_limits.h"
#include "steps/settings.h"
#include "steps/show.h"

#include <charconv>
#include <filesystem>
#include <map>
#include <random>
#include <set>

namespace exchange {

namespace {

vyn_connector::VynSubscriptions SubscriptionsFrom(const Settings& settings)
{
    vyn_connector::VynSubscriptions subscriptions;
    for (const auto& [key, names] : settings.Object("/subscriptions").items()) {
        const std::string pointer = "/subscriptions/" + key;
        if (key.size() != 1 || key[0] < '0' || key[0] > '3') settings.Refuse(pointer, "not a severity from 0 to 3");
        if (!names.is_array()) settings.Refuse(pointer, "not a list of names");
        std::unordered_set<std::string> eventTypes;
        for (const auto& name : names) {
            if (!name.is_string()) settings.Refuse(pointer, "not a list of names");
            eventTypes.insert(name.get<std::string>());
        }
        subscriptions.emplace(static_cast<vyn_connector::VynEventSeverity>(key[0] - '0'), eventTypes);
    }
    return subscriptions;
}

// The hash is the business of those who exchange it: 64 bits of the SHA-256 over the names, in a fixed order.
// Severities without names do not count, because a record that has no severity 0 comes back with an empty one.
unsigned long HashOf(const vyn_connector::VynSubscriptions& subscriptions)
{
    std::map<vyn_connector::VynEventSeverity, std::set<std::string>> sorted;
    for (const auto& [severity, names] : subscriptions)
        if (!names.empty()) sorted[severity] = {names.begin(), names.end()};

    Sha256 sha;
    for (const auto& [severity, names] : sorted)
        for (const std::string& name : names) {
            const std::string line = fmt::format("{} {}\n", static_cast<int>(severity), name);
            sha.Add(line.data(), line.size());
        }
    const Sha256::Digest digest = sha.SoFar();
    unsigned long hash = 0;
    for (std::size_t i = 0; i < sizeof(hash); ++i)
        hash = hash << 8U | digest[i];
    return hash;
}

// "01234567-89ab-cdef-0123-456789abcdef"; empty where the text is something else.
std::optional<vyn_connector::VynUpdateIdentifier> ParseUuid(std::string text)
{
    vyn_connector::VynUpdateIdentifier identifier{};
    if (text.size() != 36) return std::nullopt;
    text.erase(std::remove(text.begin(), text.end(), '-'), text.end());
    if (text.size() != 32) return std::nullopt;
    for (std::size_t i = 0; i < identifier.size(); ++i) {
        unsigned byte = 0;
        const char* const digits = &text[2 * i];
        if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) return std::nullopt;
        identifier[i] = static_cast<std::byte>(byte);
    }
    return identifier;
}

vyn_connector::VynUpdateIdentifier RandomUuid()
{
    std::random_device random;
    vyn_connector::VynUpdateIdentifier identifier{};
    for (std::byte& byte : identifier)
        byte = static_cast<std::byte>(random());
    identifier[6] = (identifier[6] & std::byte{0x0f}) | std::byte{0x40}; // version 4
    identifier[8] = (identifier[8] & std::byte{0x3f}) | std::byte{0x80}; // of RFC 4122
    return identifier;
}

// The UUIDs of the machine's block devices, and random ones until there are more than two batches.
vyn_connector::VynUpdateIdentifiers UpdateIdentifiers(Session& session)
{
    vyn_connector::VynUpdateIdentifiers identifiers;
    std::error_code ignored; // no directory: no devices
    const std::string devices = PathBelow(session.options.root, "dev/disk/by-uuid");
    for (const auto& entry : std::filesystem::directory_iterator(devices, ignored))
        if (const auto identifier = ParseUuid(entry.path().filename())) identifiers.push_back(*identifier);
    std::sort(identifiers.begin(), identifiers.end());

    const std::size_t found = identifiers.size();
    while (identifiers.size() <= 2 * itemLimitOf<vyn_connector::VynUpdateIdentifiers>)
        identifiers.push_back(RandomUuid());
    session.console.Line(fmt::format("update identifiers: {} UUIDs of block devices, {} random ones", found,
                                     identifiers.size() - found));
    return identifiers;
}

} // namespace

void SendSubscriptions(Session& session)
{
    const auto subscriptions = SubscriptionsFrom(Settings(session.options.settings));
    session.channel.Send(vyn_connector::VynSubscriptionsWithHash{HashOf(subscriptions), subscriptions});

    const vyn_connector::VynUpdateIdentifiers identifiers = UpdateIdentifiers(session);
    constexpr auto batch = static_cast<std::ptrdiff_t>(itemLimitOf<vyn_connector::VynUpdateIdentifiers>);
    for (auto first = identifiers.cbegin(); first != identifiers.cend();) {
        const auto last = first + std::min(batch, identifiers.cend() - first);
        session.channel.Send(vyn_connector::VynUpdateIdentifiers(first, last));
        first = last;
    }
    session.channel.SendEnd();
}

void ReceiveSubscriptions(Session& session)
{
    const auto received = session.channel.Receive<vyn_connector::VynSubscriptionsWithHash>();
    Show(session.console, received);
    if (HashOf(received.record.second) != received.record.first)
        throw std::runtime_error("the hash is not that of the subscriptions");
    session.console.Line("the hash is that of the subscriptions");

    while (const auto batch = session.channel.ReceiveOrEnd<vyn_connector::VynUpdateIdentifiers>())
        Show(session.console, *batch);
}

} // namespace exchange
