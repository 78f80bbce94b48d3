#include "core/home.h"

#include <cstdlib>
#include <system_error>

namespace lk {

Home Home::Resolve(const std::optional<std::string>& option) {
  if (option && !option->empty()) return Home(*option);
  if (const char* env = std::getenv("LKWRITER_HOME"); env != nullptr && *env != '\0') {
    return Home(env);
  }
  std::error_code ec;
  std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (!ec) return Home(exe.parent_path());
  return Home(std::filesystem::current_path(ec));
}

}  // namespace lk
