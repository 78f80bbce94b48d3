// The texts several places write: each is spelled once here.
#pragma once

namespace lk::ops {

// The failure line of a comparison of the chip with the image.
inline constexpr const char* kVerifyFail = "Verify Fail!";

// Status panel 4 while no writer is connected.
inline constexpr const char* kNoDeviceConnected = "No Device Connected";

}  // namespace lk::ops
