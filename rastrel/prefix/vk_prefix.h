#pragma once

#include "rastrel/prefix/ps_prefix.h"

class CVKJobTicket;

/// Writes the prefix of a CVKJobTicket: output straight back to the host as a preview or as planes,
/// with cut data kept apart. No print mode is ever selected; the selection is only disabled.
class CVKPrefix : public PSPrefix {
 public:
  /// The ticket is not owned and may be null; Generate fails then.
  explicit CVKPrefix(CVKJobTicket* ticket);
  ~CVKPrefix() override;

  /// As PSPrefix::Generate: 0 for success.
  [[nodiscard]] unsigned Generate() override;

 private:
  CVKJobTicket* m_pVKTicket;
};
