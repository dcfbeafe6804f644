// SPDX-License-Identifier: MIT
// What a confined child may ask of the system.
#pragma once

#include <linux/filter.h>

#include <vector>

namespace host {

// The descriptor that such a child has, besides standard error: the line between it and its parent.
inline constexpr int kLineToParent = 3;

// System calls for memory, the line and the end are let through, and all others fail with EPERM: the filter
// as the kernel takes it. Empty where libseccomp is not installed. The answer stays the same.
const std::vector<sock_filter> &systemCallFilter();

}  // namespace host
