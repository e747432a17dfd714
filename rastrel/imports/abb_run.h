#pragma once

#include <cstddef>

#include "rastrel/imports/abb_plate_data.h"
#include "rastrel/imports/document_host.h"
#include "rastrel/imports/last_plate.h"
#include "rastrel/imports/placed_text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::imports {

/// Opens a paragraph with centred lines and with side margins in percent of its width, 0 for 22.
[[nodiscard]] bool StartCenteredText(PlacedText& text, const NewWorldPt& first,
                                     const NewWorldPt& second, int marginPercent);

/// One run of an import of plates, record by record, in the host's document. The last plate and the
/// open paragraph are the importer's and outlive the run.
class AbbRun {
 public:
  AbbRun(const DocumentHost& document, LastPlate& last, PlacedText& text)
      : m_Document(document), m_Last(last), m_Text(text) {}

  /// Adds a pane, its text and its drill points. A plate that the host refuses is left out with all
  /// that is on it. A font's name loses its extension in the record.
  void Import(tagABB_PLATE_DATA& record);

 private:
  /// Where the texts and drill points of a plate go.
  struct Pane {
    CWorldRect bounds;  ///< world units
    VK_PAGE_RANGE pages;
    int sheetLayer = 0;
  };

  [[nodiscard]] bool AddPane(const tagABB_PLATE& plate);
  [[nodiscard]] bool ExtendLastPlate(const tagABB_PLATE& plate);
  [[nodiscard]] Pane FindPane(const tagABB_PLATE& plate);
  void AddTexts(tagABB_PLATE_DATA& record, const Pane& pane);
  void PasteLines(tagABB_PLATE_DATA& record);
  void FinishText(const tagABB_PLATE& plate, const Pane& pane);
  void AddDrillPoint(const tagDRILLPOINT& point, const Pane& pane);

  const DocumentHost& m_Document;
  LastPlate& m_Last;
  PlacedText& m_Text;
};

}  // namespace rastrel::imports
