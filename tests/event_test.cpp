// Events: the one record whose conversion never throws. What cannot be converted clears the status and leaves the rest
// alone; a string is placed without zeroing its room, an empty one owns a byte, and readers look at the arena's top.
#include <common/event.h>

#include "record_test.h"
#include "replaced_new.h"

#include <sys/mman.h>

#include <cstdlib>
#include <exception>
#include <functional>
#include <unistd.h>

namespace {

using lyr::ipc::arena::conv::FromZt;
using lyr::ipc::arena::conv::Status;
using lyr::ipc::arena::conv::ToZt;
using vyn_connector::VynEvent;
using vyn_connector::VynEventSeverity;
using Wire = tq_vyn_connector_VynTypes_VynEvent;

constexpr std::size_t fourGiB = std::size_t{1} << 32;
constexpr zt_ptr_t invalid{0xFFFFFFFF, 0xFFFFFFFF};
constexpr Status otherSuccess{0xC4}; // any value but 0 means success

// Each byte of such a text would cost the thread sanitizer several of its own.
#if defined(__SANITIZE_THREAD__)
constexpr bool canTouch4GiB = false;
#elif defined(__has_feature)
constexpr bool canTouch4GiB = !__has_feature(thread_sanitizer);
#else
constexpr bool canTouch4GiB = true;
#endif

} // namespace

// --- Memory ---

namespace memory {

bool exhausted = false; // while it is set, nothing can be allocated

// 4 GiB of address space and a little more behind which stand the same 2 MiB over and over: a text of that length can
// be built, read and written without such a machine.
class Repeated {
public:
    static constexpr std::size_t chunk = std::size_t{2} << 20;

