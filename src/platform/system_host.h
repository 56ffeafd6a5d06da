// The real system as a Host.
#pragma once

namespace photrak {

struct Host;

/// The real system: messages to standard error, processes, dlopen, PHOTRAK.INI, getenv.
Host SystemHost();

}  // namespace photrak
