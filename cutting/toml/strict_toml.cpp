#include "cutting/toml/strict_toml.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

#include "cutting/toml/toml_library.h"
#include "cutting/toml/toml_text.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::cutting {

struct TomlState {
  std::string name;
  toml::table root;
  Expected<void> fault;
};

namespace {

/// A value that is shown in a message is cut after so many bytes.
constexpr std::size_t ShownLimit = 60;

std::string Shown(std::string_view text) {
  std::string shown = os::CleanLine(text.substr(0, ShownLimit));
  if (text.size() > ShownLimit) shown += "...";
  return shown;
}

void KeepFault(TomlState& state, const toml::source_position& at, std::string why) {
  if (!state.fault) return;
  Failure failure = FailureOf(std::move(why), FailureCode::BadInput);
  failure.where = state.name;
  failure.line = static_cast<int>(at.line);
  failure.column = static_cast<int>(at.column);
  state.fault = std::move(failure);
}

const toml::table& TableAt(const void* table) { return *static_cast<const toml::table*>(table); }
const toml::node& NodeAt(const void* node) { return *static_cast<const toml::node*>(node); }

std::string RangeText(double least, double greatest) {
  return "between " + os::ShortestDecimal(least) + " and " + os::ShortestDecimal(greatest);
}

std::optional<double> NumberOf(const toml::node& node) {
  if (const auto* whole = node.as_integer()) return static_cast<double>(whole->get());
  if (const auto* number = node.as_floating_point()) return number->get();
  return std::nullopt;
}

}  // namespace

Expected<double> LengthFromText(std::string_view text) {
  struct Unit {
    std::string_view name;
    double millimetres;
  };
  static constexpr std::array<Unit, 5> Units{
      {{"mm", 1}, {"cm", 10}, {"in", 25.4}, {"pt", 25.4 / 72}, {"", 1}}};
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
  while (!unit.empty() && unit.front() == ' ') unit.remove_prefix(1);
  for (const Unit& known : Units) {
    if (error == std::errc() && std::isfinite(value) && unit == known.name) {
      return value * known.millimetres;
    }
  }
  return FailureOf("'" + Shown(text) + "' is no length; write a number with mm, cm, in or pt");
}

TomlTable::TomlTable(std::shared_ptr<TomlState> state, const void* table)
    : m_State(std::move(state)), m_Table(table) {}

const void* TomlTable::Find(std::string_view key) {
  m_Asked.emplace_back(key);
  return TableAt(m_Table).get(key);
}

bool TomlTable::Has(std::string_view key) const { return TableAt(m_Table).contains(key); }

void TomlTable::Fail(std::string_view key, std::string why) {
  const toml::node* node = TableAt(m_Table).get(key);
  KeepFault(*m_State, node ? node->source().begin : TableAt(m_Table).source().begin,
            std::move(why));
}

std::optional<std::string> TomlTable::Text(std::string_view key) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  const auto* text = NodeAt(found).as_string();
  if (!text) {
    Fail(key, std::string(key) + " must be a text in quotes");
    return std::nullopt;
  }
  if (text->get().size() > TomlTextLimit) {
    Fail(key,
         std::string(key) + " has more than " + std::to_string(TomlTextLimit) + " bytes of text");
    return std::nullopt;
  }
  if (text->get().find('\0') != std::string::npos) {
    Fail(key, std::string(key) + " holds a zero byte");
    return std::nullopt;
  }
  return text->get();
}

std::optional<bool> TomlTable::Truth(std::string_view key) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  if (const auto* truth = NodeAt(found).as_boolean()) return truth->get();
  Fail(key, std::string(key) + " must be true or false");
  return std::nullopt;
}

std::optional<int> TomlTable::Whole(std::string_view key, int least, int greatest) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  const auto* whole = NodeAt(found).as_integer();
  if (whole && whole->get() >= least && whole->get() <= greatest) {
    return static_cast<int>(whole->get());
  }
  Fail(key, std::string(key) + " must be a whole number " + RangeText(least, greatest));
  return std::nullopt;
}

std::optional<double> TomlTable::Number(std::string_view key, double least, double greatest) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  const auto number = NumberOf(NodeAt(found));
  if (number && *number >= least && *number <= greatest) return number;
  Fail(key, std::string(key) + " must be a number " + RangeText(least, greatest));
  return std::nullopt;
}

