#include "ops/documents.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace lk::ops {

std::vector<std::string> DocumentFiles(const Home& home) {
  std::vector<std::string> names;
  std::error_code ec;
  for (std::filesystem::directory_iterator it(home.DocFolder(), ec), end; !ec && it != end;
       it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (name.empty() || name[0] == '.' || !it->is_regular_file(ec)) continue;
    if (name.size() < 4) continue;
    std::string ending = name.substr(name.size() - 4);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (ending == ".pdf") names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string DocumentOpenFailureText(const std::string& name, DocumentOpen result) {
  if (result == DocumentOpen::Opened) return "";
  std::string text = "打开文件\"" + name + "\"失败!\r\n";
  if (result == DocumentOpen::NotFound) text += "文件不存在或者文件路径错误!";
  if (result == DocumentOpen::NoProgram) text += "系统未安装 Adobe PDF Reader!";
  return text;
}

}  // namespace lk::ops
