// The few hidapi calls the USB driver makes, as a table of functions: the real one calls
// hidapi, and a test gives its own to play a writer that no machine here has (one that
// hangs in a write, is unplugged mid-read, or that this user may not open).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace lk {

// hidapi's hid_device, opaque to everything but the real table.
using HidHandle = void*;

struct HidApi {
  // hid_init: 0 when the HID layer can be used.
  std::function<int()> Init;
  // The paths of the interfaces with this vendor and product, in enumeration order.
  std::function<std::vector<std::string>(std::uint16_t vendor, std::uint16_t product)> Enumerate;
  // hid_open_path: nullptr when it cannot be opened.
  std::function<HidHandle(const std::string& path)> OpenPath;
  // hid_write (report ID first) and hid_read_timeout: bytes moved, 0 on a read timeout,
  // -1 on an error.
  std::function<int(HidHandle, const std::uint8_t* data, std::size_t length)> Write;
  std::function<int(HidHandle, std::uint8_t* data, std::size_t length, int timeoutMs)> ReadTimeout;
  std::function<void(HidHandle)> Close;
  // hid_error of a device (or of the library for nullptr).
  std::function<std::string(HidHandle)> Error;
  // True when this user may not read and write the device node (the kernel refuses
  // hid_open_path with EACCES or EPERM).
  std::function<bool(const std::string& path)> PermissionDenied;
};

// The table that calls hidapi (hid_init once per process).
const HidApi& RealHidApi();

}  // namespace lk
