// What a hostile message can make a reader ask for: elements that all point at the same bytes, sizes that are claimed,
// names of one hash. The rules that allow it are the format's; SECURITY.md tells callers what it costs, and this test
// holds its figures to what is measured here.
#include <common/verify.h>
#include <common/vyn_connector_common.h>

#include "replaced_new.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <new>
#include <sstream>

namespace {

struct Asked {
    std::size_t bytes = 0;
    std::size_t largest = 0;
    std::size_t limit = std::numeric_limits<std::size_t>::max(); // a single request above it fails
};
Asked asked;

} // namespace

void* replaced::Allocate(std::size_t size)
{
    asked.bytes += size;
    asked.largest = std::max(asked.largest, size);
    return size > asked.limit ? nullptr : FromHeap(size);
}

void replaced::Free(void* memory) noexcept
{
    std::free(memory);
}

namespace {

using namespace vyn_connector;
using common::CastFromZt;

// An arena whose bytes are one array of `element`, as often as it fits. Everything in it may be pointed at as well.
template <typename Element>
class ArenaOf {
public:
    ArenaOf(std::size_t size, const Element& element) : bytes(size)
    {
        for (std::size_t at = 0; at + sizeof(Element) <= size; at += sizeof(Element))
            std::memcpy(&bytes[at], &element, sizeof(Element));
    }
    zt_arena Get() { return {bytes.data(), bytes.data() + bytes.size(), bytes.data() + bytes.size()}; }
    zt_ptr_t Array() const { return {0, static_cast<std::uint32_t>(bytes.size() / sizeof(Element) * sizeof(Element))}; }

