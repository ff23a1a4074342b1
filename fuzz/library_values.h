// The library's records as the model's values and back, and its errors as the model's. The members are listed by hand,
// in the order of the domain record, because the library's own tables are among the things that are tested.
#pragma once

#include "model/model.h"

#include <common/vyn_connector_common.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <unordered_set>
#include <utility>
#include <vector>

namespace library {

using namespace vyn_connector;
using common::RawVynParam;
using wem::types::Timestamp;

// --- members ----------------------------------------------------------------------------------------------------

// `Members(record, use)` calls `use(member, ...)`. `Same<R, T>` lets one list serve const and other records.
template <typename R, typename T>
using Same = std::enable_if_t<std::is_same_v<std::remove_const_t<R>, T>, int>;

template <typename R, typename Use, Same<R, Credentials> = 0>
void Members(R& r, Use&& use)
{
    use(r.userName, r.password);
}
template <typename R, typename Use, Same<R, ProxySettings> = 0>
void Members(R& r, Use&& use)
{
    use(r.address, r.port, r.credentials);
}
template <typename R, typename Use, Same<R, SslSettings> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4, r.field5);
}
template <typename R, typename Use, Same<R, VynRequestsTimeouts> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2);
}
template <typename R, typename Use, Same<R, VynConnectorSettings> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4, r.field5, r.field6);
}
template <typename R, typename Use, Same<R, VynServerData> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1);
}
template <typename R, typename Use, Same<R, ServerConnectionParameters> = 0>
void Members(R& r, Use&& use)
{
    use(r.address, r.proxy, r.ssl, r.timeouts);
}
template <typename R, typename Use, Same<R, VynConnectionParameters> = 0>
void Members(R& r, Use&& use)
{
    use(r.serverParameters, r.credentials);
}
template <typename R, typename Use, Same<R, RawVynParam> = 0>
void Members(R& r, Use&& use)
{
    use(r.value, r.name);
}
template <typename R, typename Use, Same<R, ProductUpdCfg> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2);
}
template <typename R, typename Use, Same<R, ProductUpdCfgArray> = 0>
void Members(R& r, Use&& use)
{
    use(r.items);
}
template <typename R, typename Use, Same<R, ProductHsdpStatus> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2);
}
template <typename R, typename Use, Same<R, ProductHsdpInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.statuses);
}
template <typename R, typename Use, Same<R, LicenseKeyInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8);
}
template <typename R, typename Use, Same<R, LicenseInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.keyInfo1, r.keyInfo2);
}
template <typename R, typename Use, Same<R, ProductInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4, r.field5, r.updCfgArray, r.hsdpInfo, r.field6);
}
template <typename R, typename Use, Same<R, DeviceInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9, r.field10, r.field11,
        r.field12, r.field13, r.field14, r.field15);
}
template <typename R, typename Use, Same<R, AppInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.productInfo, r.licenseInfo, r.deviceInfo);
}
template <typename R, typename Use, Same<R, DynamicAppInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1);
}
template <typename R, typename Use, Same<R, FileInfoParams> = 0>
void Members(R& r, Use&& use)
{
    use(r.fileName);
}
template <typename R, typename Use, Same<R, FileInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.fileName, r.field2, r.field3, r.timestamp, r.fileSize);
}
template <typename R, typename Use, Same<R, FileChunkParams> = 0>
void Members(R& r, Use&& use)
{
    use(r.fileName, r.chunkOffset, r.chunkSize);
}
template <typename R, typename Use, Same<R, FileChunk> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.fileName, r.chunkOffset, r.chunkSize, r.data);
}
template <typename R, typename Use, Same<R, ClientCertParams> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4);
}
template <typename R, typename Use, Same<R, ClientCertInfo> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.field2, r.field3, r.field4, r.field5);
}
template <typename R, typename Use, Same<R, VynSubscription> = 0>
void Members(R& r, Use&& use)
{
    use(r.first, r.second);
}
template <typename R, typename Use, Same<R, VynSubscriptionsWithHash> = 0>
void Members(R& r, Use&& use)
{
    use(r.first, r.second);
}
template <typename R, typename Use, Same<R, VynEvent> = 0>
void Members(R& r, Use&& use)
{
    use(r.field1, r.severity, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9, r.stringArray);
}

