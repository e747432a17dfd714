#pragma once

#include <cstdint>
#include <string>

#include "rastrel/job/format_string.h"

namespace PrintingThread {

/// How the output engine treats a page. Its keyword is in the page's "begin" line.
enum CFM2TicketType : std::int32_t {
  CFM2_ONCE = 0,
  CFM2_REPRINT = 1,  ///< the only one that this library assigns itself
  CFM2_ONLY = 2,
  CFM2_DELETE = 3,
};

/// One rendered page of a CFM2 document.
class CCFMPage {
 public:
  /// The default id and directory, no title, type "reprint".
  CCFMPage();
  /// A page of a saved list: the default id, type "reprint", the directory through SetDirectory.
  CCFMPage(const std::wstring& directory, const std::wstring& title);
  CCFMPage(const CCFMPage&) = default;
  CCFMPage& operator=(const CCFMPage&) = default;
  virtual ~CCFMPage();

  /// Takes the text without whitespace at its ends; "default" means the RIP's output
  /// directory. The directory always ends in a separator afterwards, and is never empty.
  void SetDirectory(const std::wstring& text);

  formatstringT<wchar_t> m_Id;
  formatstringT<wchar_t> m_Directory;  ///< with its closing separator
  formatstringT<wchar_t> m_Title;      ///< the page's sub-directory of m_Directory
  std::int32_t m_TicketType = CFM2_REPRINT;
};

}  // namespace PrintingThread
