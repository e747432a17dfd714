#include "rastrel/conversion/page_size.h"

#include <string>

#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/conversion/measure_page.h"
#include "rastrel/conversion/postscript_files.h"
#include "rastrel/conversion/qrast.h"
#include "rastrel/conversion/temporary_names.h"
#include "rastrel/platform/host/wait_cursor.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"

namespace conversion = rastrel::conversion;
namespace os = rastrel::os;

namespace {

using PrintingThread::QRastPageInfo;

constexpr float CentimetresInInch = 2.54F;
constexpr float NotTold = -1.0F;

// A copy of the file with a job header, or nothing.
std::wstring MakeCopy(const wchar_t* path) {
  std::wstring copy;
  if (!conversion::MakeRipTempName(copy, L".ps")) return {};
  copy = os::LowerAscii(copy);
  if (!os::CopyFileOver(path, copy, os::Access::Private)) return {};
  const CPS2CutData noCutLine;
  if (!conversion::WriteJobHeader(copy.c_str(), nullptr, &noCutLine, &noCutLine, nullptr))
    return {};
  return copy;
}

bool IsWhole(const QRastPageInfo& info) {
  return info.bboxX != NotTold && info.bboxY != NotTold && info.bboxWidth != NotTold &&
         info.bboxHeight != NotTold;
}

double Centimetres(float inches) {
  // Lengths are turned in single precision and added in double.
  const float centimetres = inches * CentimetresInInch;
  return static_cast<double>(centimetres);
}

}  // namespace

namespace rastrel::conversion {

int MeasurePage(const wchar_t* path, BOUNDS& bounds, CSemaphore* stop,
                const MeasureLineHandler& onLine) {
  if (path == nullptr) return 0;
  BeginWaitCursor();
  const std::wstring copy = MakeCopy(path);
  if (copy.empty()) return 0;
  QRastPageInfo info;
  const bool measured = PrintingThread::RunQRast(copy.c_str(), &info, stop, onLine) != 0;
  if (!KeepsPostScriptFiles()) static_cast<void>(os::RemoveFile(copy));
  if (!measured || !IsWhole(info)) return 0;
  bounds.xmin = Centimetres(info.bboxX);
  bounds.ymin = Centimetres(info.bboxY);
  bounds.xmax = bounds.xmin + Centimetres(info.bboxWidth);
  bounds.ymax = bounds.ymin + Centimetres(info.bboxHeight);
  return 1;
}

}  // namespace rastrel::conversion

int GetPSPageSize(const wchar_t* path, BOUNDS& bounds) {
  return conversion::MeasurePage(path, bounds, nullptr);
}
