// Looking at messages where they stand, by this library, by its reader, by hand and by the peers.
#include "looks.h"
#include "conversions.h"
#include "peers/peers.h"
#include "records.h"

#include <common/verify.h>

#include <cstring>

namespace bench {

namespace {

namespace kind = common::kind;

// The sum of a record's fields, by its table: of an owned record or of a view.
template <typename Number>
void Add(kind::InPlace, Sum& sum, Number number)
{
    sum.Add(number);
}
void Add(kind::Time, Sum& sum, wem::types::Timestamp time)
{
    sum.Add(time.count);
}
template <typename Sequence>
void Add(kind::Bytes, Sum& sum, const Sequence& bytes)
{
    sum.AddBytes(bytes.data(), bytes.size());
}
template <std::size_t MaxBytes, typename Sequence>
void Add(kind::Text<MaxBytes>, Sum& sum, const Sequence& text)
{
    sum.AddBytes(text.data(), text.size());
}
template <typename Sequence>
void Add(kind::Blob, Sum& sum, const Sequence& blob)
{
    sum.AddBytes(blob.data(), blob.size());
}
template <typename Record>
void Add(kind::Nested, Sum& sum, const Record& record);
template <typename Record, typename Access>
void Add(kind::Nested, Sum& sum, const common::RecordView<Record, Access>& view);
template <std::uint64_t MaxCount, typename Elements>
void Add(kind::List<MaxCount>, Sum& sum, const Elements& elements)
{
    for (const auto& element : elements)
        Add(kind::Nested{}, sum, element);
}
template <typename Kind, typename Optional>
void Add(kind::Optional<Kind>, Sum& sum, const Optional& value)
{
    if (value.has_value()) Add(Kind{}, sum, *value);
}

template <typename Record>
void Add(kind::Nested, Sum& sum, const Record& record)
{
    common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) Add(typename Row::Kind{}, sum, Row::InDomain::Of(record));
    });
}
template <typename View, auto Member>
auto FieldOf(const View& view, common::detail::Member<Member>)
{
    return view.template Get<Member>();
}
template <typename View, typename List>
auto FieldOf(const View& view, common::detail::Itself<List>)
{
    return view.Get();
}
template <typename Record, typename Access>
void Add(kind::Nested, Sum& sum, const common::RecordView<Record, Access>& view)
{
    common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) Add(typename Row::Kind{}, sum, FieldOf(view, typename Row::InDomain{}));
    });
}
template <typename Source>
[[gnu::flatten]] std::uint64_t SumOfAll(const Source& source)
{
    Sum sum;
    Add(kind::Nested{}, sum, source);
    return sum.Total();
}

// One text of an owned record.
std::uint64_t OneText(const ServerConnectionParameters& record)
{
    return record.proxy.has_value() ? SumOf(record.proxy->credentials.password) : 0;
}
std::uint64_t OneText(const AppInfo& record)
{
    const auto& items = record.productInfo.updCfgArray.items;
    return items.size() <= entryAskedFor ? 0 : SumOf(items[entryAskedFor].field2);
}
std::uint64_t OneText(const FileChunk& record)
{
    return SumOf(record.fileName);
}
std::uint64_t OneText(const Parameters& record)
{
    return record.empty() ? 0 : SumOf(record.back().name);
}

// And of a view.
template <typename Access>
std::uint64_t OneText(const common::RecordView<ServerConnectionParameters, Access>& view)
{
    const auto proxy = view.template Get<&ServerConnectionParameters::proxy>();
    if (!proxy.has_value()) return 0;
    return SumOf(proxy->template Get<&ProxySettings::credentials>().template Get<&Credentials::password>());
}
template <typename Access>
std::uint64_t OneText(const common::RecordView<AppInfo, Access>& view)
{
    const auto configuration = view.template Get<&AppInfo::productInfo>().template Get<&ProductInfo::updCfgArray>();
    const auto items = configuration.template Get<&ProductUpdCfgArray::items>();
    return items.size() <= entryAskedFor ? 0 : SumOf(items[entryAskedFor].template Get<&ProductUpdCfg::field2>());
}
template <typename Access>
std::uint64_t OneText(const common::RecordView<FileChunk, Access>& view)
{
    return SumOf(view.template Get<&FileChunk::fileName>());
}
template <typename Access>
std::uint64_t OneText(const common::RecordView<Parameters, Access>& view)
{
    const auto parameters = view.Get();
    if (parameters.empty()) return 0;
    return SumOf(parameters[parameters.size() - 1].template Get<&common::RawVynParam::name>());
}

// And by hand, by somebody who knows the layout and trusts the message.
zt_ptr_t PointerAt(const void* place)
{
    zt_ptr_t pointer;
    std::memcpy(&pointer, place, sizeof(pointer));
    return pointer;
}
std::uint64_t SumAt(const std::uint8_t* arena, zt_ptr_t pointer)
{
    Sum sum;
    sum.AddBytes(arena + pointer.offset, pointer.size);
    return sum.Total();
}
std::uint64_t OneTextByHand(const common::WireOf<ServerConnectionParameters>& wire, const std::uint8_t* arena)
{
    using Proxy = common::WireOf<ProxySettings>;
    const zt_ptr_t proxy = PointerAt(&wire.proxy);
    if (proxy.size == 0) return 0;
    return SumAt(arena, PointerAt(arena + proxy.offset + offsetof(Proxy, credentials.password)));
}
std::uint64_t OneTextByHand(const common::WireOf<AppInfo>& wire, const std::uint8_t* arena)
{
    using Entry = common::WireOf<ProductUpdCfg>;
    const zt_ptr_t items = PointerAt(&wire.productInfo.updCfgArray.items);
    if (items.size / sizeof(Entry) <= entryAskedFor) return 0;
    const std::uint8_t* const entry = arena + items.offset + entryAskedFor * sizeof(Entry);
    return SumAt(arena, PointerAt(entry + offsetof(Entry, field2)));
}
std::uint64_t OneTextByHand(const common::WireOf<FileChunk>& wire, const std::uint8_t* arena)
{
    return SumAt(arena, PointerAt(&wire.fileName));
}
std::uint64_t OneTextByHand(const common::WireOf<Parameters>& wire, const std::uint8_t* arena)
{
    using Parameter = common::WireOf<common::RawVynParam>;
    const zt_ptr_t parameters = PointerAt(&wire.params);
    if (parameters.size == 0) return 0;
    const std::uint8_t* const last = arena + parameters.offset + parameters.size - sizeof(Parameter);
    return SumAt(arena, PointerAt(last + offsetof(Parameter, name)));
}

