#pragma once

#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"

/// An object of the host that can become an element of the document: what stands in the document's
/// place for it. The host makes all of them; the user interface thread uses them.
class RASTREL_API CGenericItem {
 public:
  CGenericItem() = default;
  virtual ~CGenericItem();
  CGenericItem(const CGenericItem&) = delete;
  CGenericItem& operator=(const CGenericItem&) = delete;

  /// Makes the item an element of the document and gives its handle. The library calls it with 1, 1
  /// and 0. Non-zero for success: the document owns the item from then on. 0 leaves the item to the
  /// caller and the handle as it was.
  virtual int Add(int visible, int selectable, int reserved,
                  rastrel::host::ObjectHandle& object) = 0;

  /// Replaces the picture that stands for the item by the bitmap file at that path. Non-zero for
  /// success. Without an override: 0, the item has no picture.
  virtual int CreatePreviewBmp(const wchar_t* path);
};

/// The element behind a handle. It belongs to the document and is valid until the object changes.
class RASTREL_API DBElement {
 public:
  DBElement() = default;
  virtual ~DBElement();
  DBElement(const DBElement&) = delete;
  DBElement& operator=(const DBElement&) = delete;

  /// The item that the element stands for, or null for an element without one. For a plate object
  /// it is a `CGenericPlateObject`.
  [[nodiscard]] virtual CGenericItem* GetPlaceholderItem() = 0;
  /// True if the object's inside is painted.
  [[nodiscard]] virtual bool IsFilled() const = 0;
  /// The text of a text object, or null. Without an override: null.
  [[nodiscard]] virtual ParagraphEle* GetParagraph();
};
