#include "rastrel/imports/cr2/cr2_file_import.h"

#include <optional>

#include "rastrel/imports/cr2/cr2_document.h"
#include "rastrel/imports/cr2/cr2_parse.h"
#include "rastrel/imports/cr2/template_build.h"
#include "rastrel/imports/cr2/template_import.h"
#include "rastrel/imports/document_host.h"

namespace imports = rastrel::imports;

CCR2FileImport::CCR2FileImport(const wchar_t* fileName, std::FILE* /*log*/) {
  const std::optional<imports::DocumentHost> document = imports::FindDocumentHost();
  if (!document) return;
  imports::TemplateImport import = imports::BeginTemplateImport(*document, L"Crown Trophy XML");
  imports::Cr2Document records;
  // A refused file is built like any other, with the records that were read before its fault.
  static_cast<void>(imports::ParseCr2File(fileName, records));
  imports::BuildCr2(import, records);
}

CCR2FileImport::~CCR2FileImport() = default;
