#pragma once

#include <list>
#include <optional>
#include <string>

#include "cfplane/page_planes.h"
#include "cfplane/plane_set.h"
#include "pages/page_info.h"

namespace rastrel::planes {

/// The planes of the page directories of one run (plane_set.h). Nothing is thrown: GetFailure has
/// the reason of a failure, want of memory included.
class PageReader final : public CFMPlaneSet {
 public:
  /// Keeps the host's directory. The reader needs no file of the host's.
  int SetBaseDirectory(const wchar_t* path) override;
  /// Keeps the key. The reader shows nothing to a person.
  int SetLanguageKey(const wchar_t* key) override;
  /// Reads the description of the directory that the file lies in. The file's name must be ".info".
  /// The page that was open before is closed; pixels that were not given back stay valid.
  int Open(const wchar_t* path) override;
  int GetDimensions(std::int32_t& width, std::int32_t& height) override;
  int GetPixels(const BITMAPINFOHEADER*& header, std::span<const std::byte>& pixels) override;
  /// Ignores a header that is not one of those given out.
  void ReleasePixels(const BITMAPINFOHEADER* header, std::span<const std::byte> pixels) override;
  const wchar_t* GetFailure() override { return m_Failure.c_str(); }

  int GetNumberofLayers() override;
  int GetNumberofPlanes(int layer) override;
  int GetPlane(int layer, int plane, PlaneDescription& description) override;
  int SelectPlane(int layer, int plane) override;

  [[nodiscard]] const std::wstring& GetBaseDirectory() const { return m_BaseDirectory; }
  [[nodiscard]] const std::wstring& GetLanguageKey() const { return m_LanguageKey; }

 private:
  struct Page {
    int layer = 0;
    std::string directory;  // native
    pages::PageInfo info;
  };
  struct Selection {
    int layer = 0;
    int plane = 0;
  };
  struct Block {
    BITMAPINFOHEADER header;
    PixelBlock pixels;
  };

  // Runs an operation. Returns 1 for success; else keeps the reason and returns 0.
  template <typename Work>
  int Try(Work work);
  [[nodiscard]] Expected<void> OpenPage(const wchar_t* path);
  [[nodiscard]] std::string DirectoryOf(int layer) const;
  [[nodiscard]] Expected<const Page*> PageOf(int layer);
  [[nodiscard]] Expected<const Page*> PageOfPlane(int layer, int plane);
  [[nodiscard]] Expected<void> ReadDimensions(std::int32_t& width, std::int32_t& height);
  [[nodiscard]] Expected<void> ReadBlock(const BITMAPINFOHEADER*& header,
                                         std::span<const std::byte>& pixels);
  [[nodiscard]] Expected<void> Describe(int layer, int plane, PlaneDescription& description);

  std::wstring m_BaseDirectory;
  std::wstring m_LanguageKey;
  std::wstring m_Failure;
  std::string m_Directory;               // of the first page, native; empty if nothing is open
  std::optional<Page> m_Page;            // the one that was asked for last
  std::optional<Selection> m_Selection;  // none: the first page as a picture
  std::list<Block> m_Blocks;             // given out
};

/// The object that the library creates, with one plane set.
class Reader final : public CFMDllIF {
 public:
  /// The same object for both identifiers, CFMPlane's and CFMPlaneSet's.
  [[nodiscard]] CFMPlane* GetInterface(const InterfaceId& id) override;

 private:
  PageReader m_Planes;
};

}  // namespace rastrel::planes
