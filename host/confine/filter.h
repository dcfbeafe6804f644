// SPDX-License-Identifier: MIT
// What a confined child may ask of the system.
#pragma once

#include <linux/filter.h>

#include <span>

namespace host {

// The descriptor that such a child has, besides standard error: the line between it and its parent.
inline constexpr int kLineToParent = 3;

// System calls for memory, the line and the end are let through, and all others fail with EPERM: the filter
// as the kernel takes it, which confine/filter_main.cpp writes when this is built.
std::span<const sock_filter> systemCallFilter();

}  // namespace host
