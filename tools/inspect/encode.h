// Makes a message of JSON, through the library's writers: the other direction of json.h.
#pragma once

#include "capture.h"

#include <stdexcept>
#include <string_view>

namespace inspect {

// What is wrong with the JSON; the text begins with the field's path: "Credentials.userName: 131 bytes, at most 128".
class EncodeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Takes "record" and "value" of what ToJson writes, and the arena's "start"; all else is ignored. The elements of a set
// are written in the order in which they stand. Throws EncodeError.
Capture Encode(std::string_view text);

} // namespace inspect
