#include "examiner.h"

#include "printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace inspect {

namespace {

// What two long texts are compared for is not worth more time than that.
constexpr std::uint64_t mostCompared = std::uint64_t{64} << 20;

bool IsZero(const std::uint8_t* bytes, std::size_t size)
{
    return std::all_of(bytes, bytes + size, [](std::uint8_t byte) { return byte == 0; });
}

std::string Elsewhere(std::uint64_t offset, std::uint64_t due)
{
    if (offset < due)
        return fmt::format("order other than the writer's: at offset {}, where the fields before it end at {}", offset,
                           due);
    return fmt::format("{} behind the offset {} where a writer puts it", Amount(offset - due, "byte"), due);
}

} // namespace

Examiner::Examiner(Message& message, const Extent& extent, const std::uint8_t* wire, const std::uint8_t* arena)
    : message_(message), extent_(extent), wire_(wire), arena_(arena)
{
}

Examiner::Scope Examiner::Enter(Role role, std::string name, std::string kind, const std::uint8_t* place,
                                std::size_t width)
{
    const Scope before{current_, isShown_};
    if (!isShown_) return before;
    Node node;
    node.parent = current_;
    node.depth = static_cast<std::uint16_t>(Current().depth + 1);
    node.role = role;
    node.name = std::move(name);
    node.kind = std::move(kind);
    node.place = PlaceOf(place, width);
    node.isSecret = behind_.isSecret;
    current_ = static_cast<std::uint32_t>(message_.nodes.size());
    message_.nodes.push_back(std::move(node));
    return before;
}

Examiner::Scope Examiner::EnterElement(std::uint64_t index, std::uint64_t count, const std::uint8_t* place,
                                       std::size_t width)
{
    if (isShown_ && index < extent_.mostElements && message_.nodes.size() < extent_.mostNodes)
        return Enter(Role::Element, fmt::format("[{}]", index), behind_.element, place, width);
    const Scope before{current_, isShown_};
    if (isShown_ && Current().cut == 0) Current().cut = count - index;
    isShown_ = false;
    return before;
}

Examiner::Scope Examiner::EnterSlot(const std::uint8_t* slot, std::size_t width)
{
    if (behind_.readSlot == nullptr && !behind_.slotIsRecord) return Enter(Role::Slot, "value", "", slot, width);
    if (isShown_ && behind_.readSlot != nullptr) behind_.readSlot(Current(), slot);
    return {current_, isShown_};
}

void Examiner::Leave(Scope scope)
{
    current_ = scope.node;
    isShown_ = scope.isShown;
}

Place Examiner::PlaceOf(const std::uint8_t* place, std::size_t width) const
{
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    const auto wire = reinterpret_cast<std::uintptr_t>(wire_);
    const auto size = static_cast<std::uint32_t>(width);
    if (address >= wire && address < wire + message_.nodes[0].place.size)
        return {false, static_cast<std::uint32_t>(address - wire), size};
    return {true, static_cast<std::uint32_t>(address - reinterpret_cast<std::uintptr_t>(arena_)), size};
}

std::uint64_t Examiner::AlignUp(std::uint64_t offset, std::size_t alignment) const
{
    const std::uint64_t address = message_.start + offset;
    return (address + alignment - 1) / alignment * alignment - message_.start;
}

void Examiner::SetPointer(const PointerClaim& claim, Content content)
{
    if (!isShown_) return;
    Node& node = Current();
    node.content = content;
    node.hasPointer = true;
    node.pointer = claim.pointer;
    node.elementSize = static_cast<std::uint32_t>(claim.elementSize);
    node.limit = claim.most;
    if (node.kind.empty()) node.kind = fmt::format("{}<{}>", behind_.isBlob ? "Blob" : "Text", claim.most);
}

// What is not shown is left out where there are more parts than the arena has room for pointers: some pointers are then
// looked at twice, and so the arrays around them overlap, which is told of those that are shown.
void Examiner::Own(zt_ptr_t pointer, std::size_t alignment)
{
    constexpr std::size_t mostInWire = 64;
    if (owned_.size() >= message_.arena.size() / sizeof(zt_ptr_t) + mostInWire && !isShown_) {
        isAllOwned_ = false;
        return;
    }
    owned_.push_back({pointer.offset, pointer.size, current_ & 0xFFFFFFF, static_cast<std::uint32_t>(alignment) & 0xF,
                      static_cast<std::uint32_t>(owned_.size())});
}

