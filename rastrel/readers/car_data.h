#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "rastrel/export.h"

/// Size of each text field of a CFolderInfo, in wide characters, the terminator among them.
inline constexpr std::size_t CarDataTextSize = 256;

/// A folder of the car data library, or a file in it. Owns its children.
struct RASTREL_API CFolderInfo {
  CFolderInfo();
  CFolderInfo(const CFolderInfo&) = delete;
  CFolderInfo& operator=(const CFolderInfo&) = delete;
  ~CFolderInfo();

  /// Frees all that is below this node.
  void ClearSubFolders();

  std::int32_t m_Reserved = 0;                           ///< always 0
  std::int32_t m_Folder = 0;                             ///< 1 for a folder, 0 for a file
  wchar_t m_Name[CarDataTextSize] = {};                  ///< of the folder or file
  wchar_t m_Url[CarDataTextSize] = {};                   ///< of files only
  wchar_t m_Extension[CarDataTextSize] = {};             ///< of files only
  std::vector<std::unique_ptr<CFolderInfo>> m_Children;  ///< folders first, then files
};

/// The index of a car data library, an XML file (docs/formats/car-data.md), as a tree of folders
/// and files. It tells names and places; the files themselves are not opened.
///
/// A copy has the result and the cursor of its original and the same nodes, not equal ones. A node
/// lives until the last object that holds its tree is gone or was cleared.
///
/// One thread at a time; objects that share nodes count as one.
class RASTREL_API CXMLCarDataCut {
 public:
  /// Reads the file (library text, see platform/os/path.h) at once. Nothing is told of a failure:
  /// there are no folders then. Failures are a null or empty path, a file that does not exist, an
  /// extension other than "xml" in any case, a document that the XML layer refuses, another root
  /// than "LIBRARY", an attribute that its field does not hold, and more nodes than fit 128 MiB.
  /// The last two and the refusal of a document stand in the application log.
  explicit CXMLCarDataCut(const wchar_t* path);
  CXMLCarDataCut(const CXMLCarDataCut&);
  CXMLCarDataCut& operator=(const CXMLCarDataCut&);
  virtual ~CXMLCarDataCut();

  /// Puts the cursor on the first folder of the top level and returns it; null if there is none.
  /// Owned by the object.
  CFolderInfo* GetFirstFolder();
  /// Moves the cursor on; null behind the last folder, and at every call from then on. Null too
  /// before GetFirstFolder was called.
  CFolderInfo* GetNextFolder();

  /// Lets go of the tree.
  void ClearFolders();

 protected:
  /// Appends what the file holds; false, and nothing appended, if it is refused.
  bool ParseFile(const wchar_t* path);

  bool m_bValid = false;  ///< what ParseFile gave

 private:
  static constexpr std::size_t AtEnd = static_cast<std::size_t>(-1);

  std::vector<std::shared_ptr<CFolderInfo>> m_Folders;
  std::size_t m_Cursor = AtEnd;
};
