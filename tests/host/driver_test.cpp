// SPDX-License-Identifier: MIT
// A session of the driver in which memory ends.
#include "filter/driver.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include "export/pace.h"
#include "host/linked_filter.h"

namespace {

using host_test::TestPicture;

std::vector<uint32_t> heard;  // the operations of a session, in their order
size_t lastBeforeTheEnd;      // of memory: how many are carried out

// The filter's working entry, behind which there is no memory left.
int32_t shortEntry(HostWord unused, uint32_t op, void *record) {
  const int32_t code = RASTER_dd_entry32(unused, op, record);
  heard.push_back(op);
  if (heard.size() == lastBeforeTheEnd) throw std::bad_alloc();
  return code;
}

int32_t giveShortEntry(uint32_t, void *out, uint32_t) {
  auto *const entry = &shortEntry;
  std::memcpy(out, &entry, sizeof entry);
  return 0;
}

struct Session {
  bool hadMemory = true;
  bool closed = false;  // the output, as the stream has heard
  std::vector<uint8_t> file;

  // `last` as above; 0 for enough memory.
  explicit Session(size_t last) {
    heard.clear();
    lastBeforeTheEnd = last;
    host::Library library = host_test::linkedFilter();
    library.rasterEntry = giveShortEntry;
    TestPicture picture(30, 200, 8);
    for (size_t i = 0; i < picture.rows.size(); ++i) picture.rows[i] = static_cast<uint8_t>(i % 251);
    const RaxelRequest wanted = host_test::request(RAXEL_MODE_GREY256);
    RaxelPlan plan;
    EXPECT_EQ(raxelHostPlan(&picture.view, &wanted, &plan), RAXEL_HOST_OK);
    const prepare::HandleMemory pixels(library.services, plan.bytes), table(library.services, 768);
    EXPECT_EQ(
        raxelHostPrepare(&picture.view, &wanted, &library.services, &plan, pixels.bytes(), table.bytes()),
        RAXEL_HOST_OK);
    const host::Handover handover = host_test::handoverOf(plan, pixels, table);
    host::Sink sink(-1);
    host::Pace pace(RaxelHostJob{});
    host::OutputStream stream(sink, pace);
    host::Setup setup(library);
    host::sendPlan(setup, plan);
    setup.setOutput(&host::OutputStream::procedure);
    try {
      EXPECT_EQ(host::exportThroughDriver(library, setup, plan, handover, stream), int32_t{RAXEL_OK});
    } catch (const std::bad_alloc &) {
      hadMemory = false;
    }
    closed = stream.closed();
    file.assign(sink.kept().begin(), sink.kept().end());
  }
};

}  // namespace

// A session left open would be closed by the one after it, when its stream is gone.
TEST(DriverSession, IsEndedOnceWhereverMemoryEnds) {
  const Session whole(0);
  const size_t calls = heard.size();
  ASSERT_TRUE(whole.hadMemory && whole.closed);
  ASSERT_GT(calls, 10u);
  for (size_t last = 2; last < calls; ++last) {
    const Session broken(last);
    EXPECT_FALSE(broken.hadMemory) << last;
    EXPECT_TRUE(broken.closed || last == 2) << last << ": its output is open";
    ASSERT_EQ(heard.size(), last + 1) << last;
    EXPECT_EQ(heard.back(), uint32_t{RAXEL_ENTRY_END}) << last;
  }
  EXPECT_EQ(Session(0).file, whole.file);
  EXPECT_EQ(heard.size(), calls);
}
