#include <algorithm>
#include <cmath>
#include <utility>

#include "host/document/bitmap_png.h"
#include "host/graphics/bmp_file.h"
#include "host/graphics/eps_parts.h"
#include "host/graphics/graphic_file.h"
#include "host/graphics/picture.h"
#include "host/graphics/placed_file.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/stream.h"
#include "rastrel/psscan/ps_parser.h"

/// The items of placed files.
namespace rastrel::graphics {

using document::DocumentStore;
using document::GraphicCut;
using document::GraphicKind;
using document::GraphicShape;
using document::Notices;
using document::ObjectHandle;

namespace {

CPS2CutData CutDataOf(const GraphicCut& cut) {
  CPS2CutData data;
  data.resolution = cut.resolution;
  data.colorKind = static_cast<std::int32_t>(cut.kind);
  data.enabled = cut.enabled ? 1 : 0;
  data.color = cut.color;
  return data;
}

static_assert(static_cast<int>(document::CutColor::Rgb) == CutColorRgb);
static_assert(static_cast<int>(document::CutColor::Cmyk) == CutColorCmyk);
static_assert(static_cast<int>(document::CutColor::Named) == CutColorNamed);

// A placed file of any kind. Until `Add` it holds its graphic itself; from then on the document
// does, and the item looks there.
class PlacedGraphic {
 public:
  PlacedGraphic(DocumentStore& store, Notices& notices, ObjectHandle object, GraphicShape graphic)
      : m_Store(store), m_Notices(notices), m_Object(object), m_Graphic(std::move(graphic)) {}

  [[nodiscard]] bool IsInDocument() const { return m_Object != 0; }
  [[nodiscard]] const GraphicShape& Graphic() const {
    const document::Object* object = m_Store.GetDocument().Find(m_Object);
    return object ? std::get<GraphicShape>(object->shape) : m_Graphic;
  }
  [[nodiscard]] TM Matrix() const {
    const document::Object* object = m_Store.GetDocument().Find(m_Object);
    return object ? object->attributes.matrix : TM();
  }
  [[nodiscard]] BOUNDS Bounds() const { return {0, Graphic().width, 0, Graphic().height}; }

  // Makes the object; `item` is this one's owner.
  int Add(CGenericItem* item, int visible, int selectable, ObjectHandle& object) {
    if (m_Object != 0) return 0;
    const auto size = MeasureGraphic(m_Graphic.kind, m_Graphic.bytes, {}, EpsPart::Area);
    if (!size) {
      m_Notices.AddLoss(m_Graphic.name + L" can't be placed: " +
                        os::WideFromUtf8(Describe(size.Error())));
      return 0;
    }
    GraphicShape graphic = m_Graphic;
    graphic.width = size->width;
    graphic.height = size->height;
    document::Attributes attributes = m_Store.GetDocument().NewAttributes();
    attributes.traits =
        (visible != 0 ? DBTRAIT_VISIBLE : 0) | (selectable != 0 ? DBTRAIT_SELECTABLE : 0);
    const ObjectHandle made = m_Store.GetDocument().Create(std::move(graphic), attributes);
    if (made == 0) return 0;
    m_Object = made;
    m_Graphic = {};
    m_Store.Adopt(made, std::unique_ptr<CGenericItem>(item));
    object = made;
    return 1;
  }

  int SetPreview(const wchar_t* path) {
    if (!path) return 0;
    const auto pixels = ReadBmpFile(path);
    std::string png = pixels ? document::PngOfBitmap(**pixels) : std::string();
    if (png.empty() || png.size() > LargestGraphicFile) {
      m_Notices.Add(
          std::wstring(path) + L" is no preview: " +
          (pixels ? L"it takes too much memory" : os::WideFromUtf8(Describe(pixels.Error()))));
      return 0;
    }
    document::Object* object = m_Store.GetDocument().Edit(m_Object);
    GraphicShape& graphic = object ? std::get<GraphicShape>(object->shape) : m_Graphic;
    graphic.preview = std::make_shared<const std::string>(std::move(png));
    return 1;
  }

