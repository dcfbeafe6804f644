// SPDX-License-Identifier: MIT
// Loads and stores of native values at any address.
#pragma once

#include <cstring>
#include <type_traits>

namespace runtime {

template <class T>
T load(const void *from) {
  static_assert(std::is_trivially_copyable_v<T>);
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <class T>
void store(void *to, T value) {
  static_assert(std::is_trivially_copyable_v<T>);
  std::memcpy(to, &value, sizeof value);
}

}  // namespace runtime
