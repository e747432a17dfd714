#include "server/web/http/request_body.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/path.h"
#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

Failure TooLarge(std::string why) {
  Failure failure = FailureOf(std::move(why), FailureCode::BadInput);
  failure.error = EFBIG;
  return failure;
}

// Of the sender's name no more than a plain extension goes into a name of ours.
std::string ExtensionOf(const std::string& name) {
  constexpr std::size_t Longest = 8;
  const std::size_t dot = name.rfind('.');
  if (dot == name.npos || dot == 0 || name.size() - dot - 1 > Longest) return {};
  const std::string extension = name.substr(dot);
  constexpr std::string_view Plain =
      ".abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  return extension.find_first_not_of(Plain) == extension.npos ? extension : std::string();
}

// A file that comes without a form and so without a name.
std::string NameForType(std::string_view type) {
  if (type == "application/pdf") return "upload.pdf";
  if (type == "application/postscript") return "upload.ps";
  if (type == "image/x-eps" || type == "application/eps") return "upload.eps";
  return "";
}

// What a browser names the file; some send a whole path of the sender's machine.
std::string LastPart(const std::string& name) {
  const std::size_t slash = name.find_last_of("/\\");
  return slash == name.npos ? name : name.substr(slash + 1);
}

}  // namespace

RequestBody::RequestBody(Body kind, std::string contentType, std::string directory,
                         const Limits& limits)
    : m_Kind(kind),
      m_ContentType(std::move(contentType)),
      m_Directory(std::move(directory)),
      m_Limits(limits) {}

RequestBody::~RequestBody() {
  if (!m_File.path.empty()) static_cast<void>(os::RemoveFile(os::FromNative(m_File.path)));
}

Expected<std::unique_ptr<RequestBody>> RequestBody::Begin(Body kind, const std::string& contentType,
                                                          const std::string& directory,
                                                          const Limits& limits) {
  std::unique_ptr<RequestBody> body(new RequestBody(kind, contentType, directory, limits));
  if (kind == Body::Upload)
    if (auto begun = body->BeginUpload(); !begun) return begun.Error();
  return body;
}

Expected<void> RequestBody::BeginUpload() {
  const auto type = HeaderValueOf(m_ContentType);
  if (!type) return type.Error();
  if (type->word != "multipart/form-data") return OpenFile(NameForType(type->word));
  MultipartReader::Sink sink;
  sink.field = [this](std::string name, std::string value) -> Expected<void> {
    m_Form.emplace_back(std::move(name), std::move(value));
    return {};
  };
  sink.file = [this](const std::string&, const std::string& name) -> Expected<void> {
    if (m_Descriptor.IsOpen())
      return FailureOf("the form has more than one file", FailureCode::BadInput);
    return OpenFile(LastPart(name));
  };
  sink.bytes = [this](std::string_view bytes) { return Write(bytes); };
  auto parts = MultipartReader::Create(type->Parameter("boundary"), std::move(sink));
  if (!parts) return parts.Error();
  m_Parts = *std::move(parts);
  return {};
}

Expected<void> RequestBody::OpenFile(std::string name) {
  if (!IsUtf8(name) || name.find('\0') != name.npos)
    return FailureOf("the file's name is no UTF-8", FailureCode::BadInput);
  const std::string path = m_Directory + "/" + os::OwnTemporaryName() + ExtensionOf(name);
  auto file = os::CreateForWriting(os::FromNative(path), os::Access::Private);
  if (!file) return file.Error();
  m_Descriptor = *std::move(file);
  m_File.path = path;
  m_File.name = std::move(name);
  return {};
}

Expected<void> RequestBody::Write(std::string_view piece) {
  m_File.bytes += static_cast<std::int64_t>(piece.size());
  if (m_Limits.upload > 0 && m_File.bytes > m_Limits.upload)
    return TooLarge("the file is larger than " + std::to_string(m_Limits.upload) + " bytes");
  if (auto written = os::WriteAll(m_Descriptor.Get(), piece); !written)
    return FailureAt(m_File.path, written.Error());
  return {};
}

Expected<void> RequestBody::Feed(std::string_view piece) {
  if (m_Parts) return m_Parts->Feed(piece);
  if (m_Kind == Body::Upload) return Write(piece);
  const std::size_t limit = m_Kind == Body::Small ? m_Limits.small : 0;
  if (m_Text.size() + piece.size() > limit)
    return TooLarge(limit == 0 ? "this request has no body"
                               : "the body is larger than " + std::to_string(limit) + " bytes");
  m_Text += piece;
  return {};
}

Expected<void> RequestBody::Finish(Request& request) {
  if (m_Parts)
    if (auto done = m_Parts->Finish(); !done) return done;
  const auto type = HeaderValueOf(m_ContentType);
  if (m_Kind == Body::Small && type && type->word == "application/x-www-form-urlencoded") {
    auto form = FieldsOf(m_Text);
    if (!form) return form.Error();
    m_Form = *std::move(form);
  }
  m_Descriptor.Reset();
  request.body = std::move(m_Text);
  request.form = std::move(m_Form);
  request.file = m_File;
  return {};
}

}  // namespace rastrel::server::web
