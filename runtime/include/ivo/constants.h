// Paths to items, and the results that operations on items share: for users of this library, which itself reads
// none of them. All are constant and exist before main.
#pragma once

#include <mur/export.h>
#include <mur/result_code.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace ivo {

// The way to an item, outermost component first; each is a numeric id or a name.
class Path {
public:
    using component = std::variant<unsigned long, std::string>;
    using const_iterator = std::vector<component>::const_iterator;

    // Never a constant initialiser: whatever standard a unit is compiled for, `Root` is then built under the same
    // guard, in writable memory.
    Path() {} // NOLINT(modernize-use-equals-default): a defaulted one would be constexpr
    explicit Path(std::vector<component> pathComponents) : components(std::move(pathComponents)) {}

    std::size_t size() const noexcept { return components.size(); }
    bool empty() const noexcept { return components.empty(); }
    const_iterator begin() const noexcept { return components.begin(); }
    const_iterator end() const noexcept { return components.end(); }

private:
    std::vector<component> components;
};

class Error : public std::logic_error {
public:
    Error(const char* text, std::int32_t code) : std::logic_error(text), resultCode(code) {}

    std::int32_t resultCode;
};

// One object of each in the process. Marked as used so that no compiler drops the library's own.
[[gnu::used]] MUR_EXPORT inline const Path Root{};
[[gnu::used]] MUR_EXPORT inline const std::pair<int, std::string> ResultOk{0, std::string()};

// One object of each in every source unit.
static const Error ItemAlreadyExists("ivo: Item with given id already exists", mur::resultFound);
static const Error ItemDoesNotExist("ivo: Item with given id does not exist", mur::resultNotFound);
static const Error PathMismatch("ivo: Path or id does not correspond to contained item", mur::resultNotMatched);

} // namespace ivo
