#include "cli/document/direct_conversion.h"

#include <cmath>
#include <optional>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/document/conversion_report.h"
#include "rastrel/conversion/bitmap/bitmap_settings.h"
#include "rastrel/conversion/bitmap/load_cfm_bitmap.h"
#include "rastrel/conversion/cut/cut_lines.h"
#include "rastrel/conversion/dialogs/ps2bmp_params.h"
#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/conversion/page_size.h"
#include "rastrel/conversion/temporary_names.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

// The whole size, where one side may follow from the proportions of the page.
std::optional<::PageSize> SizeOf(const InputFile& input, const ConversionRequest& request) {
  const PartSize& size = request.size;
  if (!size.widthCm && !size.heightCm) return std::nullopt;
  if (size.widthCm && size.heightCm)
    return ::PageSize{.height = *size.heightCm, .width = *size.widthCm};
  BOUNDS bounds{};
  if (request.page) {
    bounds = MeasuredPage(input, request);
  } else {
    static_cast<void>(GetPSPageSize(os::FromNative(input.path).c_str(), bounds));
  }
  const double width = std::abs(bounds.xmax - bounds.xmin);
  const double height = std::abs(bounds.ymax - bounds.ymin);
  if (!(width > 0) || !(height > 0))
    throw CommandError(ExitStatus::BadInput,
                       "--size: the file's own size can't be found, so both sides are needed");
  if (size.widthCm)
    return ::PageSize{.height = *size.widthCm / width * height, .width = *size.widthCm};
  return ::PageSize{.height = *size.heightCm, .width = *size.heightCm / height * width};
}

// The files of a conversion, named after a temporary one.
class DirectConversion {
 public:
  DirectConversion(const InputFile& input, const ConversionRequest& request)
      : m_Input(input),
        m_Suffix(os::WideFromUtf8(input.extension)),
        m_Size(SizeOf(input, request)) {
    m_Params.mode = PS2BMP_CONVERSION;
    m_Params.hasBounds = m_Size ? 1 : 0;
    if (m_Size) m_Params.width = m_Size->width;
    if (m_Size) m_Params.height = m_Size->height;
    m_Params.cut = request.cut;
    m_Params.cut.resolution = request.resolution.value_or(conversion::KeptResolution());
  }

  ConversionEnd Run() {
    if (!Prepare()) return ConversionEnd::NotPrepared;
    CQProgressDlg progress(m_File.c_str(), nullptr);
    if (progress.DoModal() != host::OkCommand) return ConversionEnd::Ran;
    host::ObjectHandle bitmap = 0;
    if (!conversion::LoadCfmBitmap(PathWith(L".cfm"), m_Params, bitmap)) return ConversionEnd::Ran;
    if (m_Params.cut.enabled == 0) return ConversionEnd::Ran;
    if (const auto lines = conversion::TakeCutLines(PathWith(L".cut"), m_Params.cut); lines != 0)
      host::GetHost().GetObjectStore()->DSAddObject(lines);
    return ConversionEnd::Ran;
  }

 private:
  [[nodiscard]] std::wstring PathWith(const wchar_t* suffix) const {
    return m_File.substr(0, m_File.size() - m_Suffix.size()) + suffix;
  }

  bool Prepare() {
    if (!conversion::MakeRipTempName(m_File, m_Suffix.c_str())) return false;
    m_File = os::LowerAscii(m_File);
    const auto copied = os::CopyFileOver(os::FromNative(m_Input.path), m_File, os::Access::Private);
    if (!copied)
      CAppLog::Instance().Printf(L"[CLQ] the file can't be copied: %s",
                                 os::WideFromUtf8(Describe(copied.Error())));
    return copied && WriteHeader();
  }

  // In front of PostScript, and beside a PDF.
  bool WriteHeader() {
    const CPS2CutData none;
    const ::PageSize* page = m_Size ? &*m_Size : nullptr;
    const int resolution = m_Params.cut.resolution;
    if (m_Suffix != L".pdf")
      return conversion::WriteJobHeader(m_File.c_str(), page, &m_Params.cut, &none, &resolution);
    const std::wstring header = conversion::JobHeaderText(page, &m_Params.cut, &none, &resolution);
    return static_cast<bool>(
        os::ReplaceFile(PathWith(L".jhdr"), os::AnsiFromWide(header), os::Access::Private));
  }

  const InputFile& m_Input;
  std::wstring m_Suffix;  // of the working copy
  std::optional<::PageSize> m_Size;
  PS2BmpParams m_Params;
  std::wstring m_File;
};

}  // namespace

ConversionEnd ConvertOutsideDialog(const InputFile& input, const ConversionRequest& request) {
  return DirectConversion(input, request).Run();
}

}  // namespace rastrel::cli
