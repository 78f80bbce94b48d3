// --json output through nlohmann-json: objects keep the order their fields are set in,
// and text that is not UTF-8 is shown with U+FFFD instead of ending the program.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace lk::cli {

using Json = nlohmann::ordered_json;

// One line of --json output.
std::string JsonLine(const Json& value);

// A text, or null when it is empty.
Json TextOrNull(const std::string& text);

}  // namespace lk::cli
