#include "rastrel/conversion/cut_data.h"

#include "rastrel/conversion/cut_color_text.h"
#include "rastrel/job/format_string.h"
#include "rastrel/platform/values/stream.h"

using rastrel::conversion::CutColorText;

namespace {

constexpr std::uint32_t WrittenVersion = 0;
// From here on a record has other fields.
constexpr std::uint32_t FirstUnknownVersion = 50;
constexpr int ColorLayout = 1;

constexpr const wchar_t* UnnamedSelection = L"mark false $setcutter\r\n";
constexpr const wchar_t* AnySelection = L"mark false $stripcontour\r\n";

std::wstring Formatted(const wchar_t* format) {
  formatstringT<wchar_t> text;
  text.Format(format);
  return text;
}

std::wstring Selection(const CPS2CutData& cut) {
  std::wstring text =
      CutColorText(cut, {L"mark false %.3f %.3f %.3f /DeviceRGB $stripcontour\r\n",
                         L"mark false %.4f %.4f %.4f %.4f  /DeviceCMYK $stripcontour\r\n",
                         L"mark false (%s) /Separation $stripcontour\r\n"});
  if (!text.empty()) return text;
  return cut.colorKind == CutColorNamed ? UnnamedSelection : AnySelection;
}

}  // namespace

int CPS2CutData::Save(CStream* stream) const {
  stream->WriteUInt32(WrittenVersion);
  stream->OpenWriteBlock();
  stream->WriteInt32(resolution);
  stream->WriteInt32(colorKind);
  stream->WriteInt32(enabled);
  color.Save(stream);
  stream->CloseWriteBlock();
  return 1;
}

int CPS2CutData::Load(CStream* stream) {
  const std::uint32_t version = stream->ReadUInt32();
  stream->OpenReadBlock();
  CPS2CutData read = *this;
  int result = 1;
  if (version < FirstUnknownVersion) {
    read.resolution = stream->ReadInt32();
    read.colorKind = stream->ReadInt32();
    read.enabled = stream->ReadInt32();
    result = read.color.Load(stream, ColorLayout);
  }
  stream->CloseReadBlock();
  *this = read;
  return result;
}

void CPS2CutData::PutCutterOverride(CStream* stream) const {
  if (enabled == 0) return;
  // The color is tried inside "stopped": an error in it must not end the job.
  const std::wstring begin = Formatted(L"[{\r\n%%%%BeginFeature: RIP Cutter\r\n");
  const std::wstring selection = Selection(*this);
  const std::wstring end = Formatted(L"%%%%EndFeature\r\n");
  for (const wchar_t* text :
       {L"\n% -- Cutter --\n", L"%\n", begin.c_str(), selection.c_str(), end.c_str(),
        L"} stopped cleartomark\r\n", L"% -- End of $setcutter Override --\r\n"})
    stream->WritePostscript(text);
}

bool CPS2CutData::IsColorMatchKVI(const CString& text) const {
  return text ==
         CutColorText(*this, {L"RGB: %.3f  %.3f  %.3f", L"CMYK: %.4f  %.4f  %.4f  %.4f", L"%s"});
}
