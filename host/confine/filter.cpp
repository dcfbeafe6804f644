// SPDX-License-Identifier: MIT
#include "confine/filter.h"

namespace host {
namespace {

constexpr sock_filter kProgram[] = {
#include "call_filter.inc"
};

}  // namespace

std::span<const sock_filter> systemCallFilter() {
  return kProgram;
}

}  // namespace host
