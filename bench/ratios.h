// SPDX-License-Identifier: MIT
// A main for benches that compare two programs: every measurement named "group/case/ours" is set
// beside "group/case/theirs", with runs of both in turn, and the ratio of their medians is printed.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace bench {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.aggregate_name != "median") continue;
      const auto speed = run.counters.find("bytes_per_second");
      if (speed == run.counters.end()) continue;
      const std::string name = run.run_name.function_name;
      order_[run.family_index] = name;
      medians_[name] = speed->second.value / 1e6;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // The pairs in the order in which they were registered; nothing when none were run, or only listed.
  void printRatios() const {
    if (order_.empty()) return;
    std::printf("\n%-32s %12s %12s %8s\n", "", "ours MB/s", "theirs MB/s", "ratio");
    for (const auto &[index, name] : order_) {
      const size_t slash = name.rfind("/ours");
      if (slash == std::string::npos || slash + 5 != name.size()) continue;
      const std::string pair = name.substr(0, slash);
      const auto theirs = medians_.find(pair + "/theirs");
      if (theirs == medians_.end()) continue;
      const double ours = medians_.at(name);
      std::printf("%-32s %12.0f %12.0f %8.2f\n", pair.c_str(), ours, theirs->second, ours / theirs->second);
    }
  }

 private:
  std::map<int64_t, std::string> order_;  // by when it was registered: they end in a random order
  std::map<std::string, double> medians_;
};

// Runs what was registered: seven repetitions each, all of them in turn, unless the arguments say more.
inline int runWithRatios(int argc, char **argv) {
  std::string defaults[] = {"--benchmark_repetitions=7", "--benchmark_enable_random_interleaving=true",
                            "--benchmark_report_aggregates_only=true", "--benchmark_min_time=0.1"};
  std::vector<char *> arguments{argv[0]};
  for (std::string &text : defaults) arguments.push_back(text.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios();
  benchmark::Shutdown();
  return 0;
}

}  // namespace bench
