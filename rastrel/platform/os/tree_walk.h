#pragma once

namespace rastrel::os {

/// Levels of directories that an operation on a tree follows. Each holds a descriptor and a part of
/// the stack; a deeper tree fails as a directory that can't be opened does.
inline constexpr unsigned TreeDepthLimit = 256;

}  // namespace rastrel::os
