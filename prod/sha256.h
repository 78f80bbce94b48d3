// SHA-256 through OpenSSL's libcrypto, as lower-case hex.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lk::prod {

std::string Sha256Hex(std::string_view bytes);

// The program words as the chip holds them: 16-bit little-endian, in address order.
std::string WordsSha256Hex(const std::vector<std::int32_t>& words);

}  // namespace lk::prod
