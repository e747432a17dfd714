#include "rastrel/platform/host/wait_cursor.h"

#include "rastrel/platform/host/host.h"

void BeginWaitCursor() { rastrel::host::GetHost().BeginWaitCursor(); }
