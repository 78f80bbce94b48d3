// Writes the seed corpus of every fuzz target into DIR/<target>/ (fuzz/corpus in the
// repository). Seeds named "ok-*" are files their reader must take, "bad-*" files it
// must refuse; the replay test holds the corpus to that.
//
//   fuzz_make_seeds DIR
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/project.h"
#include "core/image.h"
#include "files/image_writers.h"
#include "files/open_path.h"
#include "files/project_file.h"
#include "fuzz/fuzz_targets.h"
#include "sim/sim_state_file.h"

namespace {

namespace fs = std::filesystem;
using lk::ChipParams;
using lk::fuzz::FuzzChip;

fs::path gRoot;

void Seed(const std::string& target, const std::string& name, const std::string& bytes) {
  const fs::path dir = gRoot / target;
  fs::create_directories(dir);
  std::ofstream(dir / name, std::ios::binary) << bytes;
}

// The selector byte the image targets read first.
std::string Model(const std::string& name) {
  const auto& models = lk::fuzz::FuzzModels();
  for (std::size_t i = 0; i < models.size(); ++i) {
    if (models[i] == name) return std::string(1, static_cast<char>(i));
  }
  std::fprintf(stderr, "no fuzz model %s\n", name.c_str());
  std::exit(1);
}

std::string Ending(const std::string& ending) {
  const auto& endings = lk::fuzz::FuzzOpenEndings();
  for (std::size_t i = 0; i < endings.size(); ++i) {
    if (endings[i] == ending) return std::string(1, static_cast<char>(i));
  }
  std::exit(1);
}

// A program with a recognisable pattern, within the chip's word width.
std::vector<std::int32_t> Program(const ChipParams& chip, std::size_t count = 0) {
  std::vector<std::int32_t> words(count ? count : chip.RomWords.size());
  for (std::size_t i = 0; i < words.size(); ++i) {
    words[i] = static_cast<std::int32_t>((i * 0x1235 + 7) & chip.HexMcu);
  }
  return words;
}

std::string ProjectBytes(const std::string& model, bool withEedata) {
  lk::Project project;
  project.Chip = FuzzChip(model);
  project.Chip.RomWords = Program(project.Chip);
  if (withEedata && project.Chip.EeSize >= 1) {
    project.Chip.EeFlag = lk::kEeFlagPresent;
    for (std::size_t i = 0; i < project.Chip.EeBytes.size(); ++i) {
      project.Chip.EeBytes[i] = static_cast<std::uint8_t>(i * 3);
    }
  }
  return lk::BuildProjectBytes(project.Chip, lk::HexText(project.Chip));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: fuzz_make_seeds DIR\n");
    return 2;
  }
  gRoot = argv[1];
  const ChipParams& tiny = FuzzChip("FUZZ8");

  // Intel HEX
  Seed("hex_file", "ok-tiny.hex", Model("FUZZ8") + lk::MakeIntelHex(Program(tiny)));
  Seed("hex_file", "ok-rotated.hex",
       Model("QVM50F96B") + lk::MakeIntelHex(Program(FuzzChip("QVM50F96B"), 64), 4));
  Seed("hex_file", "ok-odd-count.hex",
       Model("LK8F101E") + lk::MakeHexRecord(0, 0x0010, "\x01\x02\x03") +
           lk::MakeHexRecord(4, 0, std::string("\x00\x01", 2)) +
           lk::MakeHexRecord(0, 0xFFF0, "\x10\x20") + ":00000001FF\r\n");

  // BIN
  Seed("bin_file", "ok-tiny.bin", Model("FUZZ8") + lk::MakeBinImage(Program(tiny)));
  Seed("bin_file", "ok-51a1-short.bin",
       Model("LK8P51A1") + lk::MakeBinImage(Program(FuzzChip("LK8P51A1"), 1536)));
  Seed("bin_file", "bad-length.bin", Model("FUZZ8") + lk::MakeBinImage(Program(tiny, 63)));

  // QVM text
  Seed("qvm_file", "ok-75p89.qvm", Model("FUZZ8") + lk::MakeQvmText(1, FuzzChip("QVM75P89")));
  Seed("qvm_file", "ok-50p99.qvm", Model("FUZZ8") + lk::MakeQvmText(15, FuzzChip("QVM50P99")));
  Seed("qvm_file", "bad-model.qvm", Model("FUZZ8") + lk::MakeQvmText(99, tiny));

  // SN8, BCT, FTC
  Seed("sn8_file", "ok-32a3.sn8",
       Model("LK8P32A3") + lk::MakeSn8Image(Program(FuzzChip("LK8P32A3"))));
  Seed("sn8_file", "bad-length.sn8", Model("LK8P32A3") + lk::MakeSn8Image(Program(tiny)));
  const ChipParams& p86e = FuzzChip("LK3P86E");
  Seed("bct_file", "ok-1029.bct",
       Model("FUZZ8") + lk::MakeBctImage(1029, p86e.ConfigWords, Program(p86e)));
  Seed("bct_file", "bad-1031.bct",
       Model("FUZZ8") + lk::MakeBctImage(1031, p86e.ConfigWords, Program(p86e)));
  const ChipParams& d1 = FuzzChip("LK8F30D1");
  Seed("ftc_file", "ok-3ps86.ftc", Model("LK8F30D1") + lk::MakeFtcImage(Program(d1)));
  Seed("ftc_file", "bad-name.ftc", Model("LK8F30D1") + lk::MakeFtcImage(Program(d1), "DW3PX99"));

