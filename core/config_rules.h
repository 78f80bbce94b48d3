// Configuration rules: the default configuration words of a chip (dat/cfg.ini plus a
// few fixed cases in code), and the combination check of the configuration dialog.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/chip_params.h"
#include "core/home.h"
#include "core/host.h"

namespace lk {

// Adjusts configuration words (each preset to HexMcu by the caller) to the defaults of
// the model `name` with product code `prod`: first the entries of dat/cfg.ini whose
// section names the model or the product code (grammar at the top of that file), then
// the fixed cases for the product codes "30D1" and "2023". A missing dat/cfg.ini means
// no file rules (no message: it is not a profile file the user edits).
std::vector<std::int32_t> ApplyConfigRules(Host& host, const Home& home, const std::string& name,
                                           const std::string& prod,
                                           std::vector<std::int32_t> words);

// The configuration dialog's default words for `chip`: every word HexMcu, then the rules.
// The bit clearing that LoadChipParams adds for three models is deliberately not made.
std::vector<std::int32_t> DefaultConfigWords(Host& host, const Home& home, const ChipParams& chip);

// The check that OK of the configuration dialog runs before it accepts the words of
// `chip`: for LK3PW89 and LK3PS89 (2.8V) and LK3P7674 (2.6V), "CONFIG OSCD" set to
// "2 oscillator periods" requires that voltage in "CONFIG LVDT". Shows the refusal and
// returns false; other models always pass.
bool CheckConfigCombination(Host& host, const Home& home, const ChipParams& chip);

}  // namespace lk
