#pragma once

#include <memory>
#include <string>

// GLib's types, whose headers only sources include.
typedef struct _GError GError;
typedef struct _GBytes GBytes;

/// Owners of GLib's objects, for the libraries that are built on it.
namespace rastrel::drawing {

/// Ends an error, a block of bytes, or any other object.
struct GlibEnd {
  void operator()(GError* error) const;
  void operator()(GBytes* bytes) const;
  void operator()(void* object) const;
};
using GlibError = std::unique_ptr<GError, GlibEnd>;

/// ": " and the error's message, as UTF-8; empty without an error.
[[nodiscard]] std::string ReasonAfterColon(const GlibError& error);

}  // namespace rastrel::drawing
