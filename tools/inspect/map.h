// A message as a picture, in SVG: 64 bytes in a row, first those of the wire structure, then those of the arena, a
// colour for each field. What no field owns and what several do is hatched; what is wrong is red.
#pragma once

#include "message.h"

#include <string>

namespace inspect {

std::string Map(const Message& message, bool showsSecrets);

} // namespace inspect