 private:
  DocumentStore& m_Store;
  Notices& m_Notices;
  ObjectHandle m_Object;
  GraphicShape m_Graphic;  // while m_Object is 0
};

// The operations that all three classes have.
template <typename Base>
class PlacedItem : public Base {
 public:
  explicit PlacedItem(PlacedGraphic placed) : m_Placed(std::move(placed)) {}
  int Add(int visible, int selectable, int /*reserved*/, ObjectHandle& object) override {
    return m_Placed.Add(this, visible, selectable, object);
  }
  int CreatePreviewBmp(const wchar_t* path) override { return m_Placed.SetPreview(path); }
  [[nodiscard]] CPS2CutData GetCutData() override { return CutDataOf(m_Placed.Graphic().cut); }
  [[nodiscard]] CPS2CutData GetHalfCutData() override {
    return CutDataOf(m_Placed.Graphic().halfCut);
  }

 protected:
  [[nodiscard]] const PlacedGraphic& Placed() const { return m_Placed; }

 private:
  PlacedGraphic m_Placed;
};

class EpsItem : public PlacedItem<CGenericEPS> {
 public:
  using PlacedItem::PlacedItem;
  [[nodiscard]] bool IsDCSObject() override {
    const auto part = PostScriptPart(*Placed().Graphic().bytes);
    return part && NamesPlates(*part);
  }
  int ConvertToPS(CStream* stream) override {
    const auto part = PostScriptPart(*Placed().Graphic().bytes);
    if (!stream || !part) return 0;
    try {
      stream->Write(part->data(), part->size());
      stream->Flush();
    } catch (const CStreamException&) {
      return 0;
    }
    return 1;
  }
  // Its own size: the conversion's result is in it, and its matrix maps that to the document.
  [[nodiscard]] double GetWidth() const override { return Placed().Graphic().width; }
  [[nodiscard]] double GetHeight() const override { return Placed().Graphic().height; }
};

class PostScriptItem : public PlacedItem<CGenericPS> {
 public:
  using PlacedItem::PlacedItem;
  [[nodiscard]] BOUNDS GetBounds() const override { return Placed().Bounds(); }
  [[nodiscard]] TM GetMatrix() const override { return Placed().Matrix(); }
};

class PdfItem : public PlacedItem<CGenericPDF> {
 public:
  using PlacedItem::PlacedItem;
  [[nodiscard]] BOUNDS GetBounds() const override {
    return DBTranslateBounds(Placed().Bounds(), Placed().Matrix());
  }
};

}  // namespace

std::unique_ptr<CGenericEPS> OpenEps(DocumentStore& store, Notices& notices,
                                     const std::wstring& path) {
  auto bytes = os::ReadWholeFile(path, LargestGraphicFile);
  if (!bytes || !PostScriptPart(*bytes)) {
    const std::string why = bytes ? "it is no PostScript" : Describe(bytes.Error());
    notices.AddLoss(path + L" can't be opened as EPS: " + os::WideFromUtf8(why));
    return nullptr;
  }
  GraphicShape graphic;
  graphic.kind = GraphicKind::Eps;
  graphic.whole = true;
  const os::PathParts parts = os::SplitPath(path);
  graphic.name = parts.name + parts.extension;
  graphic.bytes = std::make_shared<const std::string>(*std::move(bytes));
  constexpr double centimetresPerPoint = 2.54 / 72;
  CRect box;
  if (CPSParser(path.c_str()).GetBounds(box)) {
    graphic.width = std::abs(static_cast<double>(box.right) - box.left) * centimetresPerPoint;
    graphic.height = std::abs(static_cast<double>(box.top) - box.bottom) * centimetresPerPoint;
  }
  return std::make_unique<EpsItem>(PlacedGraphic(store, notices, 0, std::move(graphic)));
}

std::unique_ptr<CGenericItem> ItemOf(DocumentStore& store, Notices& notices, ObjectHandle object) {
  const document::Object* found = store.GetDocument().Find(object);
  const auto* graphic = found ? std::get_if<GraphicShape>(&found->shape) : nullptr;
  if (!graphic) return nullptr;
  PlacedGraphic placed(store, notices, object, {});
  switch (graphic->kind) {
    case GraphicKind::Eps: return std::make_unique<EpsItem>(std::move(placed));
    case GraphicKind::PostScript: return std::make_unique<PostScriptItem>(std::move(placed));
    case GraphicKind::Pdf: return std::make_unique<PdfItem>(std::move(placed));
    case GraphicKind::Svg:
    case GraphicKind::Png:
    case GraphicKind::Jpeg:
    case GraphicKind::Tiff: break;
  }
  return nullptr;
}

}  // namespace rastrel::graphics
