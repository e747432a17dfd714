#include "host/qt/display.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <string_view>

namespace rastrel::qt {

namespace {

std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : std::string_view();
}

bool AnswersX() {
  xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
  const bool answers = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return answers;
}

}  // namespace

Expected<void> CheckDisplay() {
  const std::string_view platform = Variable("QT_QPA_PLATFORM");
  if (platform == "offscreen" || platform == "minimal") return {};
  if (Variable("DISPLAY").empty())
    return FailureOf("there is no display: the variable DISPLAY is not set");
  if (AnswersX()) return {};
  return FailureOf("the display " + std::string(Variable("DISPLAY")) + " does not answer");
}

}  // namespace rastrel::qt
