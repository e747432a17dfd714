#include "cli/document/template_file.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "cli/document/abb_check.h"
#include "cli/input/xml_input.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

Failure Refused(const std::string& path, const std::string& why) {
  return FailureOf("can't import '" + path + "': " + why, FailureCode::BadInput);
}

// Why an importer of plate XML took nothing.
Failure RefusedAbb(const std::string& path, const std::wstring& readerPath) {
  if (const auto state = xml::TakeXmlFailure(); !state) {
    Failure failure = FailureAt(os::Utf8FromWide(os::FromNative(path)), state.Error());
    failure.code = FailureCode::BadInput;
    return failure;
  }
  if (!path.ends_with(".xml") && os::LowerAscii(os::SplitPath(readerPath).extension) != L".xml")
    return Refused(path, "its name does not end in .xml");
  return Refused(path, "there is no <PLATES> in an <ENGRAVINGTEMPLATE> below its root");
}

}  // namespace

Expected<void> CheckTemplateFile(const std::string& path) {
  if (!os::Exists(os::FromNative(path))) return Refused(path, "there is no such file");
  if (os::IsDirectory(os::FromNative(path))) return Refused(path, "it is a directory");
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

Expected<void> ImportTemplate(const std::string& path, bool strict, OpenedFile& file) {
  if (auto parser = CheckXmlParser(); !parser) return parser;
  const std::wstring readerPath = ReaderPath(path);
  if (strict) file.findings = CheckAbb(readerPath, *file.host);
  CXMLFileImport importer(readerPath.c_str());
  if (importer.ImportXMLFile() == 0) return RefusedAbb(path, readerPath);
  if (!strict) return {};
  std::ranges::move(CheckAbbText(readerPath, *file.host), std::back_inserter(file.findings));
  std::ranges::stable_sort(file.findings, {}, &Finding::line);
  return {};
}

}  // namespace rastrel::cli