    std::vector<std::uint8_t> bytes;
};

// The bytes that reading asks for, for each byte of the arena: measured, or, where that takes a gigabyte, foretold.
template <typename Record>
double PerByte(const common::WireOf<Record>& wire, const zt_arena& arena)
{
    const auto size = static_cast<std::size_t>(arena.end - arena.start);
    const double foretold = static_cast<double>(common::DecodedSize<Record>(wire, &arena)) / static_cast<double>(size);
    if (size > 16384) return foretold;
    asked = {};
    common::Conversion<Record>::Read(wire, &arena);
    const double measured = static_cast<double>(asked.bytes) / static_cast<double>(size);
    EXPECT_NEAR(foretold, measured, measured / 10);
    return measured;
}

double OfParameters(std::uint32_t size)
{
    ArenaOf<tq_vyn_connector_VynTypes_VynParam> arena(size, {{0, size}, {0, size}});
    const zt_arena received = arena.Get();
    return PerByte<std::vector<common::RawVynParam>>({arena.Array()}, received);
}

double OfUpdateConfigurations(std::uint32_t size)
{
    ArenaOf<tq_vyn_connector_VynTypes_ProductUpdCfg> arena(size, {{0, size}, {0, size}});
    const zt_arena received = arena.Get();
    return PerByte<ProductUpdCfgArray>({arena.Array()}, received);
}

double OfHsdpStatuses(std::uint32_t size)
{
    ArenaOf<tq_vyn_connector_VynTypes_ProductHsdpStatus> arena(size, {{0, size}, {0, size}});
    const zt_arena received = arena.Get();
    return PerByte<ProductHsdpInfo>({0, arena.Array()}, received);
}

// The optional text's slot is the pointer to the first text of the first certificate.
double OfCertificates(std::uint32_t size)
{
    constexpr std::uint32_t slot = offsetof(tq_vyn_connector_VynTypes_ClientCertInfo, field2);
    ArenaOf<tq_vyn_connector_VynTypes_ClientCertInfo> arena(size, {0, {0, size}, {0, size}, {slot, 8}});
    const zt_arena received = arena.Get();
    return PerByte<std::vector<ClientCertInfo>>({arena.Array()}, received);
}

// A set keeps equal names once; these differ in their lengths.
double OfEventTypes(std::uint32_t size)
{
    ArenaOf<zt_ptr_t> arena(size, {0, 0});
    for (std::uint32_t i = 0; i < size / 8; ++i) {
        const zt_ptr_t name{0, size - i};
        std::memcpy(&arena.bytes[i * 8], &name, 8);
    }
    const zt_arena received = arena.Get();
    return PerByte<VynSubscription>({0, arena.Array()}, received);
}

double OfAnEvent(std::uint32_t size)
{
    ArenaOf<char> arena(size, 'x');
    const zt_arena received = arena.Get();
    const zt_ptr_t all{0, size};
    const tq_vyn_connector_VynTypes_VynEvent wire{all, 0,   all, all, all,
                                                  all, all, 0,   0,   {all, all, all, all, all, all, all, all, all}};
    return PerByte<VynEvent>(wire, received);
}

double OfIdentifiers(std::uint32_t size)
{
    ArenaOf<tq_vyn_connector_VynTypes_VynUpdateIdentifier> arena(size, {});
    const zt_arena received = arena.Get();
    return PerByte<VynUpdateIdentifiers>({arena.Array()}, received);
}

// The rows of SECURITY.md whose first column is a name and whose others are figures: | name | n | n | n |
std::map<std::string, std::vector<double>> Figures()
{
    std::map<std::string, std::vector<double>> figures;
    std::ifstream document("../SECURITY.md");
    for (std::string line; std::getline(document, line);) {
        std::istringstream cells(line);
        std::string cell;
        std::vector<std::string> row;
        while (std::getline(cells, cell, '|'))
            row.push_back(cell);
        if (row.size() != 5) continue;
        std::vector<double> numbers(3);
        const auto isNumber = [&](std::size_t i) { return bool(std::istringstream(row[i + 2]) >> numbers[i]); };
        if (!isNumber(0) || !isNumber(1) || !isNumber(2)) continue;
        const std::size_t first = row[1].find_first_not_of(' ');
        const std::size_t last = row[1].find_last_not_of(' ');
        figures[row[1].substr(first, last - first + 1)] = numbers;
    }
    return figures;
}

TEST(Amplification, IsWhatTheDocumentSays)
{
    const std::map<std::string, double (*)(std::uint32_t)> readers = {
        {"connector parameters", OfParameters}, {"update configurations", OfUpdateConfigurations},
        {"HSDP statuses", OfHsdpStatuses},      {"client certificates", OfCertificates},
        {"event types", OfEventTypes},          {"event", OfAnEvent},
        {"update identifiers", OfIdentifiers},
    };
    const auto figures = Figures();
    EXPECT_EQ(figures.size(), readers.size());
    for (const auto& [name, measure] : readers) {
        SCOPED_TRACE(name);
        ASSERT_EQ(figures.count(name), 1u);
        const std::uint32_t sizes[] = {4096, 16384, 131072};
        for (std::size_t i = 0; i < std::size(sizes); ++i) {
            const double now = measure(sizes[i]);
            EXPECT_NEAR(figures.at(name)[i], now, now / 100) << sizes[i];
        }
    }
}

TEST(Amplification, OfIdentifiersIsSixteenTimesWhatThePointerClaimsBeforeItIsTested)
{
    std::uint8_t bytes[16] = {};
    const zt_arena arena{bytes, bytes + 16, bytes + 16};
    asked = {};
    asked.limit = std::size_t{1} << 30;
    EXPECT_THROW(CastFromZt(tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer{{0, 0xFFFFFFF0}}, &arena),
                 std::bad_alloc);
    EXPECT_EQ(asked.largest, std::size_t{16} * 0xFFFFFFF0);
    asked = {};
}

// Sixteen bytes whose hash is that of every other result: the standard library's hash of a string takes eight bytes at
// a time, and the second eight undo what the first have done.
std::string NameOfOneHash(std::uint64_t number)
{
    constexpr std::uint64_t factor = 0xC6A4A7935BD1E995;
    constexpr std::uint64_t inverse = 0x5F7A0EA7E59B19BD;
    static_assert(factor * inverse == 1);
    const auto mix = [](std::uint64_t word) {
        word *= factor;
        word ^= word >> 47;
        return word * factor;
    };
    const auto unmix = [](std::uint64_t word) {
        word *= inverse;
        word ^= word >> 47;
        return word * inverse;
    };
    const std::uint64_t seed = 0xC70F6907u ^ 16 * factor;
    const std::uint64_t state = (seed ^ mix(number)) * factor;
    const std::uint64_t words[] = {number, unmix(state)};
    std::string name(16, '\0');
    std::memcpy(name.data(), words, 16);
    return name;
}

TEST(Amplification, OfNamesWithOneHashIsThatEachIsComparedWithAllBefore)
{
    constexpr std::size_t count = 2000;
    std::vector<std::uint8_t> bytes(count * 24);
    for (std::uint32_t i = 0; i < count; ++i) {
        const zt_ptr_t name{static_cast<std::uint32_t>(count * 8 + i * 16), 16};
        std::memcpy(&bytes[i * 8], &name, 8);
        std::memcpy(&bytes[name.offset], NameOfOneHash(i).data(), 16);
    }
    const zt_arena arena{bytes.data(), bytes.data() + bytes.size(), bytes.data() + bytes.size()};

    const auto names = CastFromZt(tq_vyn_connector_VynTypes_VynSubscription{0, {0, count * 8}}, &arena).second;

    EXPECT_EQ(names.size(), count);
    EXPECT_EQ(names.bucket_size(names.bucket(NameOfOneHash(0))), count);
}

} // namespace
