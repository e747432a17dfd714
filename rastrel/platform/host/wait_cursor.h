#pragma once

/// Shows the user that the host is busy, by `Host::BeginWaitCursor`. The library never takes the
/// cursor away again: the host's next event does. Only the host's user interface thread may call.
void BeginWaitCursor();
