#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace rastrel::job {

/// One argument of a formatted text, with its own type: a conversion that does not fit it prints it
/// plainly instead of reading something else. Text is borrowed for the length of the call.
class FormatArgument {
 public:
  struct Pointer {
    const void* value;
  };
  using Value = std::variant<std::int64_t, std::uint64_t, double, wchar_t, std::wstring_view,
                             std::string_view, Pointer>;

  template <typename Type>
  FormatArgument(const Type& value)
      : m_Value(ValueOf(value)) {}  // NOLINT(google-explicit-constructor)

  [[nodiscard]] const Value& Get() const { return m_Value; }

 private:
  template <typename Type>
  static Value ValueOf(const Type& value) {
    using Plain = std::decay_t<Type>;
    if constexpr (std::is_same_v<Plain, wchar_t>) {
      return value;
    } else if constexpr (std::is_same_v<Plain, char>) {
      return static_cast<wchar_t>(static_cast<unsigned char>(value));
    } else if constexpr (std::is_enum_v<Plain>) {
      return static_cast<std::int64_t>(value);
    } else if constexpr (std::is_integral_v<Plain> && std::is_unsigned_v<Plain>) {
      return static_cast<std::uint64_t>(value);
    } else if constexpr (std::is_integral_v<Plain>) {
      return static_cast<std::int64_t>(value);
    } else if constexpr (std::is_floating_point_v<Plain>) {
      return static_cast<double>(value);
    } else if constexpr (std::is_same_v<std::remove_extent_t<Type>, wchar_t>) {
      return std::wstring_view(
          value);  // an array is never null, and the compiler warns of the question
    } else if constexpr (std::is_same_v<std::remove_extent_t<Type>, char>) {
      return std::string_view(value);
    } else if constexpr (std::is_same_v<Plain, const wchar_t*> || std::is_same_v<Plain, wchar_t*>) {
      return value == nullptr ? std::wstring_view(L"(null)") : std::wstring_view(value);
    } else if constexpr (std::is_same_v<Plain, const char*> || std::is_same_v<Plain, char*>) {
      return value == nullptr ? std::string_view("(null)") : std::string_view(value);
    } else if constexpr (std::is_pointer_v<Plain>) {
      return Pointer{value};
    } else if constexpr (std::is_convertible_v<const Type&, std::string_view>) {
      return std::string_view(value);
    } else {
      return std::wstring_view(value);
    }
  }

  Value m_Value;
};

}  // namespace rastrel::job
