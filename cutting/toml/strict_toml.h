#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Reading of TOML files in which nothing may be there that is not known. Each value is taken by
/// its key with the type and the range that it must have. The first fault of a file is kept; the
/// values that are returned after it mean nothing, so a reader takes all keys first and looks at
/// the fault once:
///
///     auto file = TomlFile::Parse(text, "knife.toml");
///     if (!file) return file.Error();
///     TomlTable root = file->Root();
///     const std::string name = root.Text("name").value_or("");
///     root.Finish();
///     if (auto fine = file->Check(); !fine) return fine.Error();
///
/// A value is used on one thread. Tables are valid as long as their file.
namespace rastrel::cutting {

/// A file with more bytes is refused.
inline constexpr std::size_t TomlFileLimit = 262144;
/// A text with more bytes is refused.
inline constexpr std::size_t TomlTextLimit = 8192;

struct TomlState;

/// A table of the file.
class TomlTable {
 public:
  /// Each returns nothing if the key is absent or its value is at fault.
  [[nodiscard]] std::optional<std::string> Text(std::string_view key);
  [[nodiscard]] std::optional<bool> Truth(std::string_view key);
  /// A whole number within `least` and `greatest`.
  [[nodiscard]] std::optional<int> Whole(std::string_view key, int least, int greatest);
  /// A number within `least` and `greatest`, whole or not.
  [[nodiscard]] std::optional<double> Number(std::string_view key, double least, double greatest);
  /// A length in millimetres: a number, or a text of a number and "mm", "cm", "in" or "pt".
  [[nodiscard]] std::optional<double> Length(std::string_view key, double least, double greatest);
  /// The place of a text in `names`.
  [[nodiscard]] std::optional<std::size_t> Choice(std::string_view key,
                                                  std::span<const std::string_view> names);
  /// Texts in a row. At most `limit` of them.
  [[nodiscard]] std::optional<std::vector<std::string>> Texts(std::string_view key,
                                                              std::size_t limit);
  [[nodiscard]] std::optional<TomlTable> Table(std::string_view key);
  /// Tables in a row: [[key]]. Empty if there are none. At most `limit` of them.
  [[nodiscard]] std::vector<TomlTable> Tables(std::string_view key, std::size_t limit);

  [[nodiscard]] bool Has(std::string_view key) const;
  /// Keeps a fault at the key's value, or at the table where the key is absent.
  void Fail(std::string_view key, std::string why);
  /// Keeps a fault for a key that was never asked for.
  void Finish();

 private:
  friend class TomlFile;
  struct Parts;
  TomlTable(std::shared_ptr<TomlState> state, const void* table);
  const void* Find(std::string_view key);

  std::shared_ptr<TomlState> m_State;
  const void* m_Table;
  std::vector<std::string> m_Asked;
};

class TomlFile {
 public:
  /// Fails for text that is no TOML, too large, or nested too deeply, with line and column. `name`
  /// is the file's name in failures.
  [[nodiscard]] static Expected<TomlFile> Parse(std::string_view text, std::string name);
  [[nodiscard]] TomlTable Root() const;
  /// The first fault that was found.
  [[nodiscard]] Expected<void> Check() const;

 private:
  explicit TomlFile(std::shared_ptr<TomlState> state) : m_State(std::move(state)) {}
  std::shared_ptr<TomlState> m_State;
};

/// A length as a text, in millimetres: "3", "3 mm", "0.5in". Fails with the reason alone.
[[nodiscard]] Expected<double> LengthFromText(std::string_view text);

}  // namespace rastrel::cutting
