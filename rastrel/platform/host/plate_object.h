#pragma once

/// Plate objects and their panes.

#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/world.h"

/// One pane of a plate object: the piece of material that one badge or sign is cut from. It belongs
/// to its plate object and is valid until that is laid out again. Edges are world units, top above
/// bottom.
class RASTREL_API CPane {
 public:
  CPane() = default;
  virtual ~CPane();
  CPane(const CPane&) = delete;
  CPane& operator=(const CPane&) = delete;

  /// The left edge.
  [[nodiscard]] virtual double GetLeft() const = 0;
  /// The top edge.
  [[nodiscard]] virtual double GetTop() const = 0;
  /// The right edge.
  [[nodiscard]] virtual double GetRight() const = 0;
  /// The bottom edge.
  [[nodiscard]] virtual double GetBottom() const = 0;
  /// The plate object that the pane is part of, in the document, where panes that did not fit went
  /// on in a plate object of a further page. A walk comes to them after all panes of the object
  /// that was asked, so an import may end it there. By default 0: the plate object that was asked
  /// for the pane. Content of the pane goes to the pages and the sheet layer of that object.
  [[nodiscard]] virtual rastrel::host::ObjectHandle GetPlateObject() const;
};

/// Panes of one size, laid out on the sign blank in rows from the left, with margins round all of
/// them and gaps between them. All measures are world units. Only the user interface thread uses
/// it.
class RASTREL_API CGenericPlateObject : public CGenericItem {
 public:
  ~CGenericPlateObject() override;

  /// Lays panes out on a blank of that size less the margins: at most as many as were wanted, from
  /// `start`, the upper left corner of the first pane, rightward and in rows downward. Returns how
  /// many fit, 0 for none; the object then has that many.
  virtual int CreatePanesWithOriginTopLeft(const CWorldPoint& start, double width,
                                           double height) = 0;
  /// The same from the lower left corner of the first pane, with rows upward.
  virtual int CreatePanesWithOriginBottomLeft(const CWorldPoint& start, double width,
                                              double height) = 0;

  /// Rebuilds the object with a new pane count. Panes that were there keep their order, and new
  /// ones follow. Those that do not fit on the page go to further pages. In every call of the
  /// library `objects` is empty and `flag` is 0.
  virtual void ResetData(int count, double width, double height, const CWorldRect& margins,
                         double horizontalGap, double verticalGap,
                         const std::vector<rastrel::host::ObjectHandle>& objects, int flag) = 0;

  /// The pane count that the object was last built with.
  [[nodiscard]] virtual int GetPaneCount() const = 0;
  /// The width of a pane.
  [[nodiscard]] virtual double GetPaneWidth() const = 0;
  /// The height of a pane.
  [[nodiscard]] virtual double GetPaneHeight() const = 0;
  /// The margins: distances inward from the blank's edges.
  [[nodiscard]] virtual CWorldRect GetMargins() const = 0;
  /// The gap between two panes of a row.
  [[nodiscard]] virtual double GetHorizontalGap() const = 0;
  /// The gap between two rows.
  [[nodiscard]] virtual double GetVerticalGap() const = 0;

  /// The last pane's edges; all 0 without a pane.
  [[nodiscard]] virtual CWorldRect GetLastPaneBounds() const = 0;

  /// The first pane in layout order, whatever its page, and the start of a walk; null without a
  /// pane. The place of the walk is the object's.
  [[nodiscard]] virtual CPane* GetFirstPane() = 0;
  /// The pane after the one returned last; null after the last.
  [[nodiscard]] virtual CPane* GetNextPane() = 0;
};
