// Every generic reader by itself, with the elements of the records and with some that no record has; and the writer
// beside it, with what was read.
#include "arena_buffer.h"
#include "check_message.h"
#include "library_values.h"
#include "memory_limit.h"

#include <cstring>
#include <iterator>
#include <vector>

namespace {

using namespace vyn_connector;
namespace common = vyn_connector::common;

// An element of three bytes, which nothing aligns.
struct Triple {
    std::uint8_t bytes[3];
};
const model::Layout triple{"Triple", 3, 1, {{"bytes", 0, 3, model::Kind::Raw}}};

model::Value FromTriple(const Triple& element, const zt_arena* /*arena*/)
{
    return {0, "", {{0, std::string(std::begin(element.bytes), std::end(element.bytes)), {}}}};
}

Triple ToTriple(const model::Value& value, zt_arena* /*arena*/)
{
    Triple element;
    std::memcpy(element.bytes, value.items[0].bytes.data(), sizeof(element.bytes));
    return element;
}

model::Value Items(std::vector<model::Value> items)
{
    return {0, "", std::move(items)};
}

template <typename Domain>
model::Value FromRecords(const std::vector<Domain>& records)
{
    return FromMember(records, library::Order::Sorted);
}

// What the writers of lists and sets accept here, so that messages of a few bytes go over it.
constexpr std::uint64_t mostElements = 3;

// One reader and its writer: the layout has the one member that they convert. The writer gives the value that it is
// given in the order in which it writes it, before it writes.
struct CodecCase {
    model::Layout layout;
    const model::Codec* codec;
    model::Value (*read)(const zt_ptr_t* pointer, const zt_arena* arena);
    void (*write)(const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena);
};

template <typename Domain>
model::Value ReadList(const zt_ptr_t* pointer, const zt_arena* arena)
{
    const common::ReaderOf<Domain> convert = &common::CastFromZt;
    return FromRecords(common::ZtToVector<common::WireOf<Domain>, Domain>(pointer, arena, convert));
}

template <typename Domain>
model::Value ReadOptional(const zt_ptr_t* pointer, const zt_arena* arena)
{
    const common::ReaderOf<Domain> convert = &common::CastFromZt;
    return FromMember(common::ZtToOptional<common::WireOf<Domain>, Domain>(pointer, arena, convert),
                      library::Order::Sorted);
}

template <typename Member>
Member ToWrite(const model::Value& value, model::Value* inOrder)
{
    Member member;
    library::ToMember(value, member);
    *inOrder = FromMember(member, library::Order::AsStored);
    return member;
}

template <typename Domain>
void WriteList(const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena)
{
    const common::WriterOf<Domain> convert = &common::CastToZt;
    common::VectorToZt<mostElements, common::WireOf<Domain>>(ToWrite<std::vector<Domain>>(value, inOrder), out, arena,
                                                             convert);
}

template <typename Domain>
void WriteOptional(const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena)
{
    const common::WriterOf<Domain> convert = &common::CastToZt;
    common::OptionalToZt<common::WireOf<Domain>>(ToWrite<std::optional<Domain>>(value, inOrder), out, arena, convert);
}

std::string (*const readText)(const zt_ptr_t&, const zt_arena*) = &common::CastFromZt;
zt_ptr_t (*const writeText)(const std::string&, zt_arena*) = &common::CastToZt;

template <typename Domain>
CodecCase List(const char* name, const model::Layout& element)
{
    return {{name, 8, 4, {model::Pointer(name, 0, model::Kind::List, mostElements, element)}},
            &model::vectorCodec,
            &ReadList<Domain>,
            &WriteList<Domain>};
}

template <typename Domain>
CodecCase Optional(const char* name, const model::Layout& element)
{
    return {{name, 8, 4, {model::Pointer(name, 0, model::Kind::Optional, 1, element)}},
            &model::optionalCodec,
            &ReadOptional<Domain>,
            &WriteOptional<Domain>};
}

const std::vector<CodecCase>& Cases()
{
    using model::Kind;
    const auto one = [](const char* name, Kind kind, std::uint64_t limit, const model::Layout* element) {
        return model::Layout{name, 8, 4, {{name, 0, 8, kind, limit, element}}};
    };
    static const std::vector<CodecCase> cases{
        {one("text", Kind::Text, 128, nullptr), &model::stringCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) -> model::Value {
             return {0, common::ZtToString(pointer, arena), {}};
         },
         [](const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena) {
             common::StringToZt<128>(ToWrite<std::string>(value, inOrder), out, arena);
         }},
        {one("blob", Kind::Blob, 65536, nullptr), &model::blobCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return library::FromMember(common::ZtToBlob(pointer, arena), library::Order::Sorted);
         },
         [](const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena) {
             common::BlobToZt(ToWrite<std::vector<std::uint8_t>>(value, inOrder), out, arena);
         }},
        List<common::RawVynParam>("parameters", model::vynParam),
        List<ProductUpdCfg>("configurations", model::productUpdCfg),
        List<ProductHsdpStatus>("statuses", model::productHsdpStatus),
        List<ClientCertInfo>("certificates", model::clientCertInfo),
        {one("triples", Kind::List, mostElements, &triple), &model::vectorCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return Items(common::ZtToVector<Triple, model::Value>(pointer, arena, &FromTriple));
         },
         [](const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena) {
             *inOrder = value;
             common::VectorToZt<mostElements, Triple>(value.items, out, arena, &ToTriple);
         }},
        {one("range of triples", Kind::Range, mostElements, &triple), &model::rangeCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             // What is there already stays in front.
             std::vector<model::Value> items(2);
             common::ZtToRange<Triple, model::Value>(pointer, std::back_inserter(items), arena, &FromTriple);
             Require(items[0] == model::Value{} && items[1] == model::Value{}, "the range reader changed its values");
             items.erase(items.begin(), items.begin() + 2);
             return Items(items);
         },
         [](const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena) {
             *inOrder = value;
             common::RangeToZt<mostElements, Triple>(value.items.begin(), value.items.end(), out, arena, &ToTriple);
         }},
        Optional<ProxySettings>("proxy", model::proxySettings),
        Optional<SslSettings>("ssl", model::sslSettings),
        Optional<LicenseKeyInfo>("key", model::licenseKeyInfo),
        {one("optional text", Kind::Optional, 1, &model::textSlot), &model::optionalCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return FromMember(common::ZtToOptional<zt_ptr_t, std::string>(pointer, arena, readText),
                               library::Order::Sorted);
         },
         [](const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena) {
             common::OptionalToZt<zt_ptr_t>(ToWrite<std::optional<std::string>>(value, inOrder), out, arena, writeText);
         }},
        {one("set", Kind::Set, mostElements, nullptr), &model::setCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return FromMember(common::ZtToSet<zt_ptr_t, std::string>(pointer, arena, readText),
                               library::Order::Sorted);
         },
         [](const model::Value& value, model::Value* inOrder, zt_ptr_t* out, zt_arena* arena) {
             common::SetToZt<mostElements, zt_ptr_t>(ToWrite<std::unordered_set<std::string>>(value, inOrder), out,
                                                     arena, writeText);
         }},
    };
    return cases;
}

