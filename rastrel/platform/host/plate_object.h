#pragma once

#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// One pane of a plate object: the piece of material that one badge or sign is cut from. Its edges
/// are world units, top above bottom. It belongs to its plate object and is valid until that is
/// laid out again.
class RASTREL_API CPane {
 public:
  CPane() = default;
  virtual ~CPane();
  CPane(const CPane&) = delete;
  CPane& operator=(const CPane&) = delete;

  /// Its edges.
  [[nodiscard]] virtual double GetLeft() const = 0;
  [[nodiscard]] virtual double GetTop() const = 0;
  [[nodiscard]] virtual double GetRight() const = 0;
  [[nodiscard]] virtual double GetBottom() const = 0;
};

/// Panes of one size, laid out on the sign blank in rows from the left, with margins round all of
/// them and gaps between them. All measures are world units.
class RASTREL_API CGenericPlateObject : public CGenericItem {
 public:
  ~CGenericPlateObject() override;

  /// Lay panes out, at most as many as were wanted, rows downward from `start` (the upper left
  /// corner of the first pane), within a blank of that size less the margins. The result is how
  /// many fit, 0 for none; the object then has that many.
  virtual int CreatePanesWithOriginTopLeft(const CWorldPoint& start, double width,
                                           double height) = 0;
  /// The same from the lower left corner of the first pane, rows upward.
  virtual int CreatePanesWithOriginBottomLeft(const CWorldPoint& start, double width,
                                              double height) = 0;

  /// Rebuilds the object with a new pane count. Panes that were there keep their order, new ones
  /// follow. What does not fit on the page goes on to further pages. `objects` is empty and `flag`
  /// 0 in every call of the library.
  virtual void ResetData(int count, double width, double height, const CWorldRect& margins,
                         double horizontalGap, double verticalGap,
                         const std::vector<rastrel::host::ObjectHandle>& objects, int flag) = 0;

  /// What the object was last built with.
  [[nodiscard]] virtual int GetPaneCount() const = 0;
  [[nodiscard]] virtual double GetPaneWidth() const = 0;
  [[nodiscard]] virtual double GetPaneHeight() const = 0;
  [[nodiscard]] virtual CWorldRect GetMargins() const = 0;
  [[nodiscard]] virtual double GetHorizontalGap() const = 0;
  [[nodiscard]] virtual double GetVerticalGap() const = 0;

  /// The last pane's edges; all 0 when there is no pane.
  [[nodiscard]] virtual CWorldRect GetLastPaneBounds() const = 0;

  /// Walk the panes in layout order, whatever their page; null behind the last. The place of the
  /// walk lives in the object.
  [[nodiscard]] virtual CPane* GetFirstPane() = 0;
  [[nodiscard]] virtual CPane* GetNextPane() = 0;
};
