// SPDX-License-Identifier: MIT
// A host that drives the raster driver in tests: its records, status callback and settings.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "raxel/raxel.h"
#include "support/blocks.h"

namespace raster_test {

// What the status callback heard.
struct Call {
  HostWord context;
  std::array<HostWord, 6> values;
  bool operator==(const Call &) const = default;
};

// A host with a setup of its own. `refuse` answers 1 from the given call on (0: never).
class Host {
 public:
  explicit Host(const std::string &name = "") : name_(name.begin(), name.end()) {
    name_.push_back('\0');
    setup_ = support::newBlock(sizeof(RasterSetup));
    UseDefaultSettings(&settings());
    settings().nSizeMode = RAXEL_STORED_SIZE_PICTURE;
    settings().nResolutionMode = RAXEL_STORED_RESOLUTION_PICTURE;
    settings().nCompressionMode = RAXEL_STORED_COMPRESS_NONE;
    settings().nBitmapMode = RAXEL_STORED_MODE_RGB;
    settings().tiff.wLayoutMode = RAXEL_STORED_LAYOUT_STRIPS;
    status_[RAXEL_STATUS_CONTEXT] = reinterpret_cast<HostWord>(this);
    status_[RAXEL_STATUS_CALLBACK] = reinterpret_cast<HostWord>(&Host::onStatus);
    record_[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name_.data());
    record_[RAXEL_START_REPLY_BYTES] = 256;
    record_[RAXEL_START_SETUP] = setup_;
    record_[RAXEL_START_STATUS] = reinterpret_cast<HostWord>(status_.data());
    record_[RAXEL_START_CAPABILITIES] = reinterpret_cast<HostWord>(capabilities_.data());
  }
  ~Host() {
    if (lpEMData != nullptr) terminate();
    DestroySetup(setup_);
    hCommon = 0;
    lpCommon = nullptr;
    hSetup = 0;
    lpSetup = nullptr;
  }
  Host(const Host &) = delete;
  Host &operator=(const Host &) = delete;

  // For a callback that does away with the setup in the middle of a call.
  void destroySetup() {
    DestroySetup(setup_);
    setup_ = 0;
  }

  RasterSetup &settings() { return *static_cast<RasterSetup *>(GlobalLock(setup_)); }
  int32_t initialise() { return RASTER_dd_entry32(0, RAXEL_ENTRY_START, record_.data()); }
  int32_t terminate() { return RASTER_dd_entry32(0, RAXEL_ENTRY_END, nullptr); }
  int32_t send(std::vector<uint8_t> record) {
    return RASTER_dd_entry32(0, RAXEL_ENTRY_EXECUTE, record.data());
  }
  // Sends a record and keeps what the driver made of it.
  int32_t sendKept(std::vector<uint8_t> &record) {
    return RASTER_dd_entry32(0, RAXEL_ENTRY_EXECUTE, record.data());
  }
  int32_t send(uint32_t opcode) { return send(recordOf(opcode, 64)); }

  static std::vector<uint8_t> recordOf(uint32_t opcode, size_t size) {
    std::vector<uint8_t> record(size);
    put(record, 0, opcode);
    return record;
  }
  template <class T>
  static void put(std::vector<uint8_t> &record, size_t at, T value) {
    if (record.size() < at + sizeof value) record.resize(at + sizeof value);
    std::memcpy(record.data() + at, &value, sizeof value);
  }

