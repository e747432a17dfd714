#include "cli/server/certificate_dates.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "rastrel/platform/os/base64.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view Begin = "-----BEGIN CERTIFICATE-----";
constexpr std::string_view End = "-----END CERTIFICATE-----";

// Tags of DER.
constexpr unsigned Sequence = 0x30;
constexpr unsigned Version = 0xa0;
constexpr unsigned UtcTime = 0x17;
constexpr unsigned GeneralizedTime = 0x18;

// A value of DER: a tag, a length, and content, which are taken off the front of `text`.
struct Value {
  unsigned tag = 0;
  std::string_view content;
};
std::optional<Value> Take(std::string_view& text) {
  const auto at = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  if (text.size() < 2) return {};
  Value value{at(0), {}};
  std::size_t length = at(1);
  std::size_t head = 2;
  if (length > 0x84 || length == 0x80) return {};
  if (length > 0x80) {
    const std::size_t count = length - 0x80;
    if (text.size() < head + count) return {};
    length = 0;
    for (; head < 2 + count; ++head) length = length << 8 | at(head);
  }
  if (text.size() - head < length) return {};
  value.content = text.substr(head, length);
  text.remove_prefix(head + length);
  return value;
}

// "YYMMDDhhmmssZ" or "YYYYMMDDhhmmssZ".
std::optional<std::int64_t> TimeOf(const Value& value) {
  std::string text(value.content);
  if (value.tag == UtcTime && text.size() == 13) text.insert(0, text < "50" ? "20" : "19");
  if ((value.tag != UtcTime && value.tag != GeneralizedTime) || text.size() != 15 ||
      text.back() != 'Z' ||
      !std::all_of(text.begin(), text.end() - 1, [](char one) { return one >= '0' && one <= '9'; }))
    return {};
  const auto number = [&](std::size_t from, std::size_t count) {
    return std::stoi(text.substr(from, count));
  };
  const std::chrono::year_month_day day{std::chrono::year(number(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(number(4, 2))),
                                        std::chrono::day(static_cast<unsigned>(number(6, 2)))};
  if (!day.ok()) return {};
  return std::int64_t{std::chrono::sys_days(day).time_since_epoch().count()} * 86400 +
         number(8, 2) * 3600 + number(10, 2) * 60 + number(12, 2);
}

std::optional<CertificateDates> DatesIn(std::string_view bytes) {
  const auto certificate = Take(bytes);
  if (!certificate || certificate->tag != Sequence) return {};
  std::string_view content = certificate->content;
  const auto signedPart = Take(content);
  if (!signedPart || signedPart->tag != Sequence) return {};
  content = signedPart->content;
  auto value = Take(content);
  if (value && value->tag == Version) value = Take(content);
  // The serial number is taken; the algorithm and the issuer follow.
  for (int count = 0; value && count < 3; ++count) value = Take(content);
  if (!value || value->tag != Sequence) return {};
  content = value->content;
  const auto from = Take(content);
  const auto until = Take(content);
  if (!from || !until) return {};
  const auto first = TimeOf(*from);
  const auto last = TimeOf(*until);
  if (!first || !last) return {};
  return CertificateDates{*first, *last};
}

}  // namespace

Expected<CertificateDates> DatesOfCertificate(std::string_view pem) {
  const std::size_t begin = pem.find(Begin);
  const std::size_t end = begin == pem.npos ? pem.npos : pem.find(End, begin);
  if (end == pem.npos) return FailureOf("it has no certificate as PEM");
  std::string text(pem.substr(begin + Begin.size(), end - begin - Begin.size()));
  std::erase_if(text, [](char one) { return one == '\n' || one == '\r' || one == ' '; });
  const auto bytes = os::BytesFromBase64(text);
  const auto dates = bytes ? DatesIn(*bytes) : std::optional<CertificateDates>();
  if (!dates) return FailureOf("its certificate is damaged");
  return *dates;
}

}  // namespace rastrel::cli
