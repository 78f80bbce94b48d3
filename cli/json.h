// The small JSON writer of --json: strings escaped as JSON wants them, UTF-8 kept.
#pragma once

#include <string>
#include <vector>

namespace lk::cli {

// text as a JSON string literal, quotes included.
std::string JsonString(const std::string& text);

// ["a","b"]
std::string JsonStringArray(const std::vector<std::string>& items);

}  // namespace lk::cli
