// The production command: blank check (when chosen), program, verify, EEDATA (when the
// project carries it), configuration write and verify, all in one chip session, then
// the rolling-code advance.
#pragma once

#include "ops/station.h"

namespace lk::ops {

// withBlank is the tick of the auto drop-down's "with blank check" entry, read afresh
// at every run.
CommandResult Auto(Station& st, bool withBlank);

}  // namespace lk::ops