  int32_t setWindow(double x1, double y1, double x2, double y2) {
    auto record = recordOf(RAXEL_OP_WINDOW, 64);
    const double corners[6] = {x1, y1, 0, x2, y2, 0};
    std::memcpy(record.data() + 16, corners, sizeof corners);
    return send(record);
  }
  int32_t setResolution(double millimetres) {
    auto record = recordOf(RAXEL_OP_VIEWPORT_MODE, 64);
    put<int16_t>(record, 16, RAXEL_VIEWPORT_METRIC);
    put(record, 24, millimetres);
    return send(record);
  }
  int32_t setColors(uint32_t first, const std::vector<uint8_t> &rgb) {
    auto record = recordOf(RAXEL_OP_COLORS, 20);
    put<uint32_t>(record, 4, static_cast<uint32_t>(rgb.size()) + 2);
    put<uint32_t>(record, 16, first);
    record.insert(record.end(), rgb.begin(), rgb.end());
    return send(record);
  }
  int32_t beginRaster(uint32_t columns, uint32_t rows, int32_t precision, uint16_t flags = 0,
                      uint32_t points = 0) {
    auto record = recordOf(RAXEL_OP_PRIMITIVE, 24);
    put<int32_t>(record, 16, RAXEL_PRIMITIVE_BEGIN_RASTER);
    put<uint32_t>(record, 20, points);
    record.resize(24 + size_t{points} * 24, 0xAB);
    const size_t at = record.size();
    put<uint32_t>(record, at, 28);
    put<uint32_t>(record, at + 4, columns);
    put<uint32_t>(record, at + 8, rows);
    put<int32_t>(record, at + 12, precision);
    put<uint16_t>(record, at + 18, flags);
    record.resize(at + 32);
    return send(record);
  }
  int32_t endRaster() {
    auto record = recordOf(RAXEL_OP_PRIMITIVE, 64);
    put<int32_t>(record, 16, RAXEL_PRIMITIVE_END_RASTER);
    return send(record);
  }
  static std::vector<uint8_t> cellArray(uint32_t columns, uint32_t rows, int32_t precision,
                                        const std::vector<uint8_t> &pixels, bool upward = false) {
    auto record = recordOf(RAXEL_OP_CELL_ARRAY, 102);
    put(record, 24, upward ? 1.0 : 0.0);
    put(record, 48, upward ? 0.0 : 1.0);
    put<uint32_t>(record, 88, columns);
    put<uint32_t>(record, 92, rows);
    put<int32_t>(record, 96, precision);
    record.resize(102 + pixels.size());
    if (!pixels.empty()) std::memcpy(&record[102], pixels.data(), pixels.size());
    return record;
  }

  // Begin picture, window, resolution where millimetres are given, body: ready for cell arrays.
  void beginBody(double width, double height, double millimetres = 0) {
    send(RAXEL_OP_BEGIN_PICTURE);
    setWindow(0, 0, width - 1, height - 1);
    if (millimetres != 0) setResolution(millimetres);
    send(RAXEL_OP_BEGIN_BODY);
  }
  // The same from the start of a session on.
  void openBody(double width, double height, double millimetres = 0) {
    initialise();
    send(RAXEL_OP_OPEN_DEVICE);
    beginBody(width, height, millimetres);
  }
  void finish() {
    send(RAXEL_OP_END_PICTURE);
    send(RAXEL_OP_CLOSE_DEVICE);
    terminate();
  }

  std::vector<Call> calls;
  size_t refuseFrom = 0;  // 1-based number of the first call to refuse
  // What the host does in its callback, if anything.
  std::function<void()> action;
  std::array<HostWord, 16> record_ = {};
  std::array<HostWord, 16> status_ = {};
  std::array<uint32_t, 64> capabilities_ = {};
  Handle setup_ = 0;

 private:
  static int32_t onStatus(HostWord context, HostWord a, HostWord b, HostWord c, HostWord d, HostWord e,
                          HostWord f) {
    auto *host = reinterpret_cast<Host *>(context);
    // The follow-up query carries a block's address, which no test compares.
    const bool followUp = a == RAXEL_REPORT_ASK_AGAIN && b == RAXEL_REPORT_STOP;
    host->calls.push_back({context, {a, b, c, d, e, followUp ? 0 : f}});
    const std::function<void()> act = host->action;  // which may replace itself
    if (act) act();
    return host->refuseFrom != 0 && host->calls.size() >= host->refuseFrom ? 1 : 0;
  }

  std::vector<char> name_;
};

}  // namespace raster_test