  // Project files
  Seed("project_file", "ok-tiny.lkx", Model("FUZZ8") + ProjectBytes("FUZZ8", true));
  Seed("project_file", "ok-eedata.lkx", Model("FUZZ8") + ProjectBytes("LK3P86E", true));
  Seed("project_file", "bad-short.lkx",
       Model("FUZZ8") + ProjectBytes("FUZZ8", false).substr(0, 300));

  // The open dispatcher, one file of each kind plus the reserved-word checks
  Seed("open_path", "ok-hex", Model("FUZZ8") + Ending("hex") + lk::MakeIntelHex(Program(tiny)));
  Seed("open_path", "ok-lkx", Model("FUZZ8") + Ending("Lkx") + ProjectBytes("FUZZ8", true));
  Seed("open_path", "ok-bin", Model("FUZZ8") + Ending("bin") + lk::MakeBinImage(Program(tiny)));
  Seed("open_path", "ok-reserved.hex",
       Model("LK8P34A4") + Ending("HEX") + lk::MakeHexRecord(0, 0x1FFE, "\x01\x00\x02\x00"));
  Seed("open_path", "bad-bct", Model("FUZZ8") + Ending("bct") + "short");

  // Profile text
  Seed("profile", "ok-sections.ini",
       "; comment\r\nTOP=1\r\n[A]\r\nKEY=5 ;note\r\n*SKIP=1\r\nX=a=b\r\nEMPTY=\r\n"
       "  [B]  \r\nNOEQUALS\r\n[ A ]\r\n[A]\r\nKEY=6\rLAST=1\n");
  Seed("profile", "ok-gbk.ini", "[\xD6\xD0\xCE\xC4]\r\n\xC3\xFB=\xD6\xB5\r\n");
  Seed("profile", "bad-empty.ini", "");

  // Configuration definitions (bytes 0-7: the four words)
  const std::string words("\xFF\x3F\xFF\x3F\x05\x00\x00\x00", 8);
  Seed("config_defs", "ok-options.cfg",
       words +
           "[FOSC]\r\nLENTH=1\r\nINTRC=0,0,1:0,1,1\r\nXT=0,0,0:0,1,1\r\n"
           "[WDT]\r\nLENTH=1\r\nOff=0,2,0\r\nOn=0,2,1\r\n"
           "[DIV]\r\nLENTH=3\r\nDAT=2,0:2,1:2,2\r\nNAME=Divider\r\n"
           "[LAST]\r\nLENTH=1\r\n");
  Seed("config_defs", "bad-empty.cfg", words);

  // Rolling-code settings
  Seed("roll_settings", "ok-current.ini",
       "[Rolling Code]\r\nAddress=0010 0011 0012 0013\r\nWorld_Lenth=4\r\nMode=False\r\n"
       "Count=1 3 5 7\r\nStep=1 1 1 1\r\nValue=True\r\n2262mode=1\r\nVersion=1.0\r\n");
  Seed("roll_settings", "ok-old.ini",
       "[Rolling Code]\r\nAddress=0x7FC\r\nWorld_Lenth=4\r\nCount=9 8 7 6\r\nValue=True\r\n");
  Seed("roll_settings", "bad-disabled.ini",
       "[Rolling Code]\r\nAddress=800 1 2\r\nWorld_Lenth=99999999999\r\nCount=255 -1\r\n"
       "Value=False\r\nVersion=1\r\n");
  // The simulated writer's state: a writer with the tiny chip in its socket and a
  // stored program, an empty socket, and two files that are no state.
  lk::sim::SimState state;
  state.chip = lk::sim::SimChip::FromParams(tiny);
  state.chip->program[3] = 0x1234;
  state.chip->programmed = true;
  state.store.program = {0x0001, 0x0002};
  state.store.paramBlock.assign(64, 0x5A);
  Seed("sim_state", "ok-chip.state", lk::sim::FormatState(state));
  state.chip.reset();
  Seed("sim_state", "ok-empty-socket.state", lk::sim::FormatState(state));
  Seed("sim_state", "bad-first-line.state", "LKWRITER-SIM-STATE 2\nid=00000000\n");
  const std::string text = lk::sim::FormatState(state);
  Seed("sim_state", "bad-twice.state", text + "store.sum=0000\n");

  // --sim-fault
  Seed("sim_fault", "ok-noanswer", "noanswer@1");
  Seed("sim_fault", "ok-busy", "busy");
  Seed("sim_fault", "ok-last", "badsum@1000000");
  Seed("sim_fault", "bad-beyond", "noanswer@99999999999");
  Seed("sim_fault", "bad-kind", "explode@3");
  return 0;
}
