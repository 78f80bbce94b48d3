// chips, chip [MODEL], options [FILE]: the chip database and the configuration display
// from a shell.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/json.h"
#include "core/chip_database.h"
#include "core/config_defs.h"
#include "core/numeric_text.h"
#include "files/open_path.h"

namespace lk::cli {
namespace {

// A field of the record: its name, its text and whether JSON shows it as a number.
struct Field {
  std::string name;
  std::string text;
  bool number;
};

// Every field of ChipParams in declared order. The program and EEDATA arrays are left
// out (`show` prints the image); the configuration words follow as "ConfigWords".
std::vector<Field> ChipFields(const ChipParams& c) {
  const auto num = [](auto v) { return std::to_string(static_cast<long long>(v)); };
  std::string pins;
  for (std::size_t i = 0; i < c.ProPin.size(); ++i) {
    if (i > 0) pins += ",";
    pins += std::to_string(c.ProPin[i]);
  }
  return {
      {"Name", c.Name, false},
      {"Type", num(c.Type), true},
      {"Prod", c.Prod, false},
      {"Arch", c.Arch, false},
      {"Crafts", c.Crafts, false},
      {"RomSize", num(c.RomSize), true},
      {"ConfigLength", num(c.ConfigLength), true},
      {"EeSize", num(c.EeSize), true},
      {"EeFlag", num(c.EeFlag), true},
      {"HexMcu", num(c.HexMcu), true},
      {"Ins", num(c.Ins), true},
      {"Fst", num(c.Fst), true},
      {"VppMode", num(c.VppMode), true},
      {"VppProg", FloatText(c.VppProg), true},
      {"VppErase", FloatText(c.VppErase), true},
      {"VppRead", FloatText(c.VppRead), true},
      {"VppKeep", FloatText(c.VppKeep), true},
      {"VppSel", num(c.VppSel), true},
      {"Erase0", num(c.Erase0), true},
      {"Erase1", num(c.Erase1), true},
      {"EraseRom", num(c.EraseRom), true},
      {"EraseConfig", num(c.EraseConfig), true},
      {"ProgTime", num(c.ProgTime), true},
      {"SpcAdd", num(c.SpcAdd), true},
      {"SpcDat", num(c.SpcDat), true},
      {"ProPin", pins, false},
      {"ChipInfo1", c.ChipInfo1, false},
      {"ChipInfo2", c.ChipInfo2, false},
      {"BlankRom", num(c.BlankRom), true},
      {"BlankConfig", num(c.BlankConfig), true},
  };
}

void PrintChip(const ChipParams& chip, bool json) {
  if (!json) {
    for (const Field& f : ChipFields(chip)) std::cout << f.name << "=" << f.text << "\n";
    std::cout << "ConfigWords=" << ConfigWordsText(chip) << std::endl;
    return;
  }
  Json out = Json::object();
  for (const Field& f : ChipFields(chip)) {
    // Numbers as they are written (12.5, 100, -257), not as text.
    out[f.name] = !f.number ? Json(f.text)
                  : f.text.find('.') != std::string::npos ? Json(std::stod(f.text))
                                                          : Json(std::stoll(f.text));
  }
  Json& words = out["ConfigWords"] = Json::array();
  for (const std::int32_t w : chip.ConfigWords) words.push_back(Hex4(w));
  std::cout << JsonLine(out) << std::endl;
}

int RunChips(CliContext& ctx) {
  CliHost& host = ctx.Ui();
  const int before = host.MessageCount();
  const std::vector<std::string> models = ListModels(host, ctx.ProgramHome());
  if (host.MessageCount() != before) return kExitUsage;  // no database
  if (ctx.Options().json) {
    std::cout << JsonLine(Json(models)) << std::endl;
  } else {
    for (const std::string& m : models) std::cout << m << "\n";
    std::cout.flush();
  }
  return kExitOk;
}

int RunChip(CliContext& ctx, const std::string& model) {
  if (model.empty()) {
    if (ctx.RefuseChipOption()) return kExitUsage;
    const ChipParams& chip = ctx.CurrentProject().Chip;
    if (!chip.Loaded()) {
      std::cerr << "error: no chip model could be loaded from "
                << ctx.ProgramHome().QvmcIni().string() << std::endl;
      return kExitUsage;
    }
    PrintChip(chip, ctx.Options().json);
    return kExitOk;
  }
  const ChipParams chip = LoadChipParams(ctx.Ui(), ctx.ProgramHome(), model);
  if (!chip.Loaded()) {
    std::cerr << "error: unknown chip model " << model << std::endl;
    return kExitUsage;
  }
  PrintChip(chip, ctx.Options().json);
  return kExitOk;
}

int RunOptions(CliContext& ctx, const std::string& file) {
  CliHost& host = ctx.Ui();
  if (ctx.RefuseChipOption()) return kExitUsage;
  Project& project = ctx.CurrentProject();
  if (!project.Chip.Loaded()) {
    std::cerr << "error: no chip model could be loaded" << std::endl;
    return kExitUsage;
  }
  if (!file.empty()) {
    const OpenResult opened = OpenPath(host, ctx.ProgramHome(), project, file);
    if (!opened.Opened) return kExitUsage;
  }
  std::error_code ec;
  const bool haveDefinitions =
      std::filesystem::exists(ctx.ProgramHome().ConfigDefinitions(project.Chip.Name), ec);
  const std::vector<ConfigOptionRow> rows =
      ShowConfigOptions(host, ctx.ProgramHome(), project.Chip);
  if (ctx.Options().json) {
    Json out = Json::array();
    for (const ConfigOptionRow& row : rows) out.push_back({{"option", row.Option}, {"value", row.Value}});
    std::cout << JsonLine(out) << std::endl;
  } else {
    for (const ConfigOptionRow& row : rows) std::cout << row.Option << "=" << row.Value << "\n";
    std::cout.flush();
  }
  return haveDefinitions ? kExitOk : kExitUsage;
}

}  // namespace

std::string ConfigWordsText(const ChipParams& chip) {
  std::string words;
  for (std::size_t i = 0; i < chip.ConfigWords.size(); ++i) {
    if (i > 0) words += ' ';
    words += Hex4(chip.ConfigWords[i]);
  }
  return words;
}

void AddCoreCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  CLI::App* chips = app.add_subcommand("chips", "list the chip models in [MCULIST] order");
  chips->callback([&context, &exitCode] { exitCode = RunChips(*context); });

  auto model = std::make_shared<std::string>();
  CLI::App* chip = app.add_subcommand("chip", "print a chip record (default: the selected chip)");
  chip->add_option("MODEL", *model, "chip model");
  chip->callback([&context, &exitCode, model] { exitCode = RunChip(*context, *model); });

  auto file = std::make_shared<std::string>();
  CLI::App* options =
      app.add_subcommand("options", "print the configuration display of the selected chip");
  options->add_option("FILE", *file, "open FILE first, as the GUI's open dispatcher does");
  options->callback([&context, &exitCode, file] { exitCode = RunOptions(*context, *file); });
}

}  // namespace lk::cli
