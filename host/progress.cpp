#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "report.h"
#include "stop.h"

namespace host {
namespace {

constexpr auto kQuietTime = std::chrono::milliseconds(200);  // short jobs show nothing
constexpr auto kStep = std::chrono::milliseconds(100);

double seconds(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double>(d).count();
}

}  // namespace

Progress::Progress(const std::string &name, bool wanted)
    : name_(printable(name)), shown_(wanted && isatty(2) == 1), start_(Clock::now()), last_(start_) {}

Progress::~Progress() {
  clear();
}

void Progress::print(const std::string &text) {
  std::fprintf(stderr, "\r\033[K%s  %s", name_.c_str(), text.c_str());
  std::fflush(stderr);
  lineThere_ = true;
  stop::setLineShown(true);
}

void Progress::stage(const char *what) {
  if (shown_ && Clock::now() - start_ > kQuietTime) print(what);
}

void Progress::expect(uint64_t writes) {
  expected_ = std::max<uint64_t>(writes, 1);
  done_ = 0;
}

void Progress::update(uint64_t size) {
  ++done_;
  const Clock::time_point now = Clock::now();
  if (now - last_ < kStep || now - start_ < kQuietTime) return;
  last_ = now;
  const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(expected_));
  const double passed = seconds(now - start_), left = passed * (1 - part) / part;
  char text[96];
  std::snprintf(text, sizeof text, "%3.0f%%  %.1f MB/s  %.0f:%02.0f left", part * 100,
                static_cast<double>(size) / passed / 1e6, std::floor(left / 60), std::fmod(left, 60));
  print(text);
}

void Progress::clear() {
  if (!lineThere_) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  lineThere_ = false;
  stop::setLineShown(false);
}

}  // namespace host
