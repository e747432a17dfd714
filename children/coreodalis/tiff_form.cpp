#include "children/coreodalis/tiff_form.h"

#include "pages/plain_tiff.h"

namespace rastrel::odalis {
std::uint32_t RowsPerStrip(const ImageShape& shape) {
  return pages::RowsPerStripOf(shape.RowBytes(), shape.height);
}

void SetStripForm(TIFF* tiff, const ImageShape& shape, devices::Compression compression,
                  std::uint32_t height) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, shape.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(shape.planes.size()));
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, RowsPerStrip(shape));
  switch (compression) {
    case devices::Compression::None:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
      return;
    case devices::Compression::Lzw: TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW); break;
    case devices::Compression::Deflate:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
      TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, 1);
      break;
  }
  TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

}  // namespace rastrel::odalis
