#include "server/web/templates/merge_notes.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

namespace rastrel::server::web {
namespace {

using Json = nlohmann::json;

constexpr std::size_t NoteLimit = 50;
constexpr std::string_view Shortened = "...";

std::string TextIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::string WholeIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_number_integer() ? found->dump() : std::string();
}

double NumberIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_number() ? found->get<double>() : 0;
}

std::vector<std::string> TextsIn(const Json& object, const char* name) {
  std::vector<std::string> texts;
  const auto found = object.find(name);
  if (found == object.end() || !found->is_array()) return texts;
  for (const Json& text : *found)
    if (text.is_string()) texts.push_back(text.get<std::string>());
  return texts;
}

// The field with the longest value that the text is made of, or that the text is the beginning of.
std::string FieldOf(std::string text, const FieldValues& values) {
  const bool isShort = text.ends_with(Shortened);
  if (isShort) text.erase(text.size() - Shortened.size());
  std::string field;
  std::size_t longest = 0;
  for (const auto& [name, value] : values) {
    const bool isOfIt = !value.empty() && (text.find(value) != text.npos ||
                                           (isShort && value.find(text) != value.npos));
    if (!isOfIt || value.size() <= longest) continue;
    longest = value.size();
    field = name;
  }
  return field;
}

// The field whose value a sentence begins with, or has in quotes; empty for none.
std::string FieldNamedBy(const std::string& sentence, const FieldValues& values) {
  for (const auto& [name, value] : values)
    if (!value.empty() && (sentence.starts_with(value + " ") || sentence.starts_with(value + ":") ||
                           sentence.find('"' + value + '"') != sentence.npos))
      return name;
  return {};
}

class LineReader {
 public:
  LineReader(const FieldValues& values, PlatePicture& picture)
      : m_Values(values), m_Picture(picture) {}

  void Read(const Json& line) {
    const std::string event = TextIn(line, "event");
    if (event == "merge-row") return ReadRow(line);
    if (event == "note" || event == "left-out") return AddSentence(event, TextIn(line, "text"));
    if (event == "failed") return Add("", "refused", TextIn(line, "text"));
    if (event != "document") return;
    m_Picture.pages = static_cast<int>(std::clamp(NumberIn(line, "pages"), 0.0, 1e6));
    m_Picture.widthCm = NumberIn(line, "width_cm");
    m_Picture.heightCm = NumberIn(line, "height_cm");
  }

 private:
  void ReadRow(const Json& row) {
    const auto placed = row.find("placed");
    if (placed != row.end() && placed->is_boolean() && !placed->get<bool>())
      Add("", "not-placed", "");
    const auto overflowed = row.find("overflowed");
    if (overflowed != row.end() && overflowed->is_array())
      for (const Json& text : *overflowed) {
        const auto squeezed = text.find("squeezed");
        const bool isSqueezed =
            squeezed != text.end() && squeezed->is_boolean() && squeezed->get<bool>();
        Add(FieldOf(TextIn(text, "text"), m_Values), isSqueezed ? "squeezed" : "beyond",
            WholeIn(text, "percent"));
      }
    for (const std::string& font : TextsIn(row, "missing_fonts")) Add("", "missing-font", font);
    for (const std::string& note : TextsIn(row, "notes")) AddSentence("note", note);
  }

  // A loss is told as a note of its row, too: once is enough.
  void AddSentence(const std::string& code, const std::string& sentence) {
    const auto known = std::ranges::find(m_Picture.notes, sentence, &FieldNote::value);
    if (known == m_Picture.notes.end())
      Add(FieldNamedBy(sentence, m_Values), code, sentence);
    else if (code == "left-out")
      known->code = code;
  }

  void Add(std::string field, const std::string& code, std::string value) {
    if (m_Picture.notes.size() < NoteLimit)
      m_Picture.notes.push_back({std::move(field), code, std::move(value)});
  }

  const FieldValues& m_Values;
  PlatePicture& m_Picture;
};

}  // namespace

void ReadMergeLines(std::string_view lines, const FieldValues& values, PlatePicture& picture) {
  LineReader reader(values, picture);
  while (!lines.empty()) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    const Json line = Json::parse(lines.substr(0, end), nullptr, false);
    lines.remove_prefix(std::min(end + 1, lines.size()));
    if (line.is_object()) reader.Read(line);
  }
}

}  // namespace rastrel::server::web
