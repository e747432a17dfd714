#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "server/web/http/request.h"
#include "server/web/http/response.h"

namespace rastrel::server::web {

/// What a route takes of a request's body.
enum class Body {
  None,    ///< a body is refused
  Small,   ///< up to 1 MiB, in Request::body
  Upload,  ///< up to the largest job, in Request::file; multipart/form-data or the file itself
};

/// Called on one of the server's workers, a bounded number: it may use the queue and files, and
/// does not wait for anything that takes longer; pictures of plates do, of which two at a time
/// leave workers for the others (Templates::Limits). Several run at once.
using Handler = std::function<Response(const Request&)>;

struct Route {
  Method method = Method::Get;
  /// "/api/v1/jobs/{id}": a part in braces takes any one part of the path. A last part "{name...}"
  /// takes all the rest, which may be empty.
  std::string pattern;
  /// The least role that may call it. Nobody: anybody may, and it must show nothing of the shop.
  Role role = Role::Manage;
  Body body = Body::None;
  Handler handler;
  /// A changing route that anybody may call without the token of a session: to begin one.
  bool beginsSession = false;
};

/// Finds the route of a request: by its path first, then by its method. Of several patterns that
/// fit the one with the most parts that are spelled out wins. Filled before the server starts, and
/// not changed then; finding is for any thread.
class Router {
 public:
  struct Match {
    const Route* route = nullptr;  ///< null: none
    std::map<std::string, std::string> places;
    std::string allowed;  ///< "GET, POST": other methods of that path, if the path is known
  };

  void Add(Route route);
  [[nodiscard]] Match Find(Method method, std::string_view path) const;
  [[nodiscard]] const std::vector<Route>& Routes() const { return m_Routes; }

 private:
  std::vector<Route> m_Routes;
};

}  // namespace rastrel::server::web
