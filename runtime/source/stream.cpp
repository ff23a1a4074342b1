// Integer formatting and its tokens.
#include <mur/stream.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <type_traits>

namespace mur::stream {

const char16_t formatting_tokens<char16_t>::negative[2] = u"-";
const char16_t formatting_tokens<char16_t>::base_lower[3] = u"0x";
const char16_t formatting_tokens<char16_t>::digits_lower[39] = u"0123456789abcdefghijklmnopqrstuvwxyz";

template <typename String, typename Options, typename Integer>
std::size_t stream_put_int(String& out, const Options& options, Integer value)
{
    using Unsigned = std::make_unsigned_t<Integer>;
    using tokens = formatting_tokens<char16_t>;

    auto magnitude = static_cast<Unsigned>(value);
    const char16_t* prefix = tokens::base_lower;
    std::size_t prefixLength = 0;
    if (options.radix == 10 && value < 0) {
        magnitude = Unsigned{0} - magnitude;
        prefix = tokens::negative;
        prefixLength = 1;
    } else if (options.showBase && options.radix == 16) {
        prefixLength = 2;
    } else if (options.showBase && options.radix == 8) {
        prefixLength = 1;
    }

    const Unsigned radix = std::clamp<Unsigned>(options.radix, 2, std::size(tokens::digits_lower));
    char16_t digits[std::numeric_limits<Unsigned>::digits];
    char16_t* const digitsEnd = std::end(digits);
    char16_t* firstDigit = digitsEnd;
    do {
        *--firstDigit = tokens::digits_lower[magnitude % radix];
        magnitude /= radix;
    } while (magnitude != 0);
    const auto digitCount = static_cast<std::size_t>(digitsEnd - firstDigit);

    std::size_t padding = 0;
    if (options.fill < 0x10000 && options.width > prefixLength + digitCount)
        padding = options.width - (prefixLength + digitCount);
    const auto fill = static_cast<char16_t>(options.fill);

    // Everything fits from here on, so that a string that cannot grow stays as it was.
    const std::size_t total = padding + prefixLength + digitCount;
    out.reserve_extra(nullptr, total);
    if (options.alignment > 0) out.append(padding, fill);
    out.append(prefix, prefixLength);
    if (options.alignment == 0) out.append(padding, fill);
    out.append(firstDigit, digitCount);
    if (options.alignment < 0) out.append(padding, fill);
    return total;
}

template std::size_t stream_put_int<types::wide_string, format_options_t, int>(types::wide_string&,
                                                                               const format_options_t&, int);

} // namespace mur::stream
