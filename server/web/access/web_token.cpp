#include "server/web/access/web_token.h"

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "server/web/access/secret_file.h"

namespace rastrel::server::web {
namespace {

constexpr std::size_t SecretBytes = 32;

}  // namespace

Expected<std::string> NewSecret() { return os::RandomDigits(SecretBytes); }

Expected<std::string> MakeToken(const std::string& path) {
  auto token = NewSecret();
  if (!token) return token;
  if (auto written = os::ReplaceFile(os::FromNative(path), *token + "\n", os::Access::Private);
      !written)
    return written.Error();
  return token;
}

Expected<std::string> ReadToken(const std::string& path) {
  auto text = ReadSecretFile(path, 2 * SecretBytes + 1);
  if (!text) return text;
  if (text->ends_with('\n')) text->pop_back();
  if (text->size() != 2 * SecretBytes || text->find_first_not_of("0123456789abcdef") != text->npos)
    return FailureAt(path, FailureOf("the file holds no token"));
  return text;
}

}  // namespace rastrel::server::web
