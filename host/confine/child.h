// SPDX-License-Identifier: MIT
// Work on bytes that are not trusted, done in a child process that can open no file, reach nobody and take
// no more than its allowance. The parent believes nothing that it hears.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "confine/limits.h"

namespace host {

// Whether decoders work so. A program that has not asked for children gets none, as one with threads may
// have to; so at first they do not.
void confineDecoders(bool on);
bool decodersAreConfined();

// How a child ended that did not end as it should: by that signal, or 0, and in words that follow a name.
struct Ending {
  int signal;
  std::string what;
};

class Child {
 public:
  // Starts the work in a child, which ends with it. Throws a Failure when no process can be started.
  Child(const Allowance &most, const std::function<void()> &work);
  // Ends the child, whatever it does.
  ~Child();
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  // Waits for what the child tells next, and returns its size, which is more than `room` for what is cut
  // off; 0 when the child is at its end or stands still.
  size_t receive(void *record, size_t room);
  // Lets a child go on that waits for it, or will.
  void goOn();
  // What it may take from now on.
  void allow(const Allowance &most);
  // Ends the child.
  void finish();
  // The same for one that is at its end or stands still.
  Ending ending();

 private:
  bool waitFor(int fd);
  bool mayGoOn();

  pid_t pid_ = 0;
  int line_ = -1;
  Allowance most_;
  uint64_t parentsSpace_;
  int asleep_ = 0;                 // looks in a row that found the child asleep
  const char *givenUp_ = nullptr;  // why the child is not waited for any more
};

// A text of the child's, to be shown to people: without what steers a terminal.
std::string plainText(std::string_view said);

// In the child: tells the parent, and waits until it may go on. A parent that is gone ends it.
void tellParent(const void *record, size_t size);
void waitForParent();

}  // namespace host
