#include "cli/document/template_reader.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "cli/document/abb_check.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::cli {
namespace {

Failure Refused(const TemplateToRead& source, const std::string& why) {
  return FailureOf("can't import '" + source.name + "': " + why, FailureCode::BadInput);
}

// Why a reader took nothing: the XML layer's reason, or `otherwise`.
Failure WhyRefused(const TemplateToRead& source, const std::string& otherwise) {
  const auto state = xml::TakeXmlFailure();
  if (state) return Refused(source, otherwise);
  Failure failure = FailureAt(os::Utf8FromWide(os::FromNative(source.name)), state.Error());
  failure.code = FailureCode::BadInput;
  return failure;
}

Expected<void> ReadAbb(const TemplateToRead& source, document::DocumentHost& host,
                       Findings& findings) {
  if (source.strict) findings = CheckAbb(source.path, host);
  CXMLFileImport importer(source.path.c_str());
  if (importer.ImportXMLFile() == 0)
    return WhyRefused(source, "there is no <PLATES> in an <ENGRAVINGTEMPLATE> below its root");
  if (source.strict)
    std::ranges::move(CheckAbbText(source.path, host), std::back_inserter(findings));
  return {};
}

struct ReaderRow {
  TemplateFormat format;
  Expected<void> (*read)(const TemplateToRead&, document::DocumentHost&, Findings&);
};

constexpr std::array Readers{
    ReaderRow{TemplateFormat::Abb, ReadAbb},
};

}  // namespace

Expected<void> ReadTemplate(TemplateFormat format, const TemplateToRead& source,
                            document::DocumentHost& host, Findings& findings) {
  const auto reader = std::ranges::find(Readers, format, &ReaderRow::format);
  if (reader == Readers.end()) return Refused(source, "it is no template");
  auto read = reader->read(source, host, findings);
  std::ranges::stable_sort(findings, {}, &Finding::line);
  return read;
}

}  // namespace rastrel::cli
