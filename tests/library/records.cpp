// SPDX-License-Identifier: MIT
// Where the fields of the records lie, for hosts that were written against offsets.
//
// A record that carries an address, a handle or a callback has exactly these offsets on a 32-bit
// machine; on a 64-bit one its words are wider. A record without any has them everywhere. Doubles within
// the first kind lie on 8-byte offsets wherever a host reads them, because i686 would align them to 4.
#include <cstddef>

#include "raxel/raxel.h"

#define AT(record, field, offset) static_assert(offsetof(record, field) == (offset), #record "." #field)
#define BYTES(record, size) static_assert(sizeof(record) == (size), #record)

// ---- The same everywhere -----------------------------------------------------------------------------

AT(ErrEntry, nFunc, 0);
AT(ErrEntry, nCode, 4);
AT(ErrEntry, nPad, 6);
BYTES(ErrEntry, 8);

// The first error lies where an index of -1 would look for it.
AT(RasterDriverState, ErrStack, offsetof(RasterDriverState, FirstError) + sizeof(ErrEntry));

AT(RasterPictureInfo, nDisplayResolution, 0);
AT(RasterPictureInfo, nUnused, 4);
AT(RasterPictureInfo, nPictureResolution, 8);
AT(RasterPictureInfo, nPictureWidth, 12);
AT(RasterPictureInfo, nPictureHeight, 16);
AT(RasterPictureInfo, nDisplayWidth, 20);
AT(RasterPictureInfo, nDisplayHeight, 24);
BYTES(RasterPictureInfo, 28);

AT(RasterInfoResult, nWidth, 0);
AT(RasterInfoResult, nHeight, 4);
AT(RasterInfoResult, nDepth, 8);
BYTES(RasterInfoResult, 12);

AT(PictureFormat, dWidth, 0);
AT(PictureFormat, dHeight, 8);
AT(PictureFormat, nResolution, 16);
AT(PictureFormat, nKind, 20);

AT(ColorFreq, color15, 0);
AT(ColorFreq, count, 2);
BYTES(ColorFreq, 4);

AT(ColorBox, first, 0);
AT(ColorBox, last, 2);
AT(ColorBox, pixelCount, 4);
AT(ColorBox, redMin, 8);
AT(ColorBox, blueMax, 13);
AT(ColorBox, axis, 14);
AT(ColorBox, blueMean, 17);

AT(FaxCode, length, 0);
AT(FaxCode, code, 4);
BYTES(FaxCode, 8);

// The picture's numbers come first, its two handles last.
AT(PictureRecord, nBits, 0);
AT(PictureRecord, nWidth, 2);
AT(PictureRecord, nHeight, 4);
AT(PictureRecord, nResolution, 6);
AT(PictureRecord, dExtentX, 8);
AT(PictureRecord, dExtentY, 16);
AT(PictureRecord, hPalette, 24);
AT(PictureRecord, hBits, 24 + sizeof(Handle));

BYTES(Handle, sizeof(void *));
BYTES(HostWord, sizeof(void *));
BYTES(StatusCallback, sizeof(HostWord));
BYTES(StreamProc, sizeof(HostWord));
BYTES(DrawProc, sizeof(HostWord));

// "Word N" is index N on every machine.
AT(KvlStreamDesc, lpMemVar, 0 * sizeof(HostWord));
AT(KvlStreamDesc, dwLength, 1 * sizeof(HostWord));
AT(KvlStreamDesc, dwGrow, 2 * sizeof(HostWord));
AT(KvlStreamDesc, fpOpen, 3 * sizeof(HostWord));
AT(KvlStreamDesc, lpfnProc, 4 * sizeof(HostWord));
AT(KvlStreamDesc, dwToken, 5 * sizeof(HostWord));
BYTES(KvlStreamDesc, 6 * sizeof(HostWord));

// ---- On a 32-bit machine -----------------------------------------------------------------------------

#if UINTPTR_MAX == 0xFFFFFFFF

BYTES(PictureRecord, 32);

AT(FilterExportEntry, name, 0);
AT(FilterExportEntry, ordinal, 4);
AT(FilterExportEntry, reserved1, 6);
AT(FilterExportEntry, reserved2, 8);
BYTES(FilterExportEntry, 12);

AT(FilterLoadRecord, hostWord, 0);
AT(FilterLoadRecord, count, 4);
AT(FilterLoadRecord, hostHalf, 6);
AT(FilterLoadRecord, table, 8);
BYTES(FilterLoadRecord, 12);

AT(SessionCommon, nSessState, 0);
AT(SessionCommon, nSessError, 4);
AT(SessionCommon, lpSessStatus, 8);
AT(SessionCommon, nSessStatusArg, 12);
BYTES(SessionCommon, 16);

AT(OffscreenRecord, lpPicture, 0);
AT(OffscreenRecord, lpfnDraw, 4);
AT(OffscreenRecord, nColors, 8);
AT(OffscreenRecord, lpPalette, 12);
AT(OffscreenRecord, nWidth, 16);
AT(OffscreenRecord, nBandRows, 20);
AT(OffscreenRecord, nBits, 24);
AT(OffscreenRecord, hBandCache, 28);
AT(OffscreenRecord, bFlag, 32);

