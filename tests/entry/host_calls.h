// SPDX-License-Identifier: MIT
// A host's status callback for tests: keeps every call and answers as told.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "raxel/filter_codes.h"
#include "raxel/types.h"

namespace entry_test {

// An address as the word that a record takes.
template <class T>
HostWord word(T *pointer) {
  return reinterpret_cast<HostWord>(pointer);
}

// The seven arguments of one status callback: context, a to f. The follow-up's block is kept as 0 in
// f, and its words in `block`.
struct StatusCall {
  std::array<HostWord, 7> arguments;
  std::vector<HostWord> block;
};

class HostStatus {
 public:
  HostStatus() { current = this; }
  ~HostStatus() { current = nullptr; }
  HostStatus(const HostStatus &) = delete;
  HostStatus &operator=(const HostStatus &) = delete;

  // The host status record: context 77, the callback, and whatever the test adds.
  HostWord *record() { return words_.data(); }
  HostWord &word(size_t index) { return words_[index]; }

  // Answers to the calls in their order; 0 when there are no more.
  std::vector<int32_t> answers;
  // What the host does in its callback, if anything.
  std::function<void()> action;
  std::vector<StatusCall> calls;

  // The percentages of the plain progress reports, in their order.
  std::vector<uint32_t> percents() const {
    std::vector<uint32_t> out;
    for (const StatusCall &call : calls) {
      if (call.arguments[1] == 0 && call.arguments[2] == 0) {
        out.push_back(static_cast<uint32_t>(call.arguments[4]));
      }
    }
    return out;
  }

 private:
  static int32_t callback(HostWord context, HostWord a, HostWord b, HostWord c, HostWord d, HostWord e,
                          HostWord f) {
    const size_t index = current->calls.size();
    StatusCall call = {{context, a, b, c, d, e, f}, {}};
    if (a == RAXEL_REPORT_ASK_AGAIN && b == RAXEL_REPORT_STOP && f != 0) {
      const auto *block = reinterpret_cast<const HostWord *>(f);
      call.block.assign(block, block + 10);
      call.arguments[6] = 0;
    }
    current->calls.push_back(call);
    if (current->action) current->action();
    return index < current->answers.size() ? current->answers[index] : 0;
  }

  static inline HostStatus *current = nullptr;
  std::array<HostWord, 16> words_ = {0, 77, reinterpret_cast<HostWord>(&callback)};

 public:
  static StatusCallback procedure() { return &callback; }
};

}  // namespace entry_test
