// Connector parameters: named raw values, and the list of them. The name comes first on the wire, the value first in
// the record.
#include <common/connector_parameters.h>

#include "arena.h"
#include "errors.h"
#include "record_test.h"

#include <new>
#include <type_traits>

namespace {

using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using vyn_connector::common::RawVynParam;
using Params = std::vector<RawVynParam>;
using WireParam = tq_vyn_connector_VynTypes_VynParam;
using WireParams = tq_vyn_connector_VynTypes_VynParams;

PIN_WIRE(WireParam, 16, 4);
PIN_WIRE_FIELD(WireParam, 0, zt_ptr_t, name);
PIN_WIRE_FIELD(WireParam, 8, zt_ptr_t, value);
PIN_MEMBER(RawVynParam, std::vector<std::uint8_t>, value);
PIN_MEMBER(RawVynParam, std::string, name);
PIN_WIRE(WireParams, 8, 4);
PIN_WIRE_FIELD(WireParams, 0, zt_ptr_t, params);

static_assert(IsDeclared<WireParam(const RawVynParam&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<RawVynParam(const WireParam&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireParams(const Params&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<Params(const WireParams&, const zt_arena*)>(&CastFromZt));

const RawVynParam speed{{0x00, 0xFF, 0x80}, "speed"};
const layout::Message speedMessage("[name] [value]",
                                   {{"name", layout::Text, "'speed'"}, {"value", layout::Blob, "00 FF 80"}});

const Params threeParams{{{1, 2, 3}, "a"}, {{}, "empty"}, {{4}, ""}};
const layout::Message threeParamsMessage("[params]", {{"params", layout::List(16, 4),
                                                       "[name 0] [value 0] [name 1] [value 1] [name 2] [value 2]"},
                                                      {"name 0", layout::Text, "'a'"},
                                                      {"value 0", layout::Blob, "01 02 03"},
                                                      {"name 1", layout::Text, "'empty'"},
                                                      {"value 1", layout::Blob, ""},
                                                      {"name 2", layout::Text, ""},
                                                      {"value 2", layout::Blob, "04"}});

std::vector<std::uint8_t> Blob(std::size_t size)
{
    return std::vector<std::uint8_t>(size, 'x');
}

// Every byte from 0 to 255 once, in this order.
std::string EveryByteAsNotation()
{
    const char* const digits = "0123456789ABCDEF";
    std::string notation;
    for (std::size_t byte = 0; byte < 256; ++byte)
        notation += {digits[byte / 16], digits[byte % 16], ' '};
    return notation;
}
std::vector<std::uint8_t> EveryByte()
{
    std::vector<std::uint8_t> bytes;
    for (unsigned byte = 0; byte < 256; ++byte)
        bytes.push_back(static_cast<std::uint8_t>(byte));
    return bytes;
}

// --- One parameter ---

TEST(RawVynParam, IsWrittenWithItsNameBeforeItsValue)
{
    TestArena arena(16, 0, 2);

    const WireParam wire = CastToZt(speed, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("02 00 00 00 05 00 00 00  07 00 00 00 03 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'speed' 00 FF 80 A5*6"));
    EXPECT_EQ(arena.Top(), 10u);
}

TEST(RawVynParam, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(speed, speedMessage);
    ExpectReads(speed, speedMessage);
}

TEST(RawVynParam, RunsOutOfSpaceInTheNameAndInTheValue)
{
    ExpectNeedsAllItsSpace(speed, speedMessage);
}

TEST(RawVynParam, HasTwoPointersOfSizeZeroWhenItIsEmpty)
{
    TestArena arena(8, 0, 3);

    const WireParam wire = CastToZt(RawVynParam{}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("03 00*7 03 00*7"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_TRUE(CastFromZt(wire, arena.Get()) == RawVynParam{});
}

TEST(RawVynParam, CarriesEveryByteInNameAndValue)
{
    const std::vector<std::uint8_t> bytes = EveryByte();
    const std::string half(bytes.begin(), bytes.begin() + 128);
    const std::string otherHalf(bytes.begin() + 128, bytes.end());

    for (const std::string& name : {half, otherHalf}) {
        const RawVynParam param{bytes, name};
        TestArena arena(384);
        const WireParam wire = CastToZt(param, arena.Get());
        EXPECT_EQ(arena.Contents(), Bytes(name.data(), name.size()) + Bytes(EveryByteAsNotation()));

        const RawVynParam read = CastFromZt(wire, arena.Get());
        EXPECT_EQ(read.name, name);
        EXPECT_EQ(read.value, bytes);
    }
}

TEST(RawVynParam, TakesOneHundredAndTwentyEightBytesOfName)
{
    ExpectLimit(speedMessage, "name", 128, [](std::size_t size) {
        return RawVynParam{speed.value, std::string(size, 'x')};
    });
}

TEST(RawVynParam, TakesSixtyFourKibibytesOfValue)
{
    TestArena arena(65550, 0, 1);

    const WireParam wire = CastToZt(RawVynParam{Blob(65536), "n"}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("01 00 00 00 01 00 00 00  02 00 00 00 00 00 01 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'n' 'x'*65536 A5*12"));
    EXPECT_EQ(arena.Top(), 65538u);
    EXPECT_EQ(CastFromZt(wire, arena.Get()).value, Blob(65536));
}

TEST(RawVynParam, RefusesALongerValueWhenTheNameHasBeenPlaced)
{
    TestArena arena(65550, 0, 1);

    ExpectOverLimit([&] { CastToZt(RawVynParam{Blob(65537), "n"}, arena.Get()); }, blobCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5 'n' A5*65548"));
    EXPECT_EQ(arena.Top(), 2u);
}

TEST(RawVynParam, RefusesItsNameBeforeItsValue)
{
    TestArena arena(16);

    ExpectOverLimit([&] { CastToZt(RawVynParam{Blob(65537), std::string(129, 'n')}, arena.Get()); }, stringCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
    EXPECT_EQ(arena.Top(), 0u);
}

// On writing it is the name that meets the missing arena, on reading the value.
TEST(RawVynParam, RefusesANullArenaBeforeAnyLength)
{
    ExpectInvalidArgument([] { CastToZt(RawVynParam{{}, std::string(129, 'n')}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireParam{}, nullptr); }, blobCodec, 32);
}

TEST(RawVynParam, RaisesTheValuesErrorWhereBothPointersAreBad)
{
    ExpectRefusesBadPointers<RawVynParam>(speedMessage, {"value", "name"});
}

TEST(RawVynParam, IsReadWhenItIsLargerThanMayBeWritten)
{
    ExpectReads(RawVynParam{Blob(300), std::string(129, 'n')},
                speedMessage.With("name", "'n'*129").With("value", "'x'*300"));

    TestArena arena(65537);
    arena.Put(0, "'x'*65537");
    EXPECT_EQ(CastFromZt(WireParam{{0, 0}, {0, 65537}}, arena.Get()).value, Blob(65537));
}

TEST(RawVynParam, IsUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        speed, [](RawVynParam& param) { param.value.pop_back(); }, [](RawVynParam& param) { param.name += 'y'; });
}

TEST(RawVynParam, DeclaresItsValueFirst)
{
    const RawVynParam param;
    const auto& [value, name] = param;

    EXPECT_EQ(AddressesOf(value, name), AddressesOf(param.value, param.name));
}

// --- The list ---

TEST(VynParams, AreWrittenAsAnArrayBeforeEveryNameAndValue)
{
    TestArena arena(64, 0, 1);

    const WireParams wire = CastToZt(threeParams, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("04 00 00 00 30 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 "
                                      "34 00 00 00 01 00 00 00  35 00 00 00 03 00 00 00"
                                      "38 00 00 00 05 00 00 00  3D 00 00 00 00 00 00 00"
                                      "3D 00 00 00 00 00 00 00  3D 00 00 00 01 00 00 00"
                                      "'a' 01 02 03 'empty' 04 A5*2"));
    EXPECT_EQ(arena.Top(), 62u);
}

TEST(VynParams, AreWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(threeParams, threeParamsMessage);
    ExpectReads(threeParams, threeParamsMessage);
}

TEST(VynParams, RunOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(threeParams, threeParamsMessage);
}

TEST(VynParams, MayBeNone)
{
    TestArena arena(8, 0, 5);

    const WireParams wire = CastToZt(Params{}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("08 00 00 00 00 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*3"));
    EXPECT_EQ(CastFromZt(wire, arena.Get()).size(), 0u);
    ExpectWrites(Params{}, layout::Message("[params]", {{"params", layout::List(16, 4), ""}}));
}

TEST(VynParams, KeepTheirOrderAndDuplicateNames)
{
    const Params params{{{1}, "b"}, {{2}, "a"}, {{1}, "b"}, {{3}, "a"}};
    TestArena arena(128);

    const Params read = CastFromZt(CastToZt(params, arena.Get()), arena.Get());

    ASSERT_EQ(read.size(), 4u);
    EXPECT_TRUE(read == params);
    EXPECT_EQ(read[2].name, "b");
    EXPECT_EQ(read[3].value, std::vector<std::uint8_t>{3});
}

TEST(VynParams, RefuseTheNameOfALaterParameterWhenTheEarlierHaveBeenPlaced)
{
    Params params = threeParams;
    params[2].name.assign(129, 'x');
    ExpectTooLarge(params, threeParamsMessage.With("name 2", "'x'*129"), "name 2");

    params[2].name = "";
    params[1].value = Blob(65537);
    TestArena arena(66000);
    ExpectOverLimit([&] { CastToZt(params, arena.Get()); }, blobCodec);
    EXPECT_EQ(arena.Used(), Bytes("30 00*3 01 00*3 31 00*3 03 00*3  00*32  'a' 01 02 03 'empty'"));
}

// A list that says it has `count` elements. There is no memory behind them, so nothing but its size may be asked for,
// and it is never destroyed; that many elements would take a hundred gigabytes.
class ListOfSize {
public:
    explicit ListOfSize(std::size_t count)
    {
        // Begin, end and end of storage, as the standard libraries have it.
        const std::uintptr_t begin = 4096;
        const std::uintptr_t end = begin + count * sizeof(RawVynParam);
        const std::uintptr_t representation[] = {begin, end, end};
        static_assert(sizeof(Params) == sizeof(representation));
        std::memcpy(static_cast<void*>(list), representation, sizeof(representation));
    }
    ListOfSize(const ListOfSize&) = delete;
    ListOfSize& operator=(const ListOfSize&) = delete;

    const Params& Get() const { return *list; }

private:
    alignas(Params) unsigned char storage[sizeof(Params)];
    Params* list = new (storage) Params;
};

TEST(VynParams, MayBeAsManyAsASignedThirtyTwoBitNumberCounts)
{
    const ListOfSize most(2147483647);
    const ListOfSize tooMany(2147483648);
    ASSERT_EQ(most.Get().size(), 2147483647u);
    ASSERT_EQ(tooMany.Get().size(), 2147483648u);
    TestArena arena(64, 0, 1);

    // The count is accepted, and so it is the arena that cannot take them.
    ExpectOutOfSpace([&] { CastToZt(most.Get(), arena.Get()); });
    ExpectOverLimit([&] { CastToZt(tooMany.Get(), arena.Get()); }, vectorCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5*64"));
    EXPECT_EQ(arena.Top(), 1u);
}

TEST(VynParams, RefuseANullArena)
{
    ExpectInvalidArgument([] { CastToZt(threeParams, nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([] { CastToZt(ListOfSize(2147483648).Get(), nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([] { CastFromZt(WireParams{}, nullptr); }, vectorCodec, 39);
}

TEST(VynParams, RefuseBadPointersValueBeforeNameAndElementByElement)
{
    ExpectRefusesBadPointers<Params>(threeParamsMessage,
                                     {"params", "value 0", "name 0", "value 1", "name 1", "value 2", "name 2"});
}

TEST(VynParams, ShareTheListCodecsWithOtherConversions)
{
    using vyn_connector::common::VectorToZt;
    using vyn_connector::common::ZtToVector;
    WireParam (*const write)(const RawVynParam&, zt_arena*) = &CastToZt;
    RawVynParam (*const read)(const WireParam&, const zt_arena*) = &CastFromZt;
    TestArena arena(64);
    zt_ptr_t list{};

    VectorToZt<2147483647, WireParam>(threeParams, &list, arena.Get(), write);

    EXPECT_EQ(list, (zt_ptr_t{0, 48}));
    EXPECT_TRUE((ZtToVector<WireParam, RawVynParam>(&list, arena.Get(), read)) == threeParams);
}

} // namespace
