#include "sim/sim_bus.h"

#include "core/chip_database.h"
#include "sim/sim_state_file.h"
#include "sim/sim_writer.h"

namespace lk::sim {
namespace {

std::shared_ptr<SimWriter> Refuse(Host& host, const std::string& text) {
  host.Message(Icon::Critical, text, kAppTitle);
  return nullptr;
}

}  // namespace

std::shared_ptr<SimWriter> MakeSimWriter(Host& host, const Home& home, const SimConfig& config) {
  std::string error;
  std::optional<SimFault> fault = ParseFault(config.fault, error);
  if (!fault) return Refuse(host, error);

  SimState state;
  state.id = config.id;
  if (!config.stateFile.empty() &&
      LoadStateFile(config.stateFile, state, error) == StateFileResult::Refused) {
    return Refuse(host, error);
  }

  // A model other than the one the state holds means a fresh chip in the socket.
  if (!config.chipModel.empty() && (!state.chip || state.chip->name != config.chipModel)) {
    ChipParams params = LoadChipParams(host, home, config.chipModel);
    if (!params.Loaded()) {
      return Refuse(host, "The simulated writer cannot hold the chip \"" + config.chipModel +
                              "\": no such model in the chip database");
    }
    state.chip = SimChip::FromParams(params);
  }
  return std::make_shared<SimWriter>(host, config, *fault, std::move(state));
}

std::unique_ptr<WriterBus> MakeSimBus(Host& host, const Home& home, const SimConfig& config) {
  return MakeSimBusFor(MakeSimWriter(host, home, config));
}

}  // namespace lk::sim
