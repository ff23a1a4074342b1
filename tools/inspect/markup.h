// Text for the picture and the page: nothing of a message can leave the place where it is put.
#pragma once

#include <string>
#include <string_view>

namespace inspect {

// For the text and the quoted attributes of HTML and SVG. The text is printable already.
inline std::string Escaped(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

} // namespace inspect
