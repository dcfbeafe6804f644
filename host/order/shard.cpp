// SPDX-License-Identifier: MIT
#include "order/shard.h"

#include <algorithm>
#include <charconv>

#include "failure.h"

namespace host {
namespace {

// The whole text as a number; 0 when it is none.
uint64_t numberIn(const std::string &text) {
  uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

}  // namespace

Shard parseShard(const std::string &value) {
  const size_t slash = std::min(value.find('/'), value.size());
  const size_t behind = std::min(slash + 1, value.size());
  const Shard shard{numberIn(value.substr(0, slash)), numberIn(value.substr(behind))};
  if (shard.number < 1 || shard.number > shard.count)
    throw Failure(kUsage, "--shard " + value + ": give a share of all, as 1/8 to 8/8");
  return shard;
}

bool isInShard(const std::string &input, const Shard &shard) {
  uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
  for (const char c : input.substr(input.rfind('/') + 1)) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  }
  // Its low bits are those of the letters; these steps, of MurmurHash3, let all bits decide.
  hash = (hash ^ hash >> 33) * 0xFF51AFD7ED558CCD;
  hash ^= hash >> 33;
  return hash % shard.count == shard.number - 1;
}

}  // namespace host
