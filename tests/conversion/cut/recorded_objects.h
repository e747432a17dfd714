#pragma once

#include <functional>
#include <string>
#include <utility>

#include "rastrel/conversion/cut_data.h"
#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/values/stream.h"
#include "tests/support/host_calls.h"

namespace rastrel::test {

/// A placed object that writes its calls as `object.GetCutData()`. The script answers
/// `CreatePreviewBmp` (1 without one).
template <class Base>
class RecordedPlaced : public Base {
 public:
  explicit RecordedPlaced(HostCalls& calls) : m_Calls(calls) {}

  HostCalls& m_Calls;
  CPS2CutData m_Cut;
  CPS2CutData m_HalfCut;
  /// Called before the header is written.
  std::function<void()> m_BeforeHeader;
  /// Called when the preview is to be taken.
  std::function<void()> m_OnPreview;

  int Add(int, int, int, host::ObjectHandle&) override { return 0; }
  CPS2CutData GetCutData() override {
    m_Calls.Told("object.GetCutData");
    return m_Cut;
  }
  CPS2CutData GetHalfCutData() override {
    m_Calls.Told("object.GetHalfCutData");
    if (m_BeforeHeader) m_BeforeHeader();
    return m_HalfCut;
  }
  int CreatePreviewBmp(const wchar_t* path) override {
    if (m_OnPreview) m_OnPreview();
    const std::wstring whole = path;
    return m_Calls.Answered(m_Calls.Answer("CreatePreviewBmp", 1), "object.CreatePreviewBmp",
                            L"..." + whole.substr(whole.rfind(L"_")));
  }
};

class RecordedEps : public RecordedPlaced<CGenericEPS> {
 public:
  using RecordedPlaced::RecordedPlaced;
  std::string m_Content = "%!PS-Adobe-3.0 EPSF-3.0\n";
  double m_Width = 2.54;
  double m_Height = 5.08;
  bool m_Throws = false;

  bool IsDCSObject() override { return false; }
  int ConvertToPS(CStream* stream) override {
    stream->Write(m_Content.data(), m_Content.size());
    if (m_Throws) throw CStreamException(CStreamException::writeFailed);
    return m_Calls.Answered(m_Calls.Answer("ConvertToPS", 1), "object.ConvertToPS");
  }
  double GetWidth() const override {
    m_Calls.Told("object.GetWidth");
    return m_Width;
  }
  double GetHeight() const override {
    m_Calls.Told("object.GetHeight");
    return m_Height;
  }
};

class RecordedPs : public RecordedPlaced<CGenericPS> {
 public:
  using RecordedPlaced::RecordedPlaced;
  BOUNDS m_Bounds{.xmin = 0, .xmax = 2.54, .ymin = 0, .ymax = 5.08};
  TM m_Matrix;

  BOUNDS GetBounds() const override {
    m_Calls.Told("object.GetBounds");
    return m_Bounds;
  }
  TM GetMatrix() const override {
    m_Calls.Told("object.GetMatrix");
    return m_Matrix;
  }
};

class RecordedPdf : public RecordedPlaced<CGenericPDF> {
 public:
  using RecordedPlaced::RecordedPlaced;
  BOUNDS m_Bounds{.xmin = 10, .xmax = 12.54, .ymin = 20, .ymax = 25.08};

  BOUNDS GetBounds() const override {
    m_Calls.Told("object.GetBounds");
    return m_Bounds;
  }
};

}  // namespace rastrel::test
