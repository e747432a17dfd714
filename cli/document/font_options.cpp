#include "cli/document/font_options.h"

#include "cli/console/exit_status.h"
#include "cli/document/font_prompt.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/window_views.h"

namespace rastrel::cli {
namespace {

bool IsTerminal(os::StandardStream stream) {
  return os::IsTerminalDevice(os::StandardHandle(stream));
}

// Null if nobody can be asked.
host::DialogViews* ViewsFor(const Invocation& invocation) {
  if (invocation.Has(OptionId::AskInWindow)) {
    const auto views = host::LoadWindowViews();
    if (!views) {
      throw CommandError(ExitStatus::NotInstalled,
                         "--window: no window can be shown: " + Describe(views.Error()));
    }
    return *views;
  }
  if (invocation.Has(OptionId::Json) || !IsTerminal(os::StandardStream::Input) ||
      !IsTerminal(os::StandardStream::Error)) {
    return nullptr;
  }
  static FontPrompts prompts;
  return &prompts;
}

}  // namespace

void PrepareFonts(const Invocation& invocation, document::DocumentHost& host) {
  for (const std::string& value : invocation.fonts) {
    const std::size_t equals = value.find('=');
    if (equals == std::string::npos) {
      throw CommandError(ExitStatus::WrongUse, "--font " + value + ": not NAME=FONT");
    }
    const auto replaced = host.ReplaceFont(os::WideFromUtf8(value.substr(0, equals)),
                                           os::WideFromUtf8(value.substr(equals + 1)));
    if (!replaced) {
      throw CommandError(ExitStatus::WrongUse,
                         "--font " + value + ": " + Describe(replaced.Error()));
    }
  }
  host.CancelMissingFonts(invocation.Has(OptionId::CancelMissingFonts));
  host.SetDialogViews(ViewsFor(invocation));
}

void RefuseFontOptions(const Invocation& invocation) {
  for (const OptionId id :
       {OptionId::FontReplacement, OptionId::CancelMissingFonts, OptionId::AskInWindow}) {
    if (invocation.Has(id)) {
      throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) +
                                                   ": a document has its replacements already");
    }
  }
}

}  // namespace rastrel::cli
