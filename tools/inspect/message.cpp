#include "message.h"

#include "examiner.h"
#include "printable.h"

#include <common/connector_state.h>
#include <common/verify.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace inspect {

namespace common = vyn_connector::common;

namespace {

// The arena where it stood, at least by its remainder by 8: what is aligned there is aligned here. Its address is not
// null where it is empty.
class ArenaCopy {
public:
    explicit ArenaCopy(const Message& message)
        : bytes_(message.arena.size() + 16),
          begin_(Aligned(bytes_.data()) + message.start),
          arena_{begin_, begin_ + message.top, begin_ + message.arena.size()}
    {
        std::copy(message.arena.begin(), message.arena.end(), begin_);
    }

    const zt_arena* Get() const { return &arena_; }

private:
    static std::uint8_t* Aligned(std::uint8_t* bytes)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(bytes);
        return bytes + ((address + 7) / 8 * 8 - address);
    }

    ByteString bytes_;
    std::uint8_t* begin_;
    zt_arena arena_;
};

void Damage(Message& message, std::string words)
{
    ++message.refused;
    message.findings.push_back({Reason::Damaged, noNode, "", {}, std::move(words), "", ""});
}

// A wire structure that is too short is looked at as if zeros followed.
void FitWire(Message& message, std::size_t size)
{
    if (message.wire.size() != size)
        Damage(message, fmt::format("a wire structure of {}, where {} has {}", Amount(message.wire.size(), "byte"),
                                    message.record, size));
    message.wire.resize(size);
    message.nodes[0].place.size = static_cast<std::uint32_t>(size);
}

// What the reader throws at each of the faults that the tree shows. Both know a field by its path.
template <typename Record>
void TakeReadersWords(Message& message, const common::WireOf<Record>& wire, const zt_arena* arena)
{
    std::unordered_map<std::string, Finding*> refused;
    for (Finding& finding : message.findings)
        if (IsRefused(finding.reason) && finding.reason != Reason::Damaged) refused.emplace(finding.path, &finding);
    common::Verify<Record>(wire, arena, [&](const common::Fault& fault) {
        if (refused.empty() && !message.exception.empty()) return;
        const std::string path = message.record + "." + fault.Path();
        if (message.exception.empty()) {
            message.exception = fault.Exception();
            message.exceptionText = fault.Text();
            message.exceptionPath = path;
        }
        const auto found = refused.find(path);
        if (found == refused.end()) return;
        found->second->exception = fault.Exception();
        found->second->text = fault.Text();
        refused.erase(found);
    });
}

template <typename Record>
void InspectAs(Message& message, const Extent& extent)
{
    common::WireOf<Record> wire;
    FitWire(message, sizeof(wire));
    std::memcpy(&wire, message.wire.data(), sizeof(wire));
    const ArenaCopy arena(message);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&wire);
    Examiner examiner(message, extent, bytes, arena.Get()->start);
    common::ExamineRecord<Record>(bytes, examiner);
    examiner.Finish(behind::HoldsSecret<Record>());
    message.memory = common::DecodedSize<Record>(wire, arena.Get());
    TakeReadersWords<Record>(message, wire, arena.Get());
}

// A state is a bare number without a table, and its reader throws nothing.
void InspectState(Message& message)
{
    FitWire(message, sizeof(int));
    int code = 0;
    std::memcpy(&code, message.wire.data(), sizeof(code));
    Node node;
    node.parent = 0;
    node.depth = 1;
    node.role = Role::Field;
    node.name = "state";
    const auto state = common::CastFromZt(code);
    node.kind = "State";
    node.place.size = sizeof(code);
    node.content = Content::Number;
    node.isSigned = true;
    node.bits = static_cast<std::uint64_t>(state ? static_cast<std::int64_t>(*state) : std::int64_t{code});
    message.nodes.push_back(node);
    const auto report = [&](Reason reason, std::uint32_t at, Place place, std::string words) {
        ++(IsRefused(reason) ? message.refused : message.tolerated);
        const std::string path = at == noNode ? std::string() : PathOf(message, at);
        if (at != noNode) message.nodes[at].findings.push_back(static_cast<std::uint32_t>(message.findings.size()));
        message.findings.push_back({reason, at, path, place, std::move(words), "", ""});
    };
    if (!state) report(Reason::Value, 1, node.place, fmt::format("{} is no state's code: reading it gives none", code));
    if (const auto size = static_cast<std::uint32_t>(message.arena.size()); size != 0)
        report(Reason::Unowned, noNode, {true, 0, size},
               fmt::format("{} of the arena at offset 0 that no field owns", Amount(size, "byte")));
}

} // namespace