// --- what the visitor is told ---

void Examiner::PaddingAt(const std::uint8_t* wire, std::size_t width)
{
    const Scope scope = Enter(Role::Padding, "padding", "", wire, width);
    if (!IsZero(wire, width)) Report(Reason::Padding, PlaceOf(wire, width), [] { return "not zero"; });
    Leave(scope);
}

void Examiner::BytesAt(const PointerClaim& claim)
{
    SetPointer(claim, behind_.isBlob ? Content::Blob : Content::Text);
    const bool resolves = Follow(claim) != nullptr;
    repeats_.last = claim.pointer;
    repeats_.lastResolves = resolves;
    if (!behind_.isSecret) return;
    // Where the arena was cut off, or the pointer leads past its end, as much as is there.
    const std::uint64_t size = message_.arena.size();
    const std::uint64_t begin = std::min<std::uint64_t>(claim.pointer.offset, size);
    const std::uint64_t end = std::min(std::uint64_t{claim.pointer.offset} + claim.pointer.size, size);
    if (begin < end) message_.secrets.emplace_back(static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end));
}

const std::uint8_t* Examiner::ArrayAt(const PointerClaim& claim)
{
    SetPointer(claim, Content::Array);
    return Follow(claim);
}

const std::uint8_t* Examiner::OptionalAt(const PointerClaim& claim)
{
    SetPointer(claim, Content::Optional);
    if (claim.pointer.size != 0) return Follow(claim);
    if (Resolve(claim) != nullptr && claim.pointer.offset != 0)
        Report(Reason::Absent, {}, [&] { return fmt::format("absent, with the offset {}", claim.pointer.offset); });
    return nullptr;
}

const std::uint8_t* Examiner::Resolve(const PointerClaim& claim)
{
    const zt_ptr_t pointer = claim.pointer;
    const std::uint64_t end = std::uint64_t{pointer.offset} + pointer.size;
    const std::uint64_t over = pointer.size % claim.elementSize;
    const Place target{true, pointer.offset, pointer.size};
    const auto partly = [&] {
        return fmt::format("not a whole number of elements of {}: {} too many", Amount(claim.elementSize, "byte"),
                           Amount(over, "byte"));
    };
    if (end > message_.arena.size()) {
        Report(Reason::OutsideArena, target, [&] {
            return fmt::format("outside the arena by {}{}", Amount(end - message_.arena.size(), "byte"),
                               over == 0 ? "" : ", and " + partly());
        });
        return nullptr;
    }
    if (over != 0) {
        Report(Reason::PartOfElement, target, partly);
        return nullptr;
    }
    if (isShown_) Current().resolves = true;
    return arena_ + pointer.offset;
}

const std::uint8_t* Examiner::Follow(const PointerClaim& claim)
{
    const std::uint8_t* const place = Resolve(claim);
    if (place == nullptr) return nullptr;
    const zt_ptr_t pointer = claim.pointer;
    const Place target{true, pointer.offset, pointer.size};
    const std::uint64_t count = pointer.size / claim.elementSize;
    const std::uint64_t end = std::uint64_t{pointer.offset} + pointer.size;
    const std::uint64_t due = AlignUp(next_, claim.alignment);

    if (count > claim.most)
        Report(Reason::OverLimit, target, [&] {
            return fmt::format("over the writer's limit of {}: {} too many", claim.most,
                               Amount(count - claim.most, claim.elementSize == 1 ? "byte" : "element"));
        });
    if (count < claim.fewest) Report(Reason::Empty, target, [] { return "empty, which no writer writes"; });
    if (AlignUp(pointer.offset, claim.alignment) != pointer.offset)
        Report(Reason::Unaligned, target, [&] {
            return fmt::format("unaligned: its elements are aligned to {}", Amount(claim.alignment, "byte"));
        });
    else if (pointer.offset != due)
        Report(Reason::Misplaced, target, [&] { return Elsewhere(pointer.offset, due); });
    if (end > message_.top)
        Report(Reason::BehindTop, target, [&] {
            return fmt::format("behind the used part of the arena by {}", Amount(end - message_.top, "byte"));
        });
    Own(pointer, claim.alignment);
    next_ = end;
    return place;
}

