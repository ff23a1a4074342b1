// Goes over a message and makes the tree and the findings of it: the one visitor of common/examine.h from which all
// that the inspector shows derives. Unlike a reader it goes on behind each fault. What does not depend on the record's
// types stands in examiner.cpp.
#pragma once

#include "message.h"

#include <common/all_records.h>
#include <common/examine.h>
#include <common/fault.h>

#include <cstring>
#include <type_traits>
#include <vector>

namespace inspect {

namespace kind = vyn_connector::common::kind;
using vyn_connector::common::FaultKind;
using vyn_connector::common::PointerClaim;

// What a field says of the values behind its pointer.
struct Behind {
    const char* element = "";  // the name of the record that an element is
    bool isBlob = false;       // bytes, and no text
    bool isSecret = false;     // all that lies there
    bool slotIsRecord = false; // of an optional
    void (*readSlot)(Node& node,
                     const std::uint8_t* slot) = nullptr; // of an optional value without a pointer of its own
};

namespace behind {

template <typename Kind>
Kind ValueOf(kind::Optional<Kind>);
template <typename Kind>
using Within = decltype(ValueOf(std::declval<Kind>()));

template <typename Kind, typename = void>
inline constexpr bool isOptional = false;
template <typename Kind>
inline constexpr bool isOptional<Kind, std::void_t<Within<Kind>>> = true;

template <typename Kind>
inline constexpr bool isInPlace = std::is_base_of_v<kind::InPlace, Kind>;

// The record that an element is, as the domain record's member says, or void.
template <typename Kind, typename Domain, typename = void>
struct ElementOf {
    using Type = void;
};
template <typename Kind, typename Domain>
struct ElementOf<Kind, Domain, std::enable_if_t<vyn_connector::common::isDescribed<typename Domain::value_type>>> {
    using Type = typename Domain::value_type;
};
template <typename Kind, typename Domain>
struct ElementOf<Kind, Domain, std::void_t<typename Kind::template RecordIn<Domain>>> {
    using Type = typename Kind::template RecordIn<Domain>;
};

template <typename Value>
void SetNumber(Node& node, Value value)
{
    node.content = Content::Number;
    node.isSigned = std::is_signed_v<Value>;
    node.bits = static_cast<std::uint64_t>(value);
}

template <typename Kind, typename Domain, typename Wire>
void SetInPlace(Node& node, const std::uint8_t* wire)
{
    const auto value = Kind::template View<Domain, Wire>(wire, nullptr);
    if constexpr (std::is_same_v<Domain, bool>) {
        SetNumber(node, *wire); // the byte, which may be any
        node.content = Content::Flag;
    } else if constexpr (std::is_enum_v<Domain>) {
        SetNumber(node, static_cast<std::underlying_type_t<Domain>>(value));
    } else if constexpr (std::is_integral_v<Domain>) {
        SetNumber(node, value);
    } else if constexpr (std::is_same_v<Domain, wem::types::Timestamp>) {
        SetNumber(node, value.count);
        node.content = Content::Time;
    } else {
        static_assert(std::is_same_v<Domain, std::array<std::byte, 16>>);
        node.content = Content::Raw;
    }
}

template <typename Kind, typename Domain>
Behind Of()
{
    using vyn_connector::common::isSecret;
    Behind within;
    using Element = typename ElementOf<Kind, Domain>::Type;
    if constexpr (!std::is_void_v<Element>) within.element = vyn_connector::common::Description<Element>::name;
    within.isBlob = std::is_same_v<Domain, std::vector<std::uint8_t>>;
    within.isSecret = isSecret<Kind>;
    if constexpr (isOptional<Kind>) {
        using Inner = Within<Kind>;
        using Value = typename Domain::value_type;
        within.isBlob = std::is_same_v<Value, std::vector<std::uint8_t>>;
        within.isSecret = isSecret<Kind> || isSecret<Inner>;
        within.slotIsRecord = std::is_base_of_v<kind::Nested, Inner>;
        if constexpr (isInPlace<Inner>)
            within.readSlot = &SetInPlace<Inner, Value, typename Inner::template Element<Value>>;
    }
    return within;
}

// Whether anything that a message of the record leads to is secret.
template <typename Record>
bool HoldsSecret()
{
    bool holds = false;
    vyn_connector::common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (vyn_connector::common::isField<Row>) {
            using Kind = typename Row::Kind;
            using Domain = typename Row::InDomain::Type;
            using Element = typename ElementOf<Kind, Domain>::Type;
            holds = holds || Of<Kind, Domain>().isSecret;
            if constexpr (std::is_base_of_v<kind::Nested, Kind>) holds = holds || HoldsSecret<Domain>();
            if constexpr (!std::is_void_v<Element>) holds = holds || HoldsSecret<Element>();
        }
    });
    return holds;
}

} // namespace behind

class Examiner {
public:
    static constexpr bool isStrict = true;
    static constexpr bool inWireOrder = true;

    // `message` holds the bytes; `wire` is where its wire structure is looked at, and `arena` where its arena is.
    Examiner(Message& message, const Extent& extent, const std::uint8_t* wire, const std::uint8_t* arena);

    template <typename Row>
    bool Field(Row row, const std::uint8_t* wire)
    {
        using Kind = typename Row::Kind;
        using Domain = typename Row::InDomain::Type;
        const Behind outer = behind_;
        behind_ = behind::Of<Kind, Domain>();
        behind_.isSecret = behind_.isSecret || outer.isSecret;
        const Scope scope = Enter(Role::Field, row.name, row.kind, wire, Row::width);
        if constexpr (std::is_base_of_v<kind::Nested, Kind>)
            if (IsShown()) Current().kind += std::string(" ") + vyn_connector::common::Description<Domain>::name;
        if constexpr (behind::isInPlace<Kind>)
            if (IsShown()) behind::SetInPlace<Kind, Domain, typename Row::OnWire::Type>(Current(), wire);
        vyn_connector::common::ExamineField<Row>(wire, *this);
        Leave(scope);
        behind_ = outer;
        return true;
    }
    template <typename Row>
    bool Padding(Row, const std::uint8_t* wire)
    {
        PaddingAt(wire, Row::width);
        return true;
    }
    static constexpr bool Allocate(std::uint64_t) { return true; }

