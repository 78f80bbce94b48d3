// The two commands that work on the configuration words alone: write them into the chip
// and check them, and read them from the chip into the image.
#pragma once

#include "ops/station.h"

namespace lk::ops {

// 0xF9, then a verify with 0xF5: "Config OK!" or "Config Fail!" (no mismatch details).
CommandResult ConfigWrite(Station& st);

// 0xF5 into the image's configuration words; always "Read Config OK!" once the chip
// check has passed, whatever the read gave.
CommandResult ConfigRead(Station& st);

}  // namespace lk::ops
