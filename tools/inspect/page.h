// A message as one page that needs nothing else: its faults, its tree and its bytes, each lighting up the other.
// page.css and page.js are parts of it.
#pragma once

#include "message.h"

#include <string>

namespace inspect {

std::string Page(const Message& message, bool showsSecrets);

// The contents of page.css and page.js, as they were when this was built.
extern const char* const pageStyle;
extern const char* const pageScript;

} // namespace inspect
