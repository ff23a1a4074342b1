#include "regions.h"

#include <algorithm>

namespace inspect {

namespace {

// Paints each field's bytes once; what has an owner keeps it.
class Painting {
public:
    explicit Painting(std::size_t size) : owner_(size, noNode), isShared_(size), fault_(size) {}

    void Own(const Place& place, std::uint32_t node)
    {
        const std::size_t end = std::min(owner_.size(), std::size_t{place.offset} + place.size);
        // A byte is looked at often only where fields share it; of those more than a few say nothing new.
        work_ += end - std::min<std::size_t>(place.offset, end);
        if (work_ > mostWork) return;
        for (std::size_t i = place.offset; i < end; ++i) {
            if (owner_[i] == noNode)
                owner_[i] = node;
            else if (owner_[i] != node)
                isShared_[i] = 1;
        }
    }
    void Fault(const Place& place, bool isRefused)
    {
        const std::size_t end = std::min(owner_.size(), std::size_t{place.offset} + place.size);
        work_ += end - std::min<std::size_t>(place.offset, end);
        if (work_ > 2 * mostWork) return;
        for (std::size_t i = place.offset; i < end; ++i)
            fault_[i] = std::max<std::uint8_t>(fault_[i], isRefused ? 2 : 1);
    }

    std::vector<Region> Regions() const
    {
        std::vector<Region> regions;
        for (std::size_t i = 0; i < owner_.size(); ++i) {
            const bool isSame =
                i != 0 && owner_[i] == owner_[i - 1] && isShared_[i] == isShared_[i - 1] && fault_[i] == fault_[i - 1];
            if (isSame)
                ++regions.back().size;
            else
                regions.push_back(
                    {static_cast<std::uint32_t>(i), 1, owner_[i], isShared_[i] != 0, fault_[i] == 2, fault_[i] != 0});
        }
        return regions;
    }

private:
    static constexpr std::uint64_t mostWork = std::uint64_t{256} << 20;

    std::vector<std::uint32_t> owner_;
    std::vector<std::uint8_t> isShared_;
    std::vector<std::uint8_t> fault_; // 0, 1 where it is tolerated, 2 where it is refused
    std::uint64_t work_ = 0;
};

std::vector<Region> RegionsOf(const Message& message, bool inArena)
{
    Painting painting(inArena ? message.arena.size() : message.wire.size());
    for (std::uint32_t i = 1; i < message.nodes.size(); ++i) {
        const Node& node = message.nodes[i];
        const bool isField =
            node.hasPointer || node.role == Role::Padding ||
            (node.content != Content::None && node.content != Content::Array && node.content != Content::Unused);
        if (isField && node.place.inArena == inArena) painting.Own(node.place, i);
        if (!inArena || !node.resolves) continue;
        // The elements of an array and the fields of a slot are nodes of their own, as far as they are shown.
        const bool isSplit = node.content == Content::Array || node.content == Content::Optional;
        if (!isSplit) painting.Own(node.Target(), i);
        if (node.cut == 0) continue;
        const auto shown = static_cast<std::uint32_t>((node.Count() - node.cut) * node.elementSize);
        painting.Own({true, node.pointer.offset + shown, node.pointer.size - shown}, i);
    }
    for (const Finding& finding : message.findings) {
        const bool isRefused = IsRefused(finding.reason);
        if (finding.place.inArena == inArena && finding.reason != Reason::Misplaced)
            painting.Fault(finding.place, isRefused);
        // A pointer that leads nowhere shows at its own place.
        if (isRefused && finding.node != noNode && message.nodes[finding.node].place.inArena == inArena)
            painting.Fault(message.nodes[finding.node].place, isRefused);
    }
    return painting.Regions();
}

} // namespace

std::vector<Region> RegionsOfWire(const Message& message)
{
    return RegionsOf(message, false);
}

std::vector<Region> RegionsOfArena(const Message& message)
{
    return RegionsOf(message, true);
}

std::uint32_t FieldOf(const Message& message, std::uint32_t node)
{
    return message.nodes[node].role == Role::Slot ? message.nodes[node].parent : node;
}

std::size_t ColourOf(const Message& message, std::uint32_t node)
{
    return FieldOf(message, node) % colours;
}

} // namespace inspect