// A message as it arrives, and as it is known once it was verified.
template <typename Record>
struct Arrived {
    explicit Arrived(const Record& record)
        : message(common::Encode(record)),
          arena{message.arena.data(), message.arena.data() + message.arena.size(),
                message.arena.data() + message.arena.size()},
          verified(common::Verified<Record>(message.wire, &arena).value())
    {
    }
    Arrived(const Arrived&) = delete;
    Arrived& operator=(const Arrived&) = delete;
    ~Arrived() = default;

    common::Message<Record> message;
    zt_arena arena;
    common::VerifiedView<Record> verified;
};

template <typename Record>
struct ThisLibrary {
    using Message = Arrived<Record>;

    static bool IsGood(const Message& it) { return !common::Verify<Record>(it.message.wire, &it.arena); }
    static std::uint64_t VerifyAndTouch(const Message& it)
    {
        const auto view = common::Verified<Record>(it.message.wire, &it.arena);
        return view.has_value() ? SumOfAll(*view) : 0;
    }
    static std::uint64_t VerifyAndSeeOne(const Message& it)
    {
        const auto view = common::Verified<Record>(it.message.wire, &it.arena);
        return view.has_value() ? OneText(*view) : 0;
    }

    static std::uint64_t TouchTesting(const Message& it)
    {
        return SumOfAll(common::RecordView<Record>(it.message.wire, &it.arena));
    }
    static std::uint64_t SeeOneTesting(const Message& it)
    {
        return OneText(common::RecordView<Record>(it.message.wire, &it.arena));
    }

    static std::uint64_t TouchTrusting(const Message& it) { return SumOfAll(it.verified); }
    static std::uint64_t SeeOneTrusting(const Message& it) { return OneText(it.verified); }

    static std::uint64_t SeeOneByHand(const Message& it)
    {
        return OneTextByHand(it.message.wire, it.message.arena.data());
    }

    static Record Read(const Message& it) { return common::CastFromZt(it.message.wire, &it.arena); }
    static bool IsRead(const Message& it)
    {
        Keep(Read(it));
        return true;
    }
    static std::uint64_t ReadAndTouch(const Message& it) { return SumOfAll(Read(it)); }
    static std::uint64_t ReadAndSeeOne(const Message& it) { return OneText(Read(it)); }

    static std::vector<Looks<Message>> WaysToLook()
    {
        return {{"this library's reader", IsRead, ReadAndTouch, ReadAndSeeOne},
                {"this library, verified", IsGood, VerifyAndTouch, VerifyAndSeeOne},
                {"this library, view", nullptr, TouchTesting, SeeOneTesting},
                {"this library, trusted", nullptr, TouchTrusting, SeeOneTrusting},
                {"by hand", nullptr, nullptr, SeeOneByHand}};
    }
};

// The message is made only where it is wanted: it would be in the way of what else is counted in the process.
template <typename Message, typename Answer, typename Make>
void AddLook(Conversions& conversions, const std::string& name, std::size_t bytes, Answer (*look)(const Message&),
             Answer right, Make make)
{
    if (look == nullptr || !conversions.Wants(name)) return;
    const std::shared_ptr<const Message> message = make();
    look = Opaque(look);
    if (look(*message) != right) throw std::logic_error(name + ": what is seen is not what was written");
    conversions.Add(name, bytes, [=](std::size_t times) {
        for (; times > 0; --times)
            Keep(look(*message));
    });
}

template <typename Message, typename Record, typename Make>
void AddWays(Conversions& conversions, const std::string& record, const std::vector<Looks<Message>>& ways,
             const Record& original, Make make)
{
    const std::size_t bytes = sizeof(common::WireOf<Record>) + common::ArenaSize(original, 0);
    for (const Looks<Message>& way : ways) {
        AddLook(conversions, record + "/verify/" + way.name, bytes, way.verify, true, make);
        AddLook(conversions, record + "/touch/" + way.name, bytes, way.touch, SumOfAll(original), make);
        AddLook(conversions, record + "/one text/" + way.name, 0, way.oneText, OneText(original), make);
    }
}

template <typename Record>
void AddRecord(Conversions& conversions, const std::string& name, const Record& record)
{
    AddWays(conversions, name, ThisLibrary<Record>::WaysToLook(), record,
            [&] { return std::make_shared<const Arrived<Record>>(record); });
    for (const Peer& peer : Peers()) {
        const auto codec = peer.For<Record>();
        AddWays(conversions, name, codec->WaysToLook(), record,
                [&] { return std::make_shared<const std::vector<std::uint8_t>>(codec->Message(record)); });
    }
}

} // namespace

void AddLooks(Conversions& conversions)
{
    AddRecord(conversions, "A", Server());
    AddRecord(conversions, "B", App());
    AddRecord(conversions, "C", Chunk());
    AddRecord(conversions, "D", ParameterList(1000));
}

} // namespace bench