    explicit Repeated(std::size_t size) : length((size + chunk - 1) / chunk * chunk)
    {
        const int file = memfd_create("repeated", 0);
        if (file < 0 || ftruncate(file, static_cast<off_t>(chunk)) != 0) return;
        void* const reserved = mmap(nullptr, length, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (reserved == MAP_FAILED) return;
        begin = static_cast<std::uint8_t*>(reserved);
        complete = true;
        for (std::size_t at = 0; at < length; at += chunk)
            complete = complete && mmap(begin + at, chunk, PROT_READ | PROT_WRITE,
                                        MAP_SHARED | MAP_FIXED | MAP_POPULATE, file, 0) != MAP_FAILED;
        close(file);
    }
    ~Repeated()
    {
        if (begin != nullptr) munmap(begin, length);
    }
    Repeated(const Repeated&) = delete;
    Repeated& operator=(const Repeated&) = delete;

    // Null where the system refused it.
    std::uint8_t* Begin() const { return complete ? begin : nullptr; }
    bool Holds(std::size_t size) const { return complete && size <= length; }

private:
    std::size_t length;
    std::uint8_t* begin = nullptr;
    bool complete = false;
};

// While it is set, an allocation of 4 GiB or more is served from it.
Repeated* forHugeAllocations = nullptr;

} // namespace memory

void* replaced::Allocate(std::size_t size)
{
    if (memory::exhausted) return nullptr;
    if (size >= fourGiB && memory::forHugeAllocations != nullptr && memory::forHugeAllocations->Holds(size))
        return memory::forHugeAllocations->Begin();
    return FromHeap(size);
}

void replaced::Free(void* allocated) noexcept
{
    if (memory::forHugeAllocations != nullptr && allocated == memory::forHugeAllocations->Begin()) return;
    std::free(allocated);
}

namespace {

// --- What never changes ---

PIN_WIRE(Wire, 136, 8);
PIN_WIRE_FIELD(Wire, 0, zt_ptr_t, field1);
PIN_WIRE_FIELD(Wire, 8, std::uint32_t, severity);
PIN_WIRE_FIELD(Wire, 12, zt_ptr_t, field3);
PIN_WIRE_FIELD(Wire, 20, zt_ptr_t, field4);
PIN_WIRE_FIELD(Wire, 28, zt_ptr_t, field5);
PIN_WIRE_FIELD(Wire, 36, zt_ptr_t, field6);
PIN_WIRE_FIELD(Wire, 44, zt_ptr_t, field7);
PIN_WIRE_FIELD(Wire, 52, std::uint32_t, field8);
PIN_WIRE_FIELD(Wire, 56, std::uint64_t, field9);
PIN_WIRE_FIELD(Wire, 64, zt_ptr_t[9], stringArray);

PIN_MEMBER(VynEvent, VynEventSeverity, severity);
PIN_MEMBER(VynEvent, std::uint32_t, field8);
PIN_MEMBER(VynEvent, std::uint64_t, field9);
static_assert(std::is_same_v<decltype(VynEvent::stringArray), std::array<std::string, 9>>);

static_assert(std::is_enum_v<Status> && std::is_same_v<std::underlying_type_t<Status>, std::uint8_t>);
static_assert(static_cast<std::uint8_t>(Status::Failed) == 0 && static_cast<std::uint8_t>(Status::Ok) == 1);

static_assert(noexcept(ToZt(std::declval<zt_arena&>(), std::declval<const VynEvent&>(), std::declval<Status&>())));
static_assert(noexcept(FromZt(std::declval<const zt_arena&>(), std::declval<const Wire&>(), std::declval<Status&>())));
static_assert(std::is_same_v<decltype(ToZt(std::declval<zt_arena&>(), VynEvent{}, std::declval<Status&>())), Wire>);
static_assert(
    std::is_same_v<decltype(FromZt(std::declval<const zt_arena&>(), Wire{}, std::declval<Status&>())), VynEvent>);

// --- Helpers ---

// The fifteen strings in wire order, with the cap that each has.
struct Text {
    const char* name;
    std::function<std::string&(VynEvent&)> of;
    std::size_t cap;
};

std::vector<Text> Texts()
{
    std::vector<Text> texts = {
        {"field1", [](VynEvent& event) -> std::string& { return event.field1; }, 128},
        {"field3", [](VynEvent& event) -> std::string& { return event.field3; }, 128},
        {"field4", [](VynEvent& event) -> std::string& { return event.field4; }, 128},
        {"field5", [](VynEvent& event) -> std::string& { return event.field5; }, 64},
        {"field6", [](VynEvent& event) -> std::string& { return event.field6; }, 128},
        {"field7", [](VynEvent& event) -> std::string& { return event.field7; }, 1024},
    };
    for (std::size_t i = 0; i < 9; ++i)
        texts.push_back({"stringArray", [i](VynEvent& event) -> std::string& { return event.stringArray[i]; }, 512});
    return texts;
}

// Their fifteen pointers.
std::vector<zt_ptr_t*> PointersIn(Wire& wire)
{
    std::vector<zt_ptr_t*> pointers = {&wire.field1, &wire.field3, &wire.field4,
                                       &wire.field5, &wire.field6, &wire.field7};
    for (zt_ptr_t& pointer : wire.stringArray)
        pointers.push_back(&pointer);
    return pointers;
}

std::vector<zt_ptr_t> Pointers(Wire wire)
{
    std::vector<zt_ptr_t> pointers;
    for (const zt_ptr_t* pointer : PointersIn(wire))
        pointers.push_back(*pointer);
    return pointers;
}

// The texts of an event, in wire order; those left out are empty.
VynEvent EventOf(const std::vector<std::string>& texts)
{
    VynEvent event;
    for (std::size_t i = 0; i < texts.size(); ++i)
        Texts()[i].of(event) = texts[i];
    return event;
}

Wire WireOf(const Bytes& bytes)
{
    Wire wire;
    EXPECT_EQ(bytes.size(), sizeof(wire));
    std::memcpy(&wire, bytes.data(), sizeof(wire));
    return wire;
}

// A wire event of zeros whose `field1` is this pointer.
Wire WireWithField1(zt_ptr_t field1)
{
    Wire wire{};
    wire.field1 = field1;
    return wire;
}

std::string Times(const char* notation, std::size_t count)
{
    return notation + ("*" + std::to_string(count));
}

// Every field has content of its own, and every text another length.
VynEvent Sample()
{
    VynEvent event;
    event.field1 = "a";
    event.severity = VynEventSeverity::Severity2;
    event.field3 = "bb";
    event.field4 = "ccc";
    event.field5 = "dddd";
    event.field6 = "eeeee";
    event.field7 = "ffffff";
    event.field8 = 0x11223344;
    event.field9 = 0x5566778899AABBCC;
    event.stringArray = {"ggggggg",      "hhhhhhhh",      "iiiiiiiii",      "jjjjjjjjjj",     "kkkkkkkkkkk",
                         "llllllllllll", "mmmmmmmmmmmmm", "nnnnnnnnnnnnnn", "ooooooooooooooo"};
    return event;
}

const Bytes sampleWire("00 00 00 00 01 00 00 00 |" // field1
                       "02 00 00 00 |"             // severity
                       "01 00 00 00 02 00 00 00 |" // field3
                       "03 00 00 00 03 00 00 00 |" // field4
                       "06 00 00 00 04 00 00 00 |" // field5
                       "0A 00 00 00 05 00 00 00 |" // field6
                       "0F 00 00 00 06 00 00 00 |" // field7
                       "44 33 22 11 |"             // field8
                       "CC BB AA 99 88 77 66 55 |" // field9
                       "15 00 00 00 07 00 00 00 |" // stringArray
                       "1C 00 00 00 08 00 00 00 |" //
                       "24 00 00 00 09 00 00 00 |" //
                       "2D 00 00 00 0A 00 00 00 |" //
                       "37 00 00 00 0B 00 00 00 |" //
                       "42 00 00 00 0C 00 00 00 |" //
                       "4E 00 00 00 0D 00 00 00 |" //
                       "5B 00 00 00 0E 00 00 00 |" //
                       "69 00 00 00 0F 00 00 00");

const char* const sampleTexts = "'a' 'bb' 'ccc' 'dddd' 'eeeee' 'ffffff' 'ggggggg' 'hhhhhhhh' 'iiiiiiiii' 'jjjjjjjjjj'"
                                "'kkkkkkkkkkk' 'llllllllllll' 'mmmmmmmmmmmmm' 'nnnnnnnnnnnnnn' 'ooooooooooooooo'";
constexpr std::size_t sampleSize = 120;

// --- Writing ---

TEST(EventWriter, PlacesTheTextsInTheOrderOfTheWire)
{
    TestArena arena(128);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), Sample(), status);

    EXPECT_EQ(BytesOf(wire), sampleWire);
    EXPECT_EQ(arena.Contents(), Bytes(sampleTexts) + Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), sampleSize);
    EXPECT_EQ(status, Status::Ok);
}

