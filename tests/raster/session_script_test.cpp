// SPDX-License-Identifier: MIT
// Sessions as a host sends them, recorded as scripts in tests/raster/sessions: each line does one
// thing, and what follows "=" is the code that the driver answers. sessions/README.md lists the words.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <sstream>

#include "raster/session.h"
#include "support/golden.h"
#include "support/paths.h"
#include "support/temp_dir.h"

namespace {

using raster_test::Host;
using Words = std::vector<std::string>;

double number(const std::string &word) {
  return std::stod(word);
}

uint32_t whole(const std::string &word) {
  return static_cast<uint32_t>(std::stoll(word));
}

class Script {
 public:
  explicit Script(std::string name) : name_(std::move(name)) {}

  void run(const std::string &path) {
    std::ifstream in(path);
    ASSERT_TRUE(in) << path;
    std::string line;
    for (int at = 1; std::getline(in, line); ++at) {
      SCOPED_TRACE(path + ":" + std::to_string(at));
      line = line.substr(0, line.find('#'));
      std::istringstream words(line);
      Words all{std::istream_iterator<std::string>(words), {}};
      if (!all.empty()) perform(std::move(all));
    }
    EXPECT_EQ(heard_, host_->calls.size()) << "status calls that the script does not list";
  }

 private:
  void perform(Words words) {
    const auto equals = std::find(words.begin(), words.end(), "=");
    const std::string expected = equals == words.end() ? "" : *(equals + 1);
    words.erase(equals, words.end());
    const std::string verb = words.front();
    words.erase(words.begin());
    if (expectation(verb, words)) return;
    const int32_t code = action(verb, words);
    if (!expected.empty()) {
      EXPECT_EQ(code, std::stoi(expected)) << verb;
    }
  }

  // Lines that check something.
  bool expectation(const std::string &verb, const Words &words) {
    if (verb == "heard") {
      if (heard_ >= host_->calls.size()) {
        ADD_FAILURE() << "the status callback was not called";
        return true;
      }
      const auto &values = host_->calls[heard_++].values;
      for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(static_cast<intptr_t>(values[i]), static_cast<intptr_t>(std::stoll(words[i]))) << i;
      }
    } else if (verb == "reply") {
      checkReply(words);
    } else if (verb == "state") {
      EXPECT_EQ(lpEMData->nState, whole(words[0]));
    } else if (verb == "file") {
      checkFile(words);
    } else {
      return false;
    }
    return true;
  }

  template <class T>
  T nextReply() {
    T value = {};
    if (replied_ + sizeof value > lpEMData->nReplyPos) {
      ADD_FAILURE() << "no such reply";
      return value;
    }
    std::memcpy(&value, lpEMData->lpReplyBuf + replied_, sizeof value);
    replied_ += sizeof value;
    return value;
  }

  void checkReply(const Words &words) {
    if (words[0] == "none") {
      EXPECT_EQ(replied_, lpEMData->nReplyPos);
      return;
    }
    for (size_t i = 1; i < words.size(); ++i) {
      if (words[0] == "f64") {
        EXPECT_EQ(nextReply<double>(), number(words[i]));
      } else if (words[0] == "i32") {
        EXPECT_EQ(nextReply<int32_t>(), std::stoi(words[i]));
      }
    }
    if (words[0] == "error") {
      EXPECT_EQ(nextReply<uint32_t>(), whole(words[1]));
      EXPECT_EQ(nextReply<int16_t>(), std::stoi(words[2]));
      EXPECT_EQ(nextReply<int16_t>(), 0);
    }
  }

  void checkFile(const Words &words) {
    const std::string path = dir_.file("out.tif");
    if (words[0] == "none") {
      EXPECT_FALSE(std::filesystem::exists(path));
    } else {
      const auto bytes = support::readFile(path);
      if (words.size() > 1) {
        EXPECT_EQ(bytes.size(), whole(words[1]));
      }
      if (words[0] == "golden") support::golden("raster/" + name_, bytes);
    }
  }