model::Outcome Read(const CodecCase& codec, const zt_ptr_t* pointer, const zt_arena* arena)
{
    model::Outcome outcome;
    outcome.failure = library::FailureOf([&] { outcome.value = Items({codec.read(pointer, arena)}); });
    return outcome;
}

// The model's range makes room for its elements before it looks, as the identifiers' reader does; this one does not.
model::Outcome Expected(const CodecCase& codec, const std::string& wire, const model::Arena* arena, bool nullPointer)
{
    if (arena == nullptr) return {model::InvalidArgument(*codec.codec, codec.codec->readerLine), true, {}, {}};
    if (nullPointer) return {model::InvalidArgument(*codec.codec, codec.codec->readerLine + 1), true, {}, {}};
    const model::WirePointer pointer = model::GetPointer(wire, 0);
    if (codec.codec == &model::rangeCodec && !model::Resolves(*arena, pointer, triple.size))
        return {model::OutOfSpace(), true, {}, {}};
    return Read(codec.layout, wire, arena);
}

void CheckWrite(const CodecCase& codec, const model::Value& value, zt_arena* arena, model::Arena* modelArena)
{
    model::Outcome outcome;
    model::Value inOrder;
    outcome.failure = library::FailureOf([&] {
        zt_ptr_t pointer{};
        codec.write(value.items[0], &inOrder, &pointer, arena);
        outcome.wire.assign(reinterpret_cast<const char*>(&pointer), sizeof(pointer));
    });
    RequireSame(codec.layout, outcome, Write(codec.layout, Items({inOrder}), modelArena), "writing");
}

} // namespace

const std::vector<const model::Layout*>& InputLayouts()
{
    static const std::vector<const model::Layout*> layouts = [] {
        std::vector<const model::Layout*> all;
        for (const CodecCase& codec : Cases())
            all.push_back(&codec.layout);
        return all;
    }();
    return layouts;
}

void Check(const std::uint8_t* data, std::size_t size)
{
    const MessageInput input = ParseMessageInput(data, size);
    const CodecCase& codec = Cases()[input.number];
    zt_ptr_t pointer;
    std::memcpy(&pointer, input.message.wire.data(), sizeof(pointer));
    const bool nullPointer = (input.flags & MessageInput::NullPointer) != 0;
    const zt_ptr_t* const source = nullPointer ? nullptr : &pointer;

    if ((input.flags & MessageInput::NullArena) != 0) {
        RequireSame(codec.layout, Read(codec, source, nullptr),
                    Expected(codec, input.message.wire, nullptr, nullPointer), "reading");
        CheckWrite(codec, Items({{}}), nullptr, nullptr);
        return;
    }
    ArenaBuffer buffer(input.message.arena.bytes, input.startMod16, input.message.arena.top);
    const model::Arena arena = buffer.Now();
    const model::Outcome read = Read(codec, source, buffer.Get());
    RequireSame(codec.layout, read, Expected(codec, input.message.wire, &arena, nullPointer), "reading");
    Require(Same(buffer.Now(), arena), "reading changed the arena");
    if (read.failure.has_value()) return;

    // Behind what is in use, over what is stale, and about as much of it as the message took.
    ArenaBuffer copy(input.message.arena.bytes + input.message.arena.bytes, input.startMod16, input.message.arena.top);
    model::Arena modelCopy = copy.Now();
    CheckWrite(codec, read.value, copy.Get(), &modelCopy);
    Require(Same(copy.Now(), modelCopy), "another arena after writing " + std::string(codec.layout.name));
}
