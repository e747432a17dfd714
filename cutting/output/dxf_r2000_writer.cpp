#include "cutting/output/dxf_r2000_writer.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "cutting/output/drawn_contour.h"
#include "cutting/output/dxf_pairs.h"
#include "cutting/output/operation_look.h"

namespace rastrel::cutting {
namespace {

// Objects that others name. All further ones are numbered after them.
enum Handle : unsigned long long {
  NoHandle = 0,
  BlockRecordTable = 1,
  LayerTable,
  StyleTable,
  LineTypeTable,
  ViewTable,
  CoordinateTable,
  ViewportTable,
  ApplicationTable,
  DimensionStyleTable,
  ModelBlock,
  PaperBlock,
  ByBlockLine,
  ByLayerLine,
  ContinuousLine,
  StandardStyle,
  RootDictionary,
  GroupDictionary,
  LayoutDictionary,
  LineStyleDictionary,
  PlotStyleDictionary,
  NormalPlotStyle,
  ModelLayout,
  PaperLayout,
  FirstFree
};

class Drawing {
 public:
  // All after the header, which has to name a handle above all others.
  std::string Body(const CutJob& job, const Transform& toDevice) {
    m_Pairs.BeginSection("CLASSES").EndSection();
    AddTables(job, PageBoxOf(job, toDevice));
    AddBlocks();
    m_Pairs.BeginSection("ENTITIES");
    for (const CutPath& path : job.paths) {
      if (HasTool(path.operation)) AddPath(path, toDevice);
    }
    m_Pairs.EndSection();
    AddObjects();
    m_Pairs.Add(0, "EOF");
    return m_Pairs.Take();
  }

  [[nodiscard]] unsigned long long NextHandle() const { return m_NextHandle; }

 private:
  void BeginTable(std::string_view name, Handle handle, std::size_t entries) {
    m_Pairs.Add(0, "TABLE").Add(2, name).AddHandle(5, handle).AddHandle(330, NoHandle);
    m_Pairs.Add(100, "AcDbSymbolTable").AddInteger(70, static_cast<long long>(entries));
  }

  void EndTable() { m_Pairs.Add(0, "ENDTAB"); }

  void BeginRecord(std::string_view kind, unsigned long long handle, Handle table,
                   std::string_view subclass, std::string_view name) {
    m_Pairs.Add(0, kind).AddHandle(5, handle).AddHandle(330, table);
    m_Pairs.Add(100, "AcDbSymbolTableRecord").Add(100, subclass).Add(2, name);
  }

  void AddTables(const CutJob& job, const Box& box) {
    m_Pairs.BeginSection("TABLES");
    AddViewport(box);
    AddLineTypes();
    AddLayers(job);
    AddStyles();
    BeginTable("VIEW", ViewTable, 0);
    EndTable();
    BeginTable("UCS", CoordinateTable, 0);
    EndTable();
    BeginTable("APPID", ApplicationTable, 1);
    BeginRecord("APPID", m_NextHandle++, ApplicationTable, "AcDbRegAppTableRecord", "ACAD");
    m_Pairs.AddInteger(70, 0);
    EndTable();
    BeginTable("DIMSTYLE", DimensionStyleTable, 1);
    m_Pairs.Add(100, "AcDbDimStyleTable").AddInteger(71, 0);
    m_Pairs.Add(0, "DIMSTYLE").AddHandle(105, m_NextHandle++).AddHandle(330, DimensionStyleTable);
    m_Pairs.Add(100, "AcDbSymbolTableRecord").Add(100, "AcDbDimStyleTableRecord");
    m_Pairs.Add(2, "Standard").AddInteger(70, 0);
    EndTable();
    BeginTable("BLOCK_RECORD", BlockRecordTable, 2);
    AddBlockRecord("*Model_Space", ModelBlock, ModelLayout);
    AddBlockRecord("*Paper_Space", PaperBlock, PaperLayout);
    EndTable();
    m_Pairs.EndSection();
  }

