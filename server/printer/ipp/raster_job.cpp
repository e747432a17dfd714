#include "server/printer/ipp/raster_job.h"

#include <utility>

namespace rastrel::server {
namespace {

// In PWG raster this field of the header has the number of pages, or 0.
constexpr int TotalPagesField = 0;

Expected<PictureForm> FormOf(const cups_page_header2_t& header) {
  PictureForm form;
  form.width = header.cupsWidth;
  form.height = header.cupsHeight;
  form.bits = header.cupsBitsPerColor;
  form.horizontalDensity = header.HWResolution[0];
  form.verticalDensity = header.HWResolution[1];
  switch (header.cupsColorSpace) {
    case CUPS_CSPACE_W:
    case CUPS_CSPACE_SW: form.channels = 1; break;
    case CUPS_CSPACE_K:  // ink, and not light
      form.channels = 1;
      form.space =
          "[/Separation /Black /DeviceGray << /FunctionType 2 /Domain [0 1] /C0 [1] "
          "/C1 [0] /N 1 >>]";
      break;
    case CUPS_CSPACE_RGB:
    case CUPS_CSPACE_SRGB: form.channels = 3; break;
    default: return FailureOf("the raster's colors are not printed", FailureCode::BadInput);
  }
  if (RowBytesOf(form) > header.cupsBytesPerLine ||
      header.cupsBitsPerPixel != form.bits * form.channels)
    return FailureOf("the raster's header is damaged", FailureCode::BadInput);
  return form;
}

}  // namespace

Expected<void> RasterJob::KeepFailure(Expected<void> result) {
  if (!result) KeepFirst(m_Result, result.Error());
  return m_Result;
}

Expected<void> RasterJob::Begin() {
  auto pdf = PicturePdf::Create(m_Path);
  if (!pdf) return KeepFailure(pdf.Error());
  m_Pdf = *std::move(pdf);
  return {};
}

Expected<void> RasterJob::BeginPage(const cups_page_header2_t& header) {
  if (!m_Result) return m_Result;
  const auto form = FormOf(header);
  if (!form) return KeepFailure(form.Error());
  m_RowBytes = RowBytesOf(*form);
  if (header.cupsInteger[TotalPagesField] != 0) m_Expected = header.cupsInteger[TotalPagesField];
  return KeepFailure(m_Pdf->BeginPage(*form));
}

Expected<void> RasterJob::AddRow(const unsigned char* row) {
  if (!m_Result) return m_Result;
  return KeepFailure(m_Pdf->Add({reinterpret_cast<const char*>(row), m_RowBytes}));
}

Expected<void> RasterJob::EndPage() {
  if (!m_Result) return m_Result;
  return KeepFailure(m_Pdf->EndPage());
}

Expected<void> RasterJob::Finish() {
  if (!m_Result) return m_Result;
  if (m_Pdf->Pages() < m_Expected)
    return KeepFailure(FailureOf("the raster ends before its last page", FailureCode::BadInput));
  return KeepFailure(m_Pdf->Finish());
}

}  // namespace rastrel::server
