// Mutates the wire pointers of a message, its severities and its top, whose telling values libFuzzer by itself would
// rarely hit upon. The pointers lie where the layouts say, in the structure and, found by following those, in the
// arena. Every other time libFuzzer does what it does best.
#include "message_input.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed);

namespace {

class Mutator {
public:
    explicit Mutator(unsigned seed) : random(seed) {}

    // `at` of the whole input.
    void TurnPointer(std::uint8_t* data, std::size_t size)
    {
        const MessageInput input = ParseMessageInput(data, size);
        const std::vector<model::PointerAt> pointers = PointersOf(*input.layout, input.message);
        if (pointers.empty()) return;
        const model::PointerAt& pointer = pointers[Below(pointers.size())];
        const std::size_t arenaAt = messageInputHeader + input.layout->size;
        const std::size_t at = pointer.inArena ? arenaAt + pointer.at : messageInputHeader + pointer.at;
        if (at + 8 > size) return;

        const std::uint64_t capacity = input.message.arena.bytes.size();
        const std::uint64_t element = pointer.elementSize;
        std::uint64_t offset = Below(capacity + 1);
        std::uint64_t length = element * Below((capacity - offset) / element + 1);
        switch (Below(12)) {
        case 0: // several elements, if they fit
            offset = Below(capacity / 2 + 1);
            length = element * std::min<std::uint64_t>(Below(4), (capacity - offset) / element);
            break;
        case 1: // as far as the end
            length = capacity - offset;
            break;
        case 2: // a byte too far
            length = capacity - offset + 1;
            break;
        case 3: // not whole
            length += 1 + Below(element);
            break;
        case 4: // wrapping
            offset = 0xFFFFFFFF - Below(16);
            break;
        case 5:
            length = 0xFFFFFFFF - Below(16);
            break;
        case 6: // nothing, at the end or behind it
            offset = capacity + Below(2);
            length = 0;
            break;
        case 7: // absent
            offset = 0;
            length = 0;
            break;
        case 8: { // the same as another
            const model::PointerAt& other = pointers[Below(pointers.size())];
            const model::WirePointer same =
                model::GetPointer(other.inArena ? input.message.arena.bytes : input.message.wire, other.at);
            offset = same.offset;
            length = same.size;
            break;
        }
        default: // inside the arena, whole elements
            break;
        }
        std::string bytes(8, '\0');
        model::PutPointer(bytes, 0, offset, length);
        std::memcpy(data + at, bytes.data(), bytes.size());
    }

    // One of the severities, or the number behind them.
    void TurnSeverity(std::uint8_t* data, std::size_t size)
    {
        for (const model::Field& field : ParseMessageInput(data, size).layout->fields) {
            const std::size_t at = messageInputHeader + field.offset;
            if (field.kind != model::Kind::Severity || at + field.width > size) continue;
            std::memset(data + at, 0, field.width);
            data[at] = static_cast<std::uint8_t>(Below(5));
        }
    }

    // The top anywhere in the arena.
    void TurnTop(std::uint8_t* data, std::size_t size)
    {
        const std::size_t top = Below(ParseMessageInput(data, size).message.arena.bytes.size() + 1);
        if (size < messageInputHeader) return;
        data[2] = static_cast<std::uint8_t>(top & 0xFF);
        data[3] = static_cast<std::uint8_t>(top >> 8);
    }

    std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random); }

private:
    std::minstd_rand random;
};

} // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    Mutator mutator(seed);
    if (mutator.Below(2) == 0) return LLVMFuzzerMutate(data, size, maxSize);
    for (std::size_t turns = 1 + mutator.Below(3); turns > 0; --turns)
        mutator.TurnPointer(data, size);
    if (mutator.Below(4) == 0) mutator.TurnSeverity(data, size);
    if (mutator.Below(4) == 0) mutator.TurnTop(data, size);
    return size;
}
