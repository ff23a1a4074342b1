// The arithmetic that stands between a message and memory outside its arena, written once more: reserving, resolving,
// and an event's placing and fetching. It computes with 64-bit numbers and with the terms of a solver alike, so that
// what is proved of the terms and what is compared with the library is one text.
#pragma once

#include <z3++.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace arithmetic {

// The few operations that a number and a term have under different names.
inline std::uint64_t Constant(std::uint64_t, std::uint64_t value)
{
    return value;
}
inline z3::expr Constant(const z3::expr& like, std::uint64_t value)
{
    return like.ctx().bv_val(value, 64);
}
inline std::uint64_t Choose(bool condition, std::uint64_t a, std::uint64_t b)
{
    return condition ? a : b;
}
inline z3::expr Choose(const z3::expr& condition, const z3::expr& a, const z3::expr& b)
{
    return z3::ite(condition, a, b);
}

template <typename Word>
using Condition = decltype(std::declval<Word>() == std::declval<Word>());

// The only comparison that the arithmetic makes beside equality. Callers pass it, so that one can be spoilt.
struct Less {
    bool operator()(std::uint64_t a, std::uint64_t b) const { return a < b; }
    z3::expr operator()(const z3::expr& a, const z3::expr& b) const { return z3::ult(a, b); }
};

template <typename Word>
struct Outcome {
    std::vector<Condition<Word>> refusals; // in the order of the tests; accepted where none holds
    Word address;
    Word top; // afterwards, where accepted
};

template <typename Word>
Word LowHalf(const Word& word)
{
    return word & Constant(word, 0xFFFFFFFF);
}

template <typename Word, typename Compare>
Outcome<Word> Reserve(const Word& top, const Word& end, const Word& size, const Word& alignment, Compare less)
{
    const Word mask = alignment - Constant(alignment, 1);
    const Word aligned = (top + mask) & ~mask;
    const Word newTop = aligned + size;
    return {{less(aligned, top), less(newTop, aligned), less(end, newTop)}, aligned, newTop};
}

// `wholeElements`: the size is a multiple of the element's. `offset` and `size` are below 2^32.
template <typename Word, typename Compare>
Outcome<Word> Resolve(const Word& start, const Word& top, const Word& end, const Word& offset, const Word& size,
                      const Condition<Word>& wholeElements, Compare less)
{
    const Word address = start + offset;
    const Word last = address + size;
    return {
        {less(address, start), less(last, address), less(end, last), address == Constant(address, 0), !wholeElements},
        address,
        top};
}

// Where an event's next text goes and how far it may reach.
template <typename Word>
struct Room {
    Word offset;
    Word target;
    Word limit;
};

template <typename Word, typename Compare>
Room<Word> RoomForText(const Word& start, const Word& top, const Word& end, const Word& cap, Compare less)
{
    const Word offset = LowHalf<Word>(top - start);
    return {offset, start + offset, Choose(less(cap, end - top), top + cap, end)};
}

template <typename Word, typename Compare>
Outcome<Word> Place(const Room<Word>& room, const Word& top, const Word& textSize, Compare less)
{
    const Word all = Constant(top, 0xFFFFFFFF);
    const Word length = LowHalf(textSize);
    const Word need = Choose(length == Constant(length, 0), Constant(length, 1), length);
    return {{less(room.limit - room.target, need)},
            room.target,
            Choose(room.offset == all || length == all, top, room.target + need)};
}

// How many of an event's bytes are in use, as its reader counts them.
template <typename Word>
Word Used(const Word& start, const Word& top)
{
    return LowHalf<Word>(top - start);
}

// `offset` and `size` are below 2^32.
template <typename Word, typename Compare>
Outcome<Word> Fetch(const Word& start, const Word& top, const Word& used, const Word& offset, const Word& size,
                    Compare less)
{
    const Word address = start + offset;
    return {{!less(offset, used), less(used - offset, size), address == Constant(address, 0)}, address, top};
}

} // namespace arithmetic
