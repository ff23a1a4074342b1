// Symbol visibility of the runtime. The library is built with everything hidden; what its callers link against
// is marked here. A template instantiation is exported only when every type in its arguments is exported too.
#pragma once

#define MUR_EXPORT __attribute__((visibility("default")))

// For inline members of an exported class: every binary keeps its own copy, the library exports none.
#define MUR_LOCAL __attribute__((visibility("hidden")))
