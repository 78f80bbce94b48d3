// The USB writer through hidapi (hidraw backend).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/host.h"
#include "link/hid_api.h"
#include "link/transport.h"

namespace lk {

// Finds the writer by vendor 0x0161 / product 0x0925, first in enumeration order, or
// the interface at `path` when one is given (--device usb:PATH). Diagnostics (hidapi
// errors) go to host.Diagnostic. The one message shown here: a writer that is attached
// but that this user may not open (no udev rule), once per device node and process.
// `api` is hidapi itself unless a test plays the writer; it must outlive the bus.
std::unique_ptr<WriterBus> MakeHidBus(Host& host, const std::string& path = "",
                                      const HidApi& api = RealHidApi());

// The device paths of every attached writer, in enumeration order. Empty, without
// error, when none is attached or the HID layer cannot be started.
std::vector<std::string> EnumerateWriters(Host& host, const HidApi& api = RealHidApi());

}  // namespace lk
