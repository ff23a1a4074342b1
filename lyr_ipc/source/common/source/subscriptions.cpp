#include <common/subscriptions.h>

#include "record_conversion.h"

namespace vyn_connector::common {

[[noreturn, gnu::cold, gnu::noinline]] static void RaiseTooManySeverities(std::size_t limit)
{
    throw std::length_error(
        fmt::vformat("vyn subscriptions: Vyn event severity types more than {}", fmt::make_format_args(limit)));
}

namespace kind {

template <std::uint64_t MaxCount>
void Write(Set<MaxCount>, const std::unordered_set<std::string>& values, zt_ptr_t& wire, zt_arena* arena)
{
    SetToZt<MaxCount, zt_ptr_t>(values, &wire, arena, stringToZt);
}
template <typename Domain, std::uint64_t MaxCount>
Domain Read(Set<MaxCount>, const zt_ptr_t& wire, const zt_arena* arena)
{
    return ZtToSet<zt_ptr_t, std::string>(&wire, arena, stringFromZt);
}

template <std::size_t MaxCount>
void Write(Entries<MaxCount>, const VynSubscriptions& value, WireOf<VynSubscription> (&wire)[MaxCount], zt_arena* arena)
{
    if (value.size() > MaxCount) RaiseTooManySeverities(MaxCount);
    std::size_t index = 0;
    for (const VynSubscription entry : value)
        FillWire<VynSubscription>(entry, wire[index++], arena);
}

// All entries, used or not. A repeated severity's entry is read in full, so what it raises is raised, and dropped.
template <typename Domain, std::size_t MaxCount>
Domain Read(Entries<MaxCount>, const WireOf<VynSubscription> (&wire)[MaxCount], const zt_arena* arena)
{
    Domain value;
    for (const WireOf<VynSubscription>& entry : wire)
        value.emplace(FromWire<VynSubscription>(entry, arena));
    return value;
}

} // namespace kind

VYN_DEFINE_CONVERSIONS(VynSubscription)
VYN_DEFINE_CONVERSIONS(VynSubscriptions)
VYN_DEFINE_CONVERSIONS(VynSubscriptionsWithHash)

template std::unordered_set<std::string>
ZtToSet<zt_ptr_t, std::string>(const zt_ptr_t*, const zt_arena*, std::string (*)(const zt_ptr_t&, const zt_arena*));

} // namespace vyn_connector::common