TEST(EventWriter, AlignsNothingAndZeroesNothingWhereverStartAndTopLie)
{
    layout::ForEveryPlacement([](layout::Placement placement) {
        TestArena arena(128, placement.start, placement.top);
        Status status = Status::Ok;

        const Wire wire = ToZt(*arena.Get(), Sample(), status);

        Wire expected = WireOf(sampleWire);
        for (zt_ptr_t* pointer : PointersIn(expected))
            pointer->offset += static_cast<std::uint32_t>(placement.top);
        EXPECT_EQ(BytesOf(wire), BytesOf(expected));
        EXPECT_EQ(arena.Contents(),
                  Bytes(Times("A5", placement.top)) + Bytes(sampleTexts) + Bytes(Times("A5", 8 - placement.top)));
        EXPECT_EQ(arena.Top(), placement.top + sampleSize);
        EXPECT_EQ(status, Status::Ok);
    });
}

TEST(EventWriter, GivesEveryEmptyTextAByteWhichItDoesNotWrite)
{
    TestArena arena(16, 0, 1);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), VynEvent{}, status);

    EXPECT_EQ(BytesOf(wire), Bytes("01 00 00 00 00 00 00 00 |" // field1
                                   "00 00 00 00 |"             // severity
                                   "02 00 00 00 00 00 00 00 |" // field3
                                   "03 00 00 00 00 00 00 00 |" // field4
                                   "04 00 00 00 00 00 00 00 |" // field5
                                   "05 00 00 00 00 00 00 00 |" // field6
                                   "06 00 00 00 00 00 00 00 |" // field7
                                   "00 00 00 00 |"             // field8
                                   "00 00 00 00 00 00 00 00 |" // field9
                                   "07 00 00 00 00 00 00 00 |" // stringArray
                                   "08 00 00 00 00 00 00 00 |" //
                                   "09 00 00 00 00 00 00 00 |" //
                                   "0A 00 00 00 00 00 00 00 |" //
                                   "0B 00 00 00 00 00 00 00 |" //
                                   "0C 00 00 00 00 00 00 00 |" //
                                   "0D 00 00 00 00 00 00 00 |" //
                                   "0E 00 00 00 00 00 00 00 |" //
                                   "0F 00 00 00 00 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(status, Status::Ok);
}

TEST(EventWriter, CopiesZeroBytesLikeAnyOther)
{
    TestArena arena(20);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), EventOf({std::string("\0b\0", 3), std::string("\0", 1)}), status);

    EXPECT_EQ(wire.field1, (zt_ptr_t{0, 3}));
    EXPECT_EQ(wire.field3, (zt_ptr_t{3, 1}));
    EXPECT_EQ(arena.Contents(), Bytes("00 'b' 00 00 A5*16"));
    EXPECT_EQ(status, Status::Ok);
}

TEST(EventWriter, TakesEveryTextUpToItsCap)
{
    for (std::size_t i = 0; i < 15; ++i) {
        const Text text = Texts()[i];
        SCOPED_TRACE(testing::Message() << text.name << ", text " << i);
        const auto cap = static_cast<std::uint32_t>(text.cap);
        VynEvent event = EventOf(std::vector<std::string>(15, "x"));
        text.of(event) = std::string(cap, 'y');
        std::vector<zt_ptr_t> expected;
        for (std::uint32_t j = 0; j < 15; ++j)
            expected.push_back(j < i ? zt_ptr_t{j, 1} : j == i ? zt_ptr_t{j, cap} : zt_ptr_t{cap + j - 1, 1});
        TestArena arena(2000);
        Status status = otherSuccess;

        const Wire wire = ToZt(*arena.Get(), event, status);

        EXPECT_EQ(Pointers(wire), expected);
        EXPECT_EQ(arena.Top(), cap + 14);
        EXPECT_EQ(arena.Contents(), Bytes(Times("'x'", i)) + Bytes(Times("'y'", cap)) + Bytes(Times("'x'", 14 - i)) +
                                        Bytes(Times("A5", 1986 - cap)));
        EXPECT_EQ(status, otherSuccess);
    }
}

TEST(EventWriter, FailsATextOverItsCapAndPlacesTheNextWhereItWouldHaveStarted)
{
    for (std::size_t i = 0; i < 15; ++i) {
        const Text text = Texts()[i];
        SCOPED_TRACE(testing::Message() << text.name << ", text " << i);
        VynEvent event = EventOf(std::vector<std::string>(15, "x"));
        text.of(event) = std::string(text.cap + 1, 'y');
        std::vector<zt_ptr_t> expected;
        for (std::uint32_t j = 0; j < 15; ++j)
            expected.push_back(j < i ? zt_ptr_t{j, 1} : j == i ? invalid : zt_ptr_t{j - 1, 1});
        TestArena arena(2000);
        Status status = Status::Ok;

        const Wire wire = ToZt(*arena.Get(), event, status);

        EXPECT_EQ(Pointers(wire), expected);
        EXPECT_EQ(arena.Top(), 14u);
        EXPECT_EQ(arena.Contents(), Bytes("'x'*14 A5*1986"));
        EXPECT_EQ(status, Status::Failed);
    }
}

