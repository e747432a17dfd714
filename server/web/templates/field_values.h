#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// A field of a template, as `rastrel merge --fields --json` lists it. Texts are foreign.
struct TemplateField {
  std::string name;         ///< the heading, UTF-8
  std::string kind;         ///< "text", "number", "color", "file" or "value"
  std::size_t maximum = 0;  ///< characters; 0: the format has no limit
};

/// Values that people type, by the names of fields. A field without a value is empty.
using FieldValues = std::map<std::string, std::string, std::less<>>;

/// Something to tell a person about a field, or with an empty name about the whole.
struct FieldNote {
  std::string field;
  std::string code;   ///< a word of docs/formats/http-interface.md
  std::string value;  ///< that belongs to it: a number, a name, a sentence
};

/// Bytes of a value; a template's own maximum may be smaller.
inline constexpr std::size_t ValueLimit = 4096;
/// Fields of a template that can be filled in one by one.
inline constexpr std::size_t FieldsLimit = 80;

/// The fields of the lines of JSON of a run that ended with `status` (see MergeRun). Lines of other
/// events are passed over; the failure is the message of the event "failed", or says that there is
/// none, or that the run ended before its lines.
[[nodiscard]] Expected<std::vector<TemplateField>> FieldsOfLines(std::string_view lines,
                                                                 int status);

/// The faults of values, in the order of the fields; none: a plate can be tried. Codes:
/// "not-text", "control", "too-long" (value: the most), "not-a-number", "no-name",
/// "no-field" (a value of none; `field` is its name), "all-empty".
[[nodiscard]] std::vector<FieldNote> FaultsOf(const std::vector<TemplateField>& fields,
                                              const FieldValues& values);

/// The table of one row, as RFC 4180 has it. REQUIRES: FaultsOf finds nothing.
[[nodiscard]] std::string TableOf(const std::vector<TemplateField>& fields,
                                  const FieldValues& values);

/// Values that show where each goes: texts are the names of their fields, numbers 1.
[[nodiscard]] FieldValues SampleValues(const std::vector<TemplateField>& fields);

/// A title: the template's name without its extension, and the first value, of a text if there is
/// one.
[[nodiscard]] std::string TitleOfPlate(const std::string& templateName,
                                       const std::vector<TemplateField>& fields,
                                       const FieldValues& values);

}  // namespace rastrel::server::web
