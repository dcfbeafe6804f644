// SPDX-License-Identifier: MIT
// Shares of many inputs, for machines that divide them up without asking each other.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// Share number `number`, from 1 on, of so many.
struct Shard {
  uint64_t number, count;
};

// A share, as "2/8". Throws a Failure with kUsage.
Shard parseShard(const std::string &value);

// Whether an input is in the share: its name without its folders decides, the same on every machine.
bool isInShard(const std::string &input, const Shard &shard);

}  // namespace host
