// Configuration word definitions, cfg/<model>.cfg: one section per option, named as
// the option is shown. The first line is "LENTH=n". With n = 1 the option is a choice
// and every further line is "label=w,b,v:w,b,v..." (word index, bit, bit value); with
// any other n it is a numeric field whose "DAT=w,b:w,b..." lists its bits from the
// least significant up. All numbers are decimal.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/chip_params.h"
#include "core/home.h"
#include "core/host.h"
#include "core/profile.h"

namespace lk {

struct ConfigOptionRow {
  std::string Option;  // section name
  std::string Value;   // current choice label, or the field in binary (MSB first)
};

// The configuration display of `words` under the definitions in `file`: one row per
// option in file order. A section with fewer than two data lines ends the list; a
// missing file shows the not-found message and gives no rows.
std::vector<ConfigOptionRow> DecodeConfigOptions(Host& host, const std::filesystem::path& file,
                                                 const std::vector<std::int32_t>& words);

// One option of a definition file, as the configuration dialog lists it.
struct ConfigOption {
  std::string Name;                 // the section name, as the display shows it
  ProfileList Lines;                // its lines as GetSectionLines gives them (entry 1: "LENTH=n")
  bool Choice = false;              // LENTH is 1: every further line is a choice
  std::vector<std::string> Labels;  // a choice option's labels, in file order
  // A numeric field's bit list ("DAT") and the texts the dialog shows for it.
  std::string Dat, FieldName, FieldLabel, Disp1, Disp2;  // "NAME", "LABEL", "DISP1", "DISP2"
};

// The options of `file` in the order and with the rules of DecodeConfigOptions (one entry
// per section header; a section with fewer than two data lines ends the list; a missing
// file shows the not-found message and gives none).
std::vector<ConfigOption> ReadConfigOptions(Host& host, const std::filesystem::path& file);

// An option's current value: its choice (CurrentChoice) or its bits (FieldBinary).
std::string OptionValue(const ConfigOption& option, const std::vector<std::int32_t>& words);

// The same for the chip's own definitions (cfg/<Name>.cfg) and configuration words.
std::vector<ConfigOptionRow> ShowConfigOptions(Host& host, const Home& home,
                                               const ChipParams& chip);

// The current choice of a choice option; `lines` is GetSectionLines of the option
// (entry 0 empty, entry 1 the LENTH line). The last matching line wins; "" when none
// matches. A line with numbers that do not parse never matches.
std::string CurrentChoice(const ProfileList& lines, const std::vector<std::int32_t>& words);

// A numeric field's value in binary, most significant bit first, from the item list of
// its "DAT" line. "" when the list does not parse.
std::string FieldBinary(const std::string& datItems, const std::vector<std::int32_t>& words);

// Applies a choice's item list to the words: value 1 sets the bit, any other value
// clears it; other bits are left alone. An item list that does not parse (or names a
// word the chip lacks) changes nothing and gives false.
bool ApplyChoiceItems(const std::string& items, std::vector<std::int32_t>& words);

// Writes a numeric field's value, typed as FieldBinary shows it (binary digits, most
// significant first), into the field's bits; other bits are left alone. Fewer digits
// than the field has bits are the low bits (leading zeros implied). An empty text, a
// character other than 0 and 1, more digits than the field has, or an item list that
// does not parse change nothing and give false.
bool ApplyFieldBinary(const std::string& datItems, const std::string& binary,
                      std::vector<std::int32_t>& words);

// Looks up the choice `label` of `option` in `file` and applies it (see above).
bool ApplyConfigChoice(Host& host, const std::filesystem::path& file, const std::string& option,
                       const std::string& label, std::vector<std::int32_t>& words);

}  // namespace lk
