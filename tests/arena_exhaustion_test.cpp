// Every record's writer in arenas of every size, from none to more than enough, and with each part over its limit: what
// it returns or throws, the top and every byte of the arena are what the model says. So what fitted is there, what did
// not fit left no trace, and nothing outside the arena was touched.
#include "../fuzz/library.h"
#include "../fuzz/model/message.h"
#include "arena.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

class ArenaExhaustion : public testing::TestWithParam<library::Conversions> {
protected:
    const library::Conversions& Record() const { return GetParam(); }
    const model::Layout& Layout() const { return *GetParam().layout; }
    bool IsEvent() const { return &Layout() == &model::vynEvent; }
};

struct Written {
    model::Outcome outcome;
    std::size_t moved; // the top, in bytes
};

// Writes into an arena of `capacity` bytes whose first `top` are in use, and compares with the model.
Written Write(const library::Conversions& record, const model::Value& value, std::size_t capacity, std::size_t start,
              std::size_t top)
{
    const testing::ScopedTrace trace(__FILE__, __LINE__,
                                     "capacity " + std::to_string(capacity) + ", start " + std::to_string(start) +
                                         ", top " + std::to_string(top));
    TestArena arena(capacity, start, top);
    model::Arena modelArena{reinterpret_cast<std::uintptr_t>(arena.Start()), top,
                            std::string(capacity, static_cast<char>(TestArena::stale))};
    model::Value inOrder;
    const model::Outcome outcome = record.write(value, arena.Get(), &inOrder);
    const model::Outcome expected = Write(*record.layout, inOrder, &modelArena);

    EXPECT_EQ(Describe(outcome), Describe(expected));
    EXPECT_TRUE(outcome.failure == expected.failure && outcome.status == expected.status);
    EXPECT_EQ(Bytes(outcome.wire.data(), outcome.wire.size()), Bytes(expected.wire.data(), expected.wire.size()));
    EXPECT_EQ(arena.Contents(), Bytes(modelArena.bytes.data(), modelArena.bytes.size()));
    EXPECT_EQ(arena.Top(), modelArena.top);
    return {outcome, arena.Top() - top};
}

// Nothing present, every text and list empty; what must have an element has one.
model::Value Smallest(const model::Layout& layout)
{
    model::Value value;
    for (const model::Field& field : layout.fields) {
        model::Value member;
        if (field.kind == model::Kind::Nested) member = Smallest(*field.element);
        if (field.kind == model::Kind::Range) member.items = {Smallest(*field.element)};
        if (field.kind == model::Kind::Raw) member.bytes.assign(field.width, '\0');
        if (field.kind == model::Kind::Texts) member.items.resize(field.limit);
        value.items.push_back(member);
    }
    return value;
}

TEST_P(ArenaExhaustion, EachCapacityUntilItFits)
{
    for (const model::Value& value : {model::FullValue(Layout()), Smallest(Layout())}) {
        for (const std::size_t start : {0u, 1u, 4u, 7u, 11u}) {
            for (const std::size_t top : {0u, 3u, 8u}) {
                const std::size_t needed = top + Write(Record(), value, 8192, start, top).moved;

                for (std::size_t capacity = top; capacity <= needed + 1; ++capacity) {
                    const Written written = Write(Record(), value, capacity, start, top);
                    const bool fits = capacity >= needed;
                    if (IsEvent()) {
                        EXPECT_EQ(written.outcome.status, fits) << capacity;
                    } else {
                        EXPECT_EQ(Describe(written.outcome),
                                  fits ? "done" : "mur::ResultCodeException: 0x80000062 (Out of space), :0")
                            << capacity;
                    }
                    if (fits) {
                        EXPECT_EQ(written.moved, needed - top);
                        EXPECT_EQ(Record().arenaSize(value, start + top), needed - top);
                    }
                    if (HasFailure()) return; // the other arenas would say the same
                }
            }
        }
    }
}

// --- limits -----------------------------------------------------------------------------------------------------

// A text or list of a value, and how much of it a writer accepts.
struct Part {
    model::Value* value;
    const model::Field* field;
    std::uint64_t limit;
};