TEST(EventWriter, PutsAllBitsIntoThePointerOfATextThatFails)
{
    TestArena arena(32);
    Status status = Status::Ok;
    VynEvent event = EventOf({"", "", "", std::string(65, 'd'), "e"});
    event.severity = VynEventSeverity::Severity1;
    event.field8 = 0x01020304;
    event.field9 = 0x05060708090A0B0C;

    const Wire wire = ToZt(*arena.Get(), event, status);

    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 00 00 00 00 |" // field1
                                   "01 00 00 00 |"             // severity
                                   "01 00 00 00 00 00 00 00 |" // field3
                                   "02 00 00 00 00 00 00 00 |" // field4
                                   "FF FF FF FF FF FF FF FF |" // field5
                                   "03 00 00 00 01 00 00 00 |" // field6
                                   "04 00 00 00 00 00 00 00 |" // field7
                                   "04 03 02 01 |"             // field8
                                   "0C 0B 0A 09 08 07 06 05 |" // field9
                                   "05 00 00 00 00 00 00 00 |" // stringArray
                                   "06 00 00 00 00 00 00 00 |" //
                                   "07 00 00 00 00 00 00 00 |" //
                                   "08 00 00 00 00 00 00 00 |" //
                                   "09 00 00 00 00 00 00 00 |" //
                                   "0A 00 00 00 00 00 00 00 |" //
                                   "0B 00 00 00 00 00 00 00 |" //
                                   "0C 00 00 00 00 00 00 00 |" //
                                   "0D 00 00 00 00 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 'e' A5*28"));
    EXPECT_EQ(arena.Top(), 14u);
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(sampleSize + 3, 0, 3);
    Status status = Status::Ok;

    ToZt(*arena.Get(), Sample(), status);

    EXPECT_EQ(arena.Contents(), Bytes("A5*3") + Bytes(sampleTexts));
    EXPECT_EQ(arena.Top(), sampleSize + 3);
    EXPECT_EQ(status, Status::Ok);
}

TEST(EventWriter, FailsTheTextThatIsOneByteOverTheEnd)
{
    TestArena arena(sampleSize + 2, 0, 3);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), Sample(), status);

    EXPECT_EQ(wire.stringArray[7], (zt_ptr_t{94, 14}));
    EXPECT_EQ(wire.stringArray[8], invalid);
    EXPECT_EQ(arena.Top(), 108u);
    EXPECT_EQ(arena.Contents(),
              Bytes("A5*3") + Bytes(std::string(sampleTexts, std::strlen(sampleTexts) - 17)) + Bytes("A5*14"));
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventWriter, FailsEveryTextThatDoesNotFitAndPlacesEveryOneThatDoes)
{
    TestArena arena(9);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), EventOf({"1234", "123456", "123", "123", "12", "", "1"}), status);

    const std::vector<zt_ptr_t> expected = {{0, 4},  invalid, {4, 3},  invalid, {7, 2},  invalid, invalid, invalid,
                                            invalid, invalid, invalid, invalid, invalid, invalid, invalid};
    EXPECT_EQ(Pointers(wire), expected);
    EXPECT_EQ(arena.Contents(), Bytes("'123412312'"));
    EXPECT_EQ(arena.Top(), 9u);
    EXPECT_EQ(status, Status::Failed);
}

// The cap counts where more room remains than it allows, the end where no more does.
TEST(EventWriter, TakesACappedTextWhereExactlyItsRoomRemains)
{
    for (std::size_t i = 0; i < 15; ++i) {
        const Text text = Texts()[i];
        SCOPED_TRACE(testing::Message() << text.name << ", text " << i);
        VynEvent event = EventOf(std::vector<std::string>(15, "x"));
        text.of(event) = std::string(text.cap, 'y');
        for (const bool enough : {true, false}) {
            TestArena arena(i + text.cap - (enough ? 0 : 1));
            Status status = Status::Ok;

            const Wire wire = ToZt(*arena.Get(), event, status);

            const zt_ptr_t placed{static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(text.cap)};
            EXPECT_EQ(Pointers(wire)[i], enough ? placed : invalid);
            if (enough) {
                EXPECT_EQ(arena.Contents(), Bytes(Times("'x'", i)) + Bytes(Times("'y'", text.cap)));
            }
        }
    }
}

TEST(EventWriter, NeedsAFreeByteForAnEmptyText)
{
    TestArena arena(5, 0, 5);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), VynEvent{}, status);

    EXPECT_EQ(Pointers(wire), std::vector<zt_ptr_t>(15, invalid));
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5"));
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventWriter, WritesAnySeverity)
{
    for (const std::int32_t severity : {0, 1, 2, 3, 4, 0x12345678, -1}) {
        TestArena arena(16);
        Status status = Status::Ok;
        VynEvent event;
        event.severity = static_cast<VynEventSeverity>(severity);

        const Wire wire = ToZt(*arena.Get(), event, status);

        EXPECT_EQ(wire.severity, static_cast<std::uint32_t>(severity));
        EXPECT_EQ(status, Status::Ok);
    }
}

TEST(EventWriter, OnlyEverClearsTheStatus)
{
    for (const std::uint8_t before : std::initializer_list<std::uint8_t>{0, 1, 2, 128, 255}) {
        TestArena roomy(16);
        Status status{before};
        ToZt(*roomy.Get(), VynEvent{}, status);
        EXPECT_EQ(static_cast<std::uint8_t>(status), before);

        TestArena tight(14);
        ToZt(*tight.Get(), VynEvent{}, status);
        EXPECT_EQ(static_cast<std::uint8_t>(status), 0);

        TestArena again(16);
        ToZt(*again.Get(), VynEvent{}, status);
        EXPECT_EQ(static_cast<std::uint8_t>(status), 0);
    }
}

