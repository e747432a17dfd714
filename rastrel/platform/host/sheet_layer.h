#pragma once

#include <optional>
#include <string>

#include "rastrel/export.h"

/// A sheet layer: the objects of a document that lie on one piece of material.
struct CSheetLayer {
  int number = 0;            ///< counts from 1; 0 is no layer
  std::wstring name;         ///< as the user sees it
  int sheetType = 0;         ///< 1: the layer of separated planes
  bool hasSubstrate = true;  ///< false: drawn without its material
  bool operator==(const CSheetLayer&) const = default;
};

/// The document's sheet layers as the host's window shows them. Only the user interface thread
/// calls.
class RASTREL_API CSheetLayerPalette {
 public:
  CSheetLayerPalette() = default;
  virtual ~CSheetLayerPalette();
  CSheetLayerPalette(const CSheetLayerPalette&) = delete;
  CSheetLayerPalette& operator=(const CSheetLayerPalette&) = delete;

  /// The layer of a number, or nothing.
  [[nodiscard]] virtual std::optional<CSheetLayer> GetSheetLayerFromPalette(int number) = 0;
  /// Adds a layer under its number. Non-zero for success; 0 if the number is taken.
  virtual int AddSheetToPalette(const CSheetLayer& layer) = 0;
  /// Removes a layer, not its objects.
  virtual void RemoveSheetFromPalette(int number) = 0;
};
