#include "children/coreodalis/image.h"

#include <algorithm>

#include "children/coreodalis/pdf_writer.h"
#include "children/coreodalis/png_writer.h"
#include "children/coreodalis/tiff_writer.h"

namespace rastrel::odalis {

Expected<void> ImageWriter::WriteRow(std::span<const std::uint8_t> row) {
  const auto room = Room();
  if (!room) return room.Error();
  std::copy(row.begin(), row.end(), room->begin());
  return Take(row.size());
}

Expected<std::unique_ptr<ImageWriter>> MakeImageWriter(const ImageOrder& order,
                                                       const ImageShape& shape, WorkerPool& pool) {
  switch (order.format) {
    case devices::FileFormat::Tiff: return MakeTiffWriter(order, shape, pool);
    case devices::FileFormat::Png: return MakePngWriter(order, shape, pool);
    case devices::FileFormat::Pdf: return MakePdfWriter(order, shape, pool);
  }
  return FailureOf("an unknown format");
}

}  // namespace rastrel::odalis
