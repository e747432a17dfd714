#pragma once

/// The document's sheet layers as the host's window has them.

#include <optional>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"

/// The sheet layers by their numbers. The host owns it; only the user interface thread uses it.
class RASTREL_API CSheetLayerPalette {
 public:
  CSheetLayerPalette() = default;
  virtual ~CSheetLayerPalette();
  CSheetLayerPalette(const CSheetLayerPalette&) = delete;
  CSheetLayerPalette& operator=(const CSheetLayerPalette&) = delete;

  /// A copy of the layer of that number; nothing if there is none.
  [[nodiscard]] virtual std::optional<CSheetLayer> GetSheetLayerFromPalette(int number) = 0;
  /// Adds a copy of a layer under its number. Non-zero for success; 0 if the number is taken.
  virtual int AddSheetToPalette(const CSheetLayer& layer) = 0;
  /// Removes a layer, not its objects. Nothing if there is none of that number.
  virtual void RemoveSheetFromPalette(int number) = 0;
};
