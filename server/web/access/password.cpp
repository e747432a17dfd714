#include "server/web/access/password.h"

#include <crypt.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string_view>

#include "server/web/http/address_text.h"

namespace rastrel::server::web {
namespace {

// yescrypt, gost-yescrypt, scrypt, bcrypt, SHA-512.
constexpr std::array<std::string_view, 5> Methods{"$y$", "$gy$", "$7$", "$2b$", "$6$"};
constexpr std::size_t LongestHash = 384;

}  // namespace

Expected<void> CheckPassword(const std::string& password) {
  if (password.size() < ShortestPassword || password.size() > LongestPassword)
    return FailureOf("a password has 8 to 256 bytes", FailureCode::BadInput);
  if (password.find_first_of(std::string_view("\0\r\n", 3)) != password.npos)
    return FailureOf("a password has no line end and no zero byte", FailureCode::BadInput);
  return {};
}

Expected<std::string> HashOfPassword(const std::string& password) {
  std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> salt{};
  if (!::crypt_gensalt_rn("$y$", 0, nullptr, 0, salt.data(), salt.size()))
    return Failure{"make a salt", "", errno};
  const auto data = std::make_unique<crypt_data>();
  const char* hash = ::crypt_r(password.c_str(), salt.data(), data.get());
  if (!hash || hash[0] == '*') return Failure{"hash the password", "", errno};
  return std::string(hash);
}

bool IsPasswordOf(const std::string& password, const std::string& hash) {
  if (!CheckPassword(password)) return false;
  const auto data = std::make_unique<crypt_data>();
  const char* made = ::crypt_r(password.c_str(), hash.c_str(), data.get());
  return made && made[0] != '*' && IsSameSecret(made, hash);
}

bool IsPasswordHash(const std::string& text) {
  if (text.size() > LongestHash) return false;
  constexpr std::string_view Allowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789./$=,";
  for (const std::string_view method : Methods)
    if (text.starts_with(method) && text.size() > method.size() + 20)
      return text.find_first_not_of(Allowed) == text.npos;
  return false;
}

}  // namespace rastrel::server::web
