// Home: the program folder and the paths of the data files beside the program.
//
// The program folder holds the data the program reads (dat/qvmc.ini, dat/cfg.ini, cfg/,
// doc/) and the session files it writes (dat/frm.dat, dat/data.dat). Installed, the
// executable's own folder holds no dat/ and the installed copy under share/ is read-only,
// so the program folder is then a per-user folder seeded from that copy.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/host.h"

namespace lk {

class Home {
 public:
  explicit Home(std::filesystem::path root) : root_(root), sessionRoot_(std::move(root)) {}
  // Data read from one folder, session files kept in another: the fallback when the
  // per-user folder cannot hold a complete copy of the data.
  Home(std::filesystem::path dataRoot, std::filesystem::path sessionRoot)
      : root_(std::move(dataRoot)), sessionRoot_(std::move(sessionRoot)) {}

  // The folders the program folder is chosen from.
  struct Places {
    std::optional<std::string> option;   // --home DIR
    std::string environment;             // $LKWRITER_HOME
    std::filesystem::path executableDir; // the running program's folder
    std::filesystem::path installedCopy; // the installed read-only program folder
    std::filesystem::path userFolder;    // per-user folder; empty when no home is known
  };

  // The places of this process: the executable from /proc/self/exe, the installed copy
  // at LK_INSTALLED_DATA (relative to the executable's folder), the per-user folder
  // $XDG_DATA_HOME/lkwriter, else ~/.local/share/lkwriter.
  static Places CurrentPlaces(const std::optional<std::string>& option);

  // The program folder, first that applies: --home DIR; $LKWRITER_HOME; the executable's
  // folder when it holds dat/; else the per-user folder, first created and seeded from
  // the installed copy: files it lacks are copied, and a file that the installed copy has
  // since changed is replaced only while it still holds what was copied (a file that the
  // user or the program changed is never overwritten). A per-user folder that cannot be
  // created or stays incomplete is named in one message; the data is then read from the
  // installed copy and the session files that are missing take their defaults.
  static Home Resolve(Host& host, const Places& places);
  static Home Resolve(Host& host, const std::optional<std::string>& option) {
    return Resolve(host, CurrentPlaces(option));
  }

  const std::filesystem::path& Root() const { return root_; }
  const std::filesystem::path& SessionRoot() const { return sessionRoot_; }
  std::filesystem::path Dat(const std::string& name) const { return root_ / "dat" / name; }
  std::filesystem::path QvmcIni() const { return Dat("qvmc.ini"); }
  std::filesystem::path CfgIni() const { return Dat("cfg.ini"); }
  std::filesystem::path FrmDat() const { return sessionRoot_ / "dat" / "frm.dat"; }
  std::filesystem::path DataDat() const { return sessionRoot_ / "dat" / "data.dat"; }
  std::filesystem::path ConfigDefinitions(const std::string& model) const {
    return root_ / "cfg" / (model + ".cfg");
  }
  std::filesystem::path DocFolder() const { return root_ / "doc"; }

 private:
  std::filesystem::path root_;
  std::filesystem::path sessionRoot_;
};

}  // namespace lk
