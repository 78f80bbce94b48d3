// Download: stores the open project (program, configuration, the rolling-code records
// and, for some chip families, EEDATA) in the writer for stand-alone programming.
#pragma once

#include "ops/station.h"

namespace lk::ops {

// "Download OK!" or, for any failing step (a refused chip included), "Download Fail!".
CommandResult Download(Station& st);

}  // namespace lk::ops
