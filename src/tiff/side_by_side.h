// SPDX-License-Identifier: MIT
// Coding the chunks of a band on several threads, which live no longer than the band.
//
//   thread        chunk 1  chunk 3  chunk 5
//   the caller    chunk 0  write 0, 1  chunk 2  chunk 4  write 2, 3, 4 ..
//
// Everything that anyone can see (writes, patches, changes in the host's block, calls into the host) is
// done by the caller, chunk after chunk, as if it had coded them itself; the threads only read the block
// and keep what they make to themselves.
#pragma once

#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "tiff/coded_chunk.h"
#include "tiff/threads.h"

namespace tiff {

constexpr uint32_t kHeldByThread = 2;  // coded chunks

// The bytes that coding on so many threads, 1 or more, may take.
uint64_t bytesBesides(const ChunkPlan &plan, uint32_t threads);

class SideBySide {
 public:
  // Starts `threads` - 1 threads, or as many as there can be.
  SideBySide(const ChunkPlan &plan, uint32_t threads);
  // Stops and joins them.
  ~SideBySide();
  SideBySide(const SideBySide &) = delete;
  SideBySide &operator=(const SideBySide &) = delete;

  // Whether there is any thread besides the caller's. Otherwise nothing here may be used.
  bool started() const { return started_ != 0; }

  // The codes of chunk k, which must be the one after the last chunk given back. Waits for them, and codes
  // chunks meanwhile.
  const CodedChunk &take(uint64_t k);
  // Chunk k has been written.
  void giveBack(uint64_t k);

 private:
  static constexpr uint64_t kFree = UINT64_MAX;

  struct Slot {
    uint64_t number = kFree;  // of the chunk that it holds
    bool ready = false;
    CodedChunk chunk;
  };

  void work();
  Slot *claim();
  Slot *slotOf(uint64_t k);
  void code(Slot &slot, Workbench &bench, std::unique_lock<std::mutex> &lock);

  const ChunkPlan &plan_;
  runtime::Block behindBlock_;
  std::span<uint8_t> behind_;  // byteBehind() of every chunk
  uint64_t chunks_;
  uint32_t threads_;
  uint32_t started_ = 0;
  Workbench bench_;  // the caller's

  std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  uint64_t next_ = 0;  // the chunk to code next
  bool stop_ = false;
  std::array<Slot, kHeldByThread * kMostThreads> slots_;
  std::array<std::thread, kMostThreads - 1> crew_;
};

}  // namespace tiff
