#include "children/coreodalis/image.h"

#include "children/coreodalis/pdf_writer.h"
#include "children/coreodalis/png_writer.h"
#include "children/coreodalis/tiff_writer.h"

namespace rastrel::odalis {

Attempt<std::unique_ptr<ImageWriter>> MakeImageWriter(FileFormat format, int descriptor,
                                                      const std::string& name,
                                                      const ImageShape& shape) {
  switch (format) {
    case FileFormat::Tiff: return MakeTiffWriter(descriptor, name, shape);
    case FileFormat::Png: return MakePngWriter(descriptor, name, shape);
    case FileFormat::Pdf: return MakePdfWriter(descriptor, name, shape);
  }
  return Problem{"an unknown format"};
}

}  // namespace rastrel::odalis
