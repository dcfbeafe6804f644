// SPDX-License-Identifier: MIT
// Stands for the programs that set two implementations side by side: pairs that take no time, whose names
// come in no order but that of registration.
#include "ratios.h"

int main(int argc, char **argv) {
  for (const char *picture :
       {"photo", "noise", "scan", "chart", "page", "sky", "map", "icon", "stamp", "line"}) {
    for (const char *side : {"/ours", "/theirs"}) {
      benchmark::RegisterBenchmark((std::string("PackBits/") + picture + side).c_str(),
                                   [](benchmark::State &state) {
                                     for (auto _ : state) benchmark::ClobberMemory();
                                     state.SetBytesProcessed(state.iterations());
                                   });
    }
  }
  return bench::runWithRatios(argc, argv);
}
