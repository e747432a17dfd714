// Car data libraries of any bytes: every node that comes out of them is whole, folders come before
// files, and copies share the tree.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "rastrel/readers/car_data.h"
#include "tests/support/named_document.h"

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

bool IsText(const wchar_t (&field)[CarDataTextSize]) {
  return std::ranges::find(field, L'\0') != std::end(field);
}

void ExpectWhole(const CFolderInfo& node) {
  Expect(node.m_Reserved == 0 && (node.m_Folder == 0 || node.m_Folder == 1));
  Expect(IsText(node.m_Name) && IsText(node.m_Url) && IsText(node.m_Extension));
  Expect(node.m_Folder == 1 || node.m_Children.empty());
  Expect(node.m_Folder == 0 || (*node.m_Url == L'\0' && *node.m_Extension == L'\0'));
  bool inFiles = false;
  for (const auto& child : node.m_Children) {
    Expect(!(inFiles && child->m_Folder == 1));
    inFiles = child->m_Folder == 0;
    ExpectWhole(*child);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static rastrel::test::NamedDocument document;
  const std::string content(bytes, bytes + size);
  CXMLCarDataCut cars(document.Write(content).c_str());
  CXMLCarDataCut copy = cars;
  for (const CFolderInfo* folder = cars.GetFirstFolder(); folder != nullptr;
       folder = cars.GetNextFolder()) {
    Expect(folder->m_Folder == 1);
    ExpectWhole(*folder);
  }
  const CFolderInfo* const first = cars.GetFirstFolder();
  cars.ClearFolders();
  Expect(copy.GetFirstFolder() == first);
  if (first != nullptr) ExpectWhole(*first);
  return 0;
}
