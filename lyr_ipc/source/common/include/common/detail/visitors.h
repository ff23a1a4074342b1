// The visitors behind verify.h: whether a message is good, what reading it takes, where its faults are, and whether it
// is one that a writer writes.
#pragma once

#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/fault.h>

#include <optional>

namespace vyn_connector::common::detail {

// What the visitors share that only look at what readers refuse.
struct Tolerant {
    static constexpr bool isStrict = false;

    static constexpr bool Expect(bool, FaultKind) { return true; }
};

// Says yes or no, as fast as that can be said: a reader's tests and nothing else. No pointer is asked whether it leads
// to address 0; an arena that starts there gets a no in any case. FaultFinder has the last word on a no.
struct Soundness : Tolerant {
    static constexpr bool inWireOrder = true;

    explicit Soundness(Reach r) : reach(r) {}

    template <typename Record>
    [[gnu::always_inline]] bool Of(const std::uint8_t* wire)
    {
        return reach.bounds.start != 0 && ExamineRecord<Record>(wire, *this);
    }

    template <typename Row>
    [[gnu::always_inline]] bool Field(Row, const std::uint8_t* wire)
    {
        return ExamineField<Row>(wire, *this);
    }
    template <typename Row>
    static constexpr bool Padding(Row, const std::uint8_t*)
    {
        return true;
    }
    static constexpr bool Allocate(std::uint64_t) { return true; }

    [[gnu::always_inline]] bool Bytes(const PointerClaim& claim) const { return Lies(claim); }
    template <typename Element>
    [[gnu::always_inline]] bool Array(const PointerClaim& claim, Element element) const
    {
        if (!Lies(claim)) return false;
        const std::uint8_t* const first = First(claim);
        const std::uint8_t* const end = first + claim.pointer.size;
        for (const std::uint8_t* place = first; place != end; place += claim.elementSize)
            if (!element(place, first)) return false;
        return true;
    }
    template <typename Element>
    [[gnu::always_inline]] bool Optional(const PointerClaim& claim, Element element) const
    {
        if (!Lies(claim)) return false;
        return claim.pointer.size == 0 || element(First(claim));
    }
    template <std::size_t Width, typename Element>
    [[gnu::always_inline]] bool Each(const std::uint8_t* wire, std::size_t count, Element element) const
    {
        for (std::size_t i = 0; i < count; ++i)
            if (!element(wire + i * Width)) return false;
        return true;
    }
    bool EventText(zt_ptr_t pointer, std::uint64_t) const
    {
        return IsInUsedPart(pointer, reach.bounds.start, reach.top);
    }
    static bool Severity(std::uint32_t value, std::uint32_t highest) { return value <= highest; }

    Reach reach;

private:
    [[gnu::always_inline]] bool Lies(const PointerClaim& claim) const
    {
        return Holds(reach.bounds, claim.pointer, claim.elementSize);
    }
    const std::uint8_t* First(const PointerClaim& claim) const
    {
        return reinterpret_cast<const std::uint8_t*>(reach.bounds.start + claim.pointer.offset);
    }
};

// Sums up what a reader asks for. A pointer that leads nowhere takes nothing, and what is behind it is summed up all
// the same.
struct Weight : Tolerant {
    static constexpr bool inWireOrder = true;

    explicit Weight(Reach r) : reach(r) {}

    template <typename Row>
    [[gnu::always_inline]] bool Field(Row, const std::uint8_t* wire)
    {
        return ExamineField<Row>(wire, *this);
    }
    template <typename Row>
    static constexpr bool Padding(Row, const std::uint8_t*)
    {
        return true;
    }
    bool Allocate(std::uint64_t bytes)
    {
        sum += bytes;
        return true;
    }

    [[gnu::always_inline]] bool Bytes(const PointerClaim& claim)
    {
        if (Resolve(reach.bounds, claim.pointer, 1) != 0) sum += claim.allocates;
        return true;
    }
    template <typename Element>
    [[gnu::always_inline]] bool Array(const PointerClaim& claim, Element element)
    {
        const std::uintptr_t address = Resolve(reach.bounds, claim.pointer, claim.elementSize);
        if (address != 0 || claim.allocatesFirst) sum += claim.allocates;
        if (address == 0) return true;
        const auto* const first = reinterpret_cast<const std::uint8_t*>(address);
        for (std::uint32_t at = 0; at != claim.pointer.size; at += static_cast<std::uint32_t>(claim.elementSize))
            element(first + at, first);
        return true;
    }
    template <typename Element>
    [[gnu::always_inline]] bool Optional(const PointerClaim& claim, Element element)
    {
        const std::uintptr_t address = Resolve(reach.bounds, claim.pointer, claim.elementSize);
        if (address != 0 && claim.pointer.size != 0) element(reinterpret_cast<const std::uint8_t*>(address));
        return true;
    }
    template <std::size_t Width, typename Element>
    [[gnu::always_inline]] bool Each(const std::uint8_t* wire, std::size_t count, Element element)
    {
        for (std::size_t i = 0; i < count; ++i)
            element(wire + i * Width);
        return true;
    }
    bool EventText(zt_ptr_t pointer, std::uint64_t)
    {
        if (IsInUsedPart(pointer, reach.bounds.start, reach.top)) sum += AllocatedByText(pointer.size);
        return true;
    }
    static bool Severity(std::uint32_t, std::uint32_t) { return true; }

