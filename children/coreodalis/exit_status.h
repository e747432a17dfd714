#pragma once

namespace rastrel::odalis {

/// How the engine ends. The supervisor of the library knows 0, 1 and 2 by number; every other one
/// is an internal failure to it.
enum class ExitStatus : int {
  Done = 0,          ///< every page of the input was delivered
  NotDelivered = 1,  ///< a page could not be delivered; the ones before it stay
  BadInput = 2,  ///< the input is no CFM2, or names pages that are not there; nothing was delivered
  Internal = 3,  ///< the machine refused something (memory, descriptors) that is no page's fault
  WrongUse = 4,  ///< the arguments are not the engine's
};

}  // namespace rastrel::odalis