std::string_view NameOf(Reason reason)
{
    switch (reason) {
    case Reason::Damaged:
        return "damaged";
    case Reason::OutsideArena:
        return "outside the arena";
    case Reason::PartOfElement:
        return "part of an element";
    case Reason::OutsideUsedPart:
        return "outside the used part";
    case Reason::Value:
        return "no such value";
    case Reason::OverLimit:
        return "over the limit";
    case Reason::Empty:
        return "empty";
    case Reason::Unaligned:
        return "unaligned";
    case Reason::Misplaced:
        return "misplaced";
    case Reason::Overlap:
        return "overlap";
    case Reason::BehindTop:
        return "behind the top";
    case Reason::Gap:
        return "gap not zero";
    case Reason::Padding:
        return "padding not zero";
    case Reason::Flag:
        return "flag";
    case Reason::Repeated:
        return "repeated";
    case Reason::Absent:
        return "absent with an offset";
    case Reason::UnusedEntry:
        return "unused entry";
    case Reason::Unowned:
        break;
    }
    return "owned by no field";
}

std::string_view NameOf(Standing standing)
{
    switch (standing) {
    case Standing::Canonical:
        return "canonical";
    case Standing::Tolerated:
        return "tolerated";
    case Standing::Refused:
        break;
    }
    return "refused";
}

bool Message::IsSecret(const Place& place) const
{
    if (place.size == 0) return false;
    if (!place.inArena) return !isKnown;
    const auto after = std::upper_bound(secrets.begin(), secrets.end(), std::pair(place.offset, 0xFFFFFFFFu));
    if (after != secrets.begin() && (after - 1)->second > place.offset) return true;
    return after != secrets.end() && after->first < std::uint64_t{place.offset} + place.size;
}

std::string PathOf(const Message& message, std::uint32_t node)
{
    std::vector<std::uint32_t> steps;
    for (; node != noNode; node = message.nodes[node].parent)
        steps.push_back(node);
    std::string path;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        const Node& on = message.nodes[*step];
        if (on.role == Role::Slot) continue;
        if (on.role == Role::Field || on.role == Role::Padding) path += '.';
        path += on.name;
    }
    return path;
}

Message Inspect(const Capture& capture, const Extent& extent)
{
    Message message;
    message.record = capture.record;
    message.wire = capture.wire;
    message.arena = capture.arena;
    message.top = std::min(capture.top.value_or(capture.arena.size()), capture.arena.size());
    message.start = capture.start % 8;
    message.nodes.emplace_back();
    message.nodes[0].name = capture.record;
    message.nodes[0].place.size = static_cast<std::uint32_t>(capture.wire.size());
    for (const std::string& damage : capture.damage)
        Damage(message, damage);

    common::ForEach(common::AllRecords{}, [&](auto tag) {
        using Record = typename decltype(tag)::Type;
        if (capture.record != common::Description<Record>::name) return;
        message.isKnown = true;
        InspectAs<Record>(message, extent);
    });
    if (capture.record == stateName) {
        message.isKnown = true;
        InspectState(message);
    }
    if (!message.isKnown) {
        Damage(message, "no record has this name");
        message.secrets.assign(1, {0, static_cast<std::uint32_t>(message.arena.size())});
    }
    return message;
}

std::vector<std::string_view> RecordNames()
{
    std::vector<std::string_view> names;
    common::ForEach(common::AllRecords{},
                    [&](auto tag) { names.emplace_back(common::Description<typename decltype(tag)::Type>::name); });
    names.emplace_back(stateName);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace inspect
