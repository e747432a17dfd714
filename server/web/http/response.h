#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/file_descriptor.h"
#include "server/web/http/event_stream.h"
#include "server/web/http/request.h"

/// What a handler answers. The server adds the headers that every answer has: those of security,
/// the length, and "Cache-Control: no-store" where a handler names none.
namespace rastrel::server::web {

/// A piece of an open file as a body.
struct FileBody {
  os::FileDescriptor file;
  std::int64_t offset = 0;
  std::int64_t bytes = 0;
};

/// One of text, file and stream is the body. Move-only.
struct Response {
  int status = 200;
  Fields headers;  ///< may name one several times (Set-Cookie); no line ends in values
  std::string text;
  std::optional<FileBody> file;
  std::shared_ptr<EventStream> stream;  ///< text/event-stream, for as long as it is open

  /// Adds a header. Control characters of the value become blanks.
  Response& Add(std::string name, std::string_view value);
  /// The first of that name, compared as spelled; an empty text if there is none.
  [[nodiscard]] const std::string& Header(std::string_view name) const;
};

[[nodiscard]] Response TextResponse(int status, std::string type, std::string text);
/// application/json.
[[nodiscard]] Response JsonResponse(int status, std::string text);
/// {"error":{"code":CODE,"message":MESSAGE}}. `code` is a word of docs/formats/http-interface.md;
/// the message may be foreign text, and is cleaned.
[[nodiscard]] Response ErrorResponse(int status, std::string_view code, std::string_view message);
/// 303: the browser goes on with GET.
[[nodiscard]] Response RedirectResponse(std::string path);

/// What a file is shown as.
struct FileForm {
  std::string type;        ///< "application/pdf"
  std::string attachment;  ///< the name that a browser saves it under; empty: it may be shown
  std::string tag;         ///< of its content, without quotes, for ETag; empty: none
};
/// A whole file, or the one range of it that the request asks for (206, 416), or 304 if the sender
/// has the tag. 404 if there is no such file; links are not followed.
[[nodiscard]] Response FileResponse(const Request& request, const std::string& path,
                                    const FileForm& form);

/// `attachment; filename=...; filename*=UTF-8''...` of a foreign name.
[[nodiscard]] std::string AttachmentOf(std::string_view name);

}  // namespace rastrel::server::web
