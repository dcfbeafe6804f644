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
  // Sends a child what it waits for, or will. False when it is at its end or does not listen.
  bool ask(const void *record, size_t size);
  // What it may take in all for the work at hand.
  void allow(const Allowance &most);
  // Before work that a child is given besides: it may take all of this for it, whatever it took before.
  // False for one that took so much, or still holds so much, that another child had better do it, and where
  // this process has limits of its own, which every child is to have in whole.
  bool renew(const Allowance &most);
  // Ends the child. It may not be gone yet.
  void stop();
  // The same for one that is at its end or stands still.
  Ending ending();

 private:
  void finish();
  bool waitFor(int fd);
  bool mayGoOn();

  pid_t pid_ = 0;
  int line_ = -1;
  Allowance most_;
  uint64_t parentsSpace_;
  double spent_ = 0;               // seconds that it took for other work before
  uint64_t held_ = 0;              // bytes that it kept of them
  int asleep_ = 0;                 // looks in a row that found the child asleep
  const char *givenUp_ = nullptr;  // why the child is not waited for any more
};

// A text of the child's, to be shown to people: without what steers a terminal.
std::string plainText(std::string_view said);

// In the child: tells the parent, waits until it may go on, and waits for what it sends, the size of which
// is returned. A parent that is gone ends it.
void tellParent(const void *record, size_t size);
void waitForParent();
size_t hearParent(void *record, size_t room);

}  // namespace host
