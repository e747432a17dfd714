#pragma once

#include <memory>
#include <string>

#include "cli/console/options.h"
#include "cli/document/finding.h"
#include "cli/document/template_format.h"
#include "host/document_host.h"

namespace rastrel::cli {

/// A template or document file that was opened as a document.
struct OpenedFile {
  TemplateFormat format = TemplateFormat::Document;
  std::unique_ptr<document::DocumentHost> host;  ///< never null
  Findings findings;  ///< contents that the import passed over, if asked for
};

/// Opens the file that a command was given: loads a document, or imports a template into a new one,
/// on the blank that `--blank` asks for. Installs the document's host for good. Throws
/// CommandError: BadInput for a file that can't be read or holds nothing, WrongUse for options that
/// don't go with it.
[[nodiscard]] OpenedFile OpenTemplate(const Invocation& invocation);

}  // namespace rastrel::cli
