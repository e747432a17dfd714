// A plane reader that is not the product's: it opens anything, and each plane has 3 by 2 pixels,
// the upper row blue and the lower one red. It shows that a conversion binds its reader by name.

#include <array>
#include <new>

#include "rastrel/platform/host/plane_reader.h"

namespace {

constexpr std::uint32_t ConversionsInterface = 0x20D77C57;  // the identifier's first field

class StripedPlane final : public CFMPlane {
 public:
  int SetBaseDirectory(const wchar_t*) override { return 1; }
  int SetLanguageKey(const wchar_t*) override { return 1; }
  int Open(const wchar_t*) override { return 1; }
  int GetDimensions(std::int32_t& width, std::int32_t& height) override {
    width = 3;
    height = 2;
    return 1;
  }
  int GetPixels(const BITMAPINFOHEADER*& header, std::span<const std::byte>& pixels) override {
    m_Header.biWidth = 3;
    m_Header.biHeight = 2;
    m_Header.biBitCount = 24;
    for (std::size_t pixel = 0; pixel < 3; ++pixel) {
      m_Pixels[3 * pixel] = std::byte{0xFF};
      m_Pixels[12 + 3 * pixel + 2] = std::byte{0xFF};
    }
    header = &m_Header;
    pixels = m_Pixels;
    return 1;
  }
  void ReleasePixels(const BITMAPINFOHEADER*, std::span<const std::byte>) override {}

 private:
  BITMAPINFOHEADER m_Header;
  std::array<std::byte, 24> m_Pixels{};
};

class StripedReader final : public CFMDllIF {
 public:
  CFMPlane* GetInterface(const InterfaceId& id) override {
    return id.first == ConversionsInterface ? &m_Plane : nullptr;
  }

 private:
  StripedPlane m_Plane;
};

}  // namespace

template <>
CFMDllIF* DynamicExport<CFMDllIF>::Create() {
  return new (std::nothrow) StripedReader;
}

template <>
void DynamicExport<CFMDllIF>::Destroy(CFMDllIF* reader) {
  delete reader;
}
