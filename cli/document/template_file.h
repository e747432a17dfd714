#pragma once

#include <memory>
#include <string>

#include "cli/document/finding.h"
#include "cli/document/template_format.h"
#include "host/document_host.h"
#include "interpreter/task_place.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A template or document file that was opened as a document.
struct OpenedFile {
  std::unique_ptr<interpreter::TaskPlace> place;  ///< of a copy of standard input; null for a file
  std::string name;                               ///< the file as messages name it
  TemplateFormat format = TemplateFormat::Document;
  std::unique_ptr<document::DocumentHost> host;  ///< never null
  std::string records = {};  ///< lines of JSON (ImportRecordLines), if asked for
  Findings findings;         ///< contents that the import passed over, if asked for
};

/// A template to import. Paths are native.
struct TemplateSource {
  std::string name;           ///< the file as the user named it, for messages
  std::string file;           ///< the file that is read: the same, or a copy of it
  std::string directory;      ///< names in the template are relative to it, and have to stay in it
  bool isPrivate = false;     ///< `file` has a private directory, which the reader may write to
  bool allowOutside = false;  ///< names may lead out of the directory
  bool records = false;       ///< the records are collected
  bool strict = false;        ///< findings are collected
};

/// The source that a file is by itself.
[[nodiscard]] TemplateSource SourceOf(const std::string& path);

/// Whether there is a file to open. `path` is native here and below. The failures of all three are
/// messages for the user.
[[nodiscard]] Expected<void> CheckTemplateFile(const std::string& path);

/// Loads a document, and installs its host for good.
[[nodiscard]] Expected<OpenedFile> OpenDocumentFile(const std::string& path);

/// Imports a template of `file.format` into the document of a host that is installed, with the
/// template's directory as the present one, and with `strict` collects the findings. Graphics
/// outside the directories that a template may name are left out, which the notices say. A file
/// that can't be read or gives nothing is FailureCode::BadInput; without a parser of XML the
/// failure has no code.
[[nodiscard]] Expected<void> ImportTemplate(const TemplateSource& source, OpenedFile& file);

}  // namespace rastrel::cli