// An empty string takes one byte.
bool Examiner::EventText(zt_ptr_t pointer, std::uint64_t most)
{
    if (isShown_) {
        Node& node = Current();
        node.content = Content::Text;
        node.hasPointer = true;
        node.pointer = pointer;
        node.limit = most;
        if (node.kind.empty()) node.kind = fmt::format("EventText<{}>", most);
    }
    const std::uint32_t taken = std::max(pointer.size, std::uint32_t{1});
    const std::uint64_t end = std::uint64_t{pointer.offset} + taken;
    const Place target{true, pointer.offset, pointer.size};
    if (end > message_.top) {
        Report(Reason::OutsideUsedPart, target, [&] {
            return pointer.size == 0 && pointer.offset == message_.top
                       ? "empty at the top of the arena, where not even an empty string may stand"
                       : fmt::format("outside the used part of the arena by {}", Amount(end - message_.top, "byte"));
        });
        return true;
    }
    if (isShown_) {
        Current().resolves = true;
        Current().leavesByte = pointer.size == 0;
    }
    if (pointer.size > most)
        Report(Reason::OverLimit, target, [&] {
            return fmt::format("over the writer's limit of {}: {} too many", most, Amount(pointer.size - most, "byte"));
        });
    if (pointer.offset != next_) Report(Reason::Misplaced, target, [&] { return Elsewhere(pointer.offset, next_); });
    Own({pointer.offset, taken}, 1);
    next_ = end;
    return true;
}

bool Examiner::Severity(std::uint32_t value, std::uint32_t highest)
{
    if (value > highest)
        Report(Reason::Value, isShown_ ? Current().place : Place{},
               [&] { return fmt::format("{} is greater than {}", value, highest); });
    return true;
}

bool Examiner::Expect(bool holds, FaultKind fault)
{
    const Place place = isShown_ ? Current().place : Place{};
    switch (fault) {
    case FaultKind::Flag:
        if (!holds) Report(Reason::Flag, place, [] { return "neither 0 nor 1"; });
        break;
    case FaultKind::Repeated: // of a key, or, as each element of a set is told, of that element
        if (!holds)
            Report(Reason::Repeated, place, [] { return "occurs before"; });
        else if (repeats_.lastResolves)
            repeats_.elements.push_back({repeats_.last, current_, repeats_.elements.size(), isShown_});
        repeats_.lastResolves = false;
        break;
    default:
        if (isShown_) Current().content = Content::Unused;
        if (!holds) Report(Reason::UnusedEntry, place, [] { return "unused, with used ones behind it"; });
        break;
    }
    return true;
}

// Those that lead to the same bytes are the same. Of the others, the texts are compared.
void Examiner::FindRepeated()
{
    auto& elements = repeats_.elements;
    KeepFirstOfEach(elements,
                    [](const SetElement& element) { return std::pair(element.text.offset, element.text.size); });
    elements.erase(
        std::find_if(elements.begin(), elements.end(),
                     [&](const SetElement& element) { return (compared_ += element.text.size) > mostCompared; }),
        elements.end());
    KeepFirstOfEach(elements, [&](const SetElement& element) {
        return std::string_view(reinterpret_cast<const char*>(arena_) + element.text.offset, element.text.size);
    });
}

// Sorting is all: its time does not depend on what a stranger chose for keys.
template <typename Key>
void Examiner::KeepFirstOfEach(std::vector<SetElement>& elements, Key key)
{
    std::sort(elements.begin(), elements.end(), [&](const SetElement& a, const SetElement& b) {
        return key(a) != key(b) ? key(a) < key(b) : a.index < b.index;
    });
    auto kept = elements.begin();
    for (const SetElement& element : elements) {
        if (kept == elements.begin() || key(*(kept - 1)) != key(element))
            *kept++ = element;
        else
            ReportAt(element.node, element.isShown, Reason::Repeated, {true, element.text.offset, element.text.size},
                     [] { return "occurs before"; });
    }
    elements.erase(kept, elements.end());
}

// --- what is wrong with the arena as a whole ---

