#include "children/coreodalis/image.h"

#include "children/coreodalis/pdf_writer.h"
#include "children/coreodalis/png_writer.h"
#include "children/coreodalis/tiff_writer.h"

namespace rastrel::odalis {

Expected<std::unique_ptr<ImageWriter>> MakeImageWriter(devices::FileFormat format, int descriptor,
                                                       const std::string& name,
                                                       const ImageShape& shape) {
  switch (format) {
    case devices::FileFormat::Tiff: return MakeTiffWriter(descriptor, name, shape);
    case devices::FileFormat::Png: return MakePngWriter(descriptor, name, shape);
    case devices::FileFormat::Pdf: return MakePdfWriter(descriptor, name, shape);
  }
  return FailureOf("an unknown format");
}

}  // namespace rastrel::odalis
