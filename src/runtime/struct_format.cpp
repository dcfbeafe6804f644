// SPDX-License-Identifier: MIT
#include "runtime/struct_format.h"

#include <algorithm>

#include "raxel/stream.h"
#include "runtime/ascii.h"

namespace runtime {

namespace {

// A union being measured: where it starts, and the end of its largest alternative so far.
struct Union {
  uint64_t start;
  uint64_t end;
};

bool isOpening(char c) {
  return c == '{' || c == '(';
}

bool isClosing(char c) {
  return c == '}' || c == ')';
}

// Keeps the offset where it is, but a union's end where its longest alternative ends.
void endAlternative(Union &group, uint64_t offset) {
  group.end = std::max(group.end, offset);
}

}  // namespace

int32_t takeRepeat(const char *&p) {
  if (*p < '0' || *p > '9') return 1;
  int32_t repeat = 0;
  for (; isDigit(*p); ++p) repeat = std::min(repeat * 10 + (*p - '0'), kMaxRepeat);
  return repeat;
}

int32_t recordAlignment(const char *format) {
  int32_t widest = 1;
  for (const char *p = format; *p != 0; ++p) {
    widest = std::max<int32_t>(widest, memberOf(upper(*p)).alignment);
  }
  return widest;
}

}  // namespace runtime

int32_t GetPadWidth(const char *format) {
  if (format == nullptr) return 0;
  int32_t widest = 1;
  int64_t depth = 0;
  for (const char *p = format; *p != 0 && widest < 8; ++p) {
    widest = std::max<int32_t>(widest, runtime::memberOf(runtime::upper(*p)).alignment);
    if (runtime::isOpening(*p)) ++depth;
    if (runtime::isClosing(*p) && --depth <= 0) break;
  }
  return widest;
}

const char *GetUnionSize(const char *format, int32_t *size) {
  if (format == nullptr) return nullptr;
  runtime::Union unions[runtime::kMaxNesting] = {};
  int open = 0;     // unions on the stack
  int nesting = 0;  // groups of both kinds around p
  uint64_t offset = 0;
  const char *p = format;
  while (*p != 0) {
    const int32_t repeat = runtime::takeRepeat(p);
    const char c = *p;
    if (c == 0) break;
    const runtime::Member member = runtime::memberOf(runtime::upper(c));
    if (member.size != 0) {
      offset = runtime::alignUp(offset, member.alignment);
      offset += static_cast<uint64_t>(repeat) * member.size;
    } else if (runtime::isOpening(c) && nesting < runtime::kMaxNesting) {
      ++nesting;
      offset = runtime::alignUp(offset, GetPadWidth(p));
      if (c == '(') unions[open++] = {offset, offset};
    } else if (c == '|' && open > 0) {
      runtime::endAlternative(unions[open - 1], offset);
      offset = unions[open - 1].start;
    } else if (runtime::isClosing(c) && nesting > 0) {
      --nesting;
      if (c == ')' && open > 0) {
        runtime::endAlternative(unions[--open], offset);
        offset = unions[open].end;
      }
    }
    ++p;
    if (open == 0) break;
  }
  // A group that the format leaves open ends with it.
  while (open > 0) {
    runtime::endAlternative(unions[--open], offset);
    offset = unions[open].end;
  }
  if (size != nullptr) *size = static_cast<int32_t>(std::min<uint64_t>(offset, INT32_MAX));
  return p;
}
