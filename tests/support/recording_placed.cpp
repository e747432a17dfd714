#include "tests/support/recording_placed.h"

#include <algorithm>

#include "rastrel/conversion/cut_data.h"
#include "rastrel/platform/values/stream.h"
#include "tests/support/recording_host.h"

namespace rastrel::test {

int RecordingEps::Add(int visible, int selectable, int reserved, host::ObjectHandle&) {
  return m_Calls.Answered(0, m_Name + ".Add", visible, selectable, reserved);
}

bool RecordingEps::IsDCSObject() {
  return m_Calls.Answered(m_Calls.Answer("IsDCSObject", 0) != 0, m_Name + ".IsDCSObject");
}

int RecordingEps::ConvertToPS(CStream* stream) {
  const int answer = m_Calls.Answered(m_Calls.Answer("ConvertToPS", 1), m_Name + ".ConvertToPS");
  stream->Write(m_Content.data(), m_Content.size());
  if (answer < 0) throw CStreamException(CStreamException::writeFailed);
  return answer;
}

CPS2CutData RecordingEps::GetCutData() {
  m_Calls.Told(m_Name + ".GetCutData");
  return {};
}

CPS2CutData RecordingEps::GetHalfCutData() {
  m_Calls.Told(m_Name + ".GetHalfCutData");
  return {};
}

int RecordingBitmap::Create(const BITMAPINFOHEADER& header, std::span<const std::byte> pixels) {
  return m_Calls.Answered(m_Calls.Answer("Create bitmap", 1), m_Name + ".Create", header.biWidth,
                          header.biHeight, header.biBitCount,
                          NameText{std::to_string(pixels.size()) + " bytes"});
}

std::unique_ptr<CGenericEPS> RecordingApplication::NewGenericEPS(const wchar_t* path) {
  const bool made = m_Calls.Answer("NewGenericEPS", 1) != 0;
  const NameText name{made ? "E" + std::to_string(++m_EpsMade) : "none"};
  m_Calls.Answered(name, "NewGenericEPS", path);
  if (!made) return nullptr;
  return std::make_unique<RecordingEps>(m_Calls, name.name, m_EpsContent);
}

CVKBitmap* RecordingApplication::NewVKBitmap() {
  if (m_Calls.Answer("NewVKBitmap", 1) == 0) {
    m_Calls.Answered(nullptr, "NewVKBitmap");
    return nullptr;
  }
  const NameText name{"B" + std::to_string(++m_BitmapsMade)};
  m_Calls.Answered(name, "NewVKBitmap");
  m_Bitmaps.push_back(std::make_unique<RecordingBitmap>(m_Calls, name.name));
  return m_Bitmaps.back().get();
}

void RecordingApplication::DeleteVKBitmap(CVKBitmap* bitmap) {
  const auto found = std::find_if(m_Bitmaps.begin(), m_Bitmaps.end(),
                                  [bitmap](const auto& kept) { return kept.get() == bitmap; });
  if (found == m_Bitmaps.end()) return m_Calls.Write("error: no such bitmap");
  m_Calls.Told("DeleteVKBitmap", NameText{(*found)->Name()});
  m_Bitmaps.erase(found);
}

}  // namespace rastrel::test
