// Marks what the shared library exports. Everything else in it is hidden. Types carry the mark too, because an
// instantiation of a template is exported only where every type in its arguments is.
#pragma once

#define VYN_EXPORT __attribute__((visibility("default")))
