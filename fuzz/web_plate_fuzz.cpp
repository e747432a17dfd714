// A body of any bytes for a plate of a template, as JSON or as a form: values that have no fault
// come back from the table of one row as they were, each in its column. And lines of any bytes that
// a merge is said to have written.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "server/web/api/template_request.h"
#include "server/web/http/address_text.h"
#include "server/web/pages/html.h"
#include "server/web/templates/field_values.h"
#include "server/web/templates/merge_notes.h"

using namespace rastrel::server::web;

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

const std::vector<TemplateField> PlateFields{{"Name", "text", 255},
                                             {"Wi\"d,th", "number", 0},
                                             {"Logo", "file", 0},
                                             {"Font", "value", 0},
                                             {"Note", "text", 0}};

// The cells of a row with quotes around each, from `at` to its line end.
std::vector<std::string> CellsOf(const std::string& table, std::size_t& at) {
  std::vector<std::string> cells;
  for (;;) {
    Expect(at < table.size() && table[at] == '"');
    std::string cell;
    for (++at;; ++at) {
      Expect(at + 1 < table.size());
      if (table[at] != '"') {
        cell += table[at];
      } else if (table[at + 1] == '"') {
        cell += table[at++];
      } else {
        break;
      }
    }
    cells.push_back(cell);
    ++at;
    if (table[at] != ',') break;
    ++at;
  }
  Expect(table.substr(at, 2) == "\r\n");
  at += 2;
  return cells;
}

void CheckTable(const FieldValues& values) {
  const std::string table = TableOf(PlateFields, values);
  std::size_t at = 0;
  const auto headings = CellsOf(table, at);
  const auto cells = CellsOf(table, at);
  Expect(at == table.size() && headings.size() == PlateFields.size() &&
         cells.size() == PlateFields.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    Expect(headings[i] == PlateFields[i].name);
    const auto typed = values.find(PlateFields[i].name);
    Expect(cells[i] == (typed == values.end() ? std::string() : typed->second));
    Expect(cells[i].find_first_of("\r\n\x1b") == std::string::npos &&
           cells[i].size() <= ValueLimit);
    if (PlateFields[i].kind == "file") Expect(cells[i].find('/') == std::string::npos);
  }
}

void CheckRequest(const Request& request) {
  const auto plate = PlateRequestOf(request);
  if (!plate) return;
  Expect(plate->values.size() <= FieldsLimit && IsBlankSize(plate->blank));
  for (const auto& [name, value] : plate->values)
    Expect(KeptInField(value).find_first_of("<>\"'\x1b") == std::string::npos);
  const auto faults = FaultsOf(PlateFields, plate->values);
  for (const FieldNote& fault : faults) Expect(!SentenceOf(fault.code).empty());
  if (faults.empty()) CheckTable(plate->values);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  Request request;
  request.body = text;
  CheckRequest(request);
  if (auto form = FieldsOf(text)) {
    request.form = *form;
    CheckRequest(request);
  }
  static_cast<void>(FieldsOfLines(text, static_cast<int>(text.size() % 2)));
  PlatePicture picture;
  ReadMergeLines(text, {{"Name", "Ada"}}, picture);
  Expect(picture.notes.size() <= 50 && picture.pages >= 0);
  return 0;
}
