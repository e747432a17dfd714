#include "cli/reading/template_records.h"

#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "cli/console/json_text.h"
#include "cli/input/xml_input.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::ordered_json;

// A file that is no XML, or that this machine can't parse, is none, whatever the reason.
bool IsCroFile(const std::string& path) {
  if (!CheckXmlParser()) return false;
  const XmlNode root = LoadXmlFile(ReaderPath(path));
  if (!root) static_cast<void>(xml::TakeXmlFailure());
  return root && IsCroRoot(root);
}

std::string Text(const CString& text) { return os::Utf8FromWide(text); }

// The texts of an array, in order.
Json Texts(const CStringArray& array) {
  Json list = Json::array();
  for (int i = 0; i < array.GetSize(); ++i) list.push_back(Text(array.GetAt(i)));
  return list;
}

Json Override(const CROTextOverride& text) {
  return {{"line", text.line}, {"height", text.height}, {"font", Text(text.font)}};
}

Json CroTemplate(const CCROFileImport& file) {
  Json record{{"event", "template"},
              {"format", "cro"},
              {"name", Text(file.m_TemplateName)},
              {"metric", file.m_bMetric},
              {"print_direct", file.m_bPrintDirect},
              {"show_print_dialog", file.m_bShowPrintDialog},
              {"driver", Text(file.m_DriverName)},
              {"driver_settings", Json::array()},
              {"width", file.m_Width},
              {"height", file.m_Height},
              {"use_template_blank_size", file.m_bUseTemplateBlankSize},
              {"origin", file.m_Origin},
              {"rotation", file.m_Rotation},
              {"vertical_spacing", file.m_HasVerticalSpacing != 0},
              {"margins", file.m_Margins}};
  for (const CRODriverSetting& setting : file.m_DriverSettings) {
    record["driver_settings"].push_back({{"header", os::Utf8FromWide(setting.header)},
                                         {"name", os::Utf8FromWide(setting.name)},
                                         {"value", os::Utf8FromWide(setting.value)}});
  }
  record["tilt"] = {{"horizontal", file.m_TiltHorizontal},
                    {"groove", file.m_TiltGroove},
                    {"relative", file.m_TiltRelative},
                    {"left_bottom", file.m_TiltLeftBottom},
                    {"top_right", file.m_TiltTopRight}};
  record["graphic_defaults"] = {{"origin", file.m_GraphicsOrigin},
                                {"x", file.m_GraphicsX},
                                {"y", file.m_GraphicsY},
                                {"width", file.m_GraphicsWidth},
                                {"height", file.m_GraphicsHeight}};
  record["graphics"] = Json::array();
  for (const auto& graphic : file.m_Graphics) {
    record["graphics"].push_back({{"name", Text(graphic->name)},
                                  {"file", Text(graphic->file)},
                                  {"origin", graphic->origin},
                                  {"x", graphic->x},
                                  {"y", graphic->y},
                                  {"width", graphic->width},
                                  {"height", graphic->height}});
  }
  record["text_overrides"] = Json::array();
  for (const auto& text : file.m_TextOverrides) record["text_overrides"].push_back(Override(*text));
  return record;
}

// The record with the file's name as its third member.
Json WithFile(Json record, const std::string& path) {
  Json named;
  for (auto member = record.begin(); member != record.end(); ++member) {
    named[member.key()] = std::move(member.value());
    if (member.key() == "format") named["file"] = path;
  }
  return named;
}

Failure Refused(const std::string& path) {
  const auto state = xml::TakeXmlFailure();
  if (!state) return FailureAt(os::Utf8FromWide(os::FromNative(path)), state.Error());
  return FailureOf(path + ": it has no <ENGRAVINGTEMPLATE> where its format needs one");
}

}  // namespace

TemplateRecords RecordsOf(const CCROFileImport& file) {
  TemplateRecords records{CroTemplate(file)};
  for (std::size_t i = 0; i < file.m_PlateText.size(); ++i) {
    records.push_back({{"event", "plate"},
                       {"number", i},
                       {"texts", Texts(*file.m_PlateText[i])},
                       {"graphics", Texts(*file.m_PlateGraphics[i])},
                       {"text_overrides", Json::array()}});
  }
  for (const CROPlateOverride& one : file.m_PlateOverrides) {
    const auto place = static_cast<std::size_t>(one.plate) + 1;
    if (place < records.size()) records[place]["text_overrides"].push_back(Override(*one.text));
  }
  return records;
}

TemplateRecords RecordsOf(const CLLXFileImport& file) {
  Json record{{"event", "template"},       {"format", "llx"},         {"width", file.m_Width},
              {"height", file.m_Height},   {"origin", file.m_Origin}, {"graphics", Json::array()},
              {"arc_texts", Json::array()}};
  for (const auto& graphic : file.m_Graphics) {
    record["graphics"].push_back({{"file", Text(graphic->file)},
                                  {"origin", graphic->origin},
                                  {"x", graphic->x},
                                  {"y", graphic->y},
                                  {"width", graphic->width},
                                  {"height", graphic->height},
                                  {"rotation", graphic->rotation}});
  }
  for (const auto& text : file.m_ArcTexts) {
    record["arc_texts"].push_back({{"text", Text(text->text)},
                                   {"font", Text(text->font)},
                                   {"center_x", text->centerX},
                                   {"center_y", text->centerY},
                                   {"radius", text->radius},
                                   {"rotation", text->rotation},
                                   {"height", text->height},
                                   {"justify", text->justify}});
  }
  return {std::move(record)};
}

std::string RecordLines(TemplateRecords records, const std::string& path) {
  std::string lines;
  if (!records.empty()) records.front() = WithFile(std::move(records.front()), path);
  for (const Json& record : records) lines += JsonText(record) + "\n";
  return lines;
}

bool IsCroRoot(const XmlNode& root) {
  std::wstring name;
  return NodeBaseName(root, name) && name == L"ENGRAVINGTEMPLATE" &&
         !FirstChildNamed(root, L"table_size");
}

bool HasRecords(const std::string& path) {
  const std::wstring extension = imports::FileExtension(os::FromNative(path));
  if (extension == L"xml") return IsCroFile(path);
  return extension == L"cro" || extension == L"crx" || extension == L"cml" || extension == L"llx";
}

Expected<std::string> ReadRecordLines(const std::string& path) {
  if (auto parser = CheckXmlParser(); !parser) return parser.Error();
  const std::wstring readerPath = ReaderPath(path);
  if (!os::Exists(readerPath)) return FailureOf(path + ": there is no such file");
  if (imports::FileExtension(readerPath) == L"llx") {
    const CLLXFileImport file(readerPath.c_str(), nullptr);
    if (!file.m_bParsed) return Refused(path);
    return RecordLines(RecordsOf(file), path);
  }
  const CCROFileImport file(readerPath.c_str(), nullptr);
  if (!file.m_bParsed) return Refused(path);
  return RecordLines(RecordsOf(file), path);
}

}  // namespace rastrel::cli
