#include "cli/document/template_schema.h"

#include <algorithm>
#include <array>

namespace rastrel::cli {
namespace {

constexpr std::wstring_view OriginWords =
    L"top left|top center|top right|mid left|mid center|mid right|bottom left|bottom center|bottom "
    L"right";

constexpr std::array Kinds{
    ValueKind{L"number", true},
    ValueKind{L"stroke", true, L"hairline"},
    ValueKind{L"cro-origin", false, OriginWords},
    ValueKind{L"origin", false,
              L"top left|top center|top right|mid left|mid center|center|mid right|bottom "
              L"left|bottom center|bottom right"},
    ValueKind{L"bright-star-origin", false,
              L"TOP LEFT|TOP CENTER|TOP RIGHT|LEFT CENTER|CENTER|RIGHT CENTER|LOWER LEFT|LOWER "
              L"CENTER|LOWER RIGHT"},
    ValueKind{L"justify", false, L"left|right|center"},
    ValueKind{L"bright-star-justify", false, L"Left|Right|Center"},
    ValueKind{L"fit", false, L"Each Line Individually|All Lines Equally|Equal Height Lines"},
    ValueKind{L"true", false, L"true|false"},
    ValueKind{L"upper-true", false, L"TRUE|FALSE"},
    ValueKind{L"target", false, L"stroke|fill"},
    ValueKind{L"cr2-format", false, L"RGB|CMYK|NAME"},
    ValueKind{L"zml-format", false, L"RGB|CMYK|HEX"},
    ValueKind{L"units", false, L"mm|in|inch|inches"},
};

constexpr std::wstring_view CroPlace =
    L"WIDTH:number HEIGHT:number ORIGIN:cro-origin XLOC:number YLOC:number";

constexpr std::array Cro{
    SchemaElement{L"", L"", L"",
                  L"TEMPLATENAME DRIVER TEMPLATESIZE ROTATION:number TILTTOOLPATH "
                  L"TEMPLATEORIGIN:cro-origin TEMPLATEGRAPHICS TEMPLATEGRAPHIC TEMPLATETEXT "
                  L"VERTICALSPACING PLATES SHOWPRINTDIALOG PRINTDIRECT METRIC"},
    SchemaElement{L"DRIVER", L"", L"", L"Setting"},
    SchemaElement{L"Setting", L"", L"Header! Name! Value!", L""},
    SchemaElement{L"TEMPLATESIZE", L"", L"",
                  L"WIDTH:number! HEIGHT:number! USETEMPLATEBLANKSIZE:upper-true"},
    SchemaElement{L"TILTTOOLPATH", L"", L"",
                  L"HORIZONTAL:number GROOVE:number RELATIVE:number LBVALUE:number TRVALUE:number"},
    SchemaElement{L"TEMPLATEGRAPHICS", L"", L"", CroPlace},
    SchemaElement{L"TEMPLATEGRAPHIC", L"", L"name",
                  L"name FILE! WIDTH:number HEIGHT:number ORIGIN:cro-origin XLOC:number "
                  L"YLOC:number"},
    SchemaElement{L"TEMPLATETEXT", L"", L"line:number!", L"FONT HEIGHT:number"},
    SchemaElement{L"VERTICALSPACING", L"", L"", L"MARGINS:number"},
    SchemaElement{L"PLATES", L"", L"", L"PLATE"},
    SchemaElement{L"PLATE", L"", L"", L"TEXT TEMPLATETEXT GRAPHIC"},
    SchemaElement{L"METRIC", L"", L"yes:number!", L""},
    SchemaElement{L"PRINTDIRECT", L"", L"yes:number!", L""},
    SchemaElement{L"SHOWPRINTDIALOG", L"", L"yes:number!", L""},
};

constexpr std::array Llx{
    SchemaElement{L"", L"", L"", L"ENGRAVINGTEMPLATE!"},
    SchemaElement{L"ENGRAVINGTEMPLATE", L"", L"", L"PLATE!"},
    SchemaElement{L"PLATE", L"", L"",
                  L"WIDTH:number! HEIGHT:number! ORIGIN:origin GRAPHIC ARCTEXT"},
    SchemaElement{L"GRAPHIC", L"", L"",
                  L"FILE! ORIGIN:origin X:number Y:number WIDTH:number HEIGHT:number "
                  L"ROTATION:number"},
    SchemaElement{L"ARCTEXT", L"", L"",
                  L"CENTERX:number CENTERY:number RADIUS:number! ROTATION:number HEIGHT:number! "
                  L"FONT! JUSTIFY:justify TEXT!"},
};

constexpr std::array BrightStar{
    SchemaElement{L"", L"", L"", L"ENGRAVINGTEMPLATE!"},
    SchemaElement{L"ENGRAVINGTEMPLATE", L"", L"",
                  L"WIDTH:number! HEIGHT:number! ORIGIN:bright-star-origin TEXTFRAME"},
    SchemaElement{L"TEXTFRAME", L"",
                  L"compression:fit UPPERXLOC:number UPPERYLOC:number LOWERXLOC:number "
                  L"LOWERYLOC:number",
                  L"FONT! LINE"},
    SchemaElement{L"FONT", L"", L"name! size:number! justification:bright-star-justify", L""},
};

constexpr std::wstring_view Placement =
    L"x:number y:number width:number! height:number! origin:origin constrained_proportions:true";
constexpr std::wstring_view Font =
    L"face style size:number line_height:number justification:justify";
constexpr std::wstring_view Rgb = L"red:number! green:number! blue:number!";
constexpr std::wstring_view Cmyk = L"cyan:number! magenta:number! yellow:number! black:number!";

// Both generations, but for their own rows.
constexpr SchemaElement Plates{L"plates", L"", L"", L"plate!"};
constexpr SchemaElement PlateElement{L"plate", L"", L"", L"graphic_frame text_frame"};
constexpr SchemaElement Graphics{L"graphics", L"", L"", L"graphic_location"};
constexpr SchemaElement GraphicLocation{L"graphic_location", L"", L"name!", L"file!"};
constexpr SchemaElement TextFrame{L"text_frame", L"", L"", L"placement! font"};
constexpr SchemaElement FontElement{L"font", L"", Font, L"line color"};
constexpr SchemaElement Line{L"line", L"", L"", L"span"};
constexpr SchemaElement Span{L"span", L"", Font, L"color"};
constexpr SchemaElement PlacementElement{L"placement", L"", Placement, L""};
constexpr SchemaElement RgbElement{L"rgb", L"", Rgb, L""};
constexpr SchemaElement CmykElement{L"cmyk", L"", Cmyk, L""};

constexpr std::wstring_view TableAttributes =
    L"x:number y:number width:number! height:number! origin:origin constrained_proportions:true "
    L"margins:number margin-left:number margin-top:number margin-right:number "
    L"margin-bottom:number";

constexpr std::array Cr2{
    SchemaElement{L"", L"", L"", L"table_size! template! Output_Filter graphics plates!"},
    SchemaElement{L"table_size", L"", TableAttributes, L""},
    SchemaElement{L"template", L"",
                  L"margins:number margin-left:number margin-top:number margin-right:number "
                  L"margin-bottom:number spacing:number stroke:stroke",
                  L"placement! cutline color"},
    SchemaElement{L"cutline", L"", L"stroke:stroke group format", L"placement! color svg file"},
    SchemaElement{L"Output_Filter", L"", L"", L"color"},
    SchemaElement{L"graphic_frame", L"", L"", L"graphic! placement! color"},
    SchemaElement{L"color", L"", L"target:target! format:cr2-format!", L"rgb cmyk name"},
    SchemaElement{L"color", L"Output_Filter", L"target! format:cr2-format!", L"rgb cmyk name"},
    Plates,
    PlateElement,
    Graphics,
    GraphicLocation,
    TextFrame,
    FontElement,
    Line,
    Span,
    PlacementElement,
    RgbElement,
    CmykElement,
};

constexpr std::array Zml{
    SchemaElement{L"", L"", L"",
                  L"table_size! template! graphics plates! Units:units Rotation:number Driver"},
    SchemaElement{L"table_size", L"", TableAttributes, L""},
    SchemaElement{L"template", L"",
                  L"margins:number margin-left:number margin-top:number margin-right:number "
                  L"margin-bottom:number spacing:number Xspacing:number Yspacing:number "
                  L"stroke:stroke",
                  L"placement! cutline color"},
    SchemaElement{L"cutline", L"", L"stroke:stroke group:true format! file",
                  L"placement! color svg FILE"},
    SchemaElement{L"graphic_frame", L"", L"",
                  L"graphic! placement! color variable0 variable1 variable2 variable3"},
    SchemaElement{L"color", L"", L"target:target! format:zml-format invisible", L"rgb cmyk hex"},
    SchemaElement{L"hex", L"", L"value!", L""},
    Plates,
    PlateElement,
    Graphics,
    GraphicLocation,
    TextFrame,
    FontElement,
    Line,
    Span,
    PlacementElement,
    RgbElement,
    CmykElement,
};

const std::array Schemas{
    TemplateSchema{TemplateFormat::Cro, Cro},
    TemplateSchema{TemplateFormat::Llx, Llx},
    TemplateSchema{TemplateFormat::BrightStar, BrightStar},
    TemplateSchema{TemplateFormat::Cr2, Cr2},
    TemplateSchema{TemplateFormat::Zml, Zml},
};

}  // namespace

const SchemaElement* TemplateSchema::Find(std::wstring_view name, std::wstring_view parent) const {
  const SchemaElement* found = nullptr;
  for (const SchemaElement& row : elements.subspan(1)) {
    if (row.name != name) continue;
    if (row.parent == parent) return &row;
    if (row.parent.empty()) found = &row;
  }
  return found;
}

const TemplateSchema* SchemaOf(TemplateFormat format) {
  const auto found = std::ranges::find(Schemas, format, &TemplateSchema::format);
  return found == Schemas.end() ? nullptr : &*found;
}

const ValueKind& KindOf(std::wstring_view name) {
  return *std::ranges::find(Kinds, name, &ValueKind::name);
}

SchemaEntry TakeEntry(std::wstring_view& list) {
  const std::size_t end = std::min(list.find(L' '), list.size());
  SchemaEntry entry;
  entry.name = list.substr(0, end);
  list.remove_prefix(std::min(end + 1, list.size()));
  if (entry.name.ends_with(L'!')) {
    entry.needed = true;
    entry.name.remove_suffix(1);
  }
  const std::size_t colon = entry.name.find(L':');
  if (colon != entry.name.npos) {
    entry.kind = entry.name.substr(colon + 1);
    entry.name = entry.name.substr(0, colon);
  }
  return entry;
}

}  // namespace rastrel::cli
