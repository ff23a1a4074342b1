// Every generic reader by itself, with the elements of the records and with some that no record has.
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

model::Value Items(std::vector<model::Value> items)
{
    return {0, "", std::move(items)};
}

template <typename Domain>
model::Value FromRecords(const std::vector<Domain>& records)
{
    return FromMember(records, library::Order::Sorted);
}

// One reader: the layout has the one member that it reads.
struct CodecCase {
    model::Layout layout;
    const model::Codec* codec;
    model::Value (*read)(const zt_ptr_t* pointer, const zt_arena* arena);
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

std::string (*const readText)(const zt_ptr_t&, const zt_arena*) = &common::CastFromZt;

const std::vector<CodecCase>& Cases()
{
    using model::Kind;
    const auto one = [](const char* name, Kind kind, const model::Layout* element) {
        return model::Layout{name, 8, 4, {{name, 0, 8, kind, 0, element}}};
    };
    static const std::vector<CodecCase> cases{
        {one("text", Kind::Text, nullptr), &model::stringCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) -> model::Value {
             return {0, common::ZtToString(pointer, arena), {}};
         }},
        {one("blob", Kind::Blob, nullptr), &model::blobCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return library::FromMember(common::ZtToBlob(pointer, arena), library::Order::Sorted);
         }},
        {one("parameters", Kind::List, &model::vynParam), &model::vectorCodec, &ReadList<common::RawVynParam>},
        {one("configurations", Kind::List, &model::productUpdCfg), &model::vectorCodec, &ReadList<ProductUpdCfg>},
        {one("statuses", Kind::List, &model::productHsdpStatus), &model::vectorCodec, &ReadList<ProductHsdpStatus>},
        {one("certificates", Kind::List, &model::clientCertInfo), &model::vectorCodec, &ReadList<ClientCertInfo>},
        {one("triples", Kind::List, &triple), &model::vectorCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return Items(common::ZtToVector<Triple, model::Value>(pointer, arena, &FromTriple));
         }},
        {one("range of triples", Kind::List, &triple), &model::rangeCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             // What is there already stays in front.
             std::vector<model::Value> items(2);
             common::ZtToRange<Triple, model::Value>(pointer, std::back_inserter(items), arena, &FromTriple);
             Require(items[0] == model::Value{} && items[1] == model::Value{}, "the range reader changed its values");
             items.erase(items.begin(), items.begin() + 2);
             return Items(items);
         }},
        {one("proxy", Kind::Optional, &model::proxySettings), &model::optionalCodec, &ReadOptional<ProxySettings>},
        {one("ssl", Kind::Optional, &model::sslSettings), &model::optionalCodec, &ReadOptional<SslSettings>},
        {one("key", Kind::Optional, &model::licenseKeyInfo), &model::optionalCodec, &ReadOptional<LicenseKeyInfo>},
        {one("optional text", Kind::Optional, &model::textSlot), &model::optionalCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return FromMember(common::ZtToOptional<zt_ptr_t, std::string>(pointer, arena, readText),
                               library::Order::Sorted);
         }},
        {one("set", Kind::Set, nullptr), &model::setCodec,
         [](const zt_ptr_t* pointer, const zt_arena* arena) {
             return FromMember(common::ZtToSet<zt_ptr_t, std::string>(pointer, arena, readText),
                               library::Order::Sorted);
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

// The model's list stands for the range as well; only the errors differ.
model::Outcome Expected(const CodecCase& codec, const std::string& wire, const model::Arena* arena, bool nullPointer)
{
    if (arena == nullptr) return {model::InvalidArgument(*codec.codec, codec.codec->readerLine), true, {}, {}};
    if (nullPointer) return {model::InvalidArgument(*codec.codec, codec.codec->readerLine + 1), true, {}, {}};
    const model::WirePointer pointer = model::GetPointer(wire, 0);
    if (codec.codec == &model::rangeCodec && !model::Resolves(*arena, pointer, triple.size))
        return {model::OutOfSpace(), true, {}, {}};
    return Read(codec.layout, wire, arena);
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
        return;
    }
    ArenaBuffer buffer(input.message.arena.bytes, input.startMod16, input.message.arena.top);
    const model::Arena arena = buffer.Now();
    RequireSame(codec.layout, Read(codec, source, buffer.Get()),
                Expected(codec, input.message.wire, &arena, nullPointer), "reading");
    Require(Same(buffer.Now(), arena), "reading changed the arena");
}
