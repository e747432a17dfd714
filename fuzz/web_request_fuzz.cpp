// The texts of requests that the HTTP interface reads itself: the first byte says which, the rest
// is the text. Forms are read at once and byte by byte, which must be the same.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "server/web/access/users_file.h"
#include "server/web/api/job_request.h"
#include "server/web/http/address_text.h"
#include "server/web/http/byte_range.h"
#include "server/web/http/multipart.h"
#include "server/web/http/router.h"

namespace {

using namespace rastrel;
using namespace rastrel::server::web;

void Require(bool holds) {
  if (!holds) std::abort();
}

struct Form {
  std::string text;
  bool isRead = false;
};

Form ReadForm(std::string_view text, std::size_t piece) {
  Form form;
  MultipartReader::Sink sink;
  sink.field = [&](const std::string& name, const std::string& value) -> Expected<void> {
    Require(value.size() <= MultipartReader::ValueLimit && IsUtf8(value));
    form.text += name + "=" + value + "\n";
    return {};
  };
  sink.file = [&](const std::string& name, const std::string& file) -> Expected<void> {
    form.text += name + ":" + file + "\n";
    return {};
  };
  sink.bytes = [&](std::string_view bytes) -> Expected<void> {
    form.text += bytes;
    return {};
  };
  auto reader = MultipartReader::Create("B", sink);
  Require(static_cast<bool>(reader));
  for (std::size_t at = 0; at < text.size(); at += piece)
    if (!reader->Feed(text.substr(at, piece))) return form;
  form.isRead = static_cast<bool>(reader->Finish());
  return form;
}

void ReadBothWays(std::string_view text) {
  const Form whole = ReadForm(text, text.size() + 1);
  const Form bytes = ReadForm(text, 1);
  Require(whole.isRead == bytes.isRead);
  if (whole.isRead) Require(whole.text == bytes.text);
}

void ReadPath(std::string_view text) {
  const auto path = PathOf(text);
  if (!path) return;
  Require(path->starts_with('/') && IsUtf8(*path));
  Require(path->find("/../") == path->npos && path->find('\0') == path->npos);
  Require(!path->ends_with("/.."));
  Router router;
  router.Add({Method::Get, "/jobs/{id}/file", Role::See, Body::None, {}});
  router.Add({Method::Get, "/static/{path...}", Role::See, Body::None, {}});
  static_cast<void>(router.Find(Method::Get, *path));
}

void ReadQuery(std::string_view text) {
  Request request;
  const auto fields = FieldsOf(text);
  if (!fields) return;
  Require(fields->size() <= FieldLimit);
  request.query = *fields;
  request.caller = {"ada", Role::See, false, ""};
  const auto filter = FilterOf(request, 100, 1000);
  if (filter) Require(filter->limit >= 1 && filter->limit <= 1000 && !filter->owner.empty());
}

void ReadHeaders(std::string_view text) {
  static_cast<void>(HeaderValueOf(text));
  static_cast<void>(HostNameOf(text));
  for (const auto& cookie : CookiesOf(text)) Require(!cookie.first.empty());
  const ByteRange range = RangeOf(text, 1000);
  if (range.kind == ByteRange::Kind::Piece)
    Require(range.first >= 0 && range.first <= range.last && range.last < 1000);
}

void ReadBody(std::string_view text) {
  Request request;
  request.body = text;
  for (const char* name : {"device", "priority", "pages", "token"}) {
    const auto field = BodyField(request, name);
    if (field) static_cast<void>(WholeNumber(*field, 1, 100));
  }
}

void ReadUsersText(std::string_view text) {
  const auto users = ReadUsers(text, "users.toml");
  if (!users) return;
  const auto again = ReadUsers(TextOfUsers(*users), "users.toml");
  Require(again && again->size() == users->size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 1 << 18) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0]) {
    case 'f': ReadBothWays(text); break;
    case 'p': ReadPath(text); break;
    case 'q': ReadQuery(text); break;
    case 'h': ReadHeaders(text); break;
    case 'u': ReadUsersText(text); break;
    case 'j': ReadBody(text); break;
    default: break;
  }
  return 0;
}
