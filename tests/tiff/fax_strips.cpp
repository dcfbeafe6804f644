// SPDX-License-Identifier: MIT
#include "tiff/fax_strips.h"

#include "tiff/fax_1d.h"
#include "tiff/fax_2d.h"

namespace support {
namespace {

using reference::Bytes;
using reference::Picture;

void append(Bytes &to, const Bytes &more) {
  to.insert(to.end(), more.begin(), more.end());
}

template <class Encode>
Bytes encodeStrip(const Picture &picture, bool pad, Encode encode) {
  const Bytes packed = reference::packPicture(picture, pad);
  const auto width = static_cast<uint32_t>(picture[0].size());
  tiff::FaxBuffer buffer(runtime::allocate(packed.size() * 2));
  const uint32_t n = encode(packed, width, static_cast<uint32_t>(picture.size()), buffer);
  return Bytes(buffer.data(), buffer.data() + n);
}

}  // namespace

Bytes faxRow(const std::string &row, uint32_t compression, bool pad) {
  const Bytes packed = reference::packRow(row, pad);
  tiff::FaxBuffer buffer(runtime::allocate(packed.size() * 2));
  const uint32_t n = tiff::encodeFaxRow(packed, static_cast<uint32_t>(row.size()), compression, buffer);
  return Bytes(buffer.data(), buffer.data() + n);
}

Bytes huffmanStrip(const Picture &picture, bool pad) {
  Bytes strip;
  for (const std::string &row : picture) append(strip, faxRow(row, 2, pad));
  return strip;
}

Bytes t4Strip(const Picture &picture, bool pad) {
  Bytes strip = {0x00, 0x01};
  for (const std::string &row : picture) append(strip, faxRow(row, 3, pad));
  for (int i = 0; i < 5; ++i) append(strip, {0x00, 0x01});
  return strip;
}

Bytes t6Strip(const Picture &picture, bool pad) {
  return encodeStrip(picture, pad, tiff::encodeFax2D);
}

Bytes t6StripPlain(const Picture &picture, bool pad) {
  return encodeStrip(picture, pad, tiff::encodeFax2DPlain);
}

}  // namespace support
