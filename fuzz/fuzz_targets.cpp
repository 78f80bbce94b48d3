#include "fuzz/fuzz_targets.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>

#include "core/chip_database.h"
#include "core/config_defs.h"
#include "core/profile.h"
#include "core/project.h"
#include "core/quiet_host.h"
#include "files/open_path.h"
#include "files/project_file.h"
#include "files/readers.h"
#include "rolling/roll_code.h"
#include "rolling/roll_settings.h"
#include "sim/sim_fault.h"
#include "sim/sim_state_file.h"

namespace lk::fuzz {
namespace {

namespace fs = std::filesystem;

struct ModelLine {
  const char *name, *type, *prod, *arch, *crafts, *romSize, *configLength, *eeSize, *hexMcu;
};

// A few models of every kind the readers treat specially: rotated and reserved-word
// models, the BCT model codes, the SN8/FTC/51A1/101E product codes, QVM model numbers
// and aliases, plus one tiny chip so that exact-size formats are easy to hit.
constexpr ModelLine kModels[] = {
    {"FUZZ8", "5A00", "F008", "RISC14", "OTP", "3F", "3", "F", "3FFF"},
    {"QVM50F96B", "5102", "96B0", "RISC16", "FLASH", "FFF", "1", "FF", "FFFF"},
    {"QVM50P99", "510B", "5099", "RISC14", "OTP", "7FF", "1", "", "3FFF"},
    {"QVM75P89", "5111", "7589", "RISC14", "OTP", "7FF", "1", "", "3FFF"},
    {"QVM50F775", "5106", "7750", "RISC14", "FLASH", "7FF", "1", "", "3FFF"},
    {"QVM50F5759", "5109", "5759", "RISC14", "FLASH", "7FF", "1", "", "3FFF"},
    {"LK3P86E", "5122", "386E", "RISC14", "OTP", "7FF", "1", "7F", "3FFF"},
    {"LK3PS89", "5120", "3189", "RISC14", "OTP", "FFF", "1", "", "3FFF"},
    {"LK8P32A3", "5126", "32A3", "RISC16", "OTP", "3FF", "1", "", "FFFF"},
    {"LK8F30D1", "5127", "30D1", "RISC14", "FLASH", "7FF", "2", "", "3FFF"},
    {"LK8P51A1", "512F", "51A1", "RISC14", "OTP", "7FF", "0", "", "3FFF"},
    {"LK8F101E", "512D", "101E", "RISC14", "FLASH", "7FF", "1", "", "3FFF"},
    {"LK467", "5125", "LK467", "RISC14", "OTP", "7FF", "0", "", "3FFF"},
    {"LK8P34A4", "512C", "34A4", "RISC14", "OTP", "FFF", "1", "", "3FFF"},
};

std::string ChipDatabaseText() {
  std::string text = "; fuzzing chip database\r\n[MCULIST]\r\n";
  for (const auto& m : kModels) text += std::string(m.name) + "=1\r\n";
  for (const auto& m : kModels) {
    text += std::string("\r\n[") + m.name + "]\r\nTYPE=" + m.type + "\r\nPROD=" + m.prod +
            "\r\nARCH=" + m.arch + "\r\nCRAFTS=" + m.crafts + "\r\nROMSIZE=" + m.romSize +
            "\r\nCONFIGLENTH=" + m.configLength + "\r\n";
    if (*m.eeSize) text += std::string("EEDATA=") + m.eeSize + "\r\n";
    text += std::string("HEXMCU=") + m.hexMcu +
            "\r\nINS=14\r\nFST=20\r\nVPPMODE=1\r\nVPPPROG=12.5\r\nVPPERASE=0\r\n"
            "VPPREAD=5\r\nVPPKEEP=6.5\r\nVPPSEL=0001\r\nERASE0=0\r\nERASE1=0\r\n"
            "ERASEROM=0\r\nERASECONFIG=0\r\nPROGTIME=100\r\nSPCADD=0\r\nSPCDAT=0\r\n"
            "PROPIN=1,4,5,8\r\nBLANKROM=" +
            m.hexMcu + "\r\nBLANKCONFIG=3FFF\r\n";
  }
  return text;
}

void WriteText(const fs::path& path, std::string_view bytes) {
  std::error_code ec;
  if (!fs::is_directory(path.parent_path(), ec)) fs::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Saves are fsync'ed; on a RAM file system that costs nothing, so the targets run
// many times faster there.
fs::path TempBase() {
  if (const char* base = std::getenv("LK_FUZZ_TMP"); base && *base) return base;
  std::error_code ec;
  if (fs::is_directory("/dev/shm", ec) && ::access("/dev/shm", W_OK) == 0) return "/dev/shm";
  return fs::temp_directory_path();
}

// The temporary program folder, made on first use and removed at exit.
class Environment {
 public:
  Environment() {
    std::string tmpl = (TempBase() / "lkfuzz-XXXXXX").string();
    if (::mkdtemp(tmpl.data()) == nullptr) std::abort();
    root_ = tmpl;
    home_ = std::make_unique<Home>(root_);
    WriteText(home_->QvmcIni(), ChipDatabaseText());
    WriteText(home_->CfgIni(), "[QVM50P99]\r\nW0==3FFF\r\nW0&=3FF7\r\n[5099]\r\nW1&=3FFE\r\n");
    WriteText(home_->DataDat(), "[Data]\r\nMCUTYPE=FUZZ8\r\n[RecentFile]\r\nFile0=\r\n");
    QuietHost host;
    for (const auto& m : kModels) {
      chips_[m.name] = LoadChipParams(host, *home_, m.name);
      if (!chips_[m.name].Loaded()) {
        std::fprintf(stderr, "fuzz environment: model %s did not load\n", m.name);
        std::abort();
      }
    }
  }
  ~Environment() {
    std::error_code ec;
    fs::remove_all(root_, ec);
  }

  const Home& home() const { return *home_; }
  fs::path Work(const std::string& name) const { return root_ / "work" / name; }
  const ChipParams& Chip(const std::string& model) const { return chips_.at(model); }

 private:
  fs::path root_;
  std::unique_ptr<Home> home_;
  std::map<std::string, ChipParams> chips_;
};

Environment& Env() {
  static Environment env;
  return env;
}

std::string_view Bytes(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

const std::string& ModelFor(std::uint8_t selector) {
  const auto& models = FuzzModels();
  return models[selector % models.size()];
}

using Reader = bool (*)(Host&, const Home&, ChipParams&, const fs::path&);

// Byte 0 chooses the selected model, the rest is the file.
template <Reader read>
bool RunReader(const char* ending, const std::uint8_t* data, std::size_t size) {
  if (size < 1) return false;
  Environment& env = Env();
  const fs::path path = env.Work(std::string("input.") + ending);
  WriteText(path, Bytes(data + 1, size - 1));
  QuietHost host;
  ChipParams chip = env.Chip(ModelFor(data[0]));
  return read(host, env.home(), chip, path);
}

bool HexFile(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadHexFile>("hex", d, n);
}
bool BinFile(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadBinFile>("bin", d, n);
}
bool QvmFile(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadQvmFile>("qvm", d, n);
}
bool Sn8File(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadSn8File>("sn8", d, n);
}
bool BctFile(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadBctFile>("bct", d, n);
}
bool FtcFile(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadFtcFile>("ftc", d, n);
}
bool ProjectFile(const std::uint8_t* d, std::size_t n) {
  return RunReader<ReadProjectFile>("lkx", d, n);
}

// Byte 0 chooses the model, byte 1 the file ending, the rest is the file; the whole
// dispatcher runs (reader, reserved-word checks, hex text, checksum, recent files).
bool OpenPathTarget(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return false;
  Environment& env = Env();
  const auto& endings = FuzzOpenEndings();
  const fs::path path = env.Work("input." + endings[data[1] % endings.size()]);
  WriteText(path, Bytes(data + 2, size - 2));
  QuietHost host;
  Project project;
  project.Chip = env.Chip(ModelFor(data[0]));
  const OpenResult result = OpenPath(host, env.home(), project, path.string());
  std::error_code ec;
  fs::remove(path, ec);  // the next ending must not find this one's file
  return result.Opened && result.ImageLoaded;
}

// Every reader of the profile format, then a write into the same file.
bool Profile(const std::uint8_t* data, std::size_t size) {
  Environment& env = Env();
  const fs::path path = env.Work("profile.ini");
  WriteText(path, Bytes(data, size));
  QuietHost host;
  const ProfileList sections = GetSections(host, path);
  std::string lastKey = "KEY";
  for (std::size_t i = 1; i < sections.size() && i <= 4; ++i) {
    GetSectionLines(host, path, sections[i]);
    const ProfileList keys = GetSectionKeys(host, path, sections[i]);
    for (std::size_t k = 1; k < keys.size() && k <= 4; ++k) {
      GetValue(host, path, sections[i], keys[k]);
      lastKey = keys[k];
    }
  }
  const std::string section = sections.size() > 1 ? sections[1] : "Section";
  WriteValue(host, path, section, lastKey, "value");
  WriteValue(host, path, "New Section", "NewKey", "1");
  GetValue(host, path, section, lastKey);
  return sections.size() > 1;
}

// Bytes 0-7 are the four configuration words (low byte first), the rest the
// definition file.
bool ConfigDefs(const std::uint8_t* data, std::size_t size) {
  if (size < 8) return false;
  Environment& env = Env();
  std::vector<std::int32_t> words(4);
  for (std::size_t i = 0; i < 4; ++i) words[i] = data[2 * i] | (data[2 * i + 1] << 8);
  const fs::path path = env.home().ConfigDefinitions("FUZZ8");
  WriteText(path, Bytes(data + 8, size - 8));
  QuietHost host;
  const auto rows = DecodeConfigOptions(host, path, words);
  std::size_t applied = 0;
  for (const auto& row : rows) {
    if (applied++ == 4) break;
    const ProfileList lines = GetSectionLines(host, path, row.Option);
    CurrentChoice(lines, words);
    for (std::size_t i = 2; i < lines.size() && i < 6; ++i) {
      const std::string label = lines[i].substr(0, lines[i].find('='));
      ApplyConfigChoice(host, path, row.Option, label, words);
    }
    ApplyChoiceItems(row.Value, words);
    FieldBinary(row.Value, words);
  }
  ChipParams chip = env.Chip("FUZZ8");
  chip.ConfigWords = words;
  ShowConfigOptions(host, env.home(), chip);
  return !rows.empty();
}

// The settings file: read, shown in the dialog, saved back through OK, placed into a
// program and advanced.
bool RollSettingsTarget(const std::uint8_t* data, std::size_t size) {
  Environment& env = Env();
  const fs::path path = env.Work("board.ini");
  WriteText(path, Bytes(data, size));
  QuietHost host;
  const RollSettings settings = ReadRollSettings(host, path);
  std::vector<std::int32_t> words(0x800, 0x3FFF);
  PlaceRollCode(settings, words);
  const RollDialogInput input = LoadRollDialog(host, path);
  for (char key : input.Address) AcceptAddressKey(input.Address, key);
  const bool saved = ApplyRollDialog(host, input, path) == RollOkResult::Saved;
  AdvanceRollCode(host, true, path);
  ReadRollSettings(host, path);
  return saved && input.Enable;
}

// The simulated writer's state file, read through its loader; a state it takes must come
// back unchanged from its own text, or the next run would see another writer.
bool SimStateTarget(const std::uint8_t* data, std::size_t size) {
  Environment& env = Env();
  const fs::path path = env.Work("writer.state");
  WriteText(path, Bytes(data, size));
  sim::SimState state;
  std::string error;
  if (sim::LoadStateFile(path, state, error) != sim::StateFileResult::Loaded) {
    if (error.empty()) std::abort();  // every refusal says why
    return false;
  }
  const std::optional<sim::SimState> again = sim::ParseState(sim::FormatState(state), error);
  if (!again || !(*again == state)) std::abort();
  return true;
}

// The text of --sim-fault: taken with N in range, or refused with a reason.
bool SimFaultTarget(const std::uint8_t* data, std::size_t size) {
  std::string error;
  const std::optional<sim::SimFault> fault = sim::ParseFault(std::string(Bytes(data, size)), error);
  if (!fault) {
    if (error.empty()) std::abort();
    return false;
  }
  if (fault->kind == sim::FaultKind::None) return false;
  if (fault->packet < 1 || fault->packet > sim::kMaxFaultPacket) std::abort();
  return true;
}

}  // namespace

const std::vector<std::string>& FuzzModels() {
  static const std::vector<std::string> models = [] {
    std::vector<std::string> names;
    for (const auto& m : kModels) names.emplace_back(m.name);
    return names;
  }();
  return models;
}

const Home& FuzzHome() {
  return Env().home();
}
const ChipParams& FuzzChip(const std::string& model) {
  return Env().Chip(model);
}

const std::vector<std::string>& FuzzOpenEndings() {
  static const std::vector<std::string> endings = {"hex", "bin", "qvm", "sn8", "bct",
                                                   "ftc", "lkx", "txt", "HEX", "Lkx"};
  return endings;
}

const std::vector<FuzzTarget>& FuzzTargets() {
  static const std::vector<FuzzTarget> targets = {
      {"hex_file", 64 * 1024, HexFile},
      {"bin_file", 12 * 1024, BinFile},
      {"qvm_file", 64 * 1024, QvmFile},
      {"sn8_file", 12 * 1024, Sn8File},
      {"bct_file", 12 * 1024, BctFile},
      {"ftc_file", 12 * 1024, FtcFile},
      {"project_file", 12 * 1024, ProjectFile},
      {"open_path", 12 * 1024, OpenPathTarget},
      {"profile", 4 * 1024, Profile},
      {"config_defs", 4 * 1024, ConfigDefs},
      {"roll_settings", 2 * 1024, RollSettingsTarget},
      {"sim_state", 64 * 1024, SimStateTarget},
      {"sim_fault", 64, SimFaultTarget},
  };
  return targets;
}

const FuzzTarget* FindFuzzTarget(std::string_view name) {
  for (const auto& t : FuzzTargets()) {
    if (name == t.name) return &t;
  }
  return nullptr;
}

}  // namespace lk::fuzz
