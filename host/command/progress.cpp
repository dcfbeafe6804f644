// SPDX-License-Identifier: MIT
#include "command/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "command/stop.h"
#include "command/tell.h"

namespace host {
namespace {

constexpr auto kQuietTime = std::chrono::milliseconds(200);  // short jobs show nothing
constexpr auto kStep = std::chrono::milliseconds(100);

double seconds(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double>(d).count();
}

size_t columns() {
  winsize size{};
  return ioctl(2, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

std::string bar(double part) {
  constexpr size_t kSteps = 20;
  const size_t done = static_cast<size_t>(std::clamp(part, 0.0, 1.0) * kSteps);
  return '[' + std::string(done, '=') + std::string(kSteps - done, ' ') + ']';
}

std::string progressText(double part, uint64_t bytes, double seconds) {
  constexpr double kSpeedAfter = 0.1, kLeftAfter = 0.5, kLeftFrom = 0.02;
  char text[96];
  std::snprintf(text, sizeof text, " %3.0f%%", part * 100);
  std::string all = bar(part) + text;
  if (seconds < kSpeedAfter) return all;
  std::snprintf(text, sizeof text, "  %.1f MB/s", static_cast<double>(bytes) / seconds / 1e6);
  all += text;
  if (seconds < kLeftAfter || part < kLeftFrom) return all;
  const double left = std::round(seconds * (1 - part) / part);
  std::snprintf(text, sizeof text, "  %.0f:%02.0f left", std::floor(left / 60), std::fmod(left, 60));
  return all + text;
}

std::string endOf(const std::string &name, size_t room) {
  constexpr std::string_view kCut = "...";
  if (name.size() <= room) return name;
  size_t from = name.size() - (room > kCut.size() ? room - kCut.size() : 0);
  // Not in the middle of a character of UTF-8.
  while (from < name.size() && (static_cast<unsigned char>(name[from]) & 0xC0) == 0x80) ++from;
  return std::string(kCut) + name.substr(from);
}

Progress::Progress(const std::string &name, bool wanted)
    : name_(printable(name)), shown_(wanted && isatty(2) == 1), start_(Clock::now()), last_(start_) {}

Progress::~Progress() {
  clear();
}

void Progress::print(const std::string &text) {
  // A line that breaks could not be wiped.
  const size_t used = text.size() + 3, room = columns() > used ? columns() - used : 0;
  std::fprintf(stderr, "\r\033[K%s  %s", endOf(name_, room).c_str(), text.c_str());
  std::fflush(stderr);
  lineThere_ = true;
  stop::setLineShown(true);
}

void Progress::stage(const char *what) {
  const Clock::time_point now = Clock::now();
  if (!shown_ || now - start_ <= kQuietTime || (now - last_ < kStep && lineThere_ && stage_ == what))
    return;
  last_ = now;
  stage_ = what;
  print(what);
}

void Progress::show(double part, uint64_t size) {
  const Clock::time_point now = Clock::now();
  if (part <= 0) writing_ = now;
  const bool soon = now - last_ < kStep && stage_.empty();
  if (!shown_ || part <= 0 || soon || now - start_ < kQuietTime) return;
  last_ = now;
  stage_.clear();
  print(progressText(part, size, seconds(now - writing_)));
}

void Progress::clear() {
  if (!lineThere_) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  lineThere_ = false;
  stop::setLineShown(false);
}

}  // namespace host
