#include "pages/page_sum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <array>
#include <variant>

#include "pages/sha256.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::pages {
namespace {

constexpr std::size_t Xxh3Digits = 32;
constexpr std::size_t Sha256Digits = 64;

}  // namespace

std::optional<SumKind> SumKindOf(std::string_view sum) {
  if (sum.find_first_not_of("0123456789abcdef") != sum.npos) return std::nullopt;
  if (sum.size() == Xxh3Digits) return SumKind::Xxh3;
  if (sum.size() == Sha256Digits) return SumKind::Sha256;
  return std::nullopt;
}

struct PageSum::State {
  std::variant<XXH3_state_t, Sha256> sum;
};

PageSum::PageSum(SumKind kind) : m_State(std::make_unique<State>()) {
  if (kind == SumKind::Sha256) {
    m_State->sum.emplace<Sha256>();
  } else {
    XXH3_128bits_reset(&std::get<XXH3_state_t>(m_State->sum));
  }
}

PageSum::~PageSum() = default;
PageSum::PageSum(PageSum&& other) noexcept = default;
PageSum& PageSum::operator=(PageSum&& other) noexcept = default;

void PageSum::Add(std::span<const std::byte> bytes) {
  if (auto* state = std::get_if<XXH3_state_t>(&m_State->sum)) {
    XXH3_128bits_update(state, bytes.data(), bytes.size());
  } else {
    std::get<Sha256>(m_State->sum).Add(bytes);
  }
}

std::string PageSum::Finish() {
  auto* state = std::get_if<XXH3_state_t>(&m_State->sum);
  if (state == nullptr) return std::get<Sha256>(m_State->sum).Finish();
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(state));
  return os::HexFromBytes({reinterpret_cast<const char*>(canonical.digest), sizeof canonical});
}

}  // namespace rastrel::pages
