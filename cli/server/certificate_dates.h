#pragma once

#include <cstdint>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// From when to when a certificate counts, in seconds since 1970-01-01 00:00 UTC.
struct CertificateDates {
  std::int64_t from = 0;
  std::int64_t until = 0;
};

/// The dates of the first certificate of a PEM text, as RFC 5280 (4.1.2.5) writes them. Nothing
/// else of it is looked at. Fails for text with no such certificate.
[[nodiscard]] Expected<CertificateDates> DatesOfCertificate(std::string_view pem);

}  // namespace rastrel::cli
