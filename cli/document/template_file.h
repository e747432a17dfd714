#pragma once

#include <memory>
#include <string>

#include "cli/document/finding.h"
#include "cli/document/template_format.h"
#include "host/document_host.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A template or document file that was opened as a document.
struct OpenedFile {
  TemplateFormat format = TemplateFormat::Document;
  std::unique_ptr<document::DocumentHost> host;  ///< never null
  Findings findings;  ///< contents that the import passed over, if asked for
};

/// Whether there is a file to open. `path` is native here and below. The failures of all three are
/// messages for the user.
[[nodiscard]] Expected<void> CheckTemplateFile(const std::string& path);

/// Loads a document, and installs its host for good.
[[nodiscard]] Expected<OpenedFile> OpenDocumentFile(const std::string& path);

/// Imports a template into the document of a host that is installed, and with `strict` collects the
/// findings. A file that can't be read or gives nothing is FailureCode::BadInput; without a parser
/// of XML the failure has no code.
[[nodiscard]] Expected<void> ImportTemplate(const std::string& path, bool strict, OpenedFile& file);

}  // namespace rastrel::cli