    Reach reach;
    std::uint64_t sum = 0;
};

// Knows at each moment which field it looks at, so that a fault has a path.
struct OnPath {
    // Goes into the field, and comes back.
    template <typename Row, typename Self>
    static bool Named(Self& self, Row row, const std::uint8_t* wire)
    {
        self.path.Push(row.name);
        const bool goesOn = ExamineField<Row>(wire, self);
        self.path.Pop();
        return goesOn;
    }
    template <typename Element>
    bool Elements(const PointerClaim& claim, const std::uint8_t* first, Element element)
    {
        const std::size_t count = claim.pointer.size / claim.elementSize;
        for (std::size_t i = 0; i < count; ++i) {
            path.SetIndex(i);
            if (!element(first + i * claim.elementSize, first)) return false;
        }
        return true;
    }
    template <std::size_t Width, typename Element>
    bool Each(const std::uint8_t* wire, std::size_t count, Element element)
    {
        for (std::size_t i = 0; i < count; ++i) {
            path.SetIndex(i);
            if (!element(wire + i * Width)) return false;
        }
        return true;
    }

    FieldPath path;
};

// Tells `report(fault)` of each fault that a reader meets, in the reader's order, until that returns false. With a
// budget, it has to stop at the first.
template <typename Report>
struct FaultFinder : Tolerant, OnPath {
    static constexpr bool inWireOrder = false;

    FaultFinder(Reach r, std::uint64_t b, Report& whatFor) : reach(r), budget(b), report(whatFor) {}

    template <typename Row>
    bool Field(Row row, const std::uint8_t* wire)
    {
        return Named(*this, row, wire);
    }
    bool Allocate(std::uint64_t bytes) { return Take(bytes, {}); }

    bool Bytes(const PointerClaim& claim)
    {
        return Follow(claim, [](const std::uint8_t*) { return true; });
    }
    template <typename Element>
    bool Array(const PointerClaim& claim, Element element)
    {
        return Follow(claim, [&](const std::uint8_t* first) { return Elements(claim, first, element); });
    }
    template <typename Element>
    bool Optional(const PointerClaim& claim, Element element)
    {
        return Follow(claim, [&](const std::uint8_t* slot) { return claim.pointer.size == 0 || element(slot); });
    }
    bool EventText(zt_ptr_t pointer, std::uint64_t)
    {
        if (!IsInUsedPart(pointer, reach.bounds.start, reach.top))
            return report(EventFault(path, pointer, static_cast<std::uint32_t>(reach.top - reach.bounds.start)));
        return Take(AllocatedByText(pointer.size), pointer);
    }
    bool Severity(std::uint32_t value, std::uint32_t highest)
    {
        return value <= highest || report(Fault(FaultKind::Severity, path, {}, value - highest, value));
    }

private:
    template <typename Go>
    bool Follow(const PointerClaim& claim, Go go)
    {
        if (claim.allocatesFirst && !Take(claim.allocates, claim.pointer)) return false;
        const std::uintptr_t address = Resolve(reach.bounds, claim.pointer, claim.elementSize);
        if (address == 0) return report(PointerFault(path, claim, reach.bounds));
        if (!claim.allocatesFirst && !Take(claim.allocates, claim.pointer)) return false;
        return go(reinterpret_cast<const std::uint8_t*>(address));
    }
    bool Take(std::uint64_t bytes, zt_ptr_t pointer)
    {
        sum += bytes;
        return sum <= budget || report(Fault(FaultKind::OverBudget, path, pointer, sum - budget, budget));
    }

    Reach reach;
    std::uint64_t budget;
    std::uint64_t sum = 0;
    Report& report;
};

// Goes along the arena as a writer does, from its start, and finds the first place where a writer would have done
// something else.
struct Departure : OnPath {
    static constexpr bool isStrict = true;
    static constexpr bool inWireOrder = true;

    explicit Departure(Reach r) : reach(r), next(r.bounds.start) {}

