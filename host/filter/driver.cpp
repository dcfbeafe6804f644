// SPDX-License-Identifier: MIT
#include "filter/driver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace host {
namespace {

constexpr uint32_t kRowsAtATime = 64;
constexpr HostWord kReplyBytes = 256;

// Records of driver functions have fixed byte offsets on every machine.
class Record {
 public:
  Record(RaxelOpcode opcode, size_t size) : bytes_(size) { put(0, uint32_t{opcode}); }
  template <class Value>
  Record &put(size_t at, Value value) {
    std::memcpy(bytes_.data() + at, &value, sizeof value);
    return *this;
  }
  uint8_t *data() { return bytes_.data(); }

 private:
  std::vector<uint8_t> bytes_;
};

using Entry32 = int32_t (*)(HostWord unused, uint32_t op, void *record);

// The working entry, as the small entry gives it.
Entry32 workingEntry(int32_t (*entry)(uint32_t, void *, uint32_t)) {
  Entry32 working = nullptr;
  entry(RAXEL_ENTRY_ADDRESS, &working, 0);
  return working;
}

// A device session; remembers the first code. It ends with its scope, also where memory ends: the filter
// would close an open one when the next begins, and its stream would be gone.
class Session {
 public:
  Session(Entry32 entry, void *start) : entry_(entry) { run(RAXEL_ENTRY_START, start); }
  ~Session() {
    if (!ended_) entry_(0, RAXEL_ENTRY_END, nullptr);
  }
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  void end() {
    ended_ = true;
    run(RAXEL_ENTRY_END, nullptr);
  }
  void run(uint32_t op, void *record) {
    const int32_t code = entry_(0, op, record);
    if (code_ == 0) code_ = code;
  }
  void run(Record record) { run(RAXEL_ENTRY_EXECUTE, record.data()); }
  void run(RaxelOpcode opcode) { run(Record(opcode, 8)); }
  int32_t code() const { return code_; }

 private:
  Entry32 entry_;
  int32_t code_ = 0;
  bool ended_ = false;
};

void setWindow(Session &session, const RaxelPlan &plan) {
  session.run(Record(RAXEL_OP_WINDOW, 64)
                  .put(16, 0.0)
                  .put(24, 0.0)
                  .put(40, plan.width - 1.0)
                  .put(48, plan.height - 1.0));
}

// Metric units of which an inch has as many as the picture has dots.
void setResolution(Session &session, int32_t dpi) {
  session.run(
      Record(RAXEL_OP_VIEWPORT_MODE, 32).put(16, int16_t{RAXEL_VIEWPORT_METRIC}).put(24, 25.4 / dpi));
}

void setColors(Session &session, const RaxelPlan &plan, const uint8_t *table) {
  Record record(RAXEL_OP_COLORS, 20 + 256 * 3);
  record.put(4, uint32_t{2 + 3 * plan.colors}).put(16, uint32_t{0});
  std::copy_n(table, 3 * size_t{plan.colors}, record.data() + 20);
  session.run(std::move(record));
}

void beginRaster(Session &session, const RaxelPlan &plan) {
  session.run(Record(RAXEL_OP_PRIMITIVE, 56)
                  .put(16, int32_t{RAXEL_PRIMITIVE_BEGIN_RASTER})
                  .put(20, uint32_t{0})
                  .put(24, uint32_t{28})
                  .put(28, plan.width)
                  .put(32, plan.height)
                  .put(36, plan.bits));
}

// Rows in the order of the block. Both corners run the way the window runs, so each row lands after the
// one before it. A negative precision says that an address stands in place of the rows.
void sendRows(Session &session, const RaxelPlan &plan, const uint8_t *rows) {
  for (uint32_t y = 0; y < plan.height; y += kRowsAtATime) {
    const uint32_t count = std::min(kRowsAtATime, plan.height - y);
    session.run(Record(RAXEL_OP_CELL_ARRAY, 102 + sizeof(void *))
                    .put(24, static_cast<double>(y))
                    .put(48, static_cast<double>(y + count))
                    .put(88, plan.width)
                    .put(92, count)
                    .put(96, -static_cast<int32_t>(plan.bits))
                    .put(102, rows + size_t{plan.stride} * y));
  }
}

bool exact(uint32_t pixels, int32_t dpi) {
  return std::trunc(static_cast<double>(pixels) / dpi * dpi) == static_cast<double>(pixels);
}

}  // namespace

std::string driverRefusal(const RaxelPlan &plan) {
  if (plan.filterDpiX != plan.filterDpiY) return "the driver's road has one resolution for both axes";
  // Sizes go over in inches, as quotients of two doubles, which fall a pixel short at some resolutions.
  if (!exact(plan.width, plan.filterDpiX) || !exact(plan.height, plan.filterDpiY)) {
    return "at " + std::to_string(plan.filterDpiX) +
           " dots an inch the driver's road loses a pixel of this picture";
  }
  return "";
}

int32_t exportThroughDriver(const Library &library, Setup &setup, const RaxelPlan &plan,
                            const Handover &picture, OutputStream &stream) {
  setup.setStatus(stream.status());
  std::array<int32_t, 256> capabilities{};
  std::array<HostWord, RAXEL_START_WORDS> init{};
  init[RAXEL_START_NAME] =
      reinterpret_cast<HostWord>("output");  // for the stream procedure, which knows better
  init[RAXEL_START_REPLY_BYTES] = kReplyBytes;
  init[RAXEL_START_SETUP] = setup.handle();
  init[RAXEL_START_STATUS] = reinterpret_cast<HostWord>(stream.status());
  init[RAXEL_START_CAPABILITIES] = reinterpret_cast<HostWord>(capabilities.data());
  Session session(workingEntry(library.rasterEntry), init.data());
  session.run(RAXEL_OP_OPEN_DEVICE);
  session.run(RAXEL_OP_BEGIN_PICTURE);
  setWindow(session, plan);
  setResolution(session, plan.filterDpiX);
  session.run(RAXEL_OP_BEGIN_BODY);
  if (plan.colors != 0) setColors(session, plan, picture.table.bytes());
  beginRaster(session, plan);
  sendRows(session, plan, picture.pixels.bytes());
  session.run(Record(RAXEL_OP_PRIMITIVE, 28).put(16, int32_t{RAXEL_PRIMITIVE_END_RASTER}));
  session.run(RAXEL_OP_END_PICTURE);
  session.run(RAXEL_OP_CLOSE_DEVICE);
  session.end();
  return session.code();
}

int32_t exportThroughMetafile(const Library &library, Setup &setup, OutputStream &stream) {
  char name[] = "output";  // the library writes into it
  std::array<HostWord, RAXEL_START_WORDS> init{};
  init[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name);
  init[RAXEL_START_SETUP] = setup.handle();
  init[RAXEL_START_STATUS] = reinterpret_cast<HostWord>(stream.status());
  Session session(workingEntry(library.metafileEntry), init.data());
  session.end();
  return session.code();
}

}  // namespace host
