#include "server/web/templates/field_values.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

std::string TextIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

// Of UTF-8.
std::size_t CharactersOf(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char one) { return (static_cast<unsigned char>(one) & 0xC0) != 0x80; }));
}

bool HasControl(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 || byte == 0x7F) return true;
    // U+0080 to U+009F, and the separators of lines and paragraphs.
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
    if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) return true;
    const std::string_view three = text.substr(i, 3);
    if (three == "\xE2\x80\xA8" || three == "\xE2\x80\xA9") return true;
  }
  return false;
}

bool IsNumber(std::string_view text) {
  double number = 0;
  const auto read =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return read.ec == std::errc() && read.ptr == text.data() + text.size() && number > -1e9 &&
         number < 1e9;
}

// A file beside the template, or a font: no place of another directory.
bool IsPlainName(std::string_view text) {
  return text.front() != '.' && text.find_first_of("/\\:") == text.npos;
}

// The fault of one value, with the value of its note; an empty code: none.
FieldNote FaultOf(const TemplateField& field, const std::string& value) {
  const auto fault = [&](const char* code, std::string more = {}) {
    return FieldNote{field.name, code, std::move(more)};
  };
  if (!IsUtf8(value)) return fault("not-text");
  const std::size_t maximum = field.maximum == 0 ? ValueLimit : std::min(field.maximum, ValueLimit);
  if (value.size() > ValueLimit || CharactersOf(value) > maximum)
    return fault("too-long", std::to_string(maximum));
  if (HasControl(value)) return fault("control");
  if (value.empty()) return {};
  if (field.kind == "number" && !IsNumber(value)) return fault("not-a-number");
  if ((field.kind == "file" || field.kind == "value") && !IsPlainName(value))
    return fault("no-name");
  return {};
}

void AppendCell(std::string& row, std::string_view text) {
  row += row.empty() || row.ends_with('\n') ? "\"" : ",\"";
  for (const char one : text) {
    row += one;
    if (one == '"') row += one;
  }
  row += '"';
}

const std::string& ValueOf(const FieldValues& values, const std::string& name) {
  static const std::string none;
  const auto found = values.find(name);
  return found == values.end() ? none : found->second;
}

}  // namespace

Expected<std::vector<TemplateField>> FieldsOfLines(std::string_view lines, int status) {
  std::vector<TemplateField> fields;
  std::string reason = status == 0
                           ? "it has no fields"
                           : "reading it ended early, with status " + std::to_string(status);
  while (!lines.empty()) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    const Json object = Json::parse(lines.substr(0, end), nullptr, false);
    lines.remove_prefix(std::min(end + 1, lines.size()));
    if (!object.is_object()) continue;
    const std::string event = TextIn(object, "event");
    if (event == "failed") reason = TextIn(object, "text");
    if (event != "merge-field") continue;
    const auto maximum = object.find("maximum");
    const bool hasMaximum = maximum != object.end() && maximum->is_number_unsigned();
    fields.push_back({TextIn(object, "name"), TextIn(object, "kind"),
                      hasMaximum ? maximum->get<std::size_t>() : 0});
  }
  if (fields.empty()) return FailureOf(reason, FailureCode::BadInput);
  return fields;
}

std::vector<FieldNote> FaultsOf(const std::vector<TemplateField>& fields,
                                const FieldValues& values) {
  std::vector<FieldNote> faults;
  bool isAnyFilled = false;
  for (const TemplateField& field : fields) {
    const std::string& value = ValueOf(values, field.name);
    isAnyFilled = isAnyFilled || !value.empty();
    if (FieldNote fault = FaultOf(field, value); !fault.code.empty())
      faults.push_back(std::move(fault));
  }
  for (const auto& [name, value] : values)
    if (std::ranges::find(fields, name, &TemplateField::name) == fields.end())
      faults.push_back({name, "no-field", {}});
  if (!isAnyFilled && faults.empty()) faults.push_back({"", "all-empty", {}});
  return faults;
}

std::string TableOf(const std::vector<TemplateField>& fields, const FieldValues& values) {
  std::string table;
  for (const TemplateField& field : fields) AppendCell(table, field.name);
  table += "\r\n";
  for (const TemplateField& field : fields) AppendCell(table, ValueOf(values, field.name));
  return table + "\r\n";
}

FieldValues SampleValues(const std::vector<TemplateField>& fields) {
  FieldValues values;
  for (const TemplateField& field : fields) {
    if (field.kind == "number") values[field.name] = "1";
    if (field.kind != "text") continue;
    if (FaultOf(field, field.name).code.empty()) values[field.name] = field.name;
  }
  return values;
}

std::string TitleOfPlate(const std::string& templateName, const std::vector<TemplateField>& fields,
                         const FieldValues& values) {
  const std::string title = templateName.substr(0, templateName.rfind('.'));
  std::string shown;
  for (const TemplateField& field : fields) {
    const std::string& value = ValueOf(values, field.name);
    if (value.empty()) continue;
    if (field.kind == "text") return title + ": " + value;
    if (shown.empty()) shown = value;
  }
  return shown.empty() ? title : title + ": " + shown;
}

}  // namespace rastrel::server::web
