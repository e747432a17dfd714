#pragma once

#include <string>
#include <utility>
#include <variant>

/// How every function here reports a failure: `Expected<T>` holds a value, or a `Failure` in its
/// place. It is used from the calls of the operating system up to the command, which shows it.
/// Nothing throws. The public interface keeps its own booleans, numbers and exceptions, which are
/// made from a Failure.
namespace rastrel {

/// What kind of failure it is, where a caller goes on differently: with another exit status, say.
enum class FailureCode {
  Unspecified,  ///< nothing more is known: the machine, a limit, a part that is missing
  BadInput,     ///< the file or the arguments can't be used
  BadProgram,   ///< the input was run, and failed as a program
};

/// The call that failed, its object, and the reason. Every field is optional; Describe leaves out
/// the empty ones.
struct Failure {
  /// The call or the step: "open", "read". Lower case, without a full stop. Empty if `why` is a
  /// whole sentence.
  std::string what{};
  /// The object of the call: a native path or a name, in UTF-8 or as the path's bytes. It may come
  /// from a file and hold any character.
  std::string where{};
  /// The system's error number as the call left it; 0 if no call of the system failed.
  int error = 0;
  /// The reason as text, UTF-8, without a full stop. Empty: the system's text for `error`.
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
/// Independent of the locale, and fit for a terminal whatever the fields hold (os::CleanLine).
[[nodiscard]] std::string Describe(const Failure& failure);

/// The system's text for an error number, in English whatever the locale. Never empty.
[[nodiscard]] std::string DescribeError(int error);

/// A failure with nothing but a text: `why`.
[[nodiscard]] inline Failure FailureOf(std::string why,
                                       FailureCode code = FailureCode::Unspecified) {
  Failure failure;
  failure.why = std::move(why);
  failure.code = code;
  return failure;
}

/// The same failure with another object: for a caller that has the name of a file of which the call
/// knew the descriptor only.
[[nodiscard]] inline Failure FailureAt(std::string where, Failure failure) {
  failure.where = std::move(where);
  return failure;
}

/// A value, or the failure that kept it from being had. Owns either. Made of a `T` or of a
/// `Failure` implicitly: `return file;`, `return Failure{"open", path, errno};`.
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

  /// The value, or `other` if there is none.
  [[nodiscard]] T ValueOr(T other) const& { return *this ? **this : other; }

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

/// Stores a failure, unless one is stored already: of several steps that all run, the first failure
/// is reported.
inline void KeepFirst(Expected<void>& result, Failure failure) {
  if (result) result = std::move(failure);
}

}  // namespace rastrel
