// What is wrong with a message, as a small value: where, what, by how much, and what a reader throws there. verify.h
// finds it; nothing is built of it before it is asked for.
#pragma once

#include <common/detail/reach.h>
#include <common/examine.h>
#include <mur/utf8.h>

#include <fmt/core.h>

#include <string>
#include <string_view>

namespace vyn_connector::common {

// The names of a field and of those around it, with the index of an element: "productInfo.updCfgArray.items[3].field2".
class FieldPath {
public:
    // Twice as deep as any record is. What is deeper is left out.
    static constexpr std::size_t mostSteps = 8;

    std::string Text() const
    {
        std::string text;
        for (std::size_t i = 0; i < depth_ && i < mostSteps; ++i) {
            if (i != 0) text += '.';
            text += steps_[i].name;
            if (steps_[i].index != noIndex) text += fmt::format("[{}]", steps_[i].index);
        }
        return text;
    }

    void Push(const char* name) noexcept
    {
        if (depth_ < mostSteps) steps_[depth_] = {name, noIndex};
        ++depth_;
    }
    void Pop() noexcept { --depth_; }
    // Of the element that is looked at, in the innermost field.
    void SetIndex(std::size_t index) noexcept
    {
        if (depth_ <= mostSteps) steps_[depth_ - 1].index = static_cast<std::uint32_t>(index);
    }

private:
    static constexpr std::uint32_t noIndex = 0xFFFFFFFF;

    struct Step {
        const char* name;
        std::uint32_t index;
    };
    std::size_t depth_ = 0;
    Step steps_[mostSteps]{}; // whole, since faults are copied
};

class Fault {
public:
    // For verify.h.
    Fault(FaultKind kind, const FieldPath& path, zt_ptr_t pointer, std::uint64_t missesBy,
          std::uint64_t expected) noexcept
        : path_(path), expected_(expected), missesBy_(missesBy), pointer_(pointer), kind_(kind)
    {
    }
    Fault(FaultKind kind, const FieldPath& path, zt_ptr_t pointer, std::uint64_t missesBy, const detail::Codec& codec,
          detail::Bounds arena) noexcept
        : path_(path), codec_(&codec), arena_(arena), missesBy_(missesBy), pointer_(pointer), kind_(kind)
    {
    }

    FaultKind Kind() const noexcept { return kind_; }

    // The field, from the record that was verified: "productInfo.updCfgArray.items[3].field2". Padding is the last name
    // of the path, and the path of bytes that no field owns is empty.
    std::string Path() const { return path_.Text(); }

    // The wire pointer of the field; {0, 0} where it has none.
    zt_ptr_t Pointer() const noexcept { return pointer_; }

    // The bytes that are too many: past the end, past the last whole element, over a limit, away from the place where a
    // writer puts it, or owned by nobody. Elements where a limit counts elements.
    std::uint64_t MissesBy() const noexcept { return missesBy_; }

    // Whether readers refuse the message for it. Others are told by VerifyCanonical, or are over a budget.
    bool IsRefused() const noexcept { return kind_ < FaultKind::OverBudget; }

    // Throws what the reader throws at this field: std::out_of_range, mur::InvalidArgumentException or
    // mur::ResultCodeException. For a fault that readers tolerate, std::runtime_error.
    [[noreturn]] void Raise() const
    {
        if (codec_ != nullptr)
            detail::RaiseUnresolved(codec_->file, codec_->reading.arena, codec_->outside, arena_, pointer_);
        if (IsRefused()) throw std::out_of_range(Words());
        throw std::runtime_error(Words());
    }

    // The type of what Raise throws, as it is written in C++.
    std::string_view Exception() const noexcept
    {
        if (kind_ == FaultKind::NullArena) return "mur::InvalidArgumentException";
        if (codec_ != nullptr && codec_->outside == nullptr) return "mur::ResultCodeException";
        return IsRefused() ? "std::out_of_range" : "std::runtime_error";
    }

