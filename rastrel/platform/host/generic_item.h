#pragma once

/// Objects of the host that become elements of the document, and those elements.

#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"

/// An object of the host that can become an element of the document and then represents its content
/// in the document. The host makes all of them; only the user interface thread uses them.
class RASTREL_API CGenericItem {
 public:
  CGenericItem() = default;
  virtual ~CGenericItem();
  CGenericItem(const CGenericItem&) = delete;
  CGenericItem& operator=(const CGenericItem&) = delete;

  /// Makes the item an element of the document and sets `object` to its handle. The library passes
  /// 1, 1 and 0. Non-zero for success: the document owns the item from then on, and the caller must
  /// not delete it. 0 leaves the item to the caller and `object` as it was.
  virtual int Add(int visible, int selectable, int reserved,
                  rastrel::host::ObjectHandle& object) = 0;

  /// Replaces the picture of the item by the bitmap file at that path (wide, ends with
  /// a zero). Non-zero for success. By default 0: the item has no picture.
  virtual int CreatePreviewBmp(const wchar_t* path);
};

/// The element of a handle. It belongs to the document and is valid until the object changes; only
/// the user interface thread uses it.
class RASTREL_API DBElement {
 public:
  DBElement() = default;
  virtual ~DBElement();
  DBElement(const DBElement&) = delete;
  DBElement& operator=(const DBElement&) = delete;

  /// The item that the element was made of, owned by the document; null for an element without one.
  /// For a plate object it is a `CGenericPlateObject`.
  [[nodiscard]] virtual CGenericItem* GetPlaceholderItem() = 0;
  /// True if the object's inside is painted.
  [[nodiscard]] virtual bool IsFilled() const = 0;
  /// The text of a text object, owned by the element; null for any other object. By default null.
  [[nodiscard]] virtual ParagraphEle* GetParagraph();
};
