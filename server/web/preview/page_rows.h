#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cfplane/pixel_file.h"
#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"
#include "server/web/preview/ink_light.h"

namespace rastrel::server::web {

/// The rows of a page as they look on a screen. Move-only; for one thread.
class PageRows {
 public:
  /// Opens the files of one plane, or of all. `page` outlives this.
  [[nodiscard]] static Expected<PageRows> Open(const std::string& directory,
                                               const pages::PageInfo& page,
                                               std::optional<std::size_t> plane, bool isTinted);

  /// Samples of a pixel: 1 or 3.
  [[nodiscard]] unsigned Samples() const { return m_Samples; }
  /// Reads the pixels of a row at these columns, which rise. Rows are asked for from the top.
  [[nodiscard]] Expected<std::span<const std::uint8_t>> Read(unsigned row,
                                                             std::span<const unsigned> columns);

 private:
  struct File {
    planes::PixelFile pixels;
    std::string name;
    std::uint64_t place = 0;  // samples that were read or passed over
  };
  struct Plane {
    std::size_t file = 0;
    unsigned channel = 0;
    std::optional<InkTable> ink;  // none: the sample is light as it is
  };

  explicit PageRows(const pages::PageInfo& page) : m_Page(&page) {}
  [[nodiscard]] Expected<void> Add(const std::string& directory, const pages::PagePlane& plane);
  [[nodiscard]] Expected<std::size_t> FileOf(const std::string& directory, const std::string& name);
  void LayOver(const Plane& plane, std::size_t index, std::span<const std::byte> samples,
               std::span<const unsigned> columns);

  const pages::PageInfo* m_Page;
  unsigned m_Samples = 3;
  std::vector<File> m_Files;
  std::vector<Plane> m_Planes;
  std::vector<std::byte> m_Read;
  std::vector<std::uint8_t> m_Row;
};

}  // namespace rastrel::server::web
