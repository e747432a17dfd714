#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "server/web/http/multipart.h"
#include "server/web/http/request.h"
#include "server/web/http/router.h"

namespace rastrel::server::web {

/// A request's body on its way: into memory, or into a hidden file, which goes with this object. On
/// one thread. Failures: EFBIG as `error` if it is too large, BadInput as `code` if the sender made
/// a mistake; else this machine has no room for it.
class RequestBody {
 public:
  struct Limits {
    std::size_t small = 0;
    std::int64_t upload = 0;  ///< 0: no limit
  };

  /// `directory` is where hidden files are made; it must be there, and this user's alone.
  [[nodiscard]] static Expected<std::unique_ptr<RequestBody>> Begin(Body kind,
                                                                    const std::string& contentType,
                                                                    const std::string& directory,
                                                                    const Limits& limits);
  ~RequestBody();
  RequestBody(const RequestBody&) = delete;
  RequestBody& operator=(const RequestBody&) = delete;

  [[nodiscard]] Expected<void> Feed(std::string_view piece);
  /// Gives the request its body, form and file. The file is this object's still.
  [[nodiscard]] Expected<void> Finish(Request& request);

 private:
  RequestBody(Body kind, std::string contentType, std::string directory, const Limits& limits);
  [[nodiscard]] Expected<void> BeginUpload();
  [[nodiscard]] Expected<void> OpenFile(std::string name);
  [[nodiscard]] Expected<void> Write(std::string_view piece);

  const Body m_Kind;
  const std::string m_ContentType;
  const std::string m_Directory;
  const Limits m_Limits;
  std::string m_Text;
  std::optional<MultipartReader> m_Parts;
  Fields m_Form;
  UploadedFile m_File;
  os::FileDescriptor m_Descriptor;
};

}  // namespace rastrel::server::web
