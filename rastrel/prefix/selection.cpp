#include "rastrel/prefix/selection.h"

#include "rastrel/job/format_string.h"

namespace rastrel::prefix {

std::wstring PrinterSelection(const CJobData& settings) {
  formatstringT<wchar_t> select;
  select.Format(L"(%s:) SelectPrinter\n\n", settings.PrinterName.c_str());
  return L"\n% -- Printer Selection Override --\n"
         L"%\n" +
         select +
         L"% Disable Select Printer\n"
         L"/SelectPrinter load /$SelectPrinter$ exch def\n"
         L"/SelectPrinter {pop} def\n"
         L"% -- End of Printer selection override --\n\n";
}

std::wstring PrintModeSelection(const CJobData& settings) {
  formatstringT<wchar_t> select;
  select.Format(L"(%%Lumiscript%%pmodes/%s/%s) SelectPrintMode\n\n",
                settings.PrintModeFolder.c_str(), settings.PrintModeName.c_str());
  return L"\n% -- Print Mode Selection Override --\n"
         L"%\n"
         L"% Select the print mode\n" +
         select + DisablePrintMode + L"\n";
}

}  // namespace rastrel::prefix
