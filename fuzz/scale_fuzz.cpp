// SPDX-License-Identifier: MIT
// Pictures scaled, mirrored and brought from four channels to three: what the plain forms give.
#include "color/reference/scale.h"
#include "color_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

int wholeDepth(fuzz::Input &input) {
  return fuzz::oneOf<int>(input, {1, 4, 8, 24, 32});
}

void scale(fuzz::Input &input) {
  const int depth = wholeDepth(input);
  const uint32_t width = fuzz::side(input), height = fuzz::side(input);
  plain::Picture picture{{}, fuzz::side(input), fuzz::side(input), depth};
  picture.bits = fuzz::filled(input, size_t{plain::lineBytes(picture.width, depth)} * picture.height);
  const fuzz::ExactBlock bits(picture.bits);
  const auto call = input.once(2) ? rlStretchBitmap : rlShrinkBitmap;
  const runtime::Block scaled(
      call(bits.handle(), static_cast<int16_t>(depth), picture.width, picture.height, width, height));
  fuzz::require(pictures::bytesOf(scaled.handle()) ==
                    reference::scale(picture.bits, depth, picture.width, picture.height, width, height),
                "the picture of the plain form");
  fuzz::require(bits.bytes() == picture.bits, "the source is never changed");
}

// Blocks that are shorter than their pictures, sides of nothing, depths that there are not, and pictures
// that fit in no block.
void scaleAnything(fuzz::Input &input) {
  const auto depth = static_cast<int16_t>(input.once(4) ? input.word() : input.byte() % 40);
  const auto anySide = [&input] {
    const unsigned choice = input.byte();
    return choice == 255 ? 0xFFFFFFFFu : choice % 60;
  };
  const uint32_t sourceWidth = anySide(), sourceHeight = anySide();
  uint32_t width = anySide(), height = anySide();
  if (width > 60 || height > 60) width = height = 0xFFFFFFFFu;
  const fuzz::Bytes held = fuzz::filled(input, input.word() % 600);
  const fuzz::ExactBlock bits(held);
  const runtime::Block scaled(
      rlStretchBitmap(bits.handle(), depth, sourceWidth, sourceHeight, width, height));
  fuzz::require(bits.bytes() == held, "the source is never changed");
}

void rows(fuzz::Input &input) {
  const int depth = wholeDepth(input);
  const uint32_t sourceWidth = fuzz::side(input), width = fuzz::side(input);
  const fuzz::Bytes source = fuzz::filled(input, plain::lineBytes(sourceWidth, depth));
  const fuzz::Bytes before = fuzz::filled(input, plain::lineBytes(width, depth));
  const fuzz::Exact from(source);
  const bool shrinks = input.once(2);
  fuzz::Bytes expected = before;
  const fuzz::Exact to(before);
  if (shrinks) {
    ShrinkX(from.data(), to.data(), static_cast<int16_t>(depth), sourceWidth, 1, width);
    reference::shrinkRow(source.data(), expected.data(), depth, sourceWidth, width);
  } else {
    StretchX(from.data(), to.data(), static_cast<int16_t>(depth), sourceWidth, 1, width);
    reference::stretchRow(source.data(), expected.data(), depth, sourceWidth, width);
  }
  fuzz::require(std::equal(expected.begin(), expected.end(), to.data()), "the row of the plain form");
}

void flip(fuzz::Input &input) {
  const int depth = wholeDepth(input);
  plain::Picture picture{{}, fuzz::side(input), fuzz::side(input), depth};
  picture.bits = fuzz::filled(input, size_t{plain::lineBytes(picture.width, depth)} * picture.height);
  const unsigned ways = input.byte();
  const fuzz::ExactBlock bits(picture.bits);
  rlFlipBitmap(bits.handle(), static_cast<int16_t>(depth), picture.width, picture.height,
               static_cast<uint16_t>(ways & 1), static_cast<uint16_t>(ways & 2));
  // Past the block's bytes that is 0, and lost.
  fuzz::Bytes expected = picture.bits;
  expected.resize(expected.size() + 4);
  reference::flip(expected, depth, picture.width, picture.height, (ways & 1) != 0, (ways & 2) != 0);
  expected.resize(picture.bits.size());
  fuzz::require(bits.bytes() == expected, "the picture of the plain form");
}

void fourBytes(fuzz::Input &input) {
  const uint32_t width = fuzz::side(input), height = fuzz::side(input);
  fuzz::Bytes expected = fuzz::filled(input, size_t{4} * width * height);
  const fuzz::ExactBlock bits(expected);
  switch (input.byte() % 3) {
    case 0:
      rlRGB4toCMYK(bits.handle(), width, height);
      reference::rgbToCmyk(expected);
      break;
    case 1:
      rlCMYKtoRGB(bits.handle(), width, height);
      reference::cmykToRgb(expected);
      break;
    default:
      rlALPHAtoRGB(bits.handle(), width, height);
      reference::dropAlpha(expected);
  }
  fuzz::require(bits.bytes() == expected, "the picture of the plain form");
}

// The same with blocks and sizes that have nothing to do with each other.
void changeAnything(fuzz::Input &input) {
  const fuzz::ExactBlock bits(fuzz::filled(input, input.word() % 600));
  const auto depth = static_cast<int16_t>(input.byte() % 40);
  const uint32_t width = input.once(8) ? 0xFFFFFFFFu : input.byte();
  const uint32_t height = input.byte();
  rlFlipBitmap(bits.handle(), depth, width % 4096, height, static_cast<uint16_t>(input.byte() % 2),
               static_cast<uint16_t>(input.byte() % 2));
  rlRGB4toCMYK(bits.handle(), width, height);
  rlCMYKtoRGB(bits.handle(), width, height);
  rlALPHAtoRGB(bits.handle(), width, height);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  switch (input.byte() % 7) {
    case 0:
    case 1:
      scale(input);
      break;
    case 2:
      scaleAnything(input);
      break;
    case 3:
      rows(input);
      break;
    case 4:
      flip(input);
      break;
    case 5:
      fourBytes(input);
      break;
    default:
      changeAnything(input);
  }
  return 0;
}
