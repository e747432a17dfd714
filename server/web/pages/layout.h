#pragma once

#include <string>

#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/pages/words.h"

namespace rastrel::server::web {

/// One page for a browser.
struct Layout {
  std::string title;  ///< escaped
  std::string name;   ///< "overview", "jobs", "job", "devices", "templates", "template", "sign-in":
                      ///< for script and style
  std::string attributes;  ///< of `main`, such as ` data-job="3"`
  std::string body;        ///< markup
};

/// The whole page: head, navigation, main part, places of messages. Nothing is inline, and nothing
/// comes from elsewhere.
[[nodiscard]] Response PageResponse(int status, const Request& request, const Words& words,
                                    const Layout& layout);

}  // namespace rastrel::server::web
