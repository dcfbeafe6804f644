// SPDX-License-Identifier: MIT
#include "pictures/confined.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>

#include "confine/child.h"
#include "pictures/told.h"

namespace host {
namespace {

// Enough for what any decoder takes that reads honestly: OpenJPEG, of all, has two numbers of 32 bits for
// each sample of at least 8, and the picture lies twice beside them. The slowest machine decodes a megabyte
// in a second.
Allowance allowanceFor(uint64_t bytes) {
  constexpr uint64_t kAtLeast = uint64_t{1} << 30, kForEachByte = 12, kSeconds = 60, kInOneSecond = 1 << 20;
  bytes = std::min(bytes, kLargestPicture);
  return {kAtLeast + bytes * kForEachByte, kSeconds + bytes / kInOneSecond};
}

// ---- The child's side

void putText(const std::string &text, Told &to, size_t &used) {
  const size_t size = std::min(text.size(), sizeof to.text - 1 - std::min(used, sizeof to.text - 1));
  std::memcpy(to.text + std::min(used, sizeof to.text - 1), text.data(), size);
  used += size + 1;
  ++to.texts;
}

Told describe(TellKind kind, const Picture &picture, size_t oldNotes) {
  Told told{};
  told.kind = kind;
  told.width = picture.view.width;
  told.height = picture.view.height;
  told.bits = picture.view.bits;
  told.colors = picture.view.table ? picture.view.colors : 0;
  told.tableKnown = picture.tableKnown;
  told.dpiX = picture.dpiX;
  told.dpiY = picture.dpiY;
  std::copy(picture.table.begin(), picture.table.end(), told.table);
  size_t used = 0;
  for (size_t i = oldNotes; i < picture.notes.size(); ++i) putText(picture.notes[i], told, used);
  return told;
}

void tell(const Told &told) {
  tellParent(&told, sizeof told);
}

void refuse(const std::string &why) {
  Told told{};
  told.kind = kTellRefused;
  size_t used = 0;
  putText(why, told, used);
  tell(told);
}

// Sends rows in pieces, while others are decoded.
class RowStream {
 public:
  RowStream(const Picture &picture, size_t oldNotes) : picture_(picture), oldNotes_(oldNotes) {}
  void send(uint32_t rows, size_t least) {
    const size_t end = picture_.view.stride * rows;
    if (end - sent_ < least) return;
    if (sent_ == 0) tell(describe(kTellRows, picture_, oldNotes_));
    streamToParent(picture_.view.rows + sent_, end - sent_);
    sent_ = end;
  }

 private:
  const Picture &picture_;
  size_t oldNotes_;
  size_t sent_ = 0;
};

void decodeHere(Picture &out, const std::function<void()> &decode) {
  constexpr size_t kPiece = size_t{1} << 18;
  const size_t oldNotes = out.notes.size();
  RowStream stream(out, oldNotes);
  out.ready = [&](uint32_t rows) { stream.send(rows, kPiece); };
  out.gate = [&](const Picture &announced) {
    tell(describe(kTellAnnounced, announced, oldNotes));
    waitForParent();
  };
  try {
    decode();
    stream.send(out.view.height, 1);
    tell(describe(kTellDone, out, oldNotes));
  } catch (const std::bad_alloc &) {
    Told told{};
    told.kind = kTellNoMemory;
    tell(told);
  } catch (const std::exception &why) {
    refuse(why.what());
  }
}

// ---- The parent's side

[[noreturn]] void disbelieve() {
  throw DecoderLost(0, "is damaged: what its decoder tells makes no sense");
}

void require(bool holds) {
  if (!holds) disbelieve();
}

std::vector<std::string> textsOf(const Told &told) {
  constexpr uint32_t kMost = 8;
  require(told.texts <= kMost);
  std::vector<std::string> texts;
  size_t at = 0;
  for (uint32_t i = 0; i < told.texts; ++i) {
    const size_t left = sizeof told.text - std::min(at, sizeof told.text);
    const char *text = told.text + sizeof told.text - left;
    texts.push_back(plainText({text, strnlen(text, left)}));
    at += texts.back().size() + 1;
  }
  return texts;
}

double resolution(double said) {
  return std::isfinite(said) ? said : 0;
}

// All but the rows.
void take(const Told &told, const std::vector<std::string> &oldNotes, Picture &out) {
  require(told.width != 0 && told.height != 0);
  require((told.bits >= 1 && told.bits <= 8) || told.bits == 24);
  require(told.colors <= std::size(told.table) / 3 && (told.colors == 0 || told.bits <= 8));
  require(told.tableKnown <= 1);
  std::copy(std::begin(told.table), std::end(told.table), out.table.begin());
  out.tableKnown = told.tableKnown != 0;
  out.dpiX = resolution(told.dpiX);
  out.dpiY = resolution(told.dpiY);
  out.notes = oldNotes;
  for (const std::string &note : textsOf(told)) out.notes.push_back(note);
  const uint64_t stride = (uint64_t{told.width} * told.bits + 7) / 8;
  out.view = RaxelPicture{told.width,
                          told.height,
                          told.bits,
                          out.table.data(),
                          static_cast<size_t>(stride),
                          told.colors != 0 ? out.table.data() : nullptr,
                          told.colors};
}

// The rows, as far as they come.
bool takeRows(Child &child, Picture &out) {
  require(out.view.bits == 24 || (out.view.bits & (out.view.bits - 1)) == 0);
  const uint64_t size = uint64_t{out.view.stride} * out.view.height;
  require(size <= kLargestPicture);
  out.pixels = Buffer(static_cast<size_t>(size));
  return child.readAll(out.pixels.data(), out.pixels.size());
}

bool sameSize(const RaxelPicture &a, const RaxelPicture &b) {
  return a.width == b.width && a.height == b.height && a.bits == b.bits;
}

void hear(Child &child, Picture &out) {
  const std::vector<std::string> oldNotes = out.notes;
  std::optional<RaxelPicture> announced, rows;  // where the decoder knew it all; and what came
  bool whole = false;
  for (bool isFirst = true;; isFirst = false) {
    Told told{};
    const size_t size = child.receive(&told, sizeof told);
    if (size == 0) {
      const Ending ending = child.ending();
      throw DecoderLost(ending.signal, "is damaged: " + ending.what);
    }
    require(size == sizeof told);
    if (told.kind == kTellRefused) {
      const std::vector<std::string> why = textsOf(told);
      require(why.size() == 1 && !why[0].empty());
      throw Unreadable(why[0]);
    }
    if (told.kind == kTellNoMemory) throw std::bad_alloc();
    take(told, oldNotes, out);
    if (told.kind == kTellAnnounced) {
      require(isFirst);
      if (out.tableKnown) announced = out.view;
      if (out.gate) out.gate(out);
      child.goOn(allowanceFor(uint64_t{out.view.stride} * out.view.height));
    } else if (told.kind == kTellRows) {
      require(!rows && (!announced || sameSize(*announced, out.view)));
      rows = out.view;
      whole = takeRows(child, out);
    } else {
      require(told.kind == kTellDone && whole && sameSize(*rows, out.view));
      out.view.rows = out.pixels.data();
      return child.finish();
    }
  }
}

}  // namespace

void confined(Picture &out, uint64_t bytes, const std::function<void()> &decode) {
  if (!decodersAreConfined()) return decode();
  Child child(allowanceFor(bytes), [&] { decodeHere(out, decode); });
  hear(child, out);
}

}  // namespace host
