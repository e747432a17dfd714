#include "rastrel/conversion/bitmap/bitmap_settings.h"

#include <array>
#include <cmath>
#include <utility>

#include "rastrel/conversion/dialogs/ps2bmp_dlg.h"
#include "rastrel/conversion/scan_group.h"
#include "rastrel/job/format_string.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/values/world.h"
#include "rastrel/psscan/ps_parser.h"

namespace rastrel::conversion {

namespace {

constexpr double PointsInInch = 72.0;

constexpr const wchar_t* Section = L"Images";
constexpr const wchar_t* Key = L"EPS dialog data";
constexpr std::uint32_t SettingSize = 79;  // characters, terminator included
constexpr std::int32_t UsualResolution = 72;

double CentimetresBetween(int one, int other) {
  // The difference of two 32-bit numbers needs more bits.
  return std::abs(static_cast<double>(one) - other) / PointsInInch * host::CentimetresPerInch;
}

// A scan without a box succeeds as well, and leaves the rectangle empty.
bool IsEmpty(const CRect& rect) {
  return rect.left == 0 && rect.top == 0 && rect.right == 0 && rect.bottom == 0;
}

void Keep(const PS2BmpParams& params) {
  formatstringT<wchar_t> text;
  text.Format(L"%d,%d", params.mode, params.cut.resolution);
  static_cast<void>(WriteStringKorvane(Section, Key, text.c_str(), DS_USER, nullptr));
}

}  // namespace

// The mode is kept beside the resolution, but every conversion begins without one.
std::int32_t KeptResolution() {
  wchar_t text[SettingSize] = L"";
  GetStringKorvane(Section, Key, text, SettingSize, DS_USER, nullptr);
  std::array<std::int32_t, 2> modeAndResolution{PS2BMP_CONVERSION, UsualResolution};
  const bool whole = ScanIntegerList(text, modeAndResolution);
  return whole && modeAndResolution[1] > 0 ? modeAndResolution[1] : UsualResolution;
}

bool AskBitmapParams(const wchar_t* path, PS2BmpParams& params) {
  CRect bounds;
  std::vector<CString> names;
  const bool scanned = CPSParser(path).GetBoundsAndStrings(bounds, names);
  params.hasBounds = scanned && !IsEmpty(bounds) ? 1 : 0;
  params.cut.resolution = KeptResolution();
  params.width = CentimetresBetween(bounds.left, bounds.right);
  params.height = CentimetresBetween(bounds.top, bounds.bottom);
  return EditBitmapParams(params, std::move(names));
}

bool EditBitmapParams(PS2BmpParams& params, std::vector<CString> names) {
  CPS2BmpDlg dialog(params, std::move(names), nullptr);
  if (dialog.DoModal() != host::OkCommand) return false;
  params = dialog.GetParams();
  Keep(params);
  return true;
}

}  // namespace rastrel::conversion
