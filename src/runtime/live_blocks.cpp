// SPDX-License-Identifier: MIT
// A table of addresses with open addressing: a block stands at the first free slot at or behind its own,
// and the slots between are never empty. At least half of the slots are free. The table itself goes with
// the last block, so that an unloaded library leaves nothing behind.
#include "runtime/live_blocks.h"

#include <atomic>
#include <cstdlib>

#include "runtime/handle_layout.h"

namespace runtime {
namespace {

constexpr size_t kFirstSlots = 64;  // a power of two, as every later size

struct Table {
  Handle *slots;
  size_t size;
  size_t used;
};

Table table = {};
std::atomic_flag busy = ATOMIC_FLAG_INIT;  // hosts may allocate from any thread

// Has the table to itself.
class Alone {
 public:
  Alone() {
    while (busy.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~Alone() { busy.clear(std::memory_order_release); }
  Alone(const Alone &) = delete;
  Alone &operator=(const Alone &) = delete;
};

size_t ownSlot(Handle handle) {
  // Addresses are multiples of 8, and near each other.
  const auto mixed = static_cast<uint32_t>(handle >> 3) * 2654435769u;
  return (mixed ^ mixed >> 15) & (table.size - 1);
}

size_t slotBehind(size_t slot) {
  return (slot + 1) & (table.size - 1);
}

// Where the handle stands, or would.
size_t find(Handle handle) {
  size_t slot = ownSlot(handle);
  while (table.slots[slot] != 0 && table.slots[slot] != handle) slot = slotBehind(slot);
  return slot;
}

// Returns whether there is a table of that many slots now.
bool resize(size_t size) {
  auto *slots = static_cast<Handle *>(std::calloc(size, sizeof(Handle)));
  if (slots == nullptr) return false;
  const Table old = table;
  table = {slots, size, old.used};
  for (size_t i = 0; i < old.size; ++i) {
    if (old.slots[i] != 0) table.slots[find(old.slots[i])] = old.slots[i];
  }
  std::free(old.slots);
  return true;
}

// Empties a slot, and moves up what stands behind it only because the slot was taken.
void empty(size_t slot) {
  table.slots[slot] = 0;
  for (size_t next = slotBehind(slot); table.slots[next] != 0; next = slotBehind(next)) {
    const Handle moved = table.slots[next];
    table.slots[next] = 0;
    table.slots[find(moved)] = moved;
  }
}

}  // namespace

void noteBlock(Handle handle) {
  const Alone alone;
  // Without memory for a larger table a block stays unknown: its pointers count as the host's own.
  if (2 * (table.used + 1) > table.size && !resize(table.size == 0 ? kFirstSlots : 2 * table.size)) return;
  table.slots[find(handle)] = handle;
  ++table.used;
}

void forgetBlock(Handle handle) {
  const Alone alone;
  if (table.used == 0) return;
  const size_t slot = find(handle);
  if (table.slots[slot] == 0) return;
  if (--table.used > 0) return empty(slot);
  std::free(table.slots);
  table = {};
}

Handle blockWithData(const void *data) {
  const auto handle = static_cast<Handle>(reinterpret_cast<uintptr_t>(data) - kDataAt);
  const Alone alone;
  return table.used != 0 && data != nullptr && table.slots[find(handle)] != 0 ? handle : 0;
}

size_t countBlocks() {
  const Alone alone;
  return table.used;
}

}  // namespace runtime