  // The view that a program opens with: all of the page.
  void AddViewport(const Box& box) {
    const double width = std::max(box.Width(), 1.0);
    const double height = std::max(box.Height(), 1.0);
    BeginTable("VPORT", ViewportTable, 1);
    BeginRecord("VPORT", m_NextHandle++, ViewportTable, "AcDbViewportTableRecord", "*Active");
    m_Pairs.AddInteger(70, 0).AddFlat(10, {0, 0}).AddFlat(11, {1, 1});
    m_Pairs.AddFlat(12, {box.left + width / 2, box.bottom + height / 2}).AddFlat(13, {0, 0});
    m_Pairs.AddFlat(14, {10, 10}).AddFlat(15, {10, 10});
    m_Pairs.AddReal(16, 0).AddReal(26, 0).AddReal(36, 1);
    m_Pairs.AddPoint(17, {0, 0}).AddReal(40, height).AddReal(41, width / height);
    EndTable();
  }

  void AddLineTypes() {
    constexpr int alignment = 65;
    BeginTable("LTYPE", LineTypeTable, 3);
    const auto add = [&](std::string_view name, Handle handle, std::string_view description) {
      BeginRecord("LTYPE", handle, LineTypeTable, "AcDbLinetypeTableRecord", name);
      m_Pairs.AddInteger(70, 0).Add(3, description).AddInteger(72, alignment);
      m_Pairs.AddInteger(73, 0).AddReal(40, 0);
    };
    add("ByBlock", ByBlockLine, "");
    add("ByLayer", ByLayerLine, "");
    add("Continuous", ContinuousLine, "Solid line");
    EndTable();
  }

  void AddLayers(const CutJob& job) {
    constexpr int byDefault = -3;
    const std::vector<Operation> operations = ToolOperationsOf(job);
    BeginTable("LAYER", LayerTable, operations.size() + 1);
    const auto add = [&](std::string_view name, int color) {
      BeginRecord("LAYER", m_NextHandle++, LayerTable, "AcDbLayerTableRecord", name);
      m_Pairs.AddInteger(70, 0).AddInteger(62, color).Add(6, "Continuous");
      m_Pairs.AddInteger(370, byDefault).AddHandle(390, NormalPlotStyle);
    };
    add("0", 7);
    for (const Operation operation : operations)
      add(LookOf(operation).layer, LookOf(operation).colorNumber);
    EndTable();
  }

  void AddStyles() {
    BeginTable("STYLE", StyleTable, 1);
    BeginRecord("STYLE", StandardStyle, StyleTable, "AcDbTextStyleTableRecord", "Standard");
    m_Pairs.AddInteger(70, 0).AddReal(40, 0).AddReal(41, 1).AddReal(50, 0).AddInteger(71, 0);
    m_Pairs.AddReal(42, 1).Add(3, "txt").Add(4, "");
    EndTable();
  }

  void AddBlockRecord(std::string_view name, Handle handle, Handle layout) {
    BeginRecord("BLOCK_RECORD", handle, BlockRecordTable, "AcDbBlockTableRecord", name);
    m_Pairs.AddHandle(340, layout);
  }

  void AddBlocks() {
    m_Pairs.BeginSection("BLOCKS");
    AddBlock("*Model_Space", ModelBlock);
    AddBlock("*Paper_Space", PaperBlock);
    m_Pairs.EndSection();
  }

  void AddBlock(std::string_view name, Handle record) {
    const auto begin = [&](std::string_view kind) {
      m_Pairs.Add(0, kind).AddHandle(5, m_NextHandle++).AddHandle(330, record);
      m_Pairs.Add(100, "AcDbEntity");
      if (record == PaperBlock) m_Pairs.AddInteger(67, 1);
      m_Pairs.Add(8, "0");
    };
    begin("BLOCK");
    m_Pairs.Add(100, "AcDbBlockBegin").Add(2, name).AddInteger(70, 0).AddPoint(10, {0, 0});
    m_Pairs.Add(3, name).Add(1, "");
    begin("ENDBLK");
    m_Pairs.Add(100, "AcDbBlockEnd");
  }

  void AddPath(const CutPath& path, const Transform& toDevice) {
    m_Layer = LookOf(path.operation).layer;
    for (const Contour& contour : path.contours) {
      if (!IsDrawn(path, contour)) continue;
      if (IsPoint(contour)) {
        BeginEntity("POINT", "AcDbPoint");
        m_Pairs.AddPoint(10, toDevice.Apply(contour.start));
      } else {
        AddContour(Transformed(contour, toDevice));
      }
    }
  }

  void BeginEntity(std::string_view kind, std::string_view subclass) {
    m_Pairs.Add(0, kind).AddHandle(5, m_NextHandle++).AddHandle(330, ModelBlock);
    m_Pairs.Add(100, "AcDbEntity").Add(8, m_Layer).Add(100, subclass);
  }

