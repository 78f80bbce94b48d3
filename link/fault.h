// Why a step with the writer failed. Every command function of link/ returns a Fault
// (None on success) or a Result carrying one, and the Writer keeps the last one with a
// readable detail for the diagnostic log and for a command line that must say why.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace lk {

enum class [[nodiscard]] Fault : std::uint8_t {
  None,
  NotOpen,        // no link: the writer was never opened or has been closed
  Timeout,        // no answer within the receive timeout
  BadFrame,       // an answer with a bad length byte or checksum
  Refused,        // a well-formed answer with another code than the step needs
  Unplugged,      // the report could not be sent: the writer has gone
  StillBusy,      // 0xF1 still answered "busy" at the blank check's deadline
  NotBlank,       // the blank check found the chip programmed (0xF1 answered 0xE2)
  Stopped,        // the operator stopped the command
  ChipType,       // the writer refused the chip parameter block (wrong or no chip)
  ChipMismatch,   // the chip's own type word is not the model's
  TestContent,    // the factory test words the model needs are missing from the chip
  StoreMismatch,  // a read-back of the writer's store differs from what was sent
  RollAddress,    // a rolling-code address lies outside the program memory
};

// A short English description, for diagnostics ("no answer within the timeout").
const char* FaultText(Fault fault);

// Data or the fault that kept it from coming.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}  // NOLINT: implicit on purpose
  Result(Fault fault) : fault_(fault) {}         // NOLINT

  bool Ok() const { return fault_ == Fault::None; }
  explicit operator bool() const { return Ok(); }
  Fault Why() const { return fault_; }
  // Reading the value of a fault is a programming error, caught rather than undefined.
  const T& operator*() const { return Value(); }
  T& operator*() { return const_cast<T&>(static_cast<const Result&>(*this).Value()); }
  const T* operator->() const { return &Value(); }
  T* operator->() { return &**this; }

 private:
  const T& Value() const {
    if (!value_) throw std::logic_error(std::string("link Result without a value: ") + FaultText(fault_));
    return *value_;
  }

  std::optional<T> value_;
  Fault fault_ = Fault::None;
};

}  // namespace lk
