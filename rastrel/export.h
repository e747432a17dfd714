#pragma once

/// Marks a class or function that the shared library exports. Everything else stays hidden, so that
/// a host sees the interface and nothing of the library's own names.
#define RASTREL_API __attribute__((visibility("default")))
