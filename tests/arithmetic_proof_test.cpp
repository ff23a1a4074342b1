// Proofs, for all addresses, sizes, offsets and alignments of 64 bits, that the arena's arithmetic accepts exactly what
// lies inside the arena, and refuses the rest for the reason that each test gives. The solver works on the arithmetic
// as arithmetic.h has it; the library is held to that text by millions of inputs that lie where sums wrap.
#include "arithmetic.h"

#include <common/vyn_connector_common.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <optional>
#include <random>
#include <sstream>

namespace {

using arithmetic::Less;
using arithmetic::Outcome;
using z3::expr;

// --- Proofs ---

// Spoils the comparison of this number, from 0 on: equality counts as less. Negative: none.
class SpoiltLess {
public:
    explicit SpoiltLess(int comparison, int* comparisonsMade) : spoilt(comparison), made(comparisonsMade) {}
    expr operator()(const expr& a, const expr& b) const { return (*made)++ == spoilt ? z3::ule(a, b) : z3::ult(a, b); }

private:
    int spoilt;
    int* made;
};

class Prover {
public:
    expr Word(const char* name) { return context.bv_const(name, 64); }
    expr HalfWord(const char* name)
    {
        const expr word = Word(name);
        Assume(z3::ule(word, context.bv_val(std::uint64_t{0xFFFFFFFF}, 64)));
        return word;
    }
    expr Condition(const char* name) { return context.bool_const(name); }
    expr Number(std::uint64_t value) { return context.bv_val(value, 64); }

    void Assume(const expr& condition) { assumptions.push_back(condition); }