// What has no record around it is its own only member: lists, and what is in an optional's slot.
template <typename T>
inline constexpr bool standsAlone =
    std::is_same_v<T, std::vector<RawVynParam>> || std::is_same_v<T, std::vector<ClientCertInfo>> ||
    std::is_same_v<T, VynUpdateIdentifiers> || std::is_same_v<T, VynUpdateIdentifier> ||
    std::is_same_v<T, VynSubscriptions> || std::is_same_v<T, std::string> || std::is_same_v<T, Timestamp>;

template <typename R, typename Use, std::enable_if_t<standsAlone<std::remove_const_t<R>>, int> = 0>
void Members(R& r, Use&& use)
{
    use(r);
}

// --- from the library's values to the model's ---------------------------------------------------------------------

// What has no order, in the order in which it is stored, as writers go through it, or sorted, to be compared.
enum class Order { AsStored, Sorted };

template <typename Record>
model::Value FromRecord(const Record& record, Order order);

inline void Settle(std::vector<model::Value>& items, Order order)
{
    if (order == Order::Sorted) std::sort(items.begin(), items.end());
}

template <typename T>
model::Value FromMember(const T& member, Order order)
{
    if constexpr (std::is_enum_v<T>)
        return {static_cast<std::make_unsigned_t<std::underlying_type_t<T>>>(member), "", {}};
    else if constexpr (std::is_integral_v<T>)
        return {std::uint64_t{member}, "", {}};
    else
        return FromRecord(member, order);
}
inline model::Value FromMember(const Timestamp& member, Order /*order*/)
{
    return {static_cast<std::uint64_t>(member.count), "", {}};
}
inline model::Value FromMember(const std::string& member, Order /*order*/)
{
    return {0, member, {}};
}
inline model::Value FromMember(const std::vector<std::uint8_t>& member, Order /*order*/)
{
    return {0, std::string(member.begin(), member.end()), {}};
}
inline model::Value FromMember(const std::array<std::byte, 16>& member, Order /*order*/)
{
    model::Value value;
    for (const std::byte byte : member)
        value.bytes += static_cast<char>(byte);
    return value;
}
template <typename T>
model::Value FromMember(const std::vector<T>& member, Order order)
{
    model::Value value;
    for (const T& element : member)
        value.items.push_back(FromRecord(element, order));
    return value;
}
template <typename T>
model::Value FromMember(const std::optional<T>& member, Order order)
{
    model::Value value;
    if (member.has_value()) value.items.push_back(FromRecord(*member, order));
    return value;
}
template <std::size_t Count>
model::Value FromMember(const std::array<std::string, Count>& member, Order /*order*/)
{
    model::Value value;
    for (const std::string& text : member)
        value.items.push_back({0, text, {}});
    return value;
}
inline model::Value FromMember(const std::unordered_set<std::string>& member, Order order)
{
    model::Value value;
    for (const std::string& text : member)
        value.items.push_back({0, text, {}});
    Settle(value.items, order);
    return value;
}
inline model::Value FromMember(const VynSubscriptions& member, Order order)
{
    model::Value value;
    for (const auto& [severity, names] : member) {
        // A copy of the names need not have their order, and it is a copy that is written.
        const VynSubscription entry(severity, names);
        value.items.push_back({0, "", {FromMember(entry.first, order), FromMember(entry.second, order)}});
    }
    Settle(value.items, order);
    return value;
}

template <typename Record>
model::Value FromRecord(const Record& record, Order order)
{
    model::Value value;
    Members(record, [&](const auto&... member) { (value.items.push_back(FromMember(member, order)), ...); });
    return value;
}

// --- and back -----------------------------------------------------------------------------------------------------

template <typename Record>
Record ToRecord(const model::Value& value);

