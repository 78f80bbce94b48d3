// The chip database dat/qvmc.ini: the model list and LoadChipParams.
#pragma once

#include <string>
#include <vector>

#include "core/chip_params.h"
#include "core/home.h"
#include "core/host.h"

namespace lk {

// The models of "[MCULIST]" in file order (no leading empty entry). A missing
// database shows the not-found message and gives an empty list.
std::vector<std::string> ListModels(Host& host, const Home& home);

// Loads one model's record with blank arrays and the configuration defaults.
// Unknown models, models without a section and a missing database give the empty
// record (empty Name) without a message. A value that would overflow its field, or
// sizes the writer cannot address, refuse the model with a message and give the
// empty record.
ChipParams LoadChipParams(Host& host, const Home& home, const std::string& model);

}  // namespace lk
