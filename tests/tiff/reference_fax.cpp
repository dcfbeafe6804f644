// SPDX-License-Identifier: MIT
#include "tiff/reference_fax.h"

#include "tiff/fax_code_list.h"

namespace reference {

std::string runCodes(bool isBlack, uint32_t run) {
  std::string out;
  while (run > 2560) {
    out += kExtended[12];
    run -= 2560;
  }
  if (run >= 1792) {
    out += kExtended[(run - 1792) / 64];
  } else if (run >= 64) {
    out += isBlack ? kBlackLong[run / 64 - 1] : kWhiteLong[run / 64 - 1];
  }
  return out + (isBlack ? kBlackShort[run % 64] : kWhiteShort[run % 64]);
}

std::string fax1D(const std::string &row) {
  std::string out;
  char color = 'w';
  size_t at = 0;
  while (at < row.size()) {
    uint32_t run = 0;
    while (at < row.size() && row[at] == color) {
      ++run;
      ++at;
    }
    out += runCodes(color == 'b', run);
    color = color == 'w' ? 'b' : 'w';
  }
  return out;
}

namespace {

// The pixel, with the white one that stands before every row.
char pixelAt(const std::string &row, ptrdiff_t at) {
  return at < 0 ? 'w' : row[static_cast<size_t>(at)];
}

bool isChanging(const std::string &row, ptrdiff_t at) {
  return pixelAt(row, at) != pixelAt(row, at - 1);
}

std::string fax2DRow(const std::string &row, const std::string &above) {
  std::string out;
  const auto width = static_cast<ptrdiff_t>(row.size());
  ptrdiff_t a0 = -1;
  char color = 'w';
  while (a0 < width) {
    ptrdiff_t a1 = a0 < 0 ? 0 : a0;
    while (a1 < width && pixelAt(row, a1) == color) ++a1;
    ptrdiff_t b1 = a0 + 1;
    while (b1 < width && !(isChanging(above, b1) && pixelAt(above, b1) != color)) ++b1;
    ptrdiff_t b2 = b1 + 1;
    while (b2 < width && !isChanging(above, b2)) ++b2;
    if (b2 > width) b2 = width;
    if (b2 < a1) {
      out += kModes[0];
      a0 = b2;
    } else if (a1 - b1 >= -3 && a1 - b1 <= 3) {
      out += kModes[static_cast<size_t>(5 + a1 - b1)];
      a0 = a1;
      color = color == 'w' ? 'b' : 'w';
    } else {
      ptrdiff_t a2 = a1;
      while (a2 < width && pixelAt(row, a2) != color) ++a2;
      out += kModes[1];
      out += runCodes(color == 'b', static_cast<uint32_t>(a1 - (a0 < 0 ? 0 : a0)));
      out += runCodes(color != 'b', static_cast<uint32_t>(a2 - a1));
      a0 = a2;
    }
  }
  return out;
}

}  // namespace

std::string fax2D(const Picture &picture) {
  if (picture.empty()) return "";
  std::string out;
  std::string above(picture[0].size(), 'w');
  for (const std::string &row : picture) {
    out += fax2DRow(row, above);
    above = row;
  }
  return out;
}

Bytes packBits01(const std::string &bits) {
  Bytes out((bits.size() + 7) / 8);
  for (size_t i = 0; i < bits.size(); ++i) {
    if (bits[i] == '1') out[i / 8] = static_cast<uint8_t>(out[i / 8] | 0x80 >> i % 8);
  }
  return out;
}

Bytes packRow(const std::string &row, bool pad) {
  std::string bits;
  for (const char pixel : row) bits += pixel == 'w' ? '1' : '0';
  while (bits.size() % 8 != 0) bits += pad ? '1' : '0';
  return packBits01(bits);
}

Bytes packPicture(const Picture &picture, bool pad) {
  Bytes out;
  for (const std::string &row : picture) {
    const Bytes packed = packRow(row, pad);
    out.insert(out.end(), packed.begin(), packed.end());
  }
  return out;
}

}  // namespace reference
