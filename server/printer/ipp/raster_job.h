#pragma once

#include <pappl/pappl.h>

#include <memory>
#include <string>

#include "server/printer/picture_pdf.h"

namespace rastrel::server {

/// A job of PWG or Apple raster, whose rows come while its sender is connected, as a PDF file.
class RasterJob {
 public:
  explicit RasterJob(std::string path) : m_Path(std::move(path)) {}

  [[nodiscard]] Expected<void> Begin();
  [[nodiscard]] Expected<void> BeginPage(const cups_page_header2_t& header);
  [[nodiscard]] Expected<void> AddRow(const unsigned char* row);
  [[nodiscard]] Expected<void> EndPage();
  /// Fails if the sender went before the last of the pages that it said.
  [[nodiscard]] Expected<void> Finish();

  [[nodiscard]] const std::string& Path() const { return m_Path; }

 private:
  [[nodiscard]] Expected<void> KeepFailure(Expected<void> result);

  std::string m_Path;
  std::unique_ptr<PicturePdf> m_Pdf;
  std::uint64_t m_RowBytes = 0;
  std::size_t m_Expected = 0;  // pages; 0: the sender did not say
  Expected<void> m_Result;     // the first failure, which no later step undoes
};

}  // namespace rastrel::server
