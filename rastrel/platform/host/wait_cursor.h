#pragma once

/// Has the host show that it is busy. The library never takes the cursor away again: the host's
/// next event does. On the host's thread.
void BeginWaitCursor();
