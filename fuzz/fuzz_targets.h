// The fuzz targets, shared by the libFuzzer programs (clang, sanitizers) and by the
// corpus replay test of the ordinary build, so that every seed and every input that
// once crashed is run again on each test run.
//
// Each target that reads a file writes its input to a file inside a temporary program
// folder (made once per process, with a small chip database, configuration rules and
// session file of its own) and drives one reader with a Host that does nothing. A target
// must never crash, leak or hang, whatever the bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/chip_params.h"
#include "core/home.h"

namespace lk::fuzz {

struct FuzzTarget {
  const char* name;    // also the folder of its seeds: fuzz/corpus/<name>/
  std::size_t maxLen;  // -max_len for libFuzzer: a little beyond the largest real file
  // Runs one input; true when the reader took it as a valid file of its kind (the
  // replay test checks that seeds named "ok-*" are taken and "bad-*" refused).
  bool (*run)(const std::uint8_t* data, std::size_t size);
};

const std::vector<FuzzTarget>& FuzzTargets();
const FuzzTarget* FindFuzzTarget(std::string_view name);

// The models the first input byte of the image targets chooses from (byte % count).
const std::vector<std::string>& FuzzModels();

// The temporary program folder and the records of its models (for making seeds).
const Home& FuzzHome();
const ChipParams& FuzzChip(const std::string& model);

// File endings the open_path target chooses from with its second byte.
const std::vector<std::string>& FuzzOpenEndings();

}  // namespace lk::fuzz
