// SPDX-License-Identifier: MIT
#include "tiff/side_by_side.h"

#include <sys/mman.h>

#include <csignal>

namespace tiff {
namespace {

// Whether so much memory can be had now: running out of it later would end the process.
bool isThere(uint64_t bytes) {
  if (bytes > SIZE_MAX / 2) return false;
  const auto length = static_cast<size_t>(bytes);
  void *memory = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return false;
  munmap(memory, length);
  return true;
}

// A host's signals are for its own threads.
struct SignalsHeld {
  sigset_t before;
  SignalsHeld() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  SignalsHeld(const SignalsHeld &) = delete;
  SignalsHeld &operator=(const SignalsHeld &) = delete;
};

}  // namespace

uint64_t bytesBesides(const ChunkPlan &plan, uint32_t threads) {
  constexpr uint64_t kTables = 4 << 20;  // those of LZW are the largest, and a little for the rest
  // A thread's stack, and what the heap keeps for it.
  constexpr uint64_t kThread = sizeof(void *) < 8 ? 10 << 20 : 144 << 20;
  const uint64_t chunk = plan.band.chunkRows * plan.band.cells.rowBytes;
  const uint64_t held = kHeldByThread * 2 * chunk;  // codes may be twice as long
  return threads * (chunk + held + kTables) + (threads - 1) * kThread;
}

SideBySide::SideBySide(const ChunkPlan &plan, uint32_t threads)
    : plan_(plan), chunks_(plan.band.chunks()), threads_(threads < kMostThreads ? threads : kMostThreads) {
  if (threads_ < 2 || !isThere(bytesBesides(plan, threads_))) return;
  behindBlock_ = runtime::Block::ofSize(chunks_);
  behind_ = behindBlock_.bytes();
  if (behind_.size() < chunks_) return;
  for (uint64_t k = 0; k < chunks_; ++k) behind_[static_cast<size_t>(k)] = byteBehind(plan.band, k);
  const SignalsHeld held;
  // A thread that cannot be made is done without: the others take its work.
  try {
    for (; started_ < threads_ - 1; ++started_) crew_[started_] = std::thread(&SideBySide::work, this);
  } catch (...) {
  }
}

SideBySide::~SideBySide() {
  if (!started()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  for (uint32_t i = 0; i < started_; ++i) crew_[i].join();
}

const CodedChunk &SideBySide::take(uint64_t k) {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    if (const Slot *slot = slotOf(k); slot != nullptr && slot->ready) return slot->chunk;
    if (Slot *slot = claim(); slot != nullptr) {
      code(*slot, bench_, lock);
    } else {
      changed_.wait(lock);
    }
  }
}

void SideBySide::giveBack(uint64_t k) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    slotOf(k)->number = kFree;
  }
  changed_.notify_all();
}

void SideBySide::work() {
  Workbench bench;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stop_ && next_ < chunks_) {
    if (Slot *slot = claim(); slot != nullptr) {
      code(*slot, bench, lock);
    } else {
      changed_.wait(lock);
    }
  }
}

// The next chunk, in the first free slot: the earlier ones have their memory already. Null when all are
// coded or on their way, and when as many wait to be written as may.
SideBySide::Slot *SideBySide::claim() {
  if (next_ == chunks_) return nullptr;
  for (uint32_t i = 0; i < kHeldByThread * threads_; ++i) {
    Slot &slot = slots_[i];
    if (slot.number != kFree) continue;
    slot.number = next_++;
    slot.ready = false;
    return &slot;
  }
  return nullptr;
}

SideBySide::Slot *SideBySide::slotOf(uint64_t k) {
  for (Slot &slot : slots_) {
    if (slot.number == k) return &slot;
  }
  return nullptr;
}

void SideBySide::code(Slot &slot, Workbench &bench, std::unique_lock<std::mutex> &lock) {
  const uint64_t k = slot.number;
  lock.unlock();
  codeChunkApart(plan_, plan_.band.chunk(k), behind_[static_cast<size_t>(k)], bench, slot.chunk);
  lock.lock();
  slot.ready = true;
  changed_.notify_all();
}

}  // namespace tiff
