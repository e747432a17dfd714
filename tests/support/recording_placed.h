#pragma once

#include <string>

#include "rastrel/platform/host/placed_graphics.h"
#include "tests/support/host_calls.h"

namespace rastrel::test {

/// A placed EPS file that writes its calls as `E1.ConvertToPS()`. The script answers `IsDCSObject`
/// (0 without one) and `ConvertToPS` (1); an answer of -1 lets its stream fail.
class RecordingEps : public CGenericEPS {
 public:
  /// `content` is the PostScript that ConvertToPS writes, also when it fails.
  RecordingEps(HostCalls& calls, std::string name, std::string content)
      : m_Calls(calls), m_Name(std::move(name)), m_Content(std::move(content)) {}

  int Add(int visible, int selectable, int reserved, host::ObjectHandle& object) override;
  bool IsDCSObject() override;
  int ConvertToPS(CStream* stream) override;
  [[nodiscard]] double GetWidth() const override { return 1; }
  [[nodiscard]] double GetHeight() const override { return 1; }
  [[nodiscard]] CPS2CutData GetCutData() override;
  [[nodiscard]] CPS2CutData GetHalfCutData() override;

 private:
  HostCalls& m_Calls;
  std::string m_Name;
  std::string m_Content;
};

/// A bitmap that writes `B1.Create(2, -1, 24, 8 bytes)`: width, height, bits and number of bytes.
/// The script answers `CVKBitmap::Create` under the name "Create bitmap" (1 without one).
class RecordingBitmap : public CVKBitmap {
 public:
  RecordingBitmap(HostCalls& calls, std::string name) : m_Calls(calls), m_Name(std::move(name)) {}

  int Create(const BITMAPINFOHEADER& header, std::span<const std::byte> pixels) override;
  [[nodiscard]] const std::string& Name() const { return m_Name; }

 private:
  HostCalls& m_Calls;
  std::string m_Name;
};

}  // namespace rastrel::test
