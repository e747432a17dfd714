#include "rastrel/imports/cr2/cr2_file_import_vers2.h"

#include <optional>

#include "rastrel/imports/cr2/cr2_document.h"
#include "rastrel/imports/cr2/template_build.h"
#include "rastrel/imports/cr2/template_import.h"
#include "rastrel/imports/cr2/zml_parse.h"
#include "rastrel/imports/document_host.h"

namespace imports = rastrel::imports;

CCR2FileImportVers2::CCR2FileImportVers2(const wchar_t* fileName, std::FILE* /*log*/) {
  const std::optional<imports::DocumentHost> document = imports::FindDocumentHost();
  if (!document) return;
  imports::TemplateImport import = imports::BeginTemplateImport(*document, L"ZML FILE");
  imports::Cr2Document records;
  imports::ZmlFile file;
  if (!imports::ParseZmlFile(fileName, records, file)) return;
  imports::BuildZml(import, records, file.imageDirectory);
}

CCR2FileImportVers2::~CCR2FileImportVers2() = default;