    // Nothing where each claim holds for all values; else values for which one does not.
    std::optional<std::string> Refute(const std::vector<expr>& claims)
    {
        for (const expr& claim : claims) {
            z3::solver solver(context, "QF_BV");
            for (const expr& assumption : assumptions)
                solver.add(assumption);
            solver.add(!claim);
            const z3::check_result result = solver.check();
            if (result == z3::unknown) return "the solver does not know";
            if (result == z3::unsat) continue;
            std::ostringstream model;
            model << solver.get_model();
            return model.str();
        }
        return std::nullopt;
    }

private:
    z3::context context;
    std::vector<expr> assumptions;
};

// The exact number: sums of up to four words do not wrap.
expr Exact(const expr& word)
{
    return z3::zext(word, 2);
}

expr NoneOf(const std::vector<expr>& conditions)
{
    expr none = conditions[0].ctx().bool_val(true);
    for (const expr& condition : conditions)
        none = none && !condition;
    return none;
}

expr AtMost(const expr& a, const expr& b)
{
    return z3::ule(a, b);
}

// How the proof of one operation is spoilt: a comparison that takes equality for less, or a test left out.
struct Spoilt {
    int comparison = -1;
    int leftOut = -1;
};

std::vector<expr> Without(std::vector<expr> refusals, int leftOut)
{
    if (leftOut >= 0) refusals.at(static_cast<std::size_t>(leftOut)) = refusals[0].ctx().bool_val(false);
    return refusals;
}

using Proof = std::optional<std::string>(const Spoilt&);

std::optional<std::string> ProveReserve(const Spoilt& spoilt)
{
    Prover prover;
    const expr start = prover.Word("start");
    const expr top = prover.Word("top");
    const expr end = prover.Word("end");
    const expr size = prover.Word("size");
    const expr alignment = prover.Word("alignment");
    const expr mask = alignment - prover.Number(1);
    prover.Assume(AtMost(start, top) && AtMost(top, end));
    prover.Assume(alignment != prover.Number(0) && (alignment & mask) == prover.Number(0));

    int comparisons = 0;
    const Outcome<expr> outcome =
        arithmetic::Reserve(top, end, size, alignment, SpoiltLess(spoilt.comparison, &comparisons));
    const expr accepted = NoneOf(Without(outcome.refusals, spoilt.leftOut));
    const std::vector<expr>& refused = outcome.refusals;

    const expr aligned = (Exact(top) + Exact(mask)) & ~Exact(mask);
    const expr newTop = aligned + Exact(size);
    const expr lastAddress = Exact(prover.Number(~std::uint64_t{0}));
    return prover.Refute(
        {// the next multiple of the alignment
         AtMost(Exact(top), aligned) && z3::ult(aligned, Exact(top) + Exact(alignment)),
         (aligned & Exact(mask)) == Exact(prover.Number(0)),
         // accepted where it fits
         accepted == AtMost(newTop, Exact(end)),
         z3::implies(accepted, Exact(outcome.address) == aligned && Exact(outcome.top) == newTop),
         z3::implies(accepted, AtMost(start, outcome.address) && AtMost(top, outcome.top) && AtMost(outcome.top, end)),
         // each refusal for its reason
         refused[0] == z3::ugt(aligned, lastAddress), refused[0] || refused[1] == z3::ugt(newTop, lastAddress),
         refused[0] || refused[1] || refused[2] == z3::ugt(newTop, Exact(end))});
}

std::optional<std::string> ProveResolve(const Spoilt& spoilt)
{
    Prover prover;
    const expr start = prover.Word("start");
    const expr end = prover.Word("end");
    const expr offset = prover.HalfWord("offset");
    const expr size = prover.HalfWord("size");
    const expr wholeElements = prover.Condition("wholeElements");
    prover.Assume(AtMost(start, end));

    int comparisons = 0;
    const Outcome<expr> outcome = arithmetic::Resolve(start, start, end, offset, size, wholeElements,
                                                      SpoiltLess(spoilt.comparison, &comparisons));
    const expr accepted = NoneOf(Without(outcome.refusals, spoilt.leftOut));
    const std::vector<expr>& refused = outcome.refusals;

    const expr address = Exact(start) + Exact(offset);
    const expr last = address + Exact(size);
    const expr lastAddress = Exact(prover.Number(~std::uint64_t{0}));
    const expr isInside = AtMost(last, Exact(end)) && address != Exact(prover.Number(0)) && wholeElements;
    return prover.Refute({accepted == isInside,
                          z3::implies(accepted, Exact(outcome.address) == address && AtMost(start, outcome.address)),
                          refused[0] == z3::ugt(address, lastAddress),
                          refused[0] || refused[1] == z3::ugt(last, lastAddress),
                          refused[0] || refused[1] || refused[2] == z3::ugt(last, Exact(end))});
}

// In two steps, each quick for the solver: what is true of the room for a text, and what of a text in any such room.
std::optional<std::string> ProveRoom(const Spoilt& spoilt)
{
    Prover prover;
    const expr start = prover.Word("start");
    const expr top = prover.Word("top");
    const expr end = prover.Word("end");
    const expr cap = prover.Word("cap");
    prover.Assume(AtMost(start, top) && AtMost(top, end));

    int comparisons = 0;
    const auto room = arithmetic::RoomForText(start, top, end, cap, SpoiltLess(spoilt.comparison, &comparisons));

    const expr capped = Exact(top) + Exact(cap);
    return prover.Refute(
        {Exact(room.limit) == z3::ite(z3::ult(capped, Exact(end)), capped, Exact(end)), AtMost(start, room.target),
         AtMost(room.target, top), AtMost(top, room.limit),
         // past 4 GiB the cut offset leads below the top, as the format has it
         z3::implies(z3::ult(top - start, prover.Number(std::uint64_t{1} << 32)), room.target == top)});
}

std::optional<std::string> ProvePlace(const Spoilt& spoilt)
{
    Prover prover;
    const expr start = prover.Word("start");
    const expr top = prover.Word("top");
    const expr end = prover.Word("end");
    const expr length = prover.HalfWord("length");
    const arithmetic::Room<expr> room{prover.HalfWord("offset"), prover.Word("target"), prover.Word("limit")};
    prover.Assume(AtMost(start, room.target) && AtMost(room.target, top) && AtMost(top, room.limit) &&
                  AtMost(room.limit, end));

    int comparisons = 0;
    const Outcome<expr> outcome = arithmetic::Place(room, top, length, SpoiltLess(spoilt.comparison, &comparisons));
    const expr accepted = NoneOf(Without(outcome.refusals, spoilt.leftOut));

    const expr target = Exact(room.target);
    const expr need = z3::ite(length == prover.Number(0), Exact(prover.Number(1)), Exact(length));
    return prover.Refute({accepted == AtMost(target + need, Exact(room.limit)),
                          z3::implies(accepted, AtMost(target + Exact(length), Exact(end))),
                          z3::implies(accepted, AtMost(start, outcome.top)),
                          z3::implies(accepted, AtMost(outcome.top, end)),
                          z3::implies(accepted && room.target == top, AtMost(top, outcome.top))});
}

// The reader's steps likewise: what is used ends at the top or below it, and what is accepted lies in what is used.
std::optional<std::string> ProveUsed(const Spoilt&)
{
    Prover prover;
    const expr start = prover.Word("start");
    const expr top = prover.Word("top");
    prover.Assume(AtMost(start, top));
    const expr used = arithmetic::Used(start, top);
    return prover.Refute({AtMost(Exact(start) + Exact(used), Exact(top)),
                          z3::implies(z3::ult(top - start, prover.Number(std::uint64_t{1} << 32)),
                                      Exact(start) + Exact(used) == Exact(top))});
}

std::optional<std::string> ProveFetch(const Spoilt& spoilt)
{
    Prover prover;
    const expr start = prover.Word("start");
    const expr top = prover.Word("top");
    const expr used = prover.HalfWord("used");
    const expr offset = prover.HalfWord("offset");
    const expr size = prover.HalfWord("size");
    prover.Assume(AtMost(Exact(start) + Exact(used), Exact(top)));

    int comparisons = 0;
    const Outcome<expr> outcome =
        arithmetic::Fetch(start, top, used, offset, size, SpoiltLess(spoilt.comparison, &comparisons));
    const expr accepted = NoneOf(Without(outcome.refusals, spoilt.leftOut));

    const expr isUsed = z3::ult(offset, used) && AtMost(Exact(offset) + Exact(size), Exact(used));
    return prover.Refute({accepted == (isUsed && Exact(start) + Exact(offset) != Exact(prover.Number(0))),
                          z3::implies(accepted, Exact(outcome.address) == Exact(start) + Exact(offset))});
}

std::string Found(Proof* proof, const Spoilt& spoilt)
{
    return proof(spoilt).value_or("");
}

void ExpectEachSpoiltComparisonIsFound(Proof* proof, int comparisons)
{
    for (int comparison = 0; comparison < comparisons; ++comparison)
        EXPECT_NE(Found(proof, {comparison, -1}), "") << "comparison " << comparison;
}

void ExpectEachMissingTestIsFound(Proof* proof, int tests)
{
    for (int test = 0; test < tests; ++test)
        EXPECT_NE(Found(proof, {-1, test}), "") << "test " << test;
}

TEST(Proof, AReservationLiesBetweenTopAndEndAndIsRefusedOnlyForTheReasonGiven)
{
    EXPECT_EQ(Found(ProveReserve, {}), "");
}

TEST(Proof, WhatResolvesLiesBetweenStartAndEndAndIsRefusedOnlyForTheReasonGiven)
{
    EXPECT_EQ(Found(ProveResolve, {}), "");
}

TEST(Proof, AnEventsTextIsPlacedInsideTheArenaAndWithinItsCap)
{
    EXPECT_EQ(Found(ProveRoom, {}), "");
    EXPECT_EQ(Found(ProvePlace, {}), "");
}

TEST(Proof, AnEventsTextIsFetchedFromBelowTheTop)
{
    EXPECT_EQ(Found(ProveUsed, {}), "");
    EXPECT_EQ(Found(ProveFetch, {}), "");
}

TEST(Proof, FindsEverySpoiltComparison)
{
    ExpectEachSpoiltComparisonIsFound(ProveReserve, 3);
    ExpectEachSpoiltComparisonIsFound(ProveResolve, 3);
    ExpectEachSpoiltComparisonIsFound(ProveFetch, 2);
    ExpectEachSpoiltComparisonIsFound(ProvePlace, 1);
    // Where exactly the cap remains, the capped limit is the end: this one makes no difference.
    EXPECT_EQ(Found(ProveRoom, {0, -1}), "");
}

TEST(Proof, FindsEveryMissingTest)
{
    ExpectEachMissingTestIsFound(ProveReserve, 3);
    ExpectEachMissingTestIsFound(ProveResolve, 5);
    ExpectEachMissingTestIsFound(ProveFetch, 3);
    ExpectEachMissingTestIsFound(ProvePlace, 1);
}

TEST(Proof, ShowsTheAddressesForWhichItFails)
{
    const std::string counterexample = Found(ProveReserve, {2, -1});
    for (const char* const word : {"start", "top", "end", "size", "alignment"})
        EXPECT_NE(counterexample.find(word), std::string::npos) << counterexample;
}

// --- The library computes as arithmetic.h does ---

std::mt19937_64 generator(20240229);

// A word near a place where something wraps or ends.
std::uint64_t Edge()
{
    static const std::uint64_t places[] = {0,
                                           std::uint64_t{1} << 16,
                                           std::uint64_t{1} << 31,
                                           std::uint64_t{1} << 32,
                                           std::uint64_t{1} << 33,
                                           std::uint64_t{1} << 63};
    return places[generator() % std::size(places)] + generator() % 49 - 24;
}

std::uint64_t HalfEdge()
{
    return Edge() & 0xFFFFFFFF;
}

std::uint8_t* Address(std::uint64_t address)
{
    return reinterpret_cast<std::uint8_t*>(address);
}

std::uint64_t Number(const void* address)
{
    return reinterpret_cast<std::uintptr_t>(address);
}

// start <= top <= end, often close together.
zt_arena AnyArena()
{
    std::array<std::uint64_t, 3> words{Edge(), Edge(), Edge()};
    if (generator() % 2 == 0) words[1] = words[0] + generator() % 64;
    if (generator() % 2 == 0) words[2] = words[1] + generator() % 64;
    std::sort(words.begin(), words.end());
    return {Address(words[0]), Address(words[1]), Address(words[2])};
}

bool Accepts(const Outcome<std::uint64_t>& outcome)
{
    return std::none_of(outcome.refusals.begin(), outcome.refusals.end(), [](bool refused) { return refused; });
}

bool SameArena(const zt_arena& a, const zt_arena& b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

constexpr int inputs = 1000000;

TEST(Library, ReservesAsProved)
{
    alignas(64) std::uint8_t memory[256];
    std::uint64_t accepted = 0;
    std::uint64_t refused = 0;
    for (int i = 0; i < inputs; ++i) {
        zt_arena arena = AnyArena();
        std::uint64_t size = generator() % 3 == 0 ? Edge() : generator() % 80;
        if (i % 2 == 0) { // real memory, so that what is accepted can be zeroed
            arena.start = memory + generator() % 64;
            arena.top = arena.start + generator() % 64;
            arena.end = arena.top + generator() % 64;
        }
        const std::uint64_t alignment = std::uint64_t{1} << generator() % (i % 4 == 3 ? 64 : 5);
        const auto outcome = arithmetic::Reserve(Number(arena.top), Number(arena.end), size, alignment, Less{});
        // Made-up memory cannot be zeroed.
        if (i % 2 != 0 && Accepts(outcome) && outcome.top != Number(arena.top)) continue;

        zt_arena expected = arena;
        if (Accepts(outcome)) expected.top = Address(outcome.top);
        void* const reserved = zt_arena_reserve(&arena, size, alignment);
        ASSERT_EQ(Number(reserved), Accepts(outcome) ? outcome.address : 0) << "input " << i;
        ASSERT_TRUE(SameArena(arena, expected)) << "input " << i;
        ++(Accepts(outcome) ? accepted : refused);
    }
    EXPECT_GT(accepted, inputs / 10);
    EXPECT_GT(refused, inputs / 10);
}

TEST(Library, ResolvesAsProved)
{
    std::uint64_t accepted = 0;
    std::array<std::uint64_t, 5> refusals{};
    for (int i = 0; i < inputs; ++i) {
        const zt_arena arena = AnyArena();
        const std::size_t elementSizes[] = {1, 8, 12, 16, 28, 44};
        const std::size_t elementSize = elementSizes[generator() % std::size(elementSizes)];
        const zt_ptr_t pointer{static_cast<std::uint32_t>(HalfEdge()), static_cast<std::uint32_t>(HalfEdge())};
        const auto outcome =
            arithmetic::Resolve<std::uint64_t>(Number(arena.start), Number(arena.top), Number(arena.end),
                                               pointer.offset, pointer.size, pointer.size % elementSize == 0, Less{});

        std::size_t count = 77;
        const void* const address = zt_arena_resolve(&arena, &pointer, elementSize, &count);
        ASSERT_EQ(Number(address), Accepts(outcome) ? outcome.address : 0) << "input " << i;
        ASSERT_EQ(count, Accepts(outcome) ? pointer.size / elementSize : 77) << "input " << i;
        if (Accepts(outcome)) ++accepted;
        for (std::size_t test = 0; test < refusals.size(); ++test)
            if (outcome.refusals[test]) {
                ++refusals[test];
                break;
            }
    }
    EXPECT_GT(accepted, inputs / 100);
    for (std::size_t test = 0; test < refusals.size(); ++test)
        EXPECT_GT(refusals[test], 0u) << "test " << test << " refused nothing";
}

using lyr::ipc::arena::conv::FromZt;
using lyr::ipc::arena::conv::Status;
using lyr::ipc::arena::conv::ToZt;
using vyn_connector::VynEvent;
using WireEvent = tq_vyn_connector_VynTypes_VynEvent;

constexpr std::size_t textCount = 15;
constexpr std::array<std::uint64_t, textCount> caps{128, 128, 128, 64,  128, 1024, 512, 512,
                                                    512, 512, 512, 512, 512, 512,  512};

// The texts and their pointers in the order in which they travel.
template <typename Event>
auto Texts(Event& event)
{
    auto& rest = event.stringArray;
    return std::array{&event.field1, &event.field3, &event.field4, &event.field5, &event.field6,
                      &event.field7, &rest[0],      &rest[1],      &rest[2],      &rest[3],
                      &rest[4],      &rest[5],      &rest[6],      &rest[7],      &rest[8]};
}

// Returns how many texts were placed.
std::size_t ExpectPlacedAsProved(zt_arena& arena, const VynEvent& event)
{
    std::array<zt_ptr_t, textCount> pointers{};
    const std::uint64_t start = Number(arena.start);
    std::uint64_t top = Number(arena.top);
    std::size_t placed = 0;
    bool allPlaced = true;
    for (std::size_t i = 0; i < textCount; ++i) {
        const std::uint64_t length = Texts(event)[i]->size();
        const auto room = arithmetic::RoomForText(start, top, Number(arena.end), caps[i], Less{});
        const auto outcome = arithmetic::Place(room, top, length, Less{});
        pointers[i] = {0xFFFFFFFF, 0xFFFFFFFF};
        if (Accepts(outcome)) {
            pointers[i] = {static_cast<std::uint32_t>(top - start), static_cast<std::uint32_t>(length)};
            allPlaced = allPlaced && pointers[i].offset != 0xFFFFFFFF;
            top = outcome.top;
            ++placed;
        } else {
            allPlaced = false;
        }
    }

    auto status = Status::Ok;
    const WireEvent wire = ToZt(arena, event, status);
    EXPECT_EQ(Number(arena.top), top);
    EXPECT_EQ(status, allPlaced ? Status::Ok : Status::Failed);
    for (std::size_t i = 0; i < textCount; ++i) {
        EXPECT_EQ(Texts(wire)[i]->offset, pointers[i].offset) << "text " << i;
        EXPECT_EQ(Texts(wire)[i]->size, pointers[i].size) << "text " << i;
    }
    return placed;
}

TEST(Library, PlacesEmptyTextsAsProvedAtAnyAddress)
{
    const VynEvent empty;
    std::size_t placed = 0;
    for (int i = 0; i < inputs / 10 && !HasFailure(); ++i) {
        zt_arena arena = AnyArena();
        placed += ExpectPlacedAsProved(arena, empty);
    }
    EXPECT_GT(placed, std::size_t{inputs} / 10);
}

TEST(Library, PlacesTextsAsProved)
{
    std::vector<std::uint8_t> memory(8192);
    std::size_t placed = 0;
    for (int i = 0; i < inputs / 100 && !HasFailure(); ++i) {
        VynEvent event;
        for (std::size_t text = 0; text < textCount; ++text) {
            const std::uint64_t near = generator() % 2 == 0 ? caps[text] : 2;
            Texts(event)[text]->assign(near + generator() % 5 - 2, 'x');
        }
        std::uint8_t* const start = memory.data() + generator() % 16;
        std::uint8_t* const top = start + generator() % 64;
        zt_arena arena{start, top, top + generator() % 8000};
        placed += ExpectPlacedAsProved(arena, event);
    }
    EXPECT_GT(placed, std::size_t{inputs} / 100);
}

TEST(Library, FetchesAsProved)
{
    std::size_t accepted = 0;
    std::array<std::size_t, 3> refusals{};
    for (int i = 0; i < inputs / 10; ++i) {
        const zt_arena arena = AnyArena();
        zt_ptr_t pointer{static_cast<std::uint32_t>(HalfEdge()), static_cast<std::uint32_t>(HalfEdge())};
        const auto fetch = [&] {
            const std::uint64_t start = Number(arena.start);
            const std::uint64_t top = Number(arena.top);
            return arithmetic::Fetch<std::uint64_t>(start, top, arithmetic::Used(start, top), pointer.offset,
                                                    pointer.size, Less{});
        };
        // Made-up memory cannot be read: what would be accepted is fetched without a byte.
        if (Accepts(fetch())) pointer.size = 0;
        const auto outcome = fetch();

        WireEvent wire{};
        for (zt_ptr_t* const text : Texts(wire))
            *text = pointer;
        auto status = Status::Ok;
        FromZt(arena, wire, status);
        ASSERT_EQ(status, Accepts(outcome) ? Status::Ok : Status::Failed) << "input " << i;

        if (Accepts(outcome)) ++accepted;
        for (std::size_t test = 0; test < refusals.size(); ++test)
            if (outcome.refusals[test]) {
                ++refusals[test];
                break;
            }
    }
    EXPECT_GT(accepted, std::size_t{inputs} / 1000);
    for (std::size_t test = 0; test < refusals.size(); ++test)
        EXPECT_GT(refusals[test], 0u) << "test " << test << " refused nothing";
}

} // namespace
