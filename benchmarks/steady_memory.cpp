// Memory whose cost depends on nothing but the sizes asked for. The C library's own chooses its copies by the
// processor, and its heap by everything that went before; their counts would be another machine's noise. The program's
// definitions take the place of the C library's for the library under test as well.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Freed memory, one list for each power of two. In front of a block lies which list it belongs to.
struct Block {
    Block* next;
    std::size_t list;
};
static_assert(sizeof(Block) == 16);

Block* freed[64];

void* Take(std::size_t size)
{
    const auto list = static_cast<std::size_t>(64 - __builtin_clzll(size + sizeof(Block)));
    Block* block = freed[list];
    if (block == nullptr) {
        block = static_cast<Block*>(std::aligned_alloc(16, std::size_t{16} << list));
        if (block == nullptr) throw std::bad_alloc();
        block->list = list;
    } else {
        freed[list] = block->next;
    }
    return block + 1;
}

void Give(void* memory)
{
    if (memory == nullptr) return;
    Block* const block = static_cast<Block*>(memory) - 1;
    block->next = freed[block->list];
    freed[block->list] = block;
}

template <typename Word>
void CopyWords(unsigned char*& to, const unsigned char*& from, std::size_t& size)
{
    for (; size >= sizeof(Word); size -= sizeof(Word), to += sizeof(Word), from += sizeof(Word)) {
        Word word;
        __builtin_memcpy(&word, from, sizeof(word));
        __builtin_memcpy(to, &word, sizeof(word));
    }
}

} // namespace

void* operator new(std::size_t size)
{
    return Take(size);
}
void operator delete(void* memory) noexcept
{
    Give(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    Give(memory);
}

extern "C" {

void* memcpy(void* to, const void* from, std::size_t size)
{
    auto* out = static_cast<unsigned char*>(to);
    const auto* in = static_cast<const unsigned char*>(from);
    CopyWords<std::uint64_t>(out, in, size);
    CopyWords<std::uint8_t>(out, in, size);
    return to;
}

void* memmove(void* to, const void* from, std::size_t size)
{
    if (reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from) >= size)
        return memcpy(to, from, size);
    auto* const out = static_cast<unsigned char*>(to);
    const auto* const in = static_cast<const unsigned char*>(from);
    for (; size > 0; --size)
        out[size - 1] = in[size - 1];
    return to;
}

void* memset(void* to, int value, std::size_t size)
{
    auto* out = static_cast<unsigned char*>(to);
    const std::uint64_t word = 0x0101010101010101U * static_cast<unsigned char>(value);
    for (; size >= sizeof(word); size -= sizeof(word), out += sizeof(word))
        __builtin_memcpy(out, &word, sizeof(word));
    for (; size > 0; --size)
        *out++ = static_cast<unsigned char>(value);
    return to;
}

// What a hardened library calls where it knows the room at `to`.
void* __memset_chk(void* to, int value, std::size_t size, std::size_t room)
{
    if (size > room) std::abort();
    return memset(to, value, size);
}

int memcmp(const void* left, const void* right, std::size_t size)
{
    const auto* a = static_cast<const unsigned char*>(left);
    const auto* b = static_cast<const unsigned char*>(right);
    for (; size > 0; --size, ++a, ++b)
        if (*a != *b) return *a < *b ? -1 : 1;
    return 0;
}

} // extern "C"
