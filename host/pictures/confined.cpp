// SPDX-License-Identifier: MIT
#include "pictures/confined.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>
#include <utility>

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

Told describe(TellKind kind, const Picture &picture) {
  Told told{};
  told.kind = kind;
  told.width = picture.view.width;
  told.height = picture.view.height;
  told.bits = picture.view.bits;
  told.orientation = static_cast<uint32_t>(picture.orientation);
  told.colors = picture.view.table ? picture.view.colors : 0;
  told.tableKnown = picture.tableKnown;
  told.dpiX = picture.dpiX;
  told.dpiY = picture.dpiY;
  std::copy(picture.table.begin(), picture.table.end(), told.table);
  size_t used = 0;
  for (const std::string &note : picture.notes) putText(note, told, used);
  return told;
}

void tell(const Told &told) {
  tellParent(&told, sizeof told);
}

void tellOnly(TellKind kind) {
  Told told{};
  told.kind = kind;
  tell(told);
}

void refuse(const std::string &why) {
  Told told{};
  told.kind = kTellRefused;
  size_t used = 0;
  putText(why, told, used);
  tell(told);
}

// Hands over the bytes of rows in pieces. The parent says of each that it has them.
class RowsToParent {
 public:
  RowsToParent(const Window &window, const Picture &picture) : window_(window), picture_(picture) {}
  // Where a row is to be written, when those above it are. Null for those that are longer than a piece.
  uint8_t *placeOf(uint32_t row) {
    const size_t stride = picture_.view.stride, inPiece = Window::kPiece / stride;
    if (inPiece == 0) return nullptr;
    while (row >= (pieces_ + 1) * inPiece) hand(inPiece * stride);
    if (used_ == 0) waitForRoom();
    used_ = stride * (row - pieces_ * inPiece + 1);
    return window_.piece(pieces_) + used_ - stride;
  }
  // All that is not there yet.
  void finish() {
    if (used_ != 0) return hand(used_);
    if (pieces_ != 0) return;
    const uint8_t *pixels = picture_.pixels.data();
    for (size_t sent = 0; sent < picture_.pixels.size(); sent += Window::kPiece) {
      const size_t size = std::min(Window::kPiece, picture_.pixels.size() - sent);
      waitForRoom();
      std::memcpy(window_.piece(pieces_), pixels + sent, size);
      hand(size);
    }
  }

 private:
  void waitForRoom() {
    if (pieces_ >= Window::kPieces) waitForParent();
  }
  void hand(size_t bytes) {
    if (pieces_ == 0) tell(describe(kTellRows, picture_));
    Told told{};
    told.kind = kTellPiece;
    told.bytes = static_cast<uint32_t>(bytes);
    tell(told);
    ++pieces_;
    used_ = 0;
  }

  const Window &window_;
  const Picture &picture_;
  size_t pieces_ = 0, used_ = 0;  // that are handed over, and bytes of the next
};

// The sanitizer looks through a pipe at what it holds for an exception, and a child can make none.
__attribute__((no_sanitize("vptr"))) std::string reasonOf(const std::exception &why) {
  return why.what();
}

// A picture that cannot be read is the last one.
void decodeHere(const Window &window, Picture &out, const Decode &decode) {
  RowsToParent rows(window, out);
  out.placeOf = [&](uint32_t row) { return rows.placeOf(row); };
  out.gate = [&](const Picture &announced) {
    tell(describe(kTellAnnounced, announced));
    waitForParent();
  };
  try {
    decode(out);
    rows.finish();
    tell(describe(kTellDone, out));
  } catch (const std::bad_alloc &) {
    tellOnly(kTellNoMemory);
    _exit(0);
  } catch (const std::exception &why) {
    refuse(reasonOf(why));
    _exit(0);  // it would look at what is destroyed in the same way
  }
}

// Answers to the picture before, which went without, may come first.
uint64_t nextPlace() {
  uint64_t place = 0;
  while (hearParent(&place, sizeof place) != sizeof place) continue;
  return place;
}

