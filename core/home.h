// Home: the program folder and the paths of the data files beside the program.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace lk {

class Home {
 public:
  explicit Home(std::filesystem::path root) : root_(std::move(root)) {}

  // --home DIR, else $LKWRITER_HOME, else the folder of the running executable.
  static Home Resolve(const std::optional<std::string>& option);

  const std::filesystem::path& Root() const { return root_; }
  std::filesystem::path Dat(const std::string& name) const { return root_ / "dat" / name; }
  std::filesystem::path QvmcIni() const { return Dat("qvmc.ini"); }
  std::filesystem::path CfgIni() const { return Dat("cfg.ini"); }
  std::filesystem::path FrmDat() const { return Dat("frm.dat"); }
  std::filesystem::path DataDat() const { return Dat("data.dat"); }
  std::filesystem::path ConfigDefinitions(const std::string& model) const {
    return root_ / "cfg" / (model + ".cfg");
  }
  std::filesystem::path DocFolder() const { return root_ / "doc"; }

 private:
  std::filesystem::path root_;
};

}  // namespace lk
