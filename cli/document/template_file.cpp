#include "cli/document/template_file.h"

#include <algorithm>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"
#include "cli/document/abb_check.h"
#include "cli/input/xml_input.h"
#include "host/document/document.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw CommandError(ExitStatus::BadInput, "can't import '" + path + "': " + why);
}

// Why an importer of plate XML took nothing.
[[noreturn]] void RefuseAbb(const std::string& path, const std::wstring& readerPath) {
  if (auto failure = xml::TakeXmlFailure()) {
    failure->where = os::Utf8FromWide(os::FromNative(path));
    throw CommandError(ExitStatus::BadInput, Describe(*failure));
  }
  if (!path.ends_with(".xml") && os::LowerAscii(os::SplitPath(readerPath).extension) != L".xml")
    Refuse(path, "its name does not end in .xml");
  Refuse(path, "there is no <PLATES> in an <ENGRAVINGTEMPLATE> below its root");
}

void ImportAbb(const std::string& path, bool strict, OpenedFile& file) {
  OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
  const std::wstring readerPath = ReaderPath(path);
  if (strict) file.findings = CheckAbb(readerPath, *file.host);
  CXMLFileImport importer(readerPath.c_str());
  if (importer.ImportXMLFile() == 0) RefuseAbb(path, readerPath);
  if (!strict) return;
  std::ranges::move(CheckAbbText(readerPath, *file.host), std::back_inserter(file.findings));
  std::ranges::stable_sort(file.findings, {}, &Finding::line);
}

}  // namespace

OpenedFile OpenTemplate(const Invocation& invocation) {
  const std::string& path = invocation.operand;
  if (!os::Exists(os::FromNative(path))) Refuse(path, "there is no such file");
  if (os::IsDirectory(os::FromNative(path))) Refuse(path, "it is a directory");
  OpenedFile file;
  file.format = FormatOfTemplate(path, invocation.ValueOr(OptionId::Format, ""));
  const std::string blank = invocation.ValueOr(OptionId::Blank, "");
  if (file.format == TemplateFormat::Document) {
    if (!blank.empty())
      throw CommandError(ExitStatus::WrongUse, "--blank: a document has its blank already");
    auto opened = document::DocumentHost::Open(os::FromNative(path));
    if (!opened) Refuse(path, Describe(opened.Error()));
    file.host = std::move(*opened);
    host::SetHost(file.host.get());
    return file;
  }
  file.host = std::make_unique<document::DocumentHost>();
  if (!blank.empty()) {
    const Size size = ParseSize("--blank", blank);
    document::SignBlank sign = file.host->GetDocument().Blank();
    sign.width = size.widthCm;
    sign.height = size.heightCm;
    file.host->GetDocument().SetBlank(sign);
  }
  host::SetHost(file.host.get());
  ImportAbb(path, invocation.Has(OptionId::Strict), file);
  return file;
}

}  // namespace rastrel::cli
