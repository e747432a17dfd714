#include "cli/document/import_records.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/input/xml_input.h"
#include "cli/reading/template_records.h"
#include "rastrel/imports/bright_star_xml_import.h"
#include "rastrel/imports/cr2/cr2_parse.h"
#include "rastrel/imports/cr2/zml_parse.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/imports/xml_file_import.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string Text(const std::wstring& text) { return os::Utf8FromWide(text); }

TemplateRecords AbbRecords(CXMLFileImport& file) {
  TemplateRecords records{{{"event", "template"}, {"format", "abb"}}};
  for (const auto* plate = file.GetFirstPlate(); plate != nullptr; plate = file.GetNextPlate()) {
    Json record{{"event", "plate"}, {"number", records.size() - 1}};
    for (const auto& one : plate->plates) {
      record["color"] = Text(one->color);
      record["width"] = one->width;
      record["height"] = one->height;
      record["text_color"] = Text(one->textColor);
      record["text_frame"] = one->textFrame;
    }
    record["texts"] = Json::array();
    for (const auto& text : plate->texts)
      record["texts"].push_back({{"line", text->line},
                                 {"data", Text(text->data)},
                                 {"font", Text(text->fontName)},
                                 {"size", text->size}});
    record["drill_points"] = Json::array();
    for (const auto& drill : plate->drillPoints)
      record["drill_points"].push_back({{"color", Text(drill->color)},
                                        {"x", drill->x},
                                        {"y", drill->y},
                                        {"diameter", drill->diameter}});
    records.push_back(std::move(record));
  }
  return records;
}

TemplateRecords BrightStarRecords(CBrightStarXMLImport& file) {
  TemplateRecords records;
  for (void* data = file.GetFirstPlate(); data != nullptr; data = file.GetNextPlate()) {
    const auto& one = *static_cast<const tagBRIGHT_STAR_DATA*>(data);
    Json record{{"event", "template"},        {"format", "bright-star"},
                {"width", one.width},         {"height", one.height},
                {"origin", Text(one.origin)}, {"text_frames", Json::array()}};
    for (const auto& frame : one.textFrames) {
      Json lines = Json::array();
      for (const std::wstring& line : frame->lines) lines.push_back(Text(line));
      record["text_frames"].push_back({{"compression", Text(frame->compression)},
                                       {"upper_x", frame->upperX},
                                       {"upper_y", frame->upperY},
                                       {"lower_x", frame->lowerX},
                                       {"lower_y", frame->lowerY},
                                       {"font", Text(frame->fontName)},
                                       {"size", frame->size},
                                       {"justification", Text(frame->justification)},
                                       {"lines", std::move(lines)}});
    }
    records.push_back(std::move(record));
  }
  return records;
}

Json Placement(const CR2_PLACEMENT& place) {
  return {{"origin", place.origin}, {"x", place.x},           {"y", place.y},
          {"width", place.width},   {"height", place.height}, {"constrained", place.constrained}};
}

Json Margins(const CR2_MARGINS& margins) {
  return {{"left", margins.left},
          {"top", margins.top},
          {"right", margins.right},
          {"bottom", margins.bottom}};
}

Json Color(const CVKColor* color) {
  if (color == nullptr) return nullptr;
  if (color->IsInvisible()) return "invisible";
  double red = 0;
  double green = 0;
  double blue = 0;
  color->GetColorChannels(&red, &green, &blue, nullptr);
  return {{"red", red}, {"green", green}, {"blue", blue}};
}

Json Colors(const CR2_COLORS& colors) {
  return {{"stroke", Color(colors.stroke.get())}, {"fill", Color(colors.fill.get())}};
}

Json Font(const CR2_FONT_SPEC& font) {
  return {{"face", Text(font.face)},
          {"style", Text(font.style)},
          {"size", font.size},
          {"line_height", font.lineHeight},
          {"justification", font.justification},
          {"colors", Colors(font.colors)}};
}

