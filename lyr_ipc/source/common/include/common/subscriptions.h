// Event subscriptions: which types of event the connector passes on, by severity, alone or with a hash that the
// callers make and compare. More severities than the format has room for are refused as a string over its limit is.
#pragma once

#include <common/kind/entries.h>
#include <common/kind/set.h>
#include <common/record.h>

#include <unordered_map>

namespace vyn_connector {

enum class VynEventSeverity : std::int32_t { Severity0, Severity1, Severity2, Severity3 };

// One severity and the names of the event types subscribed at it.
using VynSubscription = std::pair<VynEventSeverity, std::unordered_set<std::string>>;

// A map from severity to the names of event types.
class VYN_EXPORT VynSubscriptions {
public:
    using Map = std::unordered_map<VynEventSeverity, std::unordered_set<std::string>>;
    using value_type = Map::value_type;
    using const_iterator = Map::const_iterator;

    std::size_t size() const noexcept { return entries.size(); }
    const_iterator begin() const noexcept { return entries.begin(); }
    const_iterator end() const noexcept { return entries.end(); }
    const_iterator find(VynEventSeverity severity) const { return entries.find(severity); }

    // As a map's: an entry whose severity is already there is dropped.
    template <typename... Arguments>
    std::pair<const_iterator, bool> emplace(Arguments&&... arguments)
    {
        return entries.emplace(std::forward<Arguments>(arguments)...);
    }

    // The maps are compared: comparing two of this class here would ask for its table before that is known.
    friend bool operator==(const VynSubscriptions& a, const VynSubscriptions& b) { return a.entries == b.entries; }
    friend bool operator!=(const VynSubscriptions& a, const VynSubscriptions& b) { return a.entries != b.entries; }

private:
    Map entries;
};

using VynSubscriptionsWithHash = std::pair<unsigned long, VynSubscriptions>;

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynSubscription {
    std::int32_t severity;
    zt_ptr_t eventTypes;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynSubscriptions {
    tq_vyn_connector_VynTypes_VynSubscription entries[4];
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynSubscriptionsWithHash {
    std::uint64_t hash;
    tq_vyn_connector_VynTypes_VynSubscriptions subscriptions;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_VynSubscription CastToZt(const VynSubscription& value, zt_arena* arena);
VYN_EXPORT VynSubscription CastFromZt(const tq_vyn_connector_VynTypes_VynSubscription& wire, const zt_arena* arena);

// With no entry, the arena may be null on writing.
VYN_EXPORT tq_vyn_connector_VynTypes_VynSubscriptions CastToZt(const VynSubscriptions& value, zt_arena* arena);
VYN_EXPORT VynSubscriptions CastFromZt(const tq_vyn_connector_VynTypes_VynSubscriptions& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_VynSubscriptionsWithHash CastToZt(const VynSubscriptionsWithHash& value,
                                                                       zt_arena* arena);
VYN_EXPORT VynSubscriptionsWithHash CastFromZt(const tq_vyn_connector_VynTypes_VynSubscriptionsWithHash& wire,
                                               const zt_arena* arena);

VYN_RECORD(VynSubscription, VynSubscription, 12, 4,
    VYN_FIELD_AS(0, 4, first,  severity,   Enumeration),
    VYN_FIELD_AS(4, 8, second, eventTypes, Set<128, Text<128>>));

VYN_RECORD(VynSubscriptions, VynSubscriptions, 48, 4,
    VYN_WHOLE(0, 48, entries, Entries<4>));

VYN_RECORD(VynSubscriptionsWithHash, VynSubscriptionsWithHash, 56, 8,
    VYN_FIELD_AS(0,  8, first,  hash,          Number),
    VYN_FIELD_AS(8, 48, second, subscriptions, Nested));

extern template VYN_EXPORT std::unordered_set<std::string>
ZtToSet<zt_ptr_t, std::string>(const zt_ptr_t*, const zt_arena*, std::string (*)(const zt_ptr_t&, const zt_arena*));

} // namespace vyn_connector::common