    bool Bytes(const PointerClaim& claim)
    {
        BytesAt(claim);
        return true;
    }
    // An element is told that it is the first one: what a set repeats is found here when all its elements are known, in
    // less than the square of the time whatever they are.
    template <typename Element>
    bool Array(const PointerClaim& claim, Element element)
    {
        const std::uint8_t* place = ArrayAt(claim);
        Repeats outer = std::exchange(repeats_, Repeats{});
        const std::uint64_t count = place == nullptr ? 0 : claim.pointer.size / claim.elementSize;
        for (std::uint64_t i = 0; i < count; ++i, place += claim.elementSize) {
            const Scope scope = EnterElement(i, count, place, claim.elementSize);
            element(place, place);
            Leave(scope);
        }
        FindRepeated();
        repeats_ = std::move(outer);
        return true;
    }
    template <typename Element>
    bool Optional(const PointerClaim& claim, Element element)
    {
        const std::uint8_t* const slot = OptionalAt(claim);
        if (slot == nullptr) return true;
        const Scope scope = EnterSlot(slot, claim.elementSize);
        element(slot);
        Leave(scope);
        return true;
    }
    template <std::size_t Width, typename Element>
    bool Each(const std::uint8_t* wire, std::size_t count, Element element)
    {
        if (IsShown()) Current().content = Content::Array;
        for (std::size_t i = 0; i < count; ++i) {
            const Scope scope = EnterElement(i, count, wire + i * Width, Width);
            element(wire + i * Width);
            Leave(scope);
        }
        return true;
    }
    bool EventText(zt_ptr_t pointer, std::uint64_t most);
    bool Severity(std::uint32_t value, std::uint32_t highest);

    bool Expect(bool holds, FaultKind fault);
    static constexpr std::string_view TextAt(zt_ptr_t) { return {}; }
    bool WouldPlaceAt(std::uint32_t offset, std::size_t alignment) const { return AlignUp(next_, alignment) == offset; }

    // Says what else is wrong with the arena as a whole. Once, at the end. Bytes that no field owns may be what is left
    // of a secret, where the record holds one.
    void Finish(bool holdsSecret);

private:
    // The node that was current before, and whether what it holds is shown.
    struct Scope {
        std::uint32_t node;
        bool isShown;
    };
    // A part of the arena that a field says is its own.
    struct Owned {
        std::uint32_t offset;
        std::uint32_t size;
        std::uint32_t node : 28; // or the one around it that is shown
        std::uint32_t alignment : 4;
        std::uint32_t order; // in which the fields stand
    };
    struct SetElement {
        zt_ptr_t text;
        std::uint32_t node; // or the one around it that is shown
        std::size_t index;
        bool isShown;
    };
    // What the elements of a set were so far, and the text that was looked at last.
    struct Repeats {
        std::vector<SetElement> elements;
        zt_ptr_t last{};
        bool lastResolves = false;
    };

    bool IsShown() const { return isShown_; }
    Node& Current() { return message_.nodes[current_]; }
    Scope Enter(Role role, std::string name, std::string kind, const std::uint8_t* place, std::size_t width);
    Scope EnterElement(std::uint64_t index, std::uint64_t count, const std::uint8_t* place, std::size_t width);
    Scope EnterSlot(const std::uint8_t* slot, std::size_t width);
    void Leave(Scope scope);

    void PaddingAt(const std::uint8_t* wire, std::size_t width);
    void BytesAt(const PointerClaim& claim);
    const std::uint8_t* ArrayAt(const PointerClaim& claim);
    const std::uint8_t* OptionalAt(const PointerClaim& claim);

    Place PlaceOf(const std::uint8_t* place, std::size_t width) const;
    std::uint64_t AlignUp(std::uint64_t offset, std::size_t alignment) const;
    void SetPointer(const PointerClaim& claim, Content content);
    // Where the pointer leads, if it leads anywhere; and whether a writer would have put it there.
    const std::uint8_t* Follow(const PointerClaim& claim);
    const std::uint8_t* Resolve(const PointerClaim& claim);
    void Own(zt_ptr_t pointer, std::size_t alignment);
    void FindRepeated();
    template <typename Key>
    void KeepFirstOfEach(std::vector<SetElement>& elements, Key key);

    // Makes the words where somebody will see them.
    template <typename Words>
    void Report(Reason reason, const Place& place, Words words);
    template <typename Words>
    void ReportAt(std::uint32_t node, bool isShown, Reason reason, const Place& place, Words words);
    void FindOverlaps();
    template <typename Visit>
    void ForEachHole(std::uint64_t end, Visit visit) const;
    void FindUnowned();
    void HideUnowned();
    void MergeSecrets();

    Message& message_;
    const Extent extent_;
    const std::uint8_t* const wire_;
    const std::uint8_t* const arena_;
    std::uint64_t next_ = 0; // where a writer's top would be
    std::uint32_t current_ = 0;
    bool isShown_ = true;
    Behind behind_;
    Repeats repeats_;
    std::uint64_t compared_ = 0; // bytes, in search of repeated elements
    std::vector<Owned> owned_;
    bool isAllOwned_ = true;
};

} // namespace inspect