    template <typename Row>
    bool Field(Row row, const std::uint8_t* wire)
    {
        return Named(*this, row, wire);
    }
    template <typename Row>
    bool Padding(Row, const std::uint8_t* wire)
    {
        path.Push("padding");
        const bool isZero = Expect(IsZero(wire, wire + Row::width), FaultKind::Padding);
        path.Pop();
        return isZero;
    }
    static constexpr bool Allocate(std::uint64_t) { return true; }

    bool Bytes(const PointerClaim& claim) { return Place(claim) != 0; }
    template <typename Element>
    bool Array(const PointerClaim& claim, Element element)
    {
        const std::uintptr_t address = Place(claim);
        return address != 0 && Elements(claim, reinterpret_cast<const std::uint8_t*>(address), element);
    }
    template <typename Element>
    bool Optional(const PointerClaim& claim, Element element)
    {
        if (claim.pointer.size != 0) {
            const std::uintptr_t address = Place(claim);
            return address != 0 && element(reinterpret_cast<const std::uint8_t*>(address));
        }
        if (Resolve(reach.bounds, claim.pointer, claim.elementSize) == 0)
            return Report(PointerFault(path, claim, reach.bounds));
        if (claim.pointer.offset == 0) return true;
        return Report(Fault(FaultKind::Absent, path, claim.pointer, claim.pointer.offset, 0));
    }
    // An empty string takes one byte, whose value is left to chance.
    bool EventText(zt_ptr_t pointer, std::uint64_t most)
    {
        const std::uint64_t used = reach.top - reach.bounds.start;
        if (!IsInUsedPart(pointer, reach.bounds.start, reach.top))
            return Report(EventFault(path, pointer, static_cast<std::uint32_t>(used)));
        if (pointer.size > most) return Report(Fault(FaultKind::OverLimit, path, pointer, pointer.size - most, most));
        const std::uint64_t due = next - reach.bounds.start;
        if (pointer.offset != due) return Report(Misplaced(pointer, due));
        next += pointer.size == 0 ? 1 : pointer.size;
        return true;
    }
    bool Severity(std::uint32_t value, std::uint32_t highest)
    {
        return value <= highest || Report(Fault(FaultKind::Severity, path, {}, value - highest, value));
    }

    bool Expect(bool holds, FaultKind fault) { return holds || Report(Fault(fault, path, {}, 0, 0)); }
    std::string_view TextAt(zt_ptr_t pointer) const
    {
        return detail::TextAt(reinterpret_cast<const std::uint8_t*>(reach.bounds.start + pointer.offset), pointer.size);
    }
    bool WouldPlaceAt(std::uint32_t offset, std::size_t alignment) const
    {
        return AlignUp(next, alignment) - reach.bounds.start == offset;
    }

    // Nothing of the used part is left over.
    bool Finish()
    {
        if (next == reach.top) return true;
        return Report(Fault(FaultKind::Unowned, path, {}, reach.top - next, next - reach.bounds.start));
    }

    std::optional<Fault> found;

private:
    // The address of an array that stands where a writer would have put it, or 0.
    std::uintptr_t Place(const PointerClaim& claim)
    {
        const zt_ptr_t pointer = claim.pointer;
        const std::uintptr_t address = Resolve(reach.bounds, pointer, claim.elementSize);
        const std::uint64_t count = pointer.size / claim.elementSize;
        const std::uintptr_t due = AlignUp(next, claim.alignment);
        const auto report = [&](FaultKind fault, std::uint64_t amount, std::uint64_t expected) {
            Report(Fault(fault, path, pointer, amount, expected));
            return std::uintptr_t{0};
        };
        if (address == 0) return Report(PointerFault(path, claim, reach.bounds)), 0;
        if (count > claim.most) return report(FaultKind::OverLimit, count - claim.most, claim.most);
        if (count < claim.fewest) return report(FaultKind::Empty, claim.fewest - count, claim.fewest);
        if (address != due) return Report(Misplaced(pointer, due - reach.bounds.start)), 0;
        if (due + pointer.size > reach.top)
            return report(FaultKind::BehindTop, due + pointer.size - reach.top, reach.top - reach.bounds.start);
        if (!IsZero(reinterpret_cast<const std::uint8_t*>(next), reinterpret_cast<const std::uint8_t*>(due)))
            return report(FaultKind::Gap, due - next, next - reach.bounds.start);
        next = due + pointer.size;
        return address;
    }
    Fault Misplaced(zt_ptr_t pointer, std::uint64_t due) const
    {
        const std::uint64_t amount = pointer.offset > due ? pointer.offset - due : due - pointer.offset;
        return Fault(FaultKind::Misplaced, path, pointer, amount, due);
    }
    bool Report(const Fault& fault)
    {
        found = fault;
        return false;
    }

    Reach reach;
    std::uintptr_t next; // where a writer's top would be
};

} // namespace vyn_connector::common::detail
