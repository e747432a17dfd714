#pragma once

/// Spot colors of placed files, and the host's matches for them.

#include <cstddef>
#include <deque>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"
#include "rastrel/platform/values/color.h"

/// A spot color of a placed file, which the host may match to one of its own. A value; one thread
/// at a time.
class RASTREL_API CSpotMatchItem {
 public:
  /// Without a name, and with both colors RGB black.
  CSpotMatchItem() = default;

  /// Sets the name, of which it keeps a copy.
  void SetName(const CString& name);
  /// Sets the color that the host shows and may change.
  void SetColor(const CVKColor& color);
  /// Sets the color that the file names.
  void SetOriginalColor(const CVKColor& color);

  /// The name. Valid as long as the item, as the colors are.
  [[nodiscard]] const CString& GetName() const { return m_Name; }
  [[nodiscard]] const CVKColor& GetColor() const { return m_Color; }
  [[nodiscard]] const CVKColor& GetOriginalColor() const { return m_OriginalColor; }

  bool operator==(const CSpotMatchItem&) const = default;

 private:
  CString m_Name;  // first: the host reads it at the item's start
  CVKColor m_Color;
  CVKColor m_OriginalColor;
};

/// The host's list of spot colors, in the order in which they were appended. References to items
/// stay valid while more are appended. One thread at a time.
class RASTREL_API CSpotMatchList {
 public:
  using iterator = std::deque<CSpotMatchItem>::iterator;
  using const_iterator = std::deque<CSpotMatchItem>::const_iterator;

  /// An empty list.
  CSpotMatchList();
  CSpotMatchList(const CSpotMatchList&);
  CSpotMatchList(CSpotMatchList&&) noexcept;
  CSpotMatchList& operator=(const CSpotMatchList&);
  CSpotMatchList& operator=(CSpotMatchList&&) noexcept;
  ~CSpotMatchList();

  /// Appends a copy of the item.
  void push_back(const CSpotMatchItem& item);

  /// The items, first to last, and how many there are.
  [[nodiscard]] iterator begin() { return m_Items.begin(); }
  [[nodiscard]] iterator end() { return m_Items.end(); }
  [[nodiscard]] const_iterator begin() const { return m_Items.begin(); }
  [[nodiscard]] const_iterator end() const { return m_Items.end(); }
  [[nodiscard]] std::size_t size() const { return m_Items.size(); }
  [[nodiscard]] bool empty() const { return m_Items.empty(); }

 private:
  std::deque<CSpotMatchItem> m_Items;
};
