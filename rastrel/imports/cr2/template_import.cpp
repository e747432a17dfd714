#include "rastrel/imports/cr2/template_import.h"

#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"

namespace rastrel::imports {
namespace {

constexpr unsigned IconStop = 16;
constexpr unsigned IconWarning = 48;

}  // namespace

void TemplateImport::LogMissing(const wchar_t* lack) {
  if (missing.insert(lack).second) CAppLog::Instance().Printf(L"[Import] the host %s", lack);
}

TemplateImport BeginTemplateImport(const DocumentHost& document, const wchar_t* caption) {
  return {.document = document,
          .caption = caption,
          .replacements = document.text.NewFontReplacement(L"cr2")};
}

void ShowClosingMessage(TemplateImport& import) {
  host::Application& application = import.document.application;
  if (import.cancelled)
    application.MessageBoxW(L"Import cancelled!", import.caption, IconStop);
  else if (import.unicodeLost)
    application.MessageBoxW(
        L"Unicode character(s) encountered which\ncannot be displayed properly\n\n"
        L"These will be displayed as question marks (?)",
        import.caption, IconWarning);
}

}  // namespace rastrel::imports
