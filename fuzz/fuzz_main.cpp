// One libFuzzer program per target: LK_FUZZ_TARGET names it (see fuzz_targets.cpp).
#include <cstdio>
#include <cstdlib>

#include "fuzz/fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const lk::fuzz::FuzzTarget* target = [] {
    const auto* t = lk::fuzz::FindFuzzTarget(LK_FUZZ_TARGET);
    if (t == nullptr) {
      std::fprintf(stderr, "unknown fuzz target %s\n", LK_FUZZ_TARGET);
      std::abort();
    }
    return t;
  }();
  target->run(data, size);  // whether the file was taken does not matter here
  return 0;
}
