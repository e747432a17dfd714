#pragma once

#include <string>
#include <vector>

#include "cli/document/finding.h"
#include "cli/document/template_format.h"
#include "host/document_host.h"
#include "rastrel/xml/node.h"

namespace rastrel::cli {

/// All that an import of a template passes over in silence: elements that its schema lacks
/// (CheckSchema), graphics and colors that are not found, fonts that are replaced, characters that
/// are not kept, names of colors that are engraved. In the file's order. Before the import; names
/// of files are taken from the present directory. Not for plate XML, which has CheckAbb.
[[nodiscard]] Findings CheckTemplate(TemplateFormat format, const XmlNode& root,
                                     document::DocumentHost& host);

/// Text that does not look as asked, from the document that the template became: squeezed, not to
/// be seen, with letters that no font has. `plateLines` are the lines of the file's plates, in
/// order; a text has the line of the plate that it is on, or 0 if not every plate has its pane.
[[nodiscard]] Findings CheckTexts(const document::DocumentHost& host,
                                  const std::vector<int>& plateLines);

/// The settings that an import changes for a while, or sets, and that the host's store did not
/// take. After the import; their line is 0.
[[nodiscard]] Findings CheckSettings(const document::DocumentHost& host);

/// The lines of a template's plates: none of a format whose texts are on no plate.
[[nodiscard]] std::vector<int> PlateLines(TemplateFormat format, const XmlNode& root);

}  // namespace rastrel::cli
