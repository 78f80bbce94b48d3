#include "files/open_path.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <ctime>

#include "core/image.h"
#include "core/model_quirks.h"
#include "core/profile.h"
#include "core/session.h"
#include "files/model_rules.h"
#include "files/project_file.h"
#include "files/readers.h"
#include "rolling/roll_settings.h"

namespace lk {
namespace {

using Reader = bool (*)(Host&, const Home&, ChipParams&, const std::filesystem::path&);

// The reader for the last three characters of the path, compared in upper case; null
// for any other ending (nothing is loaded, the checks still run).
Reader ReaderFor(const std::string& path) {
  if (path.size() < 3) return nullptr;
  std::string ending = path.substr(path.size() - 3);
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  if (ending == "QVM") return ReadQvmFile;
  if (ending == "HEX") return ReadHexFile;
  if (ending == "LKX") return ReadProjectFile;
  if (ending == "BIN") return ReadBinFile;
  if (ending == "SN8") return ReadSn8File;
  if (ending == "BCT") return ReadBctFile;
  if (ending == "FTC") return ReadFtcFile;
  return nullptr;
}

}  // namespace

std::string FileModifiedText(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return {};
  std::tm local{};
  const std::time_t when = st.st_mtime;
  if (::localtime_r(&when, &local) == nullptr) return {};
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &local);
  return buffer;
}

std::string FileTitleOf(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos) name.erase(dot);
  return name;
}

OpenResult DescribeImage(const Project& project) {
  const ChipParams& chip = project.Chip;
  OpenResult result;
  result.ChecksumText = ChecksumText(ProgramChecksum(chip));
  result.RefreshConfig = true;
  result.ShowEedata = chip.EeFlag == kEeFlagPresent && chip.EeSize >= 1;
  return result;
}

std::string OpenDialogFilter(const ChipParams& chip) {
  if (chip.Prod == "32A3") return "lkx(*.sn8,*.bct,*.lkx)|*.sn8;*.bct;*.lkx";
  if (OneOf(chip.Prod, {"30D1", "30D2", "30D3", "30D4"})) {
    return "lkx(*.ftc,*.bct,*.lkx)|*.ftc;*.bct;*.lkx";
  }
  return "lkx(*.bin,*.bct,*.lkx)|*.bin;*.bct;*.lkx";
}

OpenResult NewFile(Project& project) {
  ChipParams& chip = project.Chip;
  std::fill(chip.RomWords.begin(), chip.RomWords.end(), chip.HexMcu);
  project.DocCaption = "New File";
  if (ClearsBit8(chip.Name)) ClearBit8(chip);
  return DescribeImage(project);
}

OpenResult OpenPath(Host& host, const Home& home, Project& project, std::string path) {
  // A folder is no file; anything else that exists (a FIFO, a device) goes on to its
  // reader, which refuses what is not a regular file without blocking on it.
  std::error_code ec;
  const auto type = path.empty() ? std::filesystem::file_type::not_found
                                 : std::filesystem::status(path, ec).type();
  if (type == std::filesystem::file_type::not_found ||
      type == std::filesystem::file_type::none ||
      type == std::filesystem::file_type::directory) {
    ShowFileMessage(host, 1, path);
    return {};
  }

  const std::string modified = "File Modify:" + FileModifiedText(path);
  project.FileTitle = FileTitleOf(path);
  project.ProjectPath = path;
  project.DocCaption = path;
  host.Status(3, modified);

  // A refused or wiped file stays in the list: it was opened.
  PushRecentFile(project.RecentFiles, path);
  WriteRecentFiles(host, home, project.RecentFiles);

  bool loaded = false;
  if (Reader reader = ReaderFor(path)) {
    if (!reader(host, home, project.Chip, path)) {
      host.Message(Icon::Information, "Open File Error!", kAppTitle);
      OpenResult refused;
      refused.FileModifyStatus = modified;
      return refused;
    }
    loaded = true;
  }

  const bool wiped = CheckReservedAddresses(host, project);
  OpenResult result = DescribeImage(project);
  result.Opened = true;
  result.ImageLoaded = loaded;
  result.ReservedWiped = wiped;
  result.FileModifyStatus = modified;
  host.Status(2, result.ChecksumText);

  result.RollSettingsPath = RollSettingsPath(project.ProjectPath);
  if (std::filesystem::is_regular_file(result.RollSettingsPath, ec)) {
    result.ShowRollDialog = true;
  } else {
    result.RollingStatus = "Rolling Code:Disable";
    host.Status(1, result.RollingStatus);
  }
  return result;
}

}  // namespace lk
