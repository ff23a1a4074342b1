// The kind of a field that is not to be shown, a password above all: the same bytes, and a mark for whatever prints.
#pragma once

#include <type_traits>

namespace vyn_connector::common::kind {

template <typename Kind>
struct Secret : Kind {
    static constexpr bool secret = true;

    template <typename Value, typename Out>
    static void Show(const Value&, Out& out)
    {
        out.Masked();
    }
};

} // namespace vyn_connector::common::kind

namespace vyn_connector::common {

template <typename Kind, typename = void>
inline constexpr bool isSecret = false;
template <typename Kind>
inline constexpr bool isSecret<Kind, std::void_t<decltype(Kind::secret)>> = Kind::secret;

} // namespace vyn_connector::common