// Pictures of one input, until the parent ends this.
void decodeAll(const Window &window, const Picture &first, const Decode &decode) {
  for (uint64_t place = first.directory;; place = nextPlace()) {
    {
      Picture picture;
      picture.format = first.format;
      picture.isPage = first.isPage;
      picture.directory = place;
      decodeHere(window, picture, decode);
    }
    tellOnly(kTellReady);
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
  require(told.orientation >= 1 && told.orientation <= 8);
  std::copy(std::begin(told.table), std::end(told.table), out.table.begin());
  out.tableKnown = told.tableKnown != 0;
  out.orientation = static_cast<int>(told.orientation);
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

bool sameSize(const RaxelPicture &a, const RaxelPicture &b) {
  return a.width == b.width && a.height == b.height && a.bits == b.bits;
}

RaxelPicture turned(RaxelPicture view, int orientation) {
  if (isOnItsSide(orientation)) std::swap(view.width, view.height);
  return view;
}

[[noreturn]] void lose(Child &child) {
  const Ending ending = child.ending();
  throw DecoderLost(ending.signal, "is damaged: " + ending.what);
}

// Takes the bytes of rows, while others are decoded.
class RowsFromChild {
 public:
  RowsFromChild(Child &child, const Window &window, Picture &out)
      : child_(child), window_(window), out_(out) {}
  // Before the first.
  void begin() {
    require(out_.pixels.size() == 0);
    const RaxelPicture &view = out_.view;
    require(view.bits == 24 || (view.bits & (view.bits - 1)) == 0);
    require(!isTooLarge(view.width, view.height, view.bits));
    out_.pixels = Buffer(view.stride * view.height);
    begun_ = view;
  }
  void takePiece(size_t bytes) {
    require(bytes != 0 && bytes <= Window::kPiece && bytes <= out_.pixels.size() - taken_);
    std::memcpy(out_.pixels.data() + taken_, window_.piece(pieces_), bytes);
    taken_ += bytes;
    ++pieces_;
    child_.goOn();
  }
  // After the last.
  void end() {
    require(out_.pixels.size() != 0 && taken_ == out_.pixels.size() && sameSize(begun_, out_.view));
    out_.view.rows = out_.pixels.data();
  }

 private:
  Child &child_;
  const Window &window_;
  Picture &out_;
  RaxelPicture begun_{};
  size_t taken_ = 0, pieces_ = 0;
};

void hear(Child &child, const Window &window, Picture &out) {
  const std::vector<std::string> oldNotes = out.notes;
  std::optional<RaxelPicture> announced;  // where the decoder knew it all
  RowsFromChild rows(child, window, out);
  for (bool isFirst = true;; isFirst = false) {
    Told told{};
    const size_t size = child.receive(&told, sizeof told);
    if (size == 0) lose(child);
    require(size == sizeof told);
    if (told.kind == kTellRefused) {
      const std::vector<std::string> why = textsOf(told);
      require(why.size() == 1 && !why[0].empty());
      throw Unreadable(why[0]);
    }
    if (told.kind == kTellNoMemory) throw std::bad_alloc();
    if (told.kind == kTellPiece) {
      rows.takePiece(told.bytes);
      continue;
    }
    take(told, oldNotes, out);
    if (told.kind == kTellAnnounced) {
      require(isFirst);
      if (out.tableKnown) announced = out.view;
      if (out.gate) out.gate(out);
      // One that is too large is announced, too, before its decoder says so.
      child.allow(allowanceFor(isTooLarge(out.view.width, out.view.height, out.view.bits)
                                   ? kLargestPicture
                                   : out.view.stride * out.view.height));
      child.goOn();
      continue;
    }
    require(told.kind == kTellRows || told.kind == kTellDone);
    require(!announced || sameSize(*announced, turned(out.view, out.orientation)));
    if (told.kind == kTellDone) return rows.end();
    rows.begin();
  }
}

}  // namespace

// A child that ended when it was done with the page before has done no harm.
bool DecoderChild::takesOn(const Picture &page, const Allowance &most) {
  if (!child_ || dismissed_) return false;
  Told told{};
  return child_->receive(&told, sizeof told) == sizeof told && told.kind == kTellReady &&
         child_->renew(most) && child_->ask(&page.directory, sizeof page.directory);
}

void DecoderChild::fill(Picture &out, uint64_t bytes, const Decode &decode) {
  const Allowance most = allowanceFor(bytes);
  if (!takesOn(out, most)) {
    child_.reset();
    dismissed_ = false;
    if (!window_) window_.emplace();
    child_.emplace(most, [&] { decodeAll(*window_, out, decode); });
  }
  try {
    hear(*child_, *window_, out);
  } catch (...) {
    child_.reset();
    throw;
  }
  // The child keeps all memory that the parent had when it began, and what the parent changes in it
  // meanwhile is copied. Beside a large page another child costs nothing.
  constexpr size_t kLargePage = size_t{4} << 20;
  if (out.pixels.size() >= kLargePage) dismiss();
}

void DecoderChild::dismiss() {
  if (child_) child_->stop();
  dismissed_ = true;
}

void confined(Picture &out, uint64_t bytes, const Decode &decode) {
  if (decodersAreConfined()) {
    DecoderChild own;
    (out.child ? *out.child : own).fill(out, bytes, decode);
  } else {
    decode(out);
  }
  turnUpright(out, out.orientation);
}

}  // namespace host
