// The two seams under the command layer: a WriterBus finds the writer and opens it,
// a Transport moves whole 65-byte reports. hidapi and the simulated writer both
// implement them; the choice is made at run time (--device usb | usb:PATH | sim).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace lk {

using Report = std::array<std::uint8_t, 65>;

class Transport {
 public:
  virtual ~Transport() = default;

  // Sends one output report: index 0 is the report ID (0), 1..64 the packet.
  // Never blocks beyond timeoutMs. False when the report could not be sent.
  virtual bool Send(const Report& report, int timeoutMs) = 0;

  // Receives one input report: index 0 = report ID (0), index 1 = first answer byte.
  // False on timeout or error (report then undefined).
  virtual bool Receive(Report& report, int timeoutMs) = 0;

  // A readable description of the last failure, for the diagnostic log.
  virtual std::string LastError() const = 0;
};

class WriterBus {
 public:
  virtual ~WriterBus() = default;

  // Looks for the writer (vendor 0x0161, product 0x0925), first in enumeration order.
  virtual bool Present() = 0;

  // Opens the writer found by Present(); nullptr when it is gone.
  virtual std::unique_ptr<Transport> Open() = 0;

  // True when the last Present() found the writer attached but this user may not open it;
  // the bus has then said so in a message of its own.
  virtual bool Denied() const { return false; }

  virtual std::string Describe() const = 0;
};

}  // namespace lk