    // The text of what Raise throws.
    std::string Text() const
    {
        try {
            Raise();
        } catch (const mur::Exception& error) {
            return mur::to_utf8(error.Text());
        } catch (const std::exception& error) {
            return error.what();
        }
    }

private:
    static std::string Bytes(std::uint64_t count) { return fmt::format("{} byte{}", count, count == 1 ? "" : "s"); }

    // What no codec has words for.
    std::string Words() const
    {
        const std::string path = Path();
        switch (kind_) {
        case FaultKind::NullArena:
        case FaultKind::OutsideArena:
        case FaultKind::PartOfElement:
        case FaultKind::OutsideUsedPart:
            return fmt::format("vyn event: {}: zt_arena does not contain an element with the address {}", path,
                               pointer_.offset);
        case FaultKind::Severity:
            return fmt::format("vyn event: {}: {} is greater than {}", path, expected_, expected_ - missesBy_);
        case FaultKind::OverBudget:
            return fmt::format("{}: reading takes more than {} bytes of memory", path, expected_);
        case FaultKind::OverLimit:
            return fmt::format("{}: {} more than the {} that are written", path, missesBy_, expected_);
        case FaultKind::Empty:
            return fmt::format("{}: empty", path);
        case FaultKind::Misplaced:
            return fmt::format("{}: at offset {} of the arena and not at {}", path, pointer_.offset, expected_);
        case FaultKind::BehindTop:
            return fmt::format("{}: {} behind the used part of the arena", path, Bytes(missesBy_));
        case FaultKind::Gap:
            return fmt::format("{}: the gap before it, {} at offset {}, is not zero", path, Bytes(missesBy_),
                               expected_);
        case FaultKind::Padding:
            return fmt::format("{}: not zero", path);
        case FaultKind::Flag:
            return fmt::format("{}: neither 0 nor 1", path);
        case FaultKind::Repeated:
            return fmt::format("{}: occurs before", path);
        case FaultKind::Absent:
            return fmt::format("{}: absent, with the offset {}", path, pointer_.offset);
        case FaultKind::UnusedEntry:
            return fmt::format("{}: unused, with used ones behind it", path);
        case FaultKind::Unowned:
            break;
        }
        return fmt::format("{} of the arena at offset {} belong{} to no field", Bytes(missesBy_), expected_,
                           missesBy_ == 1 ? "s" : "");
    }

    FieldPath path_;
    const detail::Codec* codec_ = nullptr; // whose words and numbers the reader uses
    detail::Bounds arena_{};
    std::uint64_t expected_ = 0;
    std::uint64_t missesBy_;
    zt_ptr_t pointer_;
    FaultKind kind_;
};

namespace detail {

// Of a pointer that does not resolve.
inline Fault PointerFault(const FieldPath& path, const PointerClaim& claim, Bounds arena) noexcept
{
    const zt_ptr_t pointer = claim.pointer;
    const std::uint64_t end = std::uint64_t{pointer.offset} + pointer.size;
    if (IsNullArena(arena)) return {FaultKind::NullArena, path, pointer, end, *claim.codec, arena};
    if (end >= arena.limit) return {FaultKind::OutsideArena, path, pointer, end - arena.limit + 1, *claim.codec, arena};
    const std::uint64_t rest = pointer.size % claim.elementSize;
    // An arena of null addresses holds not even what has no bytes.
    const FaultKind kind = rest == 0 ? FaultKind::OutsideArena : FaultKind::PartOfElement;
    return {kind, path, pointer, rest, *claim.codec, arena};
}

// Of an event's string outside the used part.
inline Fault EventFault(const FieldPath& path, zt_ptr_t pointer, std::uint32_t used) noexcept
{
    // Not even an empty string may begin at the top.
    const std::uint64_t end = std::uint64_t{pointer.offset} + (pointer.size == 0 ? 1 : pointer.size);
    return {FaultKind::OutsideUsedPart, path, pointer, end > used ? end - used : 0, 0};
}

} // namespace detail
} // namespace vyn_connector::common
