#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rastrel/export.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"

class CPS2CutData;
class CStream;

/// The objects of a document that hold a file of another program, and bitmaps. The host makes all
/// of them; the user interface thread uses them.

/// A placed Encapsulated PostScript file.
class RASTREL_API CGenericEPS : public CGenericItem {
 public:
  ~CGenericEPS() override;
  /// True if the file's separations lie in files of their own.
  [[nodiscard]] virtual bool IsDCSObject() = 0;
  /// Writes the object as PostScript. Non-zero for success; what was written before a failure
  /// stays.
  virtual int ConvertToPS(CStream* stream) = 0;
  /// Its size in world units.
  [[nodiscard]] virtual double GetWidth() const = 0;
  [[nodiscard]] virtual double GetHeight() const = 0;
  /// The cut line and the half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
};

/// A placed PostScript file.
class RASTREL_API CGenericPS : public CGenericItem {
 public:
  ~CGenericPS() override;
  /// Its bounds in world units before its matrix.
  [[nodiscard]] virtual BOUNDS GetBounds() const = 0;
  /// Where and how large it stands in the document.
  [[nodiscard]] virtual TM GetMatrix() const = 0;
  /// The cut line and the half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
};

/// A placed PDF file.
class RASTREL_API CGenericPDF : public CGenericItem {
 public:
  ~CGenericPDF() override;
  /// Its bounds in world units, where it stands.
  [[nodiscard]] virtual BOUNDS GetBounds() const = 0;
  /// The cut line and the half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
};

/// A separated plane of a CFM directory, placed as an object. The object reads its pixels from that
/// directory as long as it lives.
class RASTREL_API CGenericCFPlane : public CGenericItem {
 public:
  ~CGenericCFPlane() override;
  /// Layers of the directory, and planes of one of them.
  [[nodiscard]] virtual int GetNumberofLayers() = 0;
  [[nodiscard]] virtual int GetNumberofPlanes(int layer) = 0;
  /// Non-zero if the plane that the object was made for is there and can be read.
  [[nodiscard]] virtual int IsStateValid() = 0;
};

/// The head of a device independent bitmap, with its fields in the order of the file format.
struct BITMAPINFOHEADER {
  std::uint32_t biSize = 40;
  std::int32_t biWidth = 0;   ///< pixels
  std::int32_t biHeight = 0;  ///< rows; negative when the first row is the top one
  std::uint16_t biPlanes = 1;
  std::uint16_t biBitCount = 0;  ///< bits a pixel
  std::uint32_t biCompression = 0;
  std::uint32_t biSizeImage = 0;
  std::int32_t biXPelsPerMeter = 0;
  std::int32_t biYPelsPerMeter = 0;
  std::uint32_t biClrUsed = 0;
  std::uint32_t biClrImportant = 0;
};

/// A bitmap of the host, not yet an object of the document.
class RASTREL_API CVKBitmap {
 public:
  CVKBitmap() = default;
  virtual ~CVKBitmap();
  CVKBitmap(const CVKBitmap&) = delete;
  CVKBitmap& operator=(const CVKBitmap&) = delete;

  /// Takes a copy of the pixels: rows padded to 4 bytes, blue, green and red. Non-zero for success;
  /// 0 for a head that does not fit the bytes.
  virtual int Create(const BITMAPINFOHEADER& header, std::span<const std::byte> pixels) = 0;
};
