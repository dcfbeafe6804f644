#include "filter/driver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace host {
namespace {

// Operations of the entries.
enum Operation : uint32_t { kInitialise = 0, kExecute = 2, kTerminate = 0xFFFF, kWorkingEntry = 0xFFFD };

// Driver functions.
enum Opcode : uint32_t {
  kOpenDevice = 1,
  kCloseDevice = 2,
  kBeginPicture = 3,
  kBeginBody = 4,
  kEndPicture = 5,
  kSetWindow = 518,
  kSetViewportMode = 521,
  kCellArray = 1033,
  kPrimitive = 1034,
  kSetColors = 1314,
};
constexpr int32_t kBeginRaster = -5, kEndRaster = -6;

// Words of the initialisation record.
enum InitWord {
  kName = 3,
  kReplySize = 9,
  kSetupHandle = 13,
  kStatus = 14,
  kCapabilities = 15,
  kInitWords = 16
};

constexpr uint32_t kRowsAtATime = 64;
constexpr HostWord kReplyBytes = 256;

// Records of driver functions have fixed byte offsets on every machine.
class Record {
 public:
  Record(Opcode opcode, size_t size) : bytes_(size) { put(0, uint32_t{opcode}); }
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
  entry(kWorkingEntry, &working, 0);
  return working;
}

// A device session; remembers the first code.
class Session {
 public:
  explicit Session(Entry32 entry) : entry_(entry) {}

  void run(uint32_t op, void *record) {
    const int32_t code = entry_(0, op, record);
    if (code_ == 0) code_ = code;
  }
  void run(Record record) { run(kExecute, record.data()); }
  void run(Opcode opcode) { run(Record(opcode, 8)); }
  int32_t code() const { return code_; }

 private:
  Entry32 entry_;
  int32_t code_ = 0;
};

void setWindow(Session &session, const RaxelPlan &plan) {
  session.run(Record(kSetWindow, 64)
                  .put(16, 0.0)
                  .put(24, 0.0)
                  .put(40, plan.width - 1.0)
                  .put(48, plan.height - 1.0));
}

// Metric units of which an inch has as many as the picture has dots.
void setResolution(Session &session, int32_t dpi) {
  session.run(Record(kSetViewportMode, 32).put(16, int16_t{1}).put(24, 25.4 / dpi));
}

void setColors(Session &session, const RaxelPlan &plan, const uint8_t *table) {
  Record record(kSetColors, 20 + 256 * 3);
  record.put(4, uint32_t{2 + 3 * plan.colors}).put(16, uint32_t{0});
  std::copy_n(table, 3 * size_t{plan.colors}, record.data() + 20);
  session.run(std::move(record));
}

void beginRaster(Session &session, const RaxelPlan &plan) {
  session.run(Record(kPrimitive, 56)
                  .put(16, kBeginRaster)
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
    session.run(Record(kCellArray, 102 + sizeof(void *))
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
  if (plan.filterDpiX != plan.filterDpiY)
    return "the driver's road has one resolution for both axes: give --dpi N, or --via cell";
  // Sizes go over in inches, as quotients of two doubles, which fall a pixel short at some resolutions.
  if (!exact(plan.width, plan.filterDpiX) || !exact(plan.height, plan.filterDpiY)) {
    return "at " + std::to_string(plan.filterDpiX) +
           " dots an inch the driver's road loses a pixel of this picture: give another --dpi, or --via "
           "cell";
  }
  return "";
}

int32_t exportThroughDriver(const Library &library, Setup &setup, const RaxelPlan &plan,
                            const Handover &picture, OutputStream &stream) {
  setup.setStatus(stream.status());
  std::array<int32_t, 256> capabilities{};
  std::array<HostWord, kInitWords> init{};
  init[kName] = reinterpret_cast<HostWord>("output");  // for the stream procedure, which knows better
  init[kReplySize] = kReplyBytes;
  init[kSetupHandle] = setup.handle();
  init[kStatus] = reinterpret_cast<HostWord>(stream.status());
  init[kCapabilities] = reinterpret_cast<HostWord>(capabilities.data());
  Session session(workingEntry(library.rasterEntry));
  session.run(kInitialise, init.data());
  session.run(kOpenDevice);
  session.run(kBeginPicture);
  setWindow(session, plan);
  setResolution(session, plan.filterDpiX);
  session.run(kBeginBody);
  if (plan.colors != 0) setColors(session, plan, picture.table.bytes());
  beginRaster(session, plan);
  sendRows(session, plan, picture.pixels.bytes());
  session.run(Record(kPrimitive, 28).put(16, kEndRaster));
  session.run(kEndPicture);
  session.run(kCloseDevice);
  session.run(kTerminate, nullptr);
  return session.code();
}

int32_t exportThroughMetafile(const Library &library, Setup &setup, OutputStream &stream) {
  char name[] = "output";  // the library writes into it
  std::array<HostWord, kInitWords> init{};
  init[kName] = reinterpret_cast<HostWord>(name);
  init[kSetupHandle] = setup.handle();
  init[kStatus] = reinterpret_cast<HostWord>(stream.status());
  Session session(workingEntry(library.metafileEntry));
  session.run(kInitialise, init.data());
  session.run(kTerminate, nullptr);
  return session.code();
}

}  // namespace host