template <typename T>
void ToMember(const model::Value& value, T& member)
{
    if constexpr (std::is_enum_v<T> || std::is_integral_v<T>)
        member = static_cast<T>(value.number);
    else
        member = ToRecord<T>(value);
}
inline void ToMember(const model::Value& value, Timestamp& member)
{
    member.count = static_cast<std::int64_t>(value.number);
}
inline void ToMember(const model::Value& value, std::string& member)
{
    member = value.bytes;
}
inline void ToMember(const model::Value& value, std::vector<std::uint8_t>& member)
{
    member.assign(value.bytes.begin(), value.bytes.end());
}
inline void ToMember(const model::Value& value, std::array<std::byte, 16>& member)
{
    for (std::size_t i = 0; i < member.size(); ++i)
        member[i] = static_cast<std::byte>(value.bytes.at(i));
}
template <typename T>
void ToMember(const model::Value& value, std::vector<T>& member)
{
    for (const model::Value& item : value.items)
        member.push_back(ToRecord<T>(item));
}
template <typename T>
void ToMember(const model::Value& value, std::optional<T>& member)
{
    if (!value.items.empty()) member = ToRecord<T>(value.items[0]);
}
template <std::size_t Count>
void ToMember(const model::Value& value, std::array<std::string, Count>& member)
{
    for (std::size_t i = 0; i < Count; ++i)
        member[i] = value.items.at(i).bytes;
}
inline void ToMember(const model::Value& value, std::unordered_set<std::string>& member)
{
    for (const model::Value& item : value.items)
        member.insert(item.bytes);
}
inline void ToMember(const model::Value& value, VynSubscriptions& member)
{
    for (const model::Value& item : value.items) {
        auto entry = ToRecord<VynSubscription>(item);
        member.emplace(entry.first, std::move(entry.second));
    }
}

template <typename Record>
Record ToRecord(const model::Value& value)
{
    Record record{};
    std::size_t i = 0;
    Members(record, [&](auto&... member) { (ToMember(value.items.at(i++), member), ...); });
    return record;
}

// --- errors --------------------------------------------------------------------------------------------------------

inline std::string Ascii(std::u16string_view text)
{
    std::string ascii;
    for (const char16_t c : text)
        ascii += c < 0x80 ? static_cast<char>(c) : '?';
    return ascii;
}

inline model::Failure FromRuntime(const mur::ResultCodeException& error, const std::string& type)
{
    // Anything amiss here is part of the text, and so differs from what the model says.
    std::string text = Ascii(error.Text());
    if ("mur::" + std::string(error.what()) != type) text += std::string(", what ") + error.what();
    if (error.message.size != 0) text += ", a message";
    if (error.nested != nullptr) text += ", nested";
    if (error.detail != 0) text += ", detail " + std::to_string(error.detail);
    return {type, text, static_cast<std::uint32_t>(error.resultCode), error.file == nullptr ? "" : error.file,
            error.line};
}

// What `call` throws, as the model says it.
template <typename Call>
std::optional<model::Failure> FailureOf(Call&& call)
{
    try {
        call();
    } catch (const mur::ResultCodeException& error) {
        if (typeid(error) == typeid(mur::InvalidArgumentException))
            return FromRuntime(error, "mur::InvalidArgumentException");
        if (typeid(error) == typeid(mur::ResultCodeException)) return FromRuntime(error, "mur::ResultCodeException");
        return FromRuntime(error, typeid(error).name());
    } catch (const std::exception& error) {
        if (typeid(error) == typeid(std::out_of_range)) return model::Failure{"std::out_of_range", error.what()};
        if (typeid(error) == typeid(std::runtime_error)) return model::Failure{"std::runtime_error", error.what()};
        if (typeid(error) == typeid(std::length_error)) return model::Failure{"std::length_error", error.what()};
        if (typeid(error) == typeid(std::bad_alloc)) return model::Failure{"std::bad_alloc", "std::bad_alloc"};
        return model::Failure{typeid(error).name(), error.what()};
    }
    return std::nullopt;
}

} // namespace library
