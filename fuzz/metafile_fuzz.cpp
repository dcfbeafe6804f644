// SPDX-License-Identifier: MIT
// Metafile sessions: started, executed, rendered and ended in any order, beside the raster driver whose
// functions they dispatch, with outputs of every kind and a host that objects.
#include <cstring>
#include <string>

#include "driver_host.h"
#include "entry/metafile_session.h"
#include "raxel/raxel.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

class Session {
 public:
  explicit Session(fuzz::Input &input) : input_(input), driver_(input) {
    common_.nSessState = static_cast<int32_t>(input.byte() % 4) - 1;
    common_.lpSessStatus = input.once(4) ? nullptr : driver_.host.status_.data();
    common_.nSessStatusArg = input.byte();
  }
  ~Session() {
    lpCommon = nullptr;
    hCommon = 0;
    end();
    driver_.host.terminate();
    fuzz::require(driver_.isClosed(), "an open stream is closed");
  }
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  void step() {
    switch (input_.byte() % 12) {
      case 0:
        return start();
      case 1:
        return end();
      case 2:
        lpCommon = lpCommon == nullptr ? &common_ : nullptr;
        return;
      case 3:
        hCommon = input_.once(4) ? 9 : 0;
        return;
      case 4:
        return startDriver();
      case 5:
        return version();
      case 6:
        return ask();
      case 7:
        return render();
      default:
        return execute();
    }
  }

 private:
  void start() {
    // A session that still writes to memory is ended first: its block would be told nobody.
    if (driver_.host.settings().lpOutputMemory != nullptr) end();
    std::string name;
    const unsigned kind = input_.byte();
    if (kind % 4 == 1) name = "/nonexistent/folder/out.tif";
    if (kind % 4 == 2) name = "/nonexistent/" + std::string(kind / 4 + 107, 'n');  // what fits, or more
    const std::vector<uint8_t> text(name.c_str(), name.c_str() + name.size() + 1);
    const fuzz::Exact place(text);
    // Such names are for the procedure, which may decline them.
    if (kind % 4 == 2) driver_.host.settings().lpfnOutputProc = driver_.stream.procedure();
    raster_test::Host &host = driver_.host;
    HostWord record[RAXEL_START_WORDS] = {};
    record[RAXEL_START_PLATFORM_1] = kind;
    record[RAXEL_START_NAME] = kind % 4 == 3 ? 0 : reinterpret_cast<HostWord>(place.data());
    record[RAXEL_START_SETUP] = kind == 255 ? 0 : host.setup_;
    record[RAXEL_START_STATUS] = reinterpret_cast<HostWord>(host.status_.data());
    for (size_t word = RAXEL_STATUS_VALUE; word <= RAXEL_STATUS_FRAME_RESOLUTION; ++word) {
      if (word != RAXEL_STATUS_OUTPUT) host.status_[word] = input_.once(8) ? input_.quad() : input_.byte();
    }
    const int32_t code = input_.once(2) ? dd_entry32(0, RAXEL_ENTRY_START, record) : initdvr(record);
    fuzz::require(code == 0 || code == RAXEL_BAD_SETUP || code == RAXEL_CANNOT_WRITE,
                  "a code that starting may answer");
  }

  void end() {
    lpRaster = &driver_.host.settings();
    const int32_t code = termdvr(0);
    fuzz::require(code == RAXEL_NO_MEMORY || code == RAXEL_CANNOT_WRITE, "a code that ending may answer");
    HostWord &block = driver_.host.status_[RAXEL_STATUS_OUTPUT];
    GlobalFree(block);
    block = 0;
  }

  void startDriver() {
    if (lpEMData == nullptr) driver_.host.initialise();
  }

  void version() {
    const fuzz::Exact four(4, input_.byte() % 2 == 1);
    fuzz::require(dd_entry32(0, RAXEL_ENTRY_VERSION, four.data()) == 4, "four bytes of version");
    uint32_t value;
    std::memcpy(&value, four.data(), sizeof value);
    fuzz::require(value == RAXEL_VERSION, "the version");
    const fuzz::Exact address(sizeof(void *), true);
    dd_entry(RAXEL_ENTRY_ADDRESS, address.data(), 0);
    dd_entry(input_.word(), nullptr, 0);
  }

  void ask() {
    const int32_t code = escape();
    fuzz::require(code == 0 || code == RAXEL_STOPPED, "a code that asking may answer");
    esc_mode(input_.byte());
  }

  // As a platform that had recorded something.
  void render() {
    if (lpRaster == nullptr) return;
    lpRaster->lpStatus = driver_.host.status_.data();
    const int32_t code = entry::renderMetafile(1, *lpRaster);
    fuzz::require(code == RAXEL_NO_FORMAT || code == RAXEL_NO_MEMORY, "a code that rendering may answer");
  }

  void execute() {
    const std::vector<uint8_t> record = driver_.record();
    const fuzz::Exact place(record, input_.byte() % 2 == 1);
    common_.nSessError = static_cast<int16_t>(input_.byte());
    fuzz::require(dd_entry32(0, RAXEL_ENTRY_EXECUTE, place.data()) == 0,
                  "no function of this session fails");
  }

  fuzz::Input &input_;
  fuzz::DriverHost driver_;
  SessionCommon common_{};
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  Session session(input);
  for (size_t steps = 0; input.left() > 0 && steps < 60; ++steps) session.step();
  return 0;
}
