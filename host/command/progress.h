// SPDX-License-Identifier: MIT
// A line on the terminal while a picture takes its time.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace host {

// "[=====     ]" for a part of the whole, 0 to 1.
std::string bar(double part);

// The line for a part of the whole, with what is known after so many seconds of writing: a speed soon, and
// a time left once it is more than a guess.
std::string progressText(double part, uint64_t bytes, double seconds);

// A name that fits into so many columns: its end, which tells names apart, when it is too long.
std::string endOf(const std::string &name, size_t room);

// Shows a bar, percent, speed and time left on standard error when that is a terminal; otherwise nothing,
// at no cost.
class Progress {
 public:
  Progress(const std::string &name, bool wanted);
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  // A step without a measure: "reading".
  void stage(const char *what);
  // A part of the writing, 0 (it begins) to 1, and the size of the file so far.
  void show(double part, uint64_t size);
  bool isShown() const { return shown_; }
  // Wipes the line.
  void clear();
  // In a child process: a line that the parent may have shown is wiped by this one.
  void takeOver(const Progress &parents) { lineThere_ = parents.shown_; }

 private:
  using Clock = std::chrono::steady_clock;
  void print(const std::string &text);

  std::string name_;
  std::string stage_;  // shown last, empty for a bar: the same once more can wait
  bool shown_;
  bool lineThere_ = false;
  Clock::time_point start_, last_, writing_;  // writing_: when it began
};

}  // namespace host
