#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A request as handlers see it. Texts are bytes as they came, decoded once where HTTP encodes
/// them; they are foreign, and are cleaned or escaped on their way to a person.
namespace rastrel::server::web {

/// HEAD comes as Get; the answer's body is left out by the server. All else is Other.
enum class Method { Get, Post, Delete, Other };

/// "GET", "POST", "DELETE"; "?" for Other.
[[nodiscard]] const char* NameOf(Method method);

/// What a person may do; each may all that those before it may.
enum class Role {
  Nobody,  ///< has not said who it is
  See,     ///< looks at its own jobs
  Print,   ///< adds jobs and changes its own
  Manage,  ///< all jobs, of all owners
};

/// "nobody", "see", "print", "manage".
[[nodiscard]] const char* NameOf(Role role);
/// The role of one of the last three names; false if there is none.
[[nodiscard]] bool RoleOf(std::string_view name, Role& role);

/// Who sent a request, as far as it was proven.
struct Caller {
  std::string name;  ///< the owner of its jobs; empty for Nobody
  Role role = Role::Nobody;
  /// The identity came by the cookie of a session, which a browser adds by itself.
  bool byCookie = false;
  /// What a form of a page sends back in its field "csrf", or a script in X-CSRF-Token. Empty
  /// without a cookie.
  std::string formToken;

  /// The owner whose jobs the caller may see, for JobFilter and JobQueue; empty for all.
  /// REQUIRES: the role is not Nobody.
  [[nodiscard]] std::string VisibleOwner() const {
    return role == Role::Manage ? std::string() : name;
  }
};

/// A file that came with the request, in a hidden file, which goes with the request.
struct UploadedFile {
  std::string path;  ///< native; empty: none came
  std::string name;  ///< as the sender named it; no path of this machine
  std::int64_t bytes = 0;
};

using Fields = std::vector<std::pair<std::string, std::string>>;

struct Request {
  Method method = Method::Get;
  std::string path;  ///< decoded, begins with '/', without empty, "." and ".." parts
  Fields query;      ///< decoded, in order
  Fields headers;    ///< names in lower case
  Fields cookies;
  /// Parts of the path that the route's pattern names: {id}.
  std::map<std::string, std::string> places;
  /// The body of a route with Body::Small, at most 1 MiB.
  std::string body;
  /// Fields of a form: of application/x-www-form-urlencoded with Body::Small, and of
  /// multipart/form-data with Body::Upload.
  Fields form;
  UploadedFile file;  ///< with Body::Upload
  Caller caller;
  std::string address;    ///< the sender's, "127.0.0.1", "::1", or "local" by the Unix socket
  bool isSecure = false;  ///< by TLS

  /// The first of that name; an empty text if there is none. `name` of a header in lower case.
  [[nodiscard]] const std::string& Query(std::string_view name) const;
  [[nodiscard]] const std::string& Header(std::string_view name) const;
  [[nodiscard]] const std::string& Cookie(std::string_view name) const;
  [[nodiscard]] const std::string& Form(std::string_view name) const;
  [[nodiscard]] const std::string& Place(const std::string& name) const;
  [[nodiscard]] bool HasQuery(std::string_view name) const;
};

}  // namespace rastrel::server::web