  // Straight segments in a row are one entity, and so are curves. Where they meet, both have the
  // same point.
  void AddContour(const Contour& contour) {
    std::vector<Segment> segments = contour.segments;
    const bool hasCurve =
        std::ranges::any_of(segments, [](const Segment& segment) { return segment.isCurve; });
    if (!hasCurve) {
      AddLines(LinePoints(contour.start, segments, 0, segments.size()), contour.closed);
      return;
    }
    if (contour.closed && segments.back().end != contour.start)
      segments.push_back(LineTo(contour.start));
    Point from = contour.start;
    for (std::size_t begin = 0; begin < segments.size();) {
      std::size_t end = begin + 1;
      while (end < segments.size() && segments[end].isCurve == segments[begin].isCurve) ++end;
      if (segments[begin].isCurve)
        AddSpline(from, segments, begin, end);
      else
        AddLines(LinePoints(from, segments, begin, end), false);
      from = segments[end - 1].end;
      begin = end;
    }
  }

  static std::vector<Point> LinePoints(Point start, const std::vector<Segment>& segments,
                                       std::size_t begin, std::size_t end) {
    std::vector<Point> points{start};
    for (std::size_t i = begin; i < end; ++i) {
      if (segments[i].end != points.back()) points.push_back(segments[i].end);
    }
    return points;
  }

  void AddLines(std::vector<Point> points, bool closed) {
    if (closed && points.size() > 2 && points.back() == points.front()) points.pop_back();
    if (points.size() < 2) return;
    if (points.size() == 2 && !closed) {
      BeginEntity("LINE", "AcDbLine");
      m_Pairs.AddPoint(10, points[0]).AddPoint(11, points[1]);
      return;
    }
    BeginEntity("LWPOLYLINE", "AcDbPolyline");
    m_Pairs.AddInteger(90, static_cast<long long>(points.size()));
    m_Pairs.AddInteger(70, closed ? 1 : 0).AddReal(43, 0);
    for (const Point& point : points) m_Pairs.AddFlat(10, point);
  }

  // Cubic Bézier curves in a row are one clamped spline of degree 3, whose inner knots are
  // threefold:
  //
  //     knots     0 0 0 0 1 1 1 2 2 2 ... n n n n
  //     points    start, then three of each curve
  void AddSpline(Point start, const std::vector<Segment>& segments, std::size_t begin,
                 std::size_t end) {
    constexpr int degree = 3;
    constexpr int planar = 8;
    constexpr int closedBit = 1;
    const auto curves = static_cast<long long>(end - begin);
    const bool closed = segments[end - 1].end == start;
    BeginEntity("SPLINE", "AcDbSpline");
    m_Pairs.AddReal(210, 0).AddReal(220, 0).AddReal(230, 1);
    m_Pairs.AddInteger(70, closed ? planar + closedBit : planar).AddInteger(71, degree);
    m_Pairs.AddInteger(72, 3 * curves + 5).AddInteger(73, 3 * curves + 1).AddInteger(74, 0);
    m_Pairs.AddReal(40, 0);
    for (long long knot = 0; knot <= curves; ++knot) {
      for (int i = 0; i < degree; ++i) m_Pairs.AddReal(40, static_cast<double>(knot));
    }
    m_Pairs.AddReal(40, static_cast<double>(curves));
    m_Pairs.AddPoint(10, start);
    for (std::size_t i = begin; i < end; ++i)
      m_Pairs.AddPoint(10, segments[i].first)
          .AddPoint(10, segments[i].second)
          .AddPoint(10, segments[i].end);
  }

  void BeginDictionary(Handle handle, Handle owner) {
    constexpr int keepFirst = 1;
    m_Pairs.Add(0, "DICTIONARY").AddHandle(5, handle).AddHandle(330, owner);
    m_Pairs.Add(100, "AcDbDictionary").AddInteger(281, keepFirst);
  }