std::vector<Part> PartsOf(const model::Layout& layout, model::Value& value)
{
    std::vector<Part> parts;
    const auto add = [&](const model::Layout& inner, model::Value& from) {
        for (const Part& part : PartsOf(inner, from))
            parts.push_back(part);
    };
    static const model::Field text = model::Text("text", 0, 128);
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const model::Field& field = layout.fields[i];
        model::Value& member = value.items[i];
        switch (field.kind) {
        case model::Kind::Number:
        case model::Kind::Severity:
        case model::Kind::Flag:
        case model::Kind::Raw:
        case model::Kind::NotCarried:
            break;
        case model::Kind::Nested:
            add(*field.element, member);
            break;
        case model::Kind::Optional:
            for (model::Value& element : member.items)
                add(*field.element, element);
            break;
        case model::Kind::Text:
        case model::Kind::Blob:
            parts.push_back({&member, &field, field.limit});
            break;
        case model::Kind::List:
        case model::Kind::Range:
        case model::Kind::Entries:
            parts.push_back({&member, &field, field.limit});
            for (model::Value& element : member.items)
                add(*field.element, element);
            break;
        case model::Kind::Set:
            parts.push_back({&member, &field, field.limit});
            for (model::Value& element : member.items)
                parts.push_back({&element, &text, 128});
            break;
        case model::Kind::Texts:
            for (model::Value& element : member.items)
                parts.push_back({&element, &text, 512});
            break;
        }
    }
    return parts;
}

void Resize(const Part& part, std::size_t size)
{
    if (part.field->kind == model::Kind::Text || part.field->kind == model::Kind::Blob) {
        part.value->bytes.resize(size, 'x');
        return;
    }
    // Equal elements of a set or entries of a map would collapse.
    while (part.value->items.size() < size) {
        model::Value element = part.value->items.back();
        if (part.field->kind == model::Kind::Set) element.bytes = "set" + std::to_string(part.value->items.size());
        if (part.field->kind == model::Kind::Entries) element.items[0].number = part.value->items.size() + 100;
        part.value->items.push_back(element);
    }
}

TEST_P(ArenaExhaustion, EachPartAtItsLimitAndOverIt)
{
    model::Value full = model::FullValue(Layout());
    const std::size_t count = PartsOf(Layout(), full).size();
    for (std::size_t i = 0; i < count; ++i) {
        for (const std::size_t over : {0u, 1u}) {
            model::Value value = full;
            const Part part = PartsOf(Layout(), value)[i];
            if (part.limit > 65536) continue; // no list gets there
            Resize(part, part.limit + over);
            const testing::ScopedTrace trace(__FILE__, __LINE__, "part " + std::to_string(i) + ", " + part.field->name);

            const Written written = Write(Record(), value, 100000, 3, 2);

            const bool failed = IsEvent() ? !written.outcome.status : written.outcome.failure.has_value();
            EXPECT_EQ(failed, over == 1) << Describe(written.outcome);
            if (HasFailure()) return;
        }
    }
}

// There, rounding up wraps. No memory backs this arena: a writer that takes any of it ends the test.
TEST_P(ArenaExhaustion, FullArenaAtTheEndOfTheAddressSpace)
{
    const model::Value value = model::FullValue(Layout());
    for (std::uintptr_t behind = 1; behind <= 9; ++behind) {
        const std::size_t capacity = 0x1000 - behind;
        const std::uintptr_t start = 0 - std::uintptr_t{0x1000};
        auto* const end = reinterpret_cast<std::uint8_t*>(start + capacity);
        zt_arena arena{reinterpret_cast<std::uint8_t*>(start), end, end};
        model::Arena modelArena{start, capacity, std::string(capacity, '\0')};
        model::Value inOrder;
        const model::Outcome outcome = Record().write(value, &arena, &inOrder);
        EXPECT_EQ(Describe(outcome), Describe(Write(Layout(), inOrder, &modelArena))) << behind;
        EXPECT_EQ(arena.top, end);
    }
}

TEST_P(ArenaExhaustion, NoArenaAndOneWithoutAddresses)
{
    for (const model::Value& value : {model::FullValue(Layout()), Smallest(Layout())}) {
        zt_arena unset{};
        model::Arena modelUnset;
        model::Value inOrder;
        const model::Outcome outcome = Record().write(value, &unset, &inOrder);
        const model::Outcome expected = Write(Layout(), inOrder, &modelUnset);
        EXPECT_EQ(Describe(outcome), Describe(expected));
        EXPECT_EQ(outcome.wire, expected.wire);
        EXPECT_EQ(unset.top, nullptr);
        if (IsEvent()) continue; // takes its arena by reference
        const model::Outcome without = Record().write(value, nullptr, &inOrder);
        const model::Outcome expectedWithout = Write(Layout(), inOrder, nullptr);
        EXPECT_EQ(Describe(without), Describe(expectedWithout));
        EXPECT_EQ(without.wire, expectedWithout.wire);
    }
}

INSTANTIATE_TEST_SUITE_P(Records, ArenaExhaustion, testing::ValuesIn(library::Records()),
                         testing::PrintToStringParamName());

} // namespace
