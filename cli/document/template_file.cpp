#include "cli/document/template_file.h"

#include <array>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/document/import_records.h"
#include "cli/document/present_directory.h"
#include "cli/document/readable_directories.h"
#include "cli/document/template_reader.h"
#include "cli/input/xml_input.h"
#include "interpreter/task_place.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

Failure Refused(const std::string& path, const std::string& why) {
  return FailureOf("can't import '" + path + "': " + why, FailureCode::BadInput);
}

std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  const fs::path found = fs::absolute(path, error);
  return error ? path : found.string();
}

// The directory of graphics that the settings name.
std::string ImageDirectory() {
  std::array<wchar_t, 260> path{};
  if (GetStringKorvane(L"Crown", L"ImagePath", path.data(), path.size(), DS_USER, nullptr) == 0)
    return {};
  return os::ToNative(path.data());
}

// Whether the reader writes files beside the template, which a user's directory is spared.
bool WritesBeside(TemplateFormat format) {
  return format == TemplateFormat::Cr2 || format == TemplateFormat::Zml;
}

// Plate XML is known by nothing but XML, so that a file of another name is a mistake.
bool NeedsOwnName(TemplateFormat format) {
  return format == TemplateFormat::Abb || format == TemplateFormat::BrightStar;
}

// A copy of a template for a reader that writes beside it or wants another name. It goes also if
// the command is killed.
class PrivateCopy {
 public:
  static Expected<PrivateCopy> Make(const std::string& file, TemplateFormat format) {
    auto place = interpreter::TaskPlace::Make("rastrel-import-");
    if (!place) return place.Error();
    std::string extension = fs::path(file).extension();
    if (!HasReaderExtension(format, file)) extension = "." + std::string(ReaderExtensions(format));
    std::string copy = place->Directory() + "/" + fs::path(file).stem().string() + extension;
    if (auto done =
            os::CopyFileOver(os::FromNative(file), os::FromNative(copy), os::Access::Private);
        !done)
      return done.Error();
    return PrivateCopy(*std::move(place), std::move(copy));
  }
  [[nodiscard]] const std::string& Path() const { return m_Path; }
  [[nodiscard]] const std::string& Directory() const { return m_Place.Directory(); }

 private:
  PrivateCopy(interpreter::TaskPlace place, std::string path)
      : m_Place(std::move(place)), m_Path(std::move(path)) {}

  interpreter::TaskPlace m_Place;
  std::string m_Path;
};

}  // namespace

TemplateSource SourceOf(const std::string& path) {
  TemplateSource source;
  source.name = path;
  source.file = AbsolutePath(path);
  source.directory = fs::path(source.file).parent_path().string();
  return source;
}

Expected<void> CheckTemplateFile(const std::string& path) {
  if (!os::Exists(os::FromNative(path))) return Refused(path, "there is no such file");
  if (os::IsDirectory(os::FromNative(path))) return Refused(path, "it is a directory");
  std::error_code ignored;
  if (!fs::is_regular_file(os::ToNative(os::FromNative(path)), ignored))
    return Refused(path, "it is no regular file");
  return {};
}

Expected<OpenedFile> OpenDocumentFile(const std::string& path) {
  auto opened = document::DocumentHost::Open(os::FromNative(path));
  if (!opened) return Refused(path, Describe(opened.Error()));
  OpenedFile file;
  file.format = TemplateFormat::Document;
  file.host = std::move(*opened);
  host::SetHost(file.host.get());
  return file;
}

Expected<void> ImportTemplate(const TemplateSource& source, OpenedFile& file) {
  if (auto parser = CheckXmlParser(); !parser) return parser;
  const bool named = HasReaderExtension(file.format, source.file);
  if (!named && NeedsOwnName(file.format))
    return Refused(source.name, "its name does not end in .xml");
  ReadableDirectories readable;
  readable.Add(source.directory);
  readable.Add(ImageDirectory());
  readable.Add(os::ToNative(file.host->GetApplication()->LoadBaseDir()));
  readable.AddDrives();
  std::string path = source.file;
  std::optional<PrivateCopy> copy;
  if (source.isPrivate) readable.Add(fs::path(source.file).parent_path().string());
  if (!named || (WritesBeside(file.format) && !source.isPrivate)) {
    auto made = PrivateCopy::Make(source.file, file.format);
    if (!made) return Refused(source.name, Describe(made.Error()));
    copy.emplace(*std::move(made));
    path = copy->Path();
    readable.Add(copy->Directory());
  }
  layout::FileResolver resolve;
  if (!source.allowOutside) {
    file.host->SetReadPolicy([&](const std::wstring& name) { return readable.Check(name); });
    resolve = [&](const std::wstring& name) -> Expected<std::wstring> {
      if (auto allowed = readable.Check(name); !allowed) return allowed.Error();
      return name;
    };
  }
  const auto present = PresentDirectory::Enter(source.directory);
  if (!present) return Refused(source.name, Describe(present.Error()));
  auto read = ReadTemplate(file.format, {source.name, ReaderPath(path), source.strict, resolve},
                           *file.host, file.findings);
  file.host->SetReadPolicy({});
  if (read && source.records)
    file.records = ImportRecordLines(file.format, ReaderPath(path), source.name);
  return read;
}

}  // namespace rastrel::cli