  void set(const std::string &assignment) {
    const size_t at = assignment.find('=');
    const std::string key = assignment.substr(0, at);
    const double value = number(assignment.substr(at + 1));
    RasterSetup &settings = host_->settings();
    const auto integer = static_cast<int32_t>(value);
    if (key == "bitmap") settings.nBitmapMode = integer;
    if (key == "compression") settings.nCompressionMode = integer;
    if (key == "color") settings.nColorMode = integer;
    if (key == "layout") settings.tiff.wLayoutMode = static_cast<uint16_t>(integer);
    if (key == "width") settings.dWidth = value;
    if (key == "height") settings.dHeight = value;
    if (key == "capacity") lpEMData->nErrMax = static_cast<uint32_t>(integer);
    if (key == "function") lpEMData->nCurFunc = static_cast<uint32_t>(integer);
  }

  // Lines that do something; the driver's answer comes back.
  int32_t action(const std::string &verb, const Words &words) {
    if (verb == "host") {
      host_ = std::make_unique<Host>(words.empty()        ? ""
                                     : words[0] == "file" ? dir_.file("out.tif")
                                                          : words[0]);
      return 0;
    }
    if (verb == "set") {
      for (const std::string &word : words) set(word);
      return 0;
    }
    if (verb == "refuse") {
      host_->refuseFrom = host_->calls.size() + 1;
      return 0;
    }
    if (verb == "allow") {
      host_->refuseFrom = 0;
      return 0;
    }
    if (verb == "initialise") return host_->initialise();
    if (verb == "terminate") return host_->terminate();
    if (verb == "send") return host_->send(whole(words[0]));
    if (verb == "push") {
      push_er(std::stoi(words[0]));
      return 0;
    }
    return record(verb, words);
  }

  int32_t record(const std::string &verb, const Words &words) {
    if (verb == "window" || verb == "viewport") {
      auto bytes = Host::recordOf(verb == "window" ? RAXEL_OP_WINDOW : RAXEL_OP_VIEWPORT, 64);
      for (size_t i = 0; i < 6; ++i) Host::put(bytes, 16 + 8 * i, number(words[i]));
      return host_->send(bytes);
    }
    if (verb == "metric") return host_->setResolution(number(words[0]));
    if (verb == "colors") {
      std::vector<uint8_t> rgb;
      for (size_t i = 1; i < words.size(); ++i) rgb.push_back(static_cast<uint8_t>(whole(words[i])));
      return host_->setColors(whole(words[0]), rgb);
    }
    if (verb == "begin") return host_->beginRaster(whole(words[0]), whole(words[1]), std::stoi(words[2]));
    if (verb == "end") return host_->endRaster();
    if (verb == "pop") {
      auto bytes = Host::recordOf(RAXEL_OP_POP_ERRORS, 64);
      Host::put<int32_t>(bytes, 16, std::stoi(words[0]));
      return host_->send(bytes);
    }
    if (verb == "cells") return cells(words);
    ADD_FAILURE() << "unknown word " << verb;
    return 0;
  }

  // cells COLUMNS ROWS PRECISION down|up BYTES: the bytes run on as 3, 10, 17 ... from call to call.
  int32_t cells(const Words &words) {
    std::vector<uint8_t> pixels(whole(words[4]));
    for (uint8_t &byte : pixels) byte = (pattern_ = static_cast<uint8_t>(pattern_ + 7));
    return host_->send(
        Host::cellArray(whole(words[0]), whole(words[1]), std::stoi(words[2]), pixels, words[3] == "up"));
  }

  std::string name_;
  support::TempDir dir_;
  std::unique_ptr<Host> host_;
  size_t heard_ = 0;
  uint32_t replied_ = 0;
  uint8_t pattern_ = 252;
};

std::vector<std::string> recorded() {
  std::vector<std::string> names;
  for (const auto &entry :
       std::filesystem::directory_iterator(support::sourcePath("tests/raster/sessions"))) {
    if (entry.path().extension() == ".session") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class RecordedSession : public testing::TestWithParam<std::string> {};

TEST_P(RecordedSession, AnswersAsWritten) {
  Script(GetParam()).run(support::sourcePath("tests/raster/sessions/" + GetParam() + ".session"));
}

INSTANTIATE_TEST_SUITE_P(Driver, RecordedSession, testing::ValuesIn(recorded()),
                         [](const auto &tested) { return tested.param; });

}  // namespace
