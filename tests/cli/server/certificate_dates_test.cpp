#include "cli/server/certificate_dates.h"

#include <gtest/gtest.h>

#include <string>

#include "rastrel/platform/os/base64.h"

namespace rastrel::cli {
namespace {

const char* const Begin = "-----BEGIN CERTIFICATE-----\n";
const char* const End = "-----END CERTIFICATE-----\n";
// Made by `openssl req -x509 -days 36500`. `openssl x509 -dates` says: from Nov 23 08:37:05 2026
// GMT until Oct 30 08:37:05 2126 GMT. The first is a UTCTime, and the second a GeneralizedTime.
const char* const Body =
    "MIIBhjCCASugAwIBAgIUGpQxCI7JIq0ysHB0J434TrVWk4EwCgYIKoZIzj0EAwIw\n"
    "FzEVMBMGA1UEAwwMc2hvcC5leGFtcGxlMCAXDTI2MTEyMzA4MzcwNVoYDzIxMjYx\n"
    "MDMwMDgzNzA1WjAXMRUwEwYDVQQDDAxzaG9wLmV4YW1wbGUwWTATBgcqhkjOPQIB\n"
    "BggqhkjOPQMBBwNCAAR1biFQ1J2lR9zR7J+2FXAILkN7UjL0JRmKnoCdJxXgcOl3\n"
    "FvfGIpBjG/D3UUOsTJ02TyRkGwlru5yt0CKKH/DVo1MwUTAdBgNVHQ4EFgQUuVad\n"
    "rjkXyTdJG9SwK3s4SzFsV3YwHwYDVR0jBBgwFoAUuVadrjkXyTdJG9SwK3s4SzFs\n"
    "V3YwDwYDVR0TAQH/BAUwAwEB/zAKBggqhkjOPQQDAgNJADBGAiEAl84fBBW19mMT\n"
    "G5m/nO8w1/Bpw0pTU7KReEiqmOcK/f4CIQCwjiTP5hCfV4DH3M5+VOSi1K7vv4DN\n"
    "1x7OKsZVw1ovFA==\n";

std::string BytesOf(std::string text) {
  std::erase(text, '\n');
  return os::BytesFromBase64(text).value_or("");
}
std::string PemOf(const std::string& bytes) {
  return Begin + os::Base64FromBytes(bytes) + "\n" + End;
}
std::string WithFirstDate(const std::string& date) {
  std::string bytes = BytesOf(Body);
  bytes.replace(bytes.find("261123083705Z"), date.size(), date);
  return PemOf(bytes);
}

TEST(CertificateDates, both_forms_of_a_time_are_read) {
  const auto dates = DatesOfCertificate(std::string("# shop\n") + Begin + Body + End + Begin + "x");
  ASSERT_TRUE(dates) << Describe(dates.Error());
  EXPECT_EQ(dates->from, 1795423025);   // date -u -d '2026-11-23 08:37:05' +%s
  EXPECT_EQ(dates->until, 4949023025);  // date -u -d '2126-10-30 08:37:05' +%s
}

// RFC 5280, 4.1.2.5.1: from 50 on it is the last century.
TEST(CertificateDates, years_of_two_digits_turn_at_fifty) {
  EXPECT_EQ(DatesOfCertificate(WithFirstDate("491231235959Z"))->from, 2524607999);
  EXPECT_EQ(DatesOfCertificate(WithFirstDate("500101000000Z"))->from, -631152000);
}

TEST(CertificateDates, no_day_of_the_calendar_is_no_date) {
  for (const char* date : {"260229000000Z", "261323083705Z", "26112308370xZ", "261123083705+"})
    EXPECT_FALSE(DatesOfCertificate(WithFirstDate(date))) << date;
}

TEST(CertificateDates, text_without_a_certificate_is_refused) {
  for (const std::string& text :
       {std::string(), std::string(Begin), std::string(Begin) + Body, std::string(End) + Begin,
        std::string(Begin) + "?" + End, std::string(Begin) + End})
    EXPECT_FALSE(DatesOfCertificate(text)) << text;
}

// Lengths that lead beyond the end are refused, wherever it is cut.
TEST(CertificateDates, a_certificate_that_is_cut_off_is_refused) {
  const std::string bytes = BytesOf(Body);
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_FALSE(DatesOfCertificate(PemOf(bytes.substr(0, size)))) << size;
}

TEST(CertificateDates, a_byte_that_is_another_does_no_harm) {
  const std::string bytes = BytesOf(Body);
  for (std::size_t place = 0; place < 110; ++place)
    for (const char other : {'\x00', '\x30', '\x7f', '\x80', '\x84', '\xff'}) {
      std::string spoiled = bytes;
      spoiled[place] = other;
      static_cast<void>(DatesOfCertificate(PemOf(spoiled)));
    }
}

}  // namespace
}  // namespace rastrel::cli
