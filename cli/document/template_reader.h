#pragma once

#include <string>

#include "cli/document/finding.h"
#include "cli/document/template_format.h"
#include "host/document_host.h"
#include "host/layout/template_layout.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A template as its reader takes it.
struct TemplateToRead {
  std::string name;   ///< as the user named it, for messages
  std::wstring path;  ///< library path of the file that is read
  bool strict = false;
  layout::FileResolver resolve = {};  ///< for the names of graphics of cro and llx
};

/// Has the reader of a format import a template into the host's document. If `strict` is set, its
/// findings are appended. The present directory is the one that names in the
/// template are relative to. A refused file is FailureCode::BadInput.
/// REQUIRES: the host is installed, and CheckXmlParser succeeded.
[[nodiscard]] Expected<void> ReadTemplate(TemplateFormat format, const TemplateToRead& source,
                                          document::DocumentHost& host, Findings& findings);

}  // namespace rastrel::cli
