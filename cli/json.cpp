#include "cli/json.h"

namespace lk::cli {

std::string JsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

}  // namespace lk::cli
