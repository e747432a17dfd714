// Asks for a font in place of a missing one in a window, as an import of a template does, and
// prints the font that was chosen, or "cancelled".

#include <cstdio>

#include "host/document_host.h"
#include "host/text/font_catalog.h"
#include "rastrel/platform/host/text_compose.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/window_views.h"

int main() {
  const auto views = rastrel::host::LoadWindowViews();
  if (!views) {
    std::printf("no window: %s\n", Describe(views.Error()).c_str());
    return 1;
  }
  rastrel::document::DocumentHost host;
  host.SetDialogViews(*views);
  rastrel::host::TextCompose& text = *host.GetTextCompose();
  const auto replacement = text.NewFontReplacement(L"cr2");
  const auto* font = static_cast<const rastrel::text::Font*>(
      text.ChooseReplacementFont(*replacement, L"No & Such Font", -1, -1));
  std::printf("%s\n", font ? rastrel::os::Utf8FromWide(font->replacement).c_str() : "cancelled");
  return 0;
}