void Examiner::Finish(bool holdsSecret)
{
    std::sort(owned_.begin(), owned_.end(), [](const Owned& a, const Owned& b) {
        return a.offset != b.offset ? a.offset < b.offset : a.order < b.order;
    });
    if (isAllOwned_) FindUnowned();
    FindOverlaps();
    if (holdsSecret && message_.IsA() != Standing::Canonical) HideUnowned();
    MergeSecrets();
    const auto rank = [](const Finding& finding) {
        return finding.reason == Reason::Damaged ? 0 : std::uint64_t{finding.node} + 1;
    };
    std::stable_sort(message_.findings.begin(), message_.findings.end(),
                     [&](const Finding& a, const Finding& b) { return rank(a) < rank(b); });
    for (std::size_t i = 0; i < message_.findings.size(); ++i)
        if (const std::uint32_t node = message_.findings[i].node; node != noNode)
            message_.nodes[node].findings.push_back(static_cast<std::uint32_t>(i));
}

// Each part against the one that reaches furthest of those that begin before it.
void Examiner::FindOverlaps()
{
    const Owned* furthest = nullptr;
    for (const Owned& part : owned_) {
        if (part.size == 0) continue;
        const std::uint64_t end = std::uint64_t{part.offset} + part.size;
        const std::uint64_t reached = furthest == nullptr ? 0 : std::uint64_t{furthest->offset} + furthest->size;
        if (part.offset < reached) {
            const Owned& later = part.order > furthest->order ? part : *furthest;
            const Owned& earlier = part.order > furthest->order ? *furthest : part;
            const auto size = static_cast<std::uint32_t>(std::min(end, reached) - part.offset);
            ReportAt(later.node, true, Reason::Overlap, {true, part.offset, size}, [&] {
                return fmt::format("overlaps {} by {}", PathOf(message_, earlier.node), Amount(size, "byte"));
            });
        }
        if (end > reached) furthest = &part;
    }
}

// Calls `visit(from, to, next)` for what lies before each part and behind all of them, up to `end`; `next` is that
// part, or null.
template <typename Visit>
void Examiner::ForEachHole(std::uint64_t end, Visit visit) const
{
    std::uint64_t reached = 0;
    for (const Owned& part : owned_) {
        if (part.offset > reached) visit(reached, std::uint64_t{part.offset}, &part);
        reached = std::max(reached, std::uint64_t{part.offset} + part.size);
    }
    if (reached < end) visit(reached, end, static_cast<const Owned*>(nullptr));
}

// What lies between two parts is a gap where the second one is aligned, and else nobody's.
void Examiner::FindUnowned()
{
    ForEachHole(message_.top, [&](std::uint64_t from, std::uint64_t to, const Owned* next) {
        const Place place{true, static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to - from)};
        if (next == nullptr || AlignUp(from, next->alignment) != to)
            ReportAt(noNode, true, Reason::Unowned, place, [&] {
                return fmt::format("{} of the arena at offset {} that no field owns", Amount(place.size, "byte"), from);
            });
        else if (!IsZero(arena_ + from, place.size))
            ReportAt(next->node, true, Reason::Gap, place, [&] {
                return fmt::format("the gap before it, {} at offset {}, is not zero", Amount(place.size, "byte"), from);
            });
    });
}

void Examiner::HideUnowned()
{
    ForEachHole(message_.arena.size(), [&](std::uint64_t from, std::uint64_t to, const Owned*) {
        message_.secrets.emplace_back(static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to));
    });
}

void Examiner::MergeSecrets()
{
    auto& secrets = message_.secrets;
    std::sort(secrets.begin(), secrets.end());
    std::vector<std::pair<std::uint32_t, std::uint32_t>> merged;
    for (const auto& [begin, end] : secrets) {
        if (!merged.empty() && begin <= merged.back().second)
            merged.back().second = std::max(merged.back().second, end);
        else
            merged.emplace_back(begin, end);
    }
    secrets = std::move(merged);
}

template <typename Words>
void Examiner::Report(Reason reason, const Place& place, Words words)
{
    ReportAt(current_, isShown_, reason, place, words);
}

template <typename Words>
void Examiner::ReportAt(std::uint32_t node, bool isShown, Reason reason, const Place& place, Words words)
{
    ++(IsRefused(reason) ? message_.refused : message_.tolerated);
    if (!isShown) return;
    // Each field that is shown keeps its first fault, and what readers refuse it for; there may be too many others.
    const bool isKept = node != noNode && (IsRefused(reason) || !message_.nodes[node].isFaulty);
    if (!isKept && message_.findings.size() >= extent_.mostFindings) return;
    if (node != noNode) message_.nodes[node].isFaulty = true;
    std::string path = node == noNode ? std::string() : PathOf(message_, node);
    message_.findings.push_back({reason, node, std::move(path), place, words(), "", ""});
}

} // namespace inspect
