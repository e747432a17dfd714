#pragma once

#include "server/web/http/router.h"
#include "server/web/shop.h"

/// The interface for programs: /api/v1. The shop outlives the router.
namespace rastrel::server::web {

/// Lists, one job, its events and its file; the table of jobs.
void AddJobViews(Router& router, Shop& shop);
/// New jobs.
void AddJobEntry(Router& router, Shop& shop);
/// Changes of jobs.
void AddJobChanges(Router& router, Shop& shop);
/// Devices and print modes.
void AddDevices(Router& router, Shop& shop);

}  // namespace rastrel::server::web
