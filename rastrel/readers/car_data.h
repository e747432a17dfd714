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
  wchar_t m_Name[CarDataTextSize] = {};                  ///< of the folder or file; may be empty
  wchar_t m_Url[CarDataTextSize] = {};                   ///< of files only
  wchar_t m_Extension[CarDataTextSize] = {};             ///< of files only
  std::vector<std::unique_ptr<CFolderInfo>> m_Children;  ///< folders first, then files
};

/// The index of a car data library, an XML file (docs/formats/car-data.md), as a tree of folders
/// and files. It has their names and places; the files themselves are not opened.
///
/// A copy has the result and the cursor of its original and shares its nodes. A node lives until
/// the last object that holds its tree is destroyed or cleared.
///
/// One thread at a time; objects that share nodes count as one. Nothing throws but std::bad_alloc.
class RASTREL_API CXMLCarDataCut {
 public:
  /// Reads the file at a library path (platform/os/path.h) at once. After a failure there are no
  /// folders, and no operation reports it. It fails if the path is null or empty, if the file does
  /// not exist or has another extension than "xml" in any case, if the XML layer refuses the
  /// document, if the root is not "LIBRARY", if an attribute is longer than its field, or if the
  /// nodes would take more than 128 MiB. The application log has the reason if the document was
  /// refused, and for the last two.
  explicit CXMLCarDataCut(const wchar_t* path);
  CXMLCarDataCut(const CXMLCarDataCut&);
  CXMLCarDataCut& operator=(const CXMLCarDataCut&);
  virtual ~CXMLCarDataCut();

  /// Moves the cursor to the first folder of the top level and returns it, or null if there is
  /// none. The object stays its owner.
  CFolderInfo* GetFirstFolder();
  /// Moves the cursor to the next folder of the top level and returns it. Null after the last, at
  /// every call from then on, and before GetFirstFolder was called.
  CFolderInfo* GetNextFolder();

  /// Gives up the tree, which is freed with the last object that shares it.
  void ClearFolders();

 protected:
  /// Appends the folders of a file. Returns false, with nothing appended, where the constructor
  /// fails.
  bool ParseFile(const wchar_t* path);

  bool m_bValid = false;  ///< the result of the constructor's ParseFile

 private:
  static constexpr std::size_t AtEnd = static_cast<std::size_t>(-1);

  std::vector<std::shared_ptr<CFolderInfo>> m_Folders;
  std::size_t m_Cursor = AtEnd;
};
