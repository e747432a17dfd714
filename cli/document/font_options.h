#pragma once

#include "cli/console/options.h"
#include "host/document_host.h"

namespace rastrel::cli {

/// Prepares a host for fonts that are missing, as the options say: the replacements of --font,
/// --cancel-missing-fonts, and who is asked for others: the user in a window with --window, at the
/// terminal where standard input and standard error are one, nobody with --json or otherwise.
/// Throws CommandError.
void PrepareFonts(const Invocation& invocation, document::DocumentHost& host);

/// Throws CommandError(WrongUse) if one of these options was given with a document, whose texts
/// have their replacements already.
void RefuseFontOptions(const Invocation& invocation);

}  // namespace rastrel::cli
