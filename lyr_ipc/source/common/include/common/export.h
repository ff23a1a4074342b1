// Marks what the shared library exports. Everything else in it is hidden. Types carry the mark too, because an
// instantiation of a template is exported only where every type in its arguments is.
#pragma once

#define VYN_EXPORT __attribute__((visibility("default")))

// Marks an argument that has to outlive what is made of it, for compilers that warn where it does not.
#ifdef __has_cpp_attribute
#if __has_cpp_attribute(clang::lifetimebound)
#define VYN_LIFETIME_BOUND [[clang::lifetimebound]]
#endif
#endif
#ifndef VYN_LIFETIME_BOUND
#define VYN_LIFETIME_BOUND
#endif
