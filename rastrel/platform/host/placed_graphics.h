#pragma once

/// The objects of a document that hold a file of another program, and bitmaps.

#include <cstddef>
#include <cstdint>
#include <span>

#include "rastrel/export.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/values/bitmap_header.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"

class CPS2CutData;
class CStream;

// The host makes all of these; only the user interface thread uses them. Measures are world units.

/// A placed Encapsulated PostScript file.
class RASTREL_API CGenericEPS : public CGenericItem {
 public:
  ~CGenericEPS() override;
  /// True if the file's separations are in files of their own.
  [[nodiscard]] virtual bool IsDCSObject() = 0;
  /// Writes the object as PostScript to a stream, which is the caller's. Non-zero for success;
  /// after a failure the bytes written before it stay in the stream.
  virtual int ConvertToPS(CStream* stream) = 0;
  /// Its width.
  [[nodiscard]] virtual double GetWidth() const = 0;
  /// Its height.
  [[nodiscard]] virtual double GetHeight() const = 0;
  /// The cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  /// The half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
};

/// A placed PostScript file.
class RASTREL_API CGenericPS : public CGenericItem {
 public:
  ~CGenericPS() override;
  /// Its bounds before its matrix.
  [[nodiscard]] virtual BOUNDS GetBounds() const = 0;
  /// The matrix that places it in the document.
  [[nodiscard]] virtual TM GetMatrix() const = 0;
  /// The cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  /// The half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
};

/// A placed PDF file.
class RASTREL_API CGenericPDF : public CGenericItem {
 public:
  ~CGenericPDF() override;
  /// Its bounds in the document.
  [[nodiscard]] virtual BOUNDS GetBounds() const = 0;
  /// The cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  /// The half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
};

/// A separated plane of a CFM directory, placed as an object. It reads its pixels from that
/// directory as long as it lives.
class RASTREL_API CGenericCFPlane : public CGenericItem {
 public:
  ~CGenericCFPlane() override;
  /// The number of layers in the directory.
  [[nodiscard]] virtual int GetNumberofLayers() = 0;
  /// The number of planes of a layer, which counts from 0.
  [[nodiscard]] virtual int GetNumberofPlanes(int layer) = 0;
  /// Non-zero if the plane that the object was made for exists and can be read.
  [[nodiscard]] virtual int IsStateValid() = 0;
};

/// A bitmap of the host, not yet an object of the document.
class RASTREL_API CVKBitmap {
 public:
  CVKBitmap() = default;
  virtual ~CVKBitmap();
  CVKBitmap(const CVKBitmap&) = delete;
  CVKBitmap& operator=(const CVKBitmap&) = delete;

  /// Takes a copy of the pixels: rows padded to 4 bytes, each pixel blue, green and red, or with 8
  /// bits one gray sample, 0 black and 255 white. Non-zero for success; 0 for a header that does
  /// not agree with the number of bytes.
  virtual int Create(const BITMAPINFOHEADER& header, std::span<const std::byte> pixels) = 0;
};