  void AddObjects() {
    m_Pairs.BeginSection("OBJECTS");
    BeginDictionary(RootDictionary, NoHandle);
    m_Pairs.Add(3, "ACAD_GROUP").AddHandle(350, GroupDictionary);
    m_Pairs.Add(3, "ACAD_LAYOUT").AddHandle(350, LayoutDictionary);
    m_Pairs.Add(3, "ACAD_MLINESTYLE").AddHandle(350, LineStyleDictionary);
    m_Pairs.Add(3, "ACAD_PLOTSTYLENAME").AddHandle(350, PlotStyleDictionary);
    BeginDictionary(GroupDictionary, RootDictionary);
    BeginDictionary(LayoutDictionary, RootDictionary);
    m_Pairs.Add(3, "Model").AddHandle(350, ModelLayout);
    m_Pairs.Add(3, "Layout1").AddHandle(350, PaperLayout);
    BeginDictionary(LineStyleDictionary, RootDictionary);
    m_Pairs.Add(0, "ACDBDICTIONARYWDFLT").AddHandle(5, PlotStyleDictionary);
    m_Pairs.AddHandle(330, RootDictionary).Add(100, "AcDbDictionary").AddInteger(281, 1);
    m_Pairs.Add(3, "Normal").AddHandle(350, NormalPlotStyle);
    m_Pairs.Add(100, "AcDbDictionaryWithDefault").AddHandle(340, NormalPlotStyle);
    m_Pairs.Add(0, "ACDBPLACEHOLDER").AddHandle(5, NormalPlotStyle);
    m_Pairs.AddHandle(330, PlotStyleDictionary);
    AddLayout("Model", ModelLayout, ModelBlock, 0);
    AddLayout("Layout1", PaperLayout, PaperBlock, 1);
    m_Pairs.EndSection();
  }

  void AddLayout(std::string_view name, Handle handle, Handle block, int tab) {
    constexpr int modelType = 1024;
    constexpr int millimetres = 1;
    m_Pairs.Add(0, "LAYOUT").AddHandle(5, handle).AddHandle(330, LayoutDictionary);
    m_Pairs.Add(100, "AcDbPlotSettings").Add(1, "").Add(2, "none_device").Add(4, "").Add(6, "");
    for (int code = 40; code <= 49; ++code) m_Pairs.AddReal(code, 0);
    for (const int code : {140, 141}) m_Pairs.AddReal(code, 0);
    for (const int code : {142, 143}) m_Pairs.AddReal(code, 1);
    m_Pairs.AddInteger(70, tab == 0 ? modelType : 0).AddInteger(72, millimetres);
    m_Pairs.AddInteger(73, 0).AddInteger(74, 5).Add(7, "").AddInteger(75, 16);
    m_Pairs.AddReal(147, 1).AddReal(148, 0).AddReal(149, 0);
    m_Pairs.Add(100, "AcDbLayout").Add(1, name).AddInteger(70, 1).AddInteger(71, tab);
    m_Pairs.AddFlat(10, {0, 0}).AddFlat(11, {420, 297}).AddPoint(12, {0, 0});
    m_Pairs.AddPoint(14, {0, 0}).AddPoint(15, {420, 297}).AddReal(146, 0).AddPoint(13, {0, 0});
    m_Pairs.AddPoint(16, {1, 0}).AddPoint(17, {0, 1}).AddInteger(76, 0).AddHandle(330, block);
  }

  DxfPairs m_Pairs;
  unsigned long long m_NextHandle = FirstFree;
  std::string_view m_Layer;
};

std::string Header(const Box& box, unsigned long long nextHandle) {
  constexpr int millimetres = 4;
  constexpr int metric = 1;
  DxfPairs pairs;
  pairs.BeginSection("HEADER");
  pairs.Add(9, "$ACADVER").Add(1, "AC1015");
  pairs.Add(9, "$DWGCODEPAGE").Add(3, "ANSI_1252");
  pairs.Add(9, "$INSUNITS").AddInteger(70, millimetres);
  pairs.Add(9, "$MEASUREMENT").AddInteger(70, metric);
  pairs.Add(9, "$EXTMIN").AddPoint(10, {box.left, box.bottom});
  pairs.Add(9, "$EXTMAX").AddPoint(10, {box.right, box.top});
  pairs.Add(9, "$HANDSEED").AddHandle(5, nextHandle);
  pairs.EndSection();
  return pairs.Take();
}

}  // namespace

std::string DxfR2000Text(const CutJob& job, const Transform& toDevice) {
  Drawing drawing;
  const std::string body = drawing.Body(job, toDevice);
  return Header(PageBoxOf(job, toDevice), drawing.NextHandle()) + body;
}

}  // namespace rastrel::cutting