TEST(EventWriter, IsNotStoppedByAStatusThatHasFailedAlready)
{
    TestArena arena(sampleSize);
    Status status = Status::Failed;

    EXPECT_EQ(BytesOf(ToZt(*arena.Get(), Sample(), status)), sampleWire);
    EXPECT_EQ(arena.Contents(), Bytes(sampleTexts));
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventWriter, FailsEveryTextInAnArenaWithoutABuffer)
{
    zt_arena arena{nullptr, nullptr, nullptr};
    Status status = Status::Ok;

    const Wire wire = ToZt(arena, EventOf({"a"}), status);

    EXPECT_EQ(Pointers(wire), std::vector<zt_ptr_t>(15, invalid));
    EXPECT_EQ(arena.top, nullptr);
    EXPECT_EQ(status, Status::Failed);
}

// The room is taken and the pointer stored; only the copy is left out.
TEST(EventWriter, CopiesNothingToTheNullAddress)
{
    zt_arena arena{nullptr, nullptr, reinterpret_cast<std::uint8_t*>(std::uintptr_t{256})};
    Status status = Status::Ok;

    const Wire wire = ToZt(arena, EventOf({"abc"}), status);

    const std::vector<zt_ptr_t> expected = {{0, 3},  {3, 0},  {4, 0},  {5, 0},  {6, 0},  {7, 0},  {8, 0}, {9, 0},
                                            {10, 0}, {11, 0}, {12, 0}, {13, 0}, {14, 0}, {15, 0}, {16, 0}};
    EXPECT_EQ(Pointers(wire), expected);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arena.top), 17u);
    EXPECT_EQ(status, Status::Ok);
}

// --- Reading ---

TEST(EventReader, ReadsEveryField)
{
    TestArena arena(128, 0, sampleSize);
    arena.Put(0, sampleTexts);
    Status status = otherSuccess;

    const VynEvent event = FromZt(*arena.Get(), WireOf(sampleWire), status);

    EXPECT_EQ(event.field1, "a");
    EXPECT_EQ(event.severity, VynEventSeverity::Severity2);
    EXPECT_EQ(event.field3, "bb");
    EXPECT_EQ(event.field4, "ccc");
    EXPECT_EQ(event.field5, "dddd");
    EXPECT_EQ(event.field6, "eeeee");
    EXPECT_EQ(event.field7, "ffffff");
    EXPECT_EQ(event.field8, 0x11223344u);
    EXPECT_EQ(event.field9, 0x5566778899AABBCCu);
    EXPECT_EQ(event.stringArray[0], "ggggggg");
    EXPECT_EQ(event.stringArray[1], "hhhhhhhh");
    EXPECT_EQ(event.stringArray[2], "iiiiiiiii");
    EXPECT_EQ(event.stringArray[3], "jjjjjjjjjj");
    EXPECT_EQ(event.stringArray[4], "kkkkkkkkkkk");
    EXPECT_EQ(event.stringArray[5], "llllllllllll");
    EXPECT_EQ(event.stringArray[6], "mmmmmmmmmmmmm");
    EXPECT_EQ(event.stringArray[7], "nnnnnnnnnnnnnn");
    EXPECT_EQ(event.stringArray[8], "ooooooooooooooo");
    EXPECT_EQ(event, Sample());
    EXPECT_EQ(status, otherSuccess);
}

TEST(EventReader, ReadsWhatTheWriterWroteWhereverStartAndTopLie)
{
    layout::ForEveryPlacement([](layout::Placement placement) {
        for (const VynEvent& event : {Sample(), VynEvent{}}) {
            TestArena arena(128, placement.start, placement.top);
            Status status = Status::Ok;
            const Wire wire = ToZt(*arena.Get(), event, status);

            EXPECT_EQ(FromZt(*arena.Get(), wire, status), event);
            EXPECT_EQ(status, Status::Ok);
        }
    });
}

// Ten bytes are in use, and six follow that are not.
TEST(EventReader, AcceptsWhatLiesBelowTheTop)
{
    struct Case {
        zt_ptr_t pointer;
        const char* text; // null: rejected
    };
    const Case cases[] = {
        {{0, 0}, ""},
        {{0, 3}, "012"},
        {{4, 3}, "456"},
        {{0, 10}, "0123456789"},
        {{0, 11}, nullptr},
        {{0, 16}, nullptr},
        {{5, 5}, "56789"},
        {{5, 6}, nullptr},
        {{9, 0}, ""},
        {{9, 1}, "9"},
        {{9, 2}, nullptr},
        {{10, 0}, nullptr},
        {{10, 1}, nullptr},
        {{11, 0}, nullptr},
        {{12, 2}, nullptr},
        {{16, 0}, nullptr},
        {{17, 0}, nullptr},
        {{0x80000000, 1}, nullptr},
        {{5, 0xFFFFFFFB}, nullptr}, // the sum of the two is 0 in 32 bits
        {{5, 0xFFFFFFFF}, nullptr}, // and here 4
        {{0xFFFFFFFF, 0}, nullptr},
        {{0xFFFFFFFF, 1}, nullptr},
        {{0xFFFFFFFF, 0xFFFFFFFF}, nullptr},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.pointer));
        TestArena arena(16, 5, 10);
        arena.Put(0, "'0123456789abcdef'");
        Status status = Status::Ok;

        const VynEvent event = FromZt(*arena.Get(), WireWithField1(test.pointer), status);

        EXPECT_EQ(event.field1, test.text == nullptr ? "" : test.text);
        EXPECT_EQ(status, test.text == nullptr ? Status::Failed : Status::Ok);
        EXPECT_EQ(arena.Top(), 10u);
    }
}