std::optional<double> TomlTable::Length(std::string_view key, double least, double greatest) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  std::optional<double> length = NumberOf(NodeAt(found));
  if (const auto* text = NodeAt(found).as_string()) {
    const auto read = LengthFromText(text->get());
    if (!read) {
      Fail(key, std::string(key) + ": " + read.Error().why);
      return std::nullopt;
    }
    length = *read;
  }
  if (length && *length >= least && *length <= greatest) return length;
  Fail(key, std::string(key) + " must be a length " + RangeText(least, greatest) + " mm");
  return std::nullopt;
}

std::optional<std::size_t> TomlTable::Choice(std::string_view key,
                                             std::span<const std::string_view> names) {
  if (!Has(key)) {
    static_cast<void>(Find(key));
    return std::nullopt;
  }
  const auto text = Text(key);
  if (!text) return std::nullopt;
  const auto found = std::find(names.begin(), names.end(), *text);
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  std::string list;
  for (const std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  Fail(key, std::string(key) + " is '" + Shown(*text) + "' and must be one of " + list +
                Suggestion(*text, {names.begin(), names.end()}));
  return std::nullopt;
}

std::optional<std::vector<std::string>> TomlTable::Texts(std::string_view key, std::size_t limit) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  const auto* array = NodeAt(found).as_array();
  if (!array || !(array->empty() || array->is_homogeneous<std::string>())) {
    Fail(key, std::string(key) + " must be a row of texts: [\"...\", \"...\"]");
    return std::nullopt;
  }
  if (array->size() > limit) {
    Fail(key, std::string(key) + " has more than " + std::to_string(limit) + " texts");
    return std::nullopt;
  }
  std::vector<std::string> texts;
  for (const auto& node : *array) {
    const std::string& text = node.as_string()->get();
    if (text.size() > TomlTextLimit || text.find('\0') != std::string::npos) {
      Fail(key, std::string(key) + " holds a text that is too long, or a zero byte");
      return std::nullopt;
    }
    texts.push_back(text);
  }
  return texts;
}

std::optional<TomlTable> TomlTable::Table(std::string_view key) {
  const void* found = Find(key);
  if (!found) return std::nullopt;
  if (const auto* table = NodeAt(found).as_table()) return TomlTable(m_State, table);
  Fail(key, std::string(key) + " must be a table: [" + std::string(key) + "]");
  return std::nullopt;
}

std::vector<TomlTable> TomlTable::Tables(std::string_view key, std::size_t limit) {
  const void* found = Find(key);
  if (!found) return {};
  const auto* array = NodeAt(found).as_array();
  if (!array || !(array->empty() || array->is_homogeneous<toml::table>())) {
    Fail(key, std::string(key) + " must be tables: [[" + std::string(key) + "]]");
    return {};
  }
  if (array->size() > limit) {
    Fail(key, "there are more than " + std::to_string(limit) + " of " + std::string(key));
    return {};
  }
  std::vector<TomlTable> tables;
  for (const auto& node : *array) tables.push_back(TomlTable(m_State, node.as_table()));
  return tables;
}

void TomlTable::Finish() {
  // The table is sorted by its keys: the fault that is kept is the first of the file.
  const toml::key* unknown = nullptr;
  for (const auto& [key, node] : TableAt(m_Table)) {
    if (std::find(m_Asked.begin(), m_Asked.end(), key.str()) != m_Asked.end()) continue;
    if (!unknown || key.source().begin < unknown->source().begin) unknown = &key;
  }
  if (!unknown) return;
  KeepFault(*m_State, unknown->source().begin,
            "there is no key '" + Shown(unknown->str()) + "' here" +
                Suggestion(unknown->str(), {m_Asked.begin(), m_Asked.end()}));
}

Expected<TomlFile> TomlFile::Parse(std::string_view text, std::string name) {
  auto state = std::make_shared<TomlState>();
  state->name = std::move(name);
  if (text.size() > TomlFileLimit) {
    KeepFault(*state, {}, "the file has more than " + std::to_string(TomlFileLimit) + " bytes");
    return state->fault.Error();
  }
  if (auto shallow = CheckTomlDepth(text, state->name); !shallow) return shallow.Error();
  toml::parse_result result = toml::parse(text);
  if (!result) {
    KeepFault(*state, result.error().source().begin,
              os::CleanLine(std::string(result.error().description())));
    return state->fault.Error();
  }
  state->root = std::move(result).table();
  return TomlFile(std::move(state));
}

TomlTable TomlFile::Root() const { return TomlTable(m_State, &m_State->root); }

Expected<void> TomlFile::Check() const { return m_State->fault; }

}  // namespace rastrel::cutting