Json TextFrame(const CR2_TEXT_FRAME& frame) {
  Json texts = Json::array();
  for (const CR2_TEXT& text : frame.texts) {
    Json lines = Json::array();
    for (const CR2_TEXT_LINE& line : text.lines) {
      Json spans = Json::array();
      for (const CR2_SPAN& span : line.spans)
        spans.push_back({{"text", Text(span.text)}, {"font", Font(span.font)}});
      lines.push_back(std::move(spans));
    }
    texts.push_back({{"font", Font(text.font)}, {"lines", std::move(lines)}});
  }
  return {{"placement", Placement(frame.placement)}, {"texts", std::move(texts)}};
}

Json GraphicFrame(const CR2_GRAPHIC_FRAME& frame) {
  Json record{{"graphic", Text(frame.graphic)},
              {"placement", Placement(frame.placement)},
              {"colors", Colors(frame.colors)}};
  for (std::size_t i = 0; i < frame.variables.size() && i < frame.isVariablePresent.size(); ++i) {
    if (frame.isVariablePresent[i])
      record["variables"][std::to_string(i)] = Text(frame.variables[i]);
  }
  return record;
}

Json CrownTemplate(const imports::Cr2Document& document, const char* format, const char* unit) {
  const CR2_TEMPLATE& part = document.plateTemplate;
  Json record{{"event", "template"}, {"format", format}, {"unit", unit}};
  record["table"] = {{"placement", Placement(document.tableSize.placement)},
                     {"margins", Margins(document.tableSize.margins)}};
  record["template"] = {{"placement", Placement(part.placement)},
                        {"margins", Margins(part.margins)},
                        {"spacing", part.spacing},
                        {"x_spacing", part.xSpacing},
                        {"y_spacing", part.ySpacing},
                        {"stroke_width", part.strokeWidth},
                        {"colors", Colors(part.colors)}};
  const CR2_CUTLINE& line = document.cutLine;
  record["cut_line"] = nullptr;
  if (line.present != 0)
    record["cut_line"] = {{"file", Text(line.file)},
                          {"stroke_width", line.strokeWidth},
                          {"group", line.group},
                          {"placement", Placement(line.placement)},
                          {"colors", Colors(line.colors)}};
  record["graphics"] = Json::array();
  for (const CR2_GRAPHIC& graphic : document.graphics)
    record["graphics"].push_back({{"name", Text(graphic.name)}, {"file", Text(graphic.file)}});
  record["output_filter"] = Json::array();
  for (const auto& color : document.outputFilter)
    record["output_filter"].push_back(Color(color.get()));
  return record;
}

TemplateRecords CrownRecords(const imports::Cr2Document& document, const char* format,
                             const char* unit) {
  TemplateRecords records{CrownTemplate(document, format, unit)};
  for (const CR2_PLATE& plate : document.plates) {
    Json record{{"event", "plate"},
                {"number", records.size() - 1},
                {"graphic_frames", Json::array()},
                {"text_frames", Json::array()}};
    for (const CR2_GRAPHIC_FRAME& frame : plate.graphicFrames)
      record["graphic_frames"].push_back(GraphicFrame(frame));
    for (const CR2_TEXT_FRAME& frame : plate.textFrames)
      record["text_frames"].push_back(TextFrame(frame));
    records.push_back(std::move(record));
  }
  return records;
}

TemplateRecords RecordsOfFile(TemplateFormat format, const wchar_t* path) {
  imports::Cr2Document document;
  imports::ZmlFile zml;
  switch (format) {
    case TemplateFormat::Abb: {
      CXMLFileImport file(path);
      return AbbRecords(file);
    }
    case TemplateFormat::BrightStar: {
      CBrightStarXMLImport file(path);
      return BrightStarRecords(file);
    }
    case TemplateFormat::Cro: return RecordsOf(CCROFileImport(path, nullptr));
    case TemplateFormat::Llx: return RecordsOf(CLLXFileImport(path, nullptr));
    case TemplateFormat::Cr2:
      static_cast<void>(imports::ParseCr2File(path, document));
      return CrownRecords(document, "cr2", "in");
    case TemplateFormat::Zml:
      static_cast<void>(imports::ParseZmlFile(path, document, zml));
      return CrownRecords(document, "zml", "cm");
    case TemplateFormat::Document: break;
  }
  return {};
}

}  // namespace

std::string ImportRecordLines(TemplateFormat format, const std::wstring& path,
                              const std::string& name) {
  return RecordLines(RecordsOfFile(format, path.c_str()), name);
}

}  // namespace rastrel::cli