TEST(EventReader, LeavesARejectedTextEmptyAndReadsTheOthers)
{
    for (std::size_t i = 0; i < 15; ++i) {
        SCOPED_TRACE(testing::Message() << "text " << i);
        TestArena arena(128, 0, sampleSize);
        arena.Put(0, sampleTexts);
        Wire wire = WireOf(sampleWire);
        PointersIn(wire)[i]->offset = sampleSize;
        VynEvent expected = Sample();
        Texts()[i].of(expected) = "";
        Status status = Status::Ok;

        EXPECT_EQ(FromZt(*arena.Get(), wire, status), expected);
        EXPECT_EQ(status, Status::Failed);
    }
}

TEST(EventReader, RejectsThePointerOfAFailedText)
{
    TestArena arena(32);
    Status writing = Status::Ok;
    const Wire wire = ToZt(*arena.Get(), EventOf({"a", "b", "c", std::string(65, 'd'), "e"}), writing);
    Status reading = Status::Ok;

    EXPECT_EQ(FromZt(*arena.Get(), wire, reading), EventOf({"a", "b", "c", "", "e"}));
    EXPECT_EQ(reading, Status::Failed);
}

TEST(EventReader, TakesTextsOfAnyLength)
{
    TestArena arena(2100, 1, 2005);
    arena.Put(0, "'abcde' 'z'*2000");
    for (std::size_t i = 0; i < 15; ++i) {
        SCOPED_TRACE(testing::Message() << "text " << i);
        Wire wire{};
        *PointersIn(wire)[i] = {5, 2000};
        VynEvent expected;
        Texts()[i].of(expected) = std::string(2000, 'z');
        Status status = Status::Ok;

        EXPECT_EQ(FromZt(*arena.Get(), wire, status), expected);
        EXPECT_EQ(status, Status::Ok);
    }
}

TEST(EventReader, KeepsZeroBytes)
{
    TestArena arena(8, 0, 4);
    arena.Put(0, "00 'b' 00 00");
    Status status = Status::Ok;

    EXPECT_EQ(FromZt(*arena.Get(), WireWithField1({0, 4}), status).field1, std::string("\0b\0\0", 4));
    EXPECT_EQ(status, Status::Ok);
}

TEST(EventReader, TakesTheSeveritiesZeroToThree)
{
    for (const std::uint32_t severity : {0u, 1u, 2u, 3u}) {
        TestArena arena(8, 0, 1);
        Wire wire{};
        wire.severity = severity;
        Status status = otherSuccess;

        EXPECT_EQ(FromZt(*arena.Get(), wire, status).severity, static_cast<VynEventSeverity>(severity));
        EXPECT_EQ(status, otherSuccess);
    }
}

