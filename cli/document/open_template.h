#pragma once

#include "cli/console/options.h"
#include "cli/document/template_file.h"

namespace rastrel::cli {

/// The step that `import` and `view` begin with: opens the file that the command was given. Loads a
/// document, or imports a template into a new one on the blank that `--blank` asks for. Installs
/// the document's host for good. Standard input is copied to a private place of the result, and
/// names in it are relative to the present directory. Throws CommandError: BadInput for a file that
/// can't be read or gives nothing, WrongUse for options that don't go with it, NotInstalled without
/// a parser of XML.
[[nodiscard]] OpenedFile OpenTemplate(const Invocation& invocation);

/// The format that `--format` names, or that the file at a native path shows. Throws CommandError.
[[nodiscard]] TemplateFormat FormatFor(const Invocation& invocation, const std::string& path);

/// A new, empty document for a template of a format, on the blank that `--blank` asks for. Installs
/// its host. Throws CommandError.
[[nodiscard]] OpenedFile NewDocument(TemplateFormat format, const Invocation& invocation);

}  // namespace rastrel::cli
