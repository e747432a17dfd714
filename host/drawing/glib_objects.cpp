#include "host/drawing/glib_objects.h"

#include <glib-object.h>

namespace rastrel::drawing {

void GlibEnd::operator()(GError* error) const { g_error_free(error); }
void GlibEnd::operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
void GlibEnd::operator()(void* object) const { g_object_unref(object); }

std::string ReasonAfterColon(const GlibError& error) {
  return error ? std::string(": ") + error->message : std::string();
}

}  // namespace rastrel::drawing
