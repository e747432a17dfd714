#pragma once

#include <cstdint>
#include <string>

#include "rastrel/platform/host/plane_reader.h"

/// The identifier of `CFMPlaneSet`: {C7E7BFA7-21E9-4E88-BAB7-9FF8E963AEBA}.
inline constexpr InterfaceId PlaneSetInterfaceId{
    0xC7E7BFA7, 0x21E9, 0x4E88, {0xBA, 0xB7, 0x9F, 0xF8, 0xE9, 0x63, 0xAE, 0xBA}};

/// One plane of a plane set.
struct PlaneDescription {
  std::wstring name;        ///< "Cyan", "Red", "Gray", a spot color's name; any character
  unsigned page = 1;        ///< the number of its page, from 1
  std::int32_t width = 0;   ///< pixels
  std::int32_t height = 0;  ///< pixels
  double xResolution = 0;   ///< pixels per inch, above 0
  double yResolution = 0;   ///< pixels per inch, above 0
  /// Whether its samples are ink: 255 is none, 0 is full. Otherwise they are light: 0 is black, and
  /// 255 white or the full red, green or blue.
  bool isInk = false;
  /// Whether the color of the ink is known: cyan, magenta, yellow and black are, and a spot color
  /// whose look the page's description has.
  bool isColorKnown = false;
  double cyan = 0;  ///< of the ink at full strength, 0 to 1; the others likewise
  double magenta = 0;
  double yellow = 0;
  double black = 0;
};

/// The planes of all pages of one run, of the library libcfplane.so alone. `Open` takes the ".info"
/// file of the first page; each page is a layer, counted from 0, and its planes count from 0 in the
/// order of the description. After `Open` the operations of `CFMPlane` are of the first page as a
/// picture, and after `SelectPlane` of one plane alone. Otherwise it is used as `CFMPlane` is:
///
///     auto* set = static_cast<CFMPlaneSet*>(reader->GetInterface(PlaneSetInterfaceId));
///     if (set == nullptr || set->Open(path) == 0 || set->SelectPlane(0, 4) == 0) return;
///     if (set->GetPixels(header, pixels) != 0) {
///       Paint(*header, pixels);
///       set->ReleasePixels(header, pixels);
///     }
///
/// A plane is read when its pixels are asked for, and no plane but that takes memory.
class CFMPlaneSet : public CFMPlane {
 public:
  /// The number of pages: the opened one, and those in the directories "p0002", "p0003" and so on
  /// in its own. 0 if nothing is open.
  [[nodiscard]] virtual int GetNumberofLayers() = 0;
  /// The number of planes of a layer; 0 if there is no such layer, or its description can't be
  /// read.
  [[nodiscard]] virtual int GetNumberofPlanes(int layer) = 0;
  /// Describes a plane. Non-zero for success; otherwise `plane` is as it was.
  virtual int GetPlane(int layer, int plane, PlaneDescription& description) = 0;
  /// Chooses the plane that `GetDimensions` and `GetPixels` are of until the next `Open`. Its block
  /// is of 8 bits. Non-zero for success; otherwise the choice is as it was. Its file is not looked
  /// at before the pixels are asked for.
  virtual int SelectPlane(int layer, int plane) = 0;
};
