#include "cli/document/template_reader.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "cli/document/abb_check.h"
#include "cli/document/schema_check.h"
#include "cli/document/template_check.h"
#include "cli/document/template_schema.h"
#include "cli/document/template_tree.h"
#include "rastrel/imports/bright_star_xml_import.h"
#include "rastrel/imports/cr2/cr2_file_import.h"
#include "rastrel/imports/cr2/cr2_file_import_vers2.h"
#include "rastrel/imports/cr2/cr2_parse.h"
#include "rastrel/imports/cr2/zml_parse.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

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

// The findings before an import.
void CheckBefore(TemplateFormat format, const TemplateToRead& source, const XmlNode& root,
                 document::DocumentHost& host, Findings& findings) {
  if (source.strict) findings = CheckTemplate(format, root, host);
}

// The findings in the document that it made.
void CheckAfter(TemplateFormat format, const TemplateToRead& source, const XmlNode& root,
                const document::DocumentHost& host, Findings& findings) {
  if (!source.strict) return;
  std::ranges::move(CheckTexts(host, PlateLines(format, root)), std::back_inserter(findings));
  std::ranges::move(CheckSettings(host), std::back_inserter(findings));
}

Expected<void> ReadBrightStar(const TemplateToRead& source, document::DocumentHost& host,
                              Findings& findings) {
  const XmlNode root = LoadXmlFile(source.path);
  if (!root) return WhyRefused(source, "it can't be read");
  CheckBefore(TemplateFormat::BrightStar, source, root, host, findings);
  CBrightStarXMLImport importer(source.path.c_str());
  if (importer.ImportXMLFile() == 0)
    return WhyRefused(source, "there is no <ENGRAVINGTEMPLATE> below its root");
  CheckAfter(TemplateFormat::BrightStar, source, root, host, findings);
  return {};
}

// Why the layout of a template refused it.
Expected<void> Laid(const TemplateToRead& source, const Expected<void>& laid, bool parsed) {
  if (laid) return laid;
  return parsed ? Refused(source, Describe(laid.Error()))
                : WhyRefused(source, Describe(laid.Error()));
}

Expected<void> ReadCro(const TemplateToRead& source, document::DocumentHost& host,
                       Findings& findings) {
  const XmlNode root = LoadTemplate(TemplateFormat::Cro, source.path);
  CheckBefore(TemplateFormat::Cro, source, root, host, findings);
  const CCROFileImport file(source.path.c_str(), nullptr);
  auto laid = Laid(source, layout::ImportCro(file, host, source.resolve), file.m_bParsed);
  if (laid) CheckAfter(TemplateFormat::Cro, source, root, host, findings);
  return laid;
}

Expected<void> ReadLlx(const TemplateToRead& source, document::DocumentHost& host,
                       Findings& findings) {
  const XmlNode root = LoadXmlFile(source.path);
  CheckBefore(TemplateFormat::Llx, source, root, host, findings);
  const CLLXFileImport file(source.path.c_str(), nullptr);
  auto laid = Laid(source, layout::ImportLlx(file, host, source.resolve), file.m_bParsed);
  if (laid) CheckAfter(TemplateFormat::Llx, source, root, host, findings);
  return laid;
}

// The importers of Crown Trophy say nothing of their result, and a document without plates may have
// one that does not fit on the blank.
Expected<void> CheckCrownTrophy(TemplateFormat format, const TemplateToRead& source,
                                const XmlNode& root) {
  if (!root) return WhyRefused(source, "it can't be read");
  imports::Cr2Document document;
  imports::ZmlFile zml;
  const bool parsed = format == TemplateFormat::Zml
                          ? imports::ParseZmlFile(source.path.c_str(), document, zml)
                          : imports::ParseCr2File(source.path.c_str(), document);
  if (parsed && !document.plates.empty()) return {};
  std::string why = "it has no plates that can be read";
  const Findings faults = CheckSchema(*SchemaOf(format), root);
  const auto lack = std::ranges::find_if(faults, [](const Finding& finding) {
    return finding.text.find(" has no ") != std::string::npos;
  });
  if (lack != faults.end()) why += "; line " + std::to_string(lack->line) + ": " + lack->text;
  return Refused(source, why);
}

template <typename Importer>
Expected<void> ReadCrownTrophy(TemplateFormat format, const TemplateToRead& source,
                               document::DocumentHost& host, Findings& findings) {
  const XmlNode root = LoadTemplate(format, source.path);
  if (auto checked = CheckCrownTrophy(format, source, root); !checked) return checked;
  CheckBefore(format, source, root, host, findings);
  static_cast<void>(Importer(source.path.c_str(), nullptr));
  CheckAfter(format, source, root, host, findings);
  return {};
}

Expected<void> ReadCr2(const TemplateToRead& source, document::DocumentHost& host,
                       Findings& findings) {
  return ReadCrownTrophy<CCR2FileImport>(TemplateFormat::Cr2, source, host, findings);
}

Expected<void> ReadZml(const TemplateToRead& source, document::DocumentHost& host,
                       Findings& findings) {
  return ReadCrownTrophy<CCR2FileImportVers2>(TemplateFormat::Zml, source, host, findings);
}

struct ReaderRow {
  TemplateFormat format;
  Expected<void> (*read)(const TemplateToRead&, document::DocumentHost&, Findings&);
};

constexpr std::array Readers{
    ReaderRow{TemplateFormat::Abb, ReadAbb}, ReaderRow{TemplateFormat::BrightStar, ReadBrightStar},
    ReaderRow{TemplateFormat::Cro, ReadCro}, ReaderRow{TemplateFormat::Llx, ReadLlx},
    ReaderRow{TemplateFormat::Cr2, ReadCr2}, ReaderRow{TemplateFormat::Zml, ReadZml},
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
