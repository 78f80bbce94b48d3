#include "prod/sha256.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace lk::prod {

std::string Sha256Hex(std::string_view bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1) {
    throw std::runtime_error("SHA-256 failed in libcrypto");
  }
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  out.reserve(length * 2);
  for (unsigned int i = 0; i < length; ++i) {
    out += kHex[digest[i] >> 4];
    out += kHex[digest[i] & 0xF];
  }
  return out;
}

std::string WordsSha256Hex(const std::vector<std::int32_t>& words) {
  std::string bytes;
  bytes.reserve(words.size() * 2);
  for (const std::int32_t w : words) {
    bytes += static_cast<char>(w & 0xFF);
    bytes += static_cast<char>((w >> 8) & 0xFF);
  }
  return Sha256Hex(bytes);
}

}  // namespace lk::prod
