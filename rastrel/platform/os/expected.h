#pragma once

#include <string>
#include <utility>
#include <variant>

/// The one way in which anything here says that it failed: `Expected<T>` holds a value, or the
/// `Failure` that stands in its place. It is used from the calls of the operating system up to the
/// command, which shows it. Nothing throws. The interface's own booleans, numbers and exceptions
/// stay as its callers expect them, and are made of a Failure where they leave the library.
namespace rastrel {

/// What kind of failure it is, where a caller goes on differently: with another exit status, say.
enum class FailureCode {
  Unspecified,  ///< nothing more is known: the machine, a limit, a part that is missing
  BadInput,     ///< the file or the words that were handed over can't be used
  BadProgram,   ///< the input was run, and failed as a program
};

/// What failed, on what, and why. Every field is optional; Describe leaves out what is empty.
struct Failure {
  /// The call or the step: "open", "read". Lower case, without a full stop. Empty if `why` is a
  /// whole sentence.
  std::string what{};
  /// What it was made on: a native path or a name, UTF-8 or the bytes of the path. May be foreign
  /// text, with any character in it.
  std::string where{};
  /// The system's error number as the call left it; 0 if no call of the system failed.
  int error = 0;
  /// The reason in words, UTF-8, without a full stop. Empty: the system's words for `error`.
  std::string why{};
  /// Line in `where`, from 1; 0 if it is no text or could not be read at all.
  int line = 0;
  /// Column in that line, from 1, in characters; 0 where `line` is.
  int column = 0;
  /// What kind it is. Describe says nothing of it.
  FailureCode code = FailureCode::Unspecified;

  bool operator==(const Failure&) const = default;
};

/// One line for a person:
///
///     open '/a/b': No such file or directory (2)      what, where and error
///     list.xml:3:14: the element is not closed        where, line, column and why
///     the disk is full                                why alone
///
/// Independent of the locale.
[[nodiscard]] std::string Describe(const Failure& failure);

/// The system's words for an error number, without a locale. Never empty.
[[nodiscard]] std::string DescribeError(int error);

/// A failure of which only words are known: `why`.
[[nodiscard]] inline Failure FailureOf(std::string why,
                                       FailureCode code = FailureCode::Unspecified) {
  Failure failure;
  failure.why = std::move(why);
  failure.code = code;
  return failure;
}

/// A value, or the failure that kept it from being had. Owns either. Made of a `T` or of a
/// `Failure`, without a word between: `return file;`, `return Failure{"open", path, errno};`.
template <typename T>
class [[nodiscard]] Expected {
 public:
  Expected(T value)  // NOLINT(google-explicit-constructor)
      : m_State(std::in_place_index<0>, std::move(value)) {}
  Expected(Failure failure)  // NOLINT(google-explicit-constructor)
      : m_State(std::in_place_index<1>, std::move(failure)) {}

  /// True if there is a value.
  explicit operator bool() const { return m_State.index() == 0; }

  /// REQUIRES: there is a value.
  T& operator*() & { return std::get<0>(m_State); }
  const T& operator*() const& { return std::get<0>(m_State); }
  T&& operator*() && { return std::get<0>(std::move(m_State)); }
  T* operator->() { return &std::get<0>(m_State); }
  const T* operator->() const { return &std::get<0>(m_State); }

  /// REQUIRES: there is no value. Valid as long as this.
  const Failure& Error() const { return std::get<1>(m_State); }

 private:
  std::variant<T, Failure> m_State;
};

/// An operation with nothing to return but its success: `return {};`.
template <>
class [[nodiscard]] Expected<void> {
 public:
  /// Success.
  Expected() = default;
  Expected(Failure failure)  // NOLINT(google-explicit-constructor)
      : m_Failure(std::move(failure)), m_Failed(true) {}

  /// True if it succeeded.
  explicit operator bool() const { return !m_Failed; }

  /// REQUIRES: it failed. Valid as long as this.
  const Failure& Error() const { return m_Failure; }

 private:
  Failure m_Failure;
  bool m_Failed = false;
};

}  // namespace rastrel
