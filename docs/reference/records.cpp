// The tables of docs/records.md, out of the records' own descriptions.
#include "reference.h"

#include <common/all_records.h>
#include <common/arena_size.h>

#include <fmt/format.h>

#include <cctype>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace {

using namespace vyn_connector::common;

// "2,147,483,647"
std::string Grouped(std::uint64_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3;)
        text.insert(at -= 3, ",");
    return text;
}

// What a kind's writer accepts. A kind that derives from another is taken as that one.
const char* Limit(const void*)
{
    return "";
}
template <std::size_t N>
std::string Limit(const kind::Text<N>*)
{
    return Grouped(N) + " bytes";
}
std::string Limit(const kind::Blob* blob)
{
    return Grouped(blob->limit) + " bytes";
}
template <std::uint64_t N>
std::string Limit(const kind::List<N>*)
{
    return Grouped(N) + " elements";
}
template <std::uint64_t N, typename Kind>
std::string Limit(const kind::Set<N, Kind>*)
{
    return Grouped(N) + " elements, " + Limit(static_cast<const Kind*>(nullptr)) + " each";
}
template <std::size_t N>
std::string Limit(const kind::Entries<N>*)
{
    return Grouped(N) + " entries";
}
template <std::size_t Count, std::size_t N>
std::string Limit(const kind::EventTexts<Count, N>*)
{
    return Grouped(N) + " bytes each";
}
template <typename Kind>
auto Limit(const kind::Optional<Kind>*)
{
    return Limit(static_cast<const Kind*>(nullptr));
}

template <typename Kind, typename = void>
constexpr bool hasLimit = false;
template <typename Kind>
constexpr bool hasLimit<Kind, std::void_t<decltype(Kind::limit)>> = true;

// Stands for a type where an overload only has to know it.
template <typename T>
struct Type {
};

// The record that lies in a field of this kind and this type, if one does.
template <typename Domain>
Type<void> Inside(const void*, Type<Domain>);
template <typename Domain>
Type<Domain> Inside(const kind::Nested*, Type<Domain>);
template <std::uint64_t N, typename Domain>
Type<typename Domain::value_type> Inside(const kind::List<N>*, Type<Domain>);
template <std::size_t N, typename Map>
Type<typename kind::Entries<N>::template RecordIn<Map>> Inside(const kind::Entries<N>*, Type<Map>);
template <typename Kind, typename Value>
auto Inside(const kind::Optional<Kind>*, Type<std::optional<Value>>)
    -> decltype(Inside(static_cast<const Kind*>(nullptr), Type<Value>{}));

std::string Link(const std::string& record)
{
    std::string anchor;
    for (const char letter : record)
        anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return fmt::format("[{}](#{})", record, anchor);
}

template <typename Record>
std::string LinkTo(Type<Record>)
{
    return fmt::format(" of {}", Link(Description<Record>::name));
}
std::string LinkTo(Type<void>)
{
    return {};
}

// The type's name in the program, where it is no template's.
template <typename Record>
std::string NameOf()
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(Record).name(), nullptr, nullptr, &status), std::free);
    return status == 0 ? name.get() : "";
}
template <typename Record>
std::string DomainOf(Type<Record>)
{
    const std::string name = NameOf<Record>();
    return name.find('<') == name.npos ? fmt::format("`{}`", name) : "";
}
template <typename Element>
std::string DomainOf(Type<std::vector<Element>>)
{
    const std::string name = DomainOf(Type<Element>{});
    return name.empty() ? "" : fmt::format("A `std::vector` of {}", name);
}

template <typename Row>
void PrintRow(const Row& row)
{
    if constexpr (isField<Row>) {
        constexpr const typename Row::Kind* kind = nullptr;
        static_assert(!hasLimit<typename Row::Kind> || std::is_same_v<decltype(Limit(kind)), std::string>,
                      "a kind with a limit of its own needs words for it here");
        using Record = decltype(Inside(kind, Type<typename Row::InDomain::Type>{}));
        fmt::print("| {} | {} | `{}` | `{}`{} | {} |\n", row.offset, row.width, row.name, row.kind, LinkTo(Record{}),
                   Limit(kind));
    } else if constexpr (isInDomain<Row>) {
        fmt::print("| | | `{}` | does not travel | |\n", row.name);
    } else {
        fmt::print("| {} | {} | | padding | |\n", row.offset, row.width);
    }
}

// An offset has 32 bits.
template <typename Record>
std::string MostArena()
{
    constexpr std::size_t most = MaxArenaSize<Record>();
    return most > 0xFFFFFFFF ? "no bound" : Grouped(most);
}

template <typename Record>
void PrintSummary()
{
    fmt::print("| {} | {} | {} | {} |\n", Link(Description<Record>::name), sizeof(WireOf<Record>),
               alignof(WireOf<Record>), MostArena<Record>());
}

template <typename Record>
void PrintRecord()
{
    const std::string domain = DomainOf(Type<Record>{});
    fmt::print("\n## {}\n\n{}{} `{}`: {} bytes, aligned to {}.\n\n", Description<Record>::name, domain,
               domain.empty() ? "On the wire" : ", on the wire", NameOf<WireOf<Record>>(), sizeof(WireOf<Record>),
               alignof(WireOf<Record>));
    fmt::print("| Offset | Width | Field | Kind | Limit |\n| ---: | ---: | --- | --- | --- |\n");
    ForEachRow<Record>([](const auto& row) { PrintRow(row); });
}

} // namespace

void PrintRecords()
{
    fmt::print(
        "# The records\n\n"
        "Every wire structure, byte by byte. Offsets and widths are in bytes; [the format](format.md) says what "
        "each kind\nmeans and what it puts into the arena. A limit is what a writer accepts; readers accept any "
        "amount that lies inside\nthe arena. This page is printed by `docs/reference` out of the tables that the "
        "conversions are made from.\n\n"
        "![A message with its arena](message.svg)\n\n"
        "| Record | Wire structure | Alignment | Arena, at most |\n| --- | ---: | ---: | ---: |\n");
    ForEach(AllRecords{}, [](auto record) { PrintSummary<typename decltype(record)::Type>(); });
    ForEach(AllRecords{}, [](auto record) { PrintRecord<typename decltype(record)::Type>(); });
}
