#pragma once

#include "rastrel/job/job_ticket.h"

/// The ticket of a run without a host. Its destructor takes down the process's log and paths, which
/// nothing else ever does, so there must be no other ticket in use then.
class CExJobTicket : public CJobTicket {
 public:
  CExJobTicket();
  ~CExJobTicket() override;

  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  using CJobTicket::Error;
};
