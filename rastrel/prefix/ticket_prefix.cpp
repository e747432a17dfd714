// The members of the tickets that make their prefix. They are here since the tickets' own folder
// knows nothing of the generators.

#include "rastrel/job/job_ticket.h"
#include "rastrel/job/vk_job_ticket.h"
#include "rastrel/prefix/ps_prefix.h"
#include "rastrel/prefix/vk_prefix.h"

PSPrefix* CJobTicket::GetPrefix() { return new PSPrefix(this); }

PSPrefix* CVKJobTicket::GetPrefix() { return new CVKPrefix(this); }
