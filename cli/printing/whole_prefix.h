#pragma once

#include "cli/job/observed_ticket.h"
#include "rastrel/prefix/ps_prefix.h"
#include "rastrel/prefix/vk_prefix.h"

namespace rastrel::cli {

/// A generator that fails when the disk does not take all of the prefix. The library's own leaves
/// that unnoticed, and the job would print without its settings.
template <typename Prefix>
class WholePrefix : public Prefix {
 public:
  using Prefix::Prefix;
  [[nodiscard]] unsigned Generate() override {
    const unsigned failed = Prefix::Generate();
    return failed != 0 || !Prefix::IsWhole() ? 1 : 0;
  }
};

/// The tickets of `print` and `preview`: they fail with JTE_PREFIX rather than print otherwise than
/// they were asked to.
class PrintTicket : public ObservedTicket {
 public:
  PSPrefix* GetPrefix() override { return new WholePrefix<PSPrefix>(this); }
};
class PreviewTicket : public ObservedPreview {
 public:
  PSPrefix* GetPrefix() override { return new WholePrefix<CVKPrefix>(this); }
};

}  // namespace rastrel::cli