TEST(EventReader, FailsAnyOtherSeverityAndKeepsItAndReadsOn)
{
    for (const std::uint32_t severity : {4u, 5u, 0x100u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        TestArena arena(128, 0, sampleSize);
        arena.Put(0, sampleTexts);
        Wire wire = WireOf(sampleWire);
        wire.severity = severity;
        VynEvent expected = Sample();
        expected.severity = static_cast<VynEventSeverity>(severity);
        Status status = Status::Ok;

        EXPECT_EQ(FromZt(*arena.Get(), wire, status), expected);
        EXPECT_EQ(status, Status::Failed);
    }
}

TEST(EventReader, OnlyEverClearsTheStatus)
{
    TestArena used(8, 0, 1);
    TestArena unused(8, 0, 0);
    for (const std::uint8_t before : std::initializer_list<std::uint8_t>{0, 1, 2, 128, 255}) {
        Status status{before};
        FromZt(*used.Get(), Wire{}, status);
        EXPECT_EQ(static_cast<std::uint8_t>(status), before);

        FromZt(*unused.Get(), Wire{}, status);
        EXPECT_EQ(static_cast<std::uint8_t>(status), 0);

        FromZt(*used.Get(), Wire{}, status);
        EXPECT_EQ(static_cast<std::uint8_t>(status), 0);
    }
}

TEST(EventReader, IsNotStoppedByAStatusThatHasFailedAlready)
{
    TestArena arena(128, 0, sampleSize);
    arena.Put(0, sampleTexts);
    Status status = Status::Failed;

    EXPECT_EQ(FromZt(*arena.Get(), WireOf(sampleWire), status), Sample());
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventReader, CarriesOneStatusThroughBothDirections)
{
    TestArena arena(64);
    Status status = Status::Ok;
    VynEvent event = EventOf({"abc"});
    event.severity = static_cast<VynEventSeverity>(4);

    const Wire wire = ToZt(*arena.Get(), event, status);
    EXPECT_EQ(status, Status::Ok);
    EXPECT_EQ(FromZt(*arena.Get(), wire, status), event);
    EXPECT_EQ(status, Status::Failed);
}

// The start is null and nine bytes behind it are in use: of the pointers into them only the one at 0 resolves to null.
TEST(EventReader, RejectsTheNullAddress)
{
    const auto nine = reinterpret_cast<std::uint8_t*>(std::uintptr_t{9});
    const zt_arena arena{nullptr, nine, nine};
    Wire wire{};
    for (zt_ptr_t* pointer : PointersIn(wire))
        pointer->offset = 8;
    wire.field1.offset = 1;
    Status status = Status::Ok;
    EXPECT_EQ(FromZt(arena, wire, status), VynEvent{});
    EXPECT_EQ(status, Status::Ok);

    for (const std::uint32_t size : {0u, 1u}) {
        wire.field6 = {0, size};
        status = Status::Ok;
        EXPECT_EQ(FromZt(arena, wire, status), VynEvent{});
        EXPECT_EQ(status, Status::Failed);
    }
}

TEST(EventReader, RejectsEveryTextInAnArenaWithoutABuffer)
{
    const zt_arena arena{nullptr, nullptr, nullptr};
    Status status = Status::Ok;
    Wire wire{};
    wire.field8 = 7;
    VynEvent expected;
    expected.field8 = 7;

    EXPECT_EQ(FromZt(arena, wire, status), expected);
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventReaderDeathTest, EndsTheProcessWhereMemoryIsExhausted)
{
    TestArena arena(128, 0, 100);
    arena.Put(0, "'x'*100");
    constexpr int terminated = 42;
    const auto readWithoutMemory = [&] {
        std::set_terminate([] { _exit(terminated); });
        Status status = Status::Ok;
        memory::exhausted = true;
        FromZt(*arena.Get(), WireWithField1({0, 100}), status);
        _exit(0);
    };
    EXPECT_EXIT(readWithoutMemory(), testing::ExitedWithCode(terminated), "^$");
}

// --- Past 4 GiB ---

// 4 GiB and some pages, of which only those that are touched exist. Null where the system refuses.
class HugeArena {
public:
    HugeArena()
    {
        void* const reserved =
            mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (reserved != MAP_FAILED) start = static_cast<std::uint8_t*>(reserved);
    }
    ~HugeArena()
    {
        if (start != nullptr) munmap(start, length);
    }
    HugeArena(const HugeArena&) = delete;
    HugeArena& operator=(const HugeArena&) = delete;

    explicit operator bool() const { return start != nullptr; }
    zt_arena WithTopAt(std::size_t offset) const { return {start, start + offset, start + length}; }
    Bytes At(std::size_t offset, std::size_t size) const { return Bytes(start + offset, size); }
    void Put(std::size_t offset, const char* text) { std::memcpy(start + offset, text, std::strlen(text)); }

private:
    static constexpr std::size_t length = fourGiB + 8192;
    std::uint8_t* start = nullptr;
};

TEST(EventPast4GiB, IsPlacedWhereTheTruncatedOffsetLeads)
{
    HugeArena memory;
    if (!memory) GTEST_SKIP() << "no 4 GiB of address space";
    zt_arena arena = memory.WithTopAt(fourGiB + 100);
    Status status = Status::Ok;

    const Wire wire = ToZt(arena, EventOf({"abc", "de"}), status);

    const std::vector<zt_ptr_t> expected = {{100, 3}, {103, 2}, {105, 0}, {106, 0}, {107, 0},
                                            {108, 0}, {109, 0}, {110, 0}, {111, 0}, {112, 0},
                                            {113, 0}, {114, 0}, {115, 0}, {116, 0}, {117, 0}};
    EXPECT_EQ(Pointers(wire), expected);
    EXPECT_EQ(memory.At(96, 24), Bytes("00*4 'abcde' 00*15"));
    EXPECT_EQ(memory.At(fourGiB + 96, 24), Bytes("00*24"));
    EXPECT_EQ(arena.top - arena.start, 118);
    EXPECT_EQ(status, Status::Ok);
}

// The cap is counted from the top, or the end is what counts, and the text stands 4 GiB before either.
TEST(EventPast4GiB, IsNotCappedWhereTheOffsetWasTruncated)
{
    HugeArena memory;
    if (!memory) GTEST_SKIP() << "no 4 GiB of address space";
    for (const std::uint32_t behind : {100u, 8192u}) {
        SCOPED_TRACE(behind);
        zt_arena arena = memory.WithTopAt(fourGiB + behind);
        Status status = Status::Ok;

        const Wire wire = ToZt(arena, EventOf({std::string(129, 'a'), std::string(129, 'b')}), status);

        EXPECT_EQ(wire.field1, (zt_ptr_t{behind, 129}));
        EXPECT_EQ(wire.field3, invalid);
        EXPECT_EQ(wire.field4, (zt_ptr_t{behind + 129, 0}));
        EXPECT_EQ(memory.At(behind - 2, 133), Bytes("00*2 'a'*129 00*2"));
        EXPECT_EQ(arena.top - arena.start, behind + 142);
        EXPECT_EQ(status, Status::Failed);
    }
}

TEST(EventPast4GiB, FailsAtTheOffsetOfAllBitsButKeepsItsPointersAndItsTop)
{
    HugeArena memory;
    if (!memory) GTEST_SKIP() << "no 4 GiB of address space";
    zt_arena arena = memory.WithTopAt(0xFFFFFFFF);
    Status status = Status::Ok;

    const Wire wire = ToZt(arena, EventOf({"abc", "d"}), status);

    EXPECT_EQ(wire.field1, (zt_ptr_t{0xFFFFFFFF, 3}));
    EXPECT_EQ(wire.field3, (zt_ptr_t{0xFFFFFFFF, 1}));
    EXPECT_EQ(wire.field4, (zt_ptr_t{0xFFFFFFFF, 0}));
    EXPECT_EQ(memory.At(0xFFFFFFFF, 4), Bytes("'dbc' 00"));
    EXPECT_EQ(arena.top - arena.start, 0xFFFFFFFF);
    EXPECT_EQ(status, Status::Failed);
}

TEST(EventPast4GiB, IsPlacedOneByteBeforeTheOffsetOfAllBits)
{
    HugeArena memory;
    if (!memory) GTEST_SKIP() << "no 4 GiB of address space";
    zt_arena arena = memory.WithTopAt(0xFFFFFFFE);
    Status status = Status::Ok;

    const Wire wire = ToZt(arena, EventOf({"ab"}), status);

    EXPECT_EQ(wire.field1, (zt_ptr_t{0xFFFFFFFE, 2}));
    EXPECT_EQ(wire.field3, (zt_ptr_t{0, 0}));
    EXPECT_EQ(memory.At(0xFFFFFFFD, 4), Bytes("00 'ab' 00"));
    EXPECT_EQ(arena.top - arena.start, 14);
    EXPECT_EQ(status, Status::Ok);
}

TEST(EventPast4GiB, IsReadBelowTheTopWithoutItsUpperBits)
{
    HugeArena memory;
    if (!memory) GTEST_SKIP() << "no 4 GiB of address space";
    memory.Put(0, "0123456789");
    const zt_arena arena = memory.WithTopAt(fourGiB + 7);
    Status status = Status::Ok;
    EXPECT_EQ(FromZt(arena, WireWithField1({5, 2}), status).field1, "56");
    EXPECT_EQ(status, Status::Ok);

    for (const zt_ptr_t outside : {zt_ptr_t{5, 3}, zt_ptr_t{7, 0}, zt_ptr_t{100, 0}}) {
        status = Status::Ok;
        EXPECT_EQ(FromZt(arena, WireWithField1(outside), status), VynEvent{});
        EXPECT_EQ(status, Status::Failed);
    }

    status = Status::Ok;
    EXPECT_EQ(FromZt(memory.WithTopAt(fourGiB), Wire{}, status), VynEvent{});
    EXPECT_EQ(status, Status::Failed);
}

class EventTextOf4GiB : public testing::Test {
protected:
    void SetUp() override
    {
        if (!canTouch4GiB) GTEST_SKIP() << "too much for the thread sanitizer";
        if (source.Begin() == nullptr) GTEST_SKIP() << "no 4 GiB of address space";
        memory::forHugeAllocations = &source;
    }
    void TearDown() override { memory::forHugeAllocations = nullptr; }

    memory::Repeated source{fourGiB + memory::Repeated::chunk};
};

TEST_F(EventTextOf4GiB, HasTheLengthThatIsLeftInThirtyTwoBits)
{
    VynEvent event = EventOf({"", "b"});
    event.field1 = std::string(fourGiB + 3, 'x');
    TestArena arena(24);
    Status status = Status::Ok;

    const Wire wire = ToZt(*arena.Get(), event, status);

    EXPECT_EQ(wire.field1, (zt_ptr_t{0, 3}));
    EXPECT_EQ(wire.field3, (zt_ptr_t{3, 1}));
    EXPECT_EQ(arena.Contents(), Bytes("'xxxb' A5*20"));
    EXPECT_EQ(arena.Top(), 17u);
    EXPECT_EQ(status, Status::Ok);
}

TEST_F(EventTextOf4GiB, FailsAtTheLengthOfAllBitsButKeepsItsPointerAndTheTop)
{
    const memory::Repeated destination(fourGiB + memory::Repeated::chunk);
    if (destination.Begin() == nullptr) GTEST_SKIP() << "no 4 GiB of address space";
    VynEvent event = EventOf({"", "b"});
    event.field1 = std::string(fourGiB, 'x');
    event.field1.pop_back();
    std::uint8_t* const start = destination.Begin();
    zt_arena arena{start, start + fourGiB, start + fourGiB + 64};
    Status status = Status::Ok;

    const Wire wire = ToZt(arena, event, status);

    EXPECT_EQ(wire.field1, (zt_ptr_t{0, 0xFFFFFFFF}));
    EXPECT_EQ(wire.field3, (zt_ptr_t{0, 1}));
    EXPECT_EQ(Bytes(start + 64, 16), Bytes("'x'*16"));
    EXPECT_EQ(arena.top - arena.start, 14);
    EXPECT_EQ(status, Status::Failed);
}

// --- Comparison ---

TEST(Event, EqualsAnotherOnlyWhereEveryMemberDoes)
{
    ExpectEveryMemberIsCompared(
        Sample(), [](VynEvent& event) { event.severity = VynEventSeverity::Severity3; },
        [](VynEvent& event) { event.field8 ^= 0x80000000; },
        [](VynEvent& event) { event.field9 ^= 0x8000000000000000; });
    for (const Text& text : Texts())
        ExpectEveryMemberIsCompared(Sample(), [&](VynEvent& event) { text.of(event) += '!'; });
}

TEST(Event, IsEmptyAndZeroByDefault)
{
    VynEvent event;

    EXPECT_EQ(event.severity, VynEventSeverity::Severity0);
    EXPECT_EQ(event.field8, 0u);
    EXPECT_EQ(event.field9, 0u);
    for (const Text& text : Texts())
        EXPECT_EQ(text.of(event), "");
}

} // namespace
