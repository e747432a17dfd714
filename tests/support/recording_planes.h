#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/platform/host/plane_reader.h"
#include "tests/support/host_calls.h"

namespace rastrel::test {

/// A plane reader that writes each call as a line and answers from the script: an answer of 0 to
/// `LoadLibrary`, `GetCreateFunction`, `GetDestroyFunction`, `Create`, `GetInterface`, `Open`,
/// `GetDimensions` or `GetPixels` lets that step fail. One may live at a time, since the two
/// functions of a library know no object.
class RecordingPlaneReader : public host::PlaneReader, CFMDllIF, CFMPlane {
 public:
  explicit RecordingPlaneReader(HostCalls& calls);
  ~RecordingPlaneReader() override;

  HostCalls& m_Calls;
  RecordingPlaneReader* m_Outer;  // of a host that this one's hides, or null
  /// The result of `SearchPath`; empty for none.
  std::wstring m_FoundPath = L"/programs/cfplane.dll";
  /// The handle of the library.
  host::LibraryHandle m_Library = this;
  /// The plane: 2 by 1 pixels of 24 bits.
  std::int32_t m_Width = 2;
  std::int32_t m_Height = 1;
  BITMAPINFOHEADER m_Header;
  std::vector<std::byte> m_Pixels;

  /// A text for each thing that was not given back: the library, a reader, pixels.
  [[nodiscard]] std::vector<std::string> LeftOpen() const;

  std::wstring SearchPath(const wchar_t* fileName) override;
  host::LibraryHandle LoadLibrary(const wchar_t* path) override;
  CreateFunction GetCreateFunction(host::LibraryHandle library, const char* name) override;
  DestroyFunction GetDestroyFunction(host::LibraryHandle library, const char* name) override;
  void FreeLibrary(host::LibraryHandle library) override;

 private:
  CFMPlane* GetInterface(const InterfaceId& id) override;
  int SetBaseDirectory(const wchar_t* path) override;
  int SetLanguageKey(const wchar_t* key) override;
  int Open(const wchar_t* path) override;
  int GetDimensions(std::int32_t& width, std::int32_t& height) override;
  int GetPixels(const BITMAPINFOHEADER*& header, std::span<const std::byte>& pixels) override;
  void ReleasePixels(const BITMAPINFOHEADER* header, std::span<const std::byte> pixels) override;

  static CFMDllIF* Create();
  static void Destroy(CFMDllIF* reader);
  [[nodiscard]] NameText LibraryName(host::LibraryHandle library) const;

  int m_LoadedLibraries = 0;
  int m_Readers = 0;
  int m_PixelBlocks = 0;
};

}  // namespace rastrel::test
