#include "server/web/http/response.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/shown_text.h"
#include "server/web/http/byte_range.h"

namespace rastrel::server::web {
namespace {

const std::string Nothing;

std::string JsonText(const nlohmann::json& value) {
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// The tags of If-None-Match; a weak one counts as the same.
bool Names(std::string_view header, std::string_view tag) {
  if (header == "*") return true;
  for (std::size_t at = header.find(tag); at != header.npos; at = header.find(tag, at + 1))
    if (at > 0 && header[at - 1] == '"' && header.substr(at + tag.size()).starts_with('"'))
      return true;
  return false;
}

}  // namespace

Response& Response::Add(std::string name, std::string_view value) {
  std::string clean(value);
  for (char& one : clean)
    if (static_cast<unsigned char>(one) < 0x20 || one == 0x7f) one = ' ';
  headers.emplace_back(std::move(name), std::move(clean));
  return *this;
}

const std::string& Response::Header(std::string_view name) const {
  const auto found = std::ranges::find(headers, name, &Fields::value_type::first);
  return found == headers.end() ? Nothing : found->second;
}

Response TextResponse(int status, std::string type, std::string text) {
  Response response;
  response.status = status;
  response.text = std::move(text);
  response.Add("Content-Type", type);
  return response;
}

Response JsonResponse(int status, std::string text) {
  return TextResponse(status, "application/json", std::move(text));
}

Response ErrorResponse(int status, std::string_view code, std::string_view message) {
  return JsonResponse(
      status,
      JsonText({{"error", {{"code", std::string(code)}, {"message", os::CleanLine(message)}}}}));
}

Response RedirectResponse(std::string path) {
  Response response;
  response.status = 303;
  response.Add("Location", path);
  return response;
}

std::string AttachmentOf(std::string_view name) {
  const std::string clean = os::CleanLine(name);
  std::string plain;
  std::string encoded;
  for (const char one : clean) {
    const auto byte = static_cast<unsigned char>(one);
    const bool isLetter = (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') ||
                          (one >= '0' && one <= '9') || one == '.' || one == '-' || one == '_';
    plain += byte < 0x80 && one != '"' && one != '\\' && one != '/' ? one : '_';
    if (isLetter) {
      encoded += one;
    } else {
      encoded += '%';
      os::AppendHex(encoded, byte, os::HexCase::Upper);
    }
  }
  return "attachment; filename=\"" + plain + "\"; filename*=UTF-8''" + encoded;
}

Response FileResponse(const Request& request, const std::string& path, const FileForm& form) {
  os::FileDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  struct stat state {};
  if (!file.IsOpen() || ::fstat(file.Get(), &state) != 0 || !S_ISREG(state.st_mode))
    return ErrorResponse(404, "not-found", "there is no such file");
  Response response;
  response.Add("Content-Type", form.type);
  if (!form.attachment.empty()) response.Add("Content-Disposition", AttachmentOf(form.attachment));
  if (!form.tag.empty()) {
    response.Add("ETag", '"' + form.tag + '"');
    response.Add("Cache-Control", "no-cache");
    if (Names(request.Header("if-none-match"), form.tag)) {
      response.status = 304;
      return response;
    }
  }
  response.Add("Accept-Ranges", "bytes");
  const ByteRange range = RangeOf(request.Header("range"), state.st_size);
  if (range.kind == ByteRange::Kind::Outside) {
    Response refused = ErrorResponse(416, "bad-range", "the file has no such bytes");
    refused.Add("Content-Range", "bytes */" + std::to_string(state.st_size));
    return refused;
  }
  if (range.kind == ByteRange::Kind::Piece) {
    response.status = 206;
    response.Add("Content-Range", "bytes " + std::to_string(range.first) + "-" +
                                      std::to_string(range.last) + "/" +
                                      std::to_string(state.st_size));
  }
  response.file = FileBody{std::move(file), range.first, range.last - range.first + 1};
  return response;
}

}  // namespace rastrel::server::web
