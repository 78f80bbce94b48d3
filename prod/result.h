// What a production-database call gives back: a value, or the error text the user is
// shown (it names the database and says why).
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace lk::prod {

template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}  // NOLINT: a value converts
  static Result Error(std::string text) {
    Result r;
    r.error_ = std::move(text);
    return r;
  }
  bool Ok() const { return value_.has_value(); }
  explicit operator bool() const { return Ok(); }
  const std::string& ErrorText() const { return error_; }
  // Reading the value of an error is a programming fault, not undefined behaviour.
  T& operator*() {
    if (!value_) throw std::logic_error("prod::Result without a value: " + error_);
    return *value_;
  }
  const T& operator*() const { return const_cast<Result&>(*this).operator*(); }
  T* operator->() { return &**this; }
  const T* operator->() const { return &**this; }

 private:
  Result() = default;
  std::optional<T> value_;
  std::string error_;
};

// A call with no value: Ok, or an error text.
struct Done {};
using Status = Result<Done>;
inline Status Ok() { return Done{}; }

}  // namespace lk::prod
