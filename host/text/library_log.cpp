#include "host/text/library_log.h"

#include <glib.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "rastrel/platform/os/shown_text.h"

namespace rastrel::text {

namespace {

FatalLogHandler s_Fatal = nullptr;

std::string MessageOf(const GLogField* fields, gsize count) {
  std::string message = "a library can't go on";
  for (gsize i = 0; i < count; ++i) {
    if (std::strcmp(fields[i].key, "MESSAGE") != 0) continue;
    const auto* text = static_cast<const char*>(fields[i].value);
    const std::size_t length =
        fields[i].length < 0 ? std::strlen(text) : static_cast<std::size_t>(fields[i].length);
    message += ": ";
    message += os::CleanLine({text, length});
  }
  return message;
}

GLogWriterOutput Write(GLogLevelFlags level, const GLogField* fields, gsize count,
                       gpointer /*nothing*/) {
  constexpr int fatal = G_LOG_FLAG_FATAL | G_LOG_LEVEL_ERROR;
  if ((level & fatal) != 0) s_Fatal(MessageOf(fields, count));
  return G_LOG_WRITER_HANDLED;
}

}  // namespace

void GuardLibraryLog(FatalLogHandler fatal) {
  s_Fatal = fatal;
  g_log_set_writer_func(Write, nullptr, nullptr);
}

}  // namespace rastrel::text
