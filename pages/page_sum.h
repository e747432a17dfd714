#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The check sums of page files. They find damage: whoever can change a file can change its sum
/// beside it.
namespace rastrel::pages {

enum class SumKind {
  Xxh3,   ///< XXH3 with 128 bits: 32 hexadecimal digits, the highest first
  Sha256  ///< SHA-256 of FIPS 180-4, of pages of earlier versions: 64 hexadecimal digits
};

/// The kind of a sum by its digits, lower-case ones. Nothing if it is none.
[[nodiscard]] std::optional<SumKind> SumKindOf(std::string_view sum);

/// Takes bytes in pieces of any size and returns their check sum. Nothing but Finish's result
/// depends on the kind; XXH3 takes a tenth of the time.
class PageSum {
 public:
  explicit PageSum(SumKind kind = SumKind::Xxh3);
  ~PageSum();
  PageSum(PageSum&& other) noexcept;
  PageSum& operator=(PageSum&& other) noexcept;
  PageSum(const PageSum&) = delete;
  PageSum& operator=(const PageSum&) = delete;

  void Add(std::span<const std::byte> bytes);
  /// Of all that was added, in lower-case hexadecimal digits. Nothing is added afterwards.
  [[nodiscard]] std::string Finish();

 private:
  struct State;
  std::unique_ptr<State> m_State;
};

}  // namespace rastrel::pages
