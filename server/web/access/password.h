#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

/// Passwords are kept as hashes of crypt(5), of the method yescrypt: each test of one takes tens of
/// milliseconds and megabytes, so that a stolen file is not soon read. Any thread.
namespace rastrel::server::web {

/// Passwords have so many bytes.
inline constexpr std::size_t ShortestPassword = 8;
inline constexpr std::size_t LongestPassword = 256;

/// Fails for a password that is too short or too long, or has a zero byte or a line end.
[[nodiscard]] Expected<void> CheckPassword(const std::string& password);

/// A hash with a salt of its own.
[[nodiscard]] Expected<std::string> HashOfPassword(const std::string& password);

/// Whether it is the password of the hash.
[[nodiscard]] bool IsPasswordOf(const std::string& password, const std::string& hash);

/// Whether a text is a hash that this machine can test passwords against: yescrypt, or one of the
/// other strong methods of crypt(5).
[[nodiscard]] bool IsPasswordHash(const std::string& text);

}  // namespace rastrel::server::web
