// The reader of CFM2 text against any text. The generator must be able to write every document that
// it reads.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <string_view>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cfm_page.h"
#include "rastrel/platform/os/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  CCFM2 document;
  document.m_Text = rastrel::os::WideFromUtf8({reinterpret_cast<const char*>(bytes), size});
  const bool good = document.Parse();
  if (good && document.m_Pages.empty()) std::abort();

  // A second reading of the same text finds the same pages.
  const std::size_t pages = document.m_Pages.size();
  if (document.Parse() != good || document.m_Pages.size() != pages) std::abort();

  std::deque<std::int32_t> all;
  const bool generated = document.Generate(1, all);
  if (generated && (pages == 0 || !all.empty())) std::abort();
  return 0;
}