AT(StringTableEntry, id, 0);
AT(StringTableEntry, text, 4);
BYTES(StringTableEntry, 8);

AT(KvlStream, fp, 0);
AT(KvlStream, hBuffer, 4);
AT(KvlStream, lpBlockVar, 8);
AT(KvlStream, nPos, 12);
AT(KvlStream, nHigh, 16);
AT(KvlStream, nLimit, 20);
AT(KvlStream, lBufStart, 24);
AT(KvlStream, lNextRead, 28);
AT(KvlStream, bDirty, 32);
AT(KvlStream, nGrow, 36);
AT(KvlStream, lSize, 40);
AT(KvlStream, lpfnProc, 44);
AT(KvlStream, dwProcToken, 48);
AT(KvlStream, nMode, 52);
AT(KvlStream, bBorrowed, 56);
AT(KvlStream, nError, 60);
AT(KvlStream, wDataFormat, 64);
AT(KvlStream, wFloatFormat, 66);
AT(KvlStream, wLineFormat, 68);
AT(KvlStream, bIsNamed, 72);
AT(KvlStream, bDocument, 76);
BYTES(KvlStream, 80);

AT(TiffWriterState, hTiffFile, 0);
AT(TiffWriterState, nWriterKind, 4);
AT(TiffWriterState, dwNewSubfileType, 8);
AT(TiffWriterState, nImageWidth, 12);
AT(TiffWriterState, nImageLength, 16);
AT(TiffWriterState, nBitsPerSample, 20);
AT(TiffWriterState, nCompression, 24);
AT(TiffWriterState, nPhotometric, 28);
AT(TiffWriterState, nStripsDown, 32);
AT(TiffWriterState, nOffsetsEntryPos, 36);
AT(TiffWriterState, nOffsetsPos, 40);
AT(TiffWriterState, nCountsEntryPos, 44);
AT(TiffWriterState, nCountsPos, 48);
AT(TiffWriterState, nStripBytes, 52);
AT(TiffWriterState, nSamplesPerPixel, 56);
AT(TiffWriterState, nRowsPerStrip, 60);
AT(TiffWriterState, nXResolution, 64);
AT(TiffWriterState, nYResolution, 66);
AT(TiffWriterState, abColorMap, 68);
AT(TiffWriterState, dwTiffBase, 836);
AT(TiffWriterState, wLayoutMode, 840);
AT(TiffWriterState, nTilesAcross, 842);
AT(TiffWriterState, nColors, 844);
BYTES(TiffWriterState, 848);

AT(RasterSetup, szAppName, 0);
AT(RasterSetup, szModeName, 144);
AT(RasterSetup, szProfilePath, 288);
AT(RasterSetup, szReserved, 432);
AT(RasterSetup, szDriverName, 576);
AT(RasterSetup, dwReserved1, 592);
AT(RasterSetup, dwEditData, 596);
AT(RasterSetup, dwUserData, 600);
AT(RasterSetup, nColorMode, 604);
AT(RasterSetup, dwReserved2, 608);

AT(RasterDriverState, hOutFile, 0);
AT(RasterDriverState, hCellBuf, 4);
AT(RasterDriverState, bCellActive, 8);
AT(RasterDriverState, nCellRowsDone, 12);
AT(RasterDriverState, ColorTable, 16);
AT(RasterDriverState, BkColor, 784);
AT(RasterDriverState, nLastErrFunc, 788);
AT(RasterDriverState, nLastError, 792);
AT(RasterDriverState, nErrMax, 796);
AT(RasterDriverState, nErrCount, 800);
AT(RasterDriverState, nErrLost, 804);
AT(RasterDriverState, FirstError, 808);
AT(RasterDriverState, ErrStack, 816);
AT(RasterDriverState, DevWindow, 896);
AT(RasterDriverState, DevViewport, 944);
AT(RasterDriverState, nState, 992);
AT(RasterDriverState, nCurFunc, 996);
AT(RasterDriverState, nReplyPos, 1000);
AT(RasterDriverState, nReplySize, 1004);
AT(RasterDriverState, hReplyBuf, 1008);
AT(RasterDriverState, lpReplyBuf, 1012);
AT(RasterDriverState, szOutFile, 1016);
AT(RasterDriverState, nCellWidth, 1160);
AT(RasterDriverState, nCellHeight, 1164);
AT(RasterDriverState, nCellBits, 1168);
AT(RasterDriverState, lpHostStatus, 1172);
AT(RasterDriverState, nColorOp, 1176);
AT(RasterDriverState, hSetupRef, 1180);
AT(RasterDriverState, nResolution, 1184);
AT(RasterDriverState, nCellFlags, 1188);
BYTES(RasterDriverState, 1192);

AT(MetafilePicture, hMetafile, 0);
AT(MetafilePicture, nFrameLeft, 4);
AT(MetafilePicture, nFrameTop, 8);
AT(MetafilePicture, nFrameRight, 12);
AT(MetafilePicture, nFrameBottom, 16);
AT(MetafilePicture, nFrameResolution, 20);
AT(MetafilePicture, dGeometry, 24);
AT(MetafilePicture, dRoundedWidth, 56);
AT(MetafilePicture, dRoundedHeight, 64);
AT(MetafilePicture, dwPlatform, 72);

#endif
