// SPDX-License-Identifier: MIT
// The numbers of the filter's front door: ordinals, operations of the entries, words of the host's
// records, reports to its status callback, and the questions to a draw procedure.
#ifndef RAXEL_FILTER_CODES_H
#define RAXEL_FILTER_CODES_H

// Ordinals of the export table. 1007 is not used.
enum RaxelOrdinal {
  RAXEL_ORDINAL_CREATE_SETUP = 1001,      // "CreateSetup"
  RAXEL_ORDINAL_DESTROY_SETUP = 1002,     // "DestroySetup"
  RAXEL_ORDINAL_EDIT_SETUP = 1003,        // "EditSetup"
  RAXEL_ORDINAL_ESCAPE_SETUP = 1004,      // "EscapeSetup": the symbol is xEscapeSetup
  RAXEL_ORDINAL_VERSION = 1005,           // "KVLGetFilterVersion"
  RAXEL_ORDINAL_ENTRY = 1006,             // "dd_entry": metafile sessions
  RAXEL_ORDINAL_RASTER_ENTRY = 1008,      // "RASTER_dd_entry": the raster driver
  RAXEL_ORDINAL_EXPORT_CELL_DATA = 1009,  // "ExportCellData": one call
  RAXEL_ORDINAL_LIBRARY_NAME = 1010       // "szDLLName": the symbol is export_szDLLName
};

// Operations of the entries (dd_entry, RASTER_dd_entry) and of the working entries that they lead to
// (dd_entry32, RASTER_dd_entry32). The low 16 bits count, as a signed number, so that -1 is 0xFFFF.
enum RaxelEntryOp {
  RAXEL_ENTRY_START = 0,         // working entry: begin a session with an initialisation record
  RAXEL_ENTRY_NOTHING = 1,       // working entry: nothing
  RAXEL_ENTRY_EXECUTE = 2,       // working entry: carry out one function record
  RAXEL_ENTRY_END = 0xFFFF,      // -1, working entry: end the session
  RAXEL_ENTRY_VERSION = 0xFFFE,  // -2, either entry: write the version, 4 bytes
  RAXEL_ENTRY_ADDRESS = 0xFFFD   // -3, entry: write the working entry's address
};

// Words of the initialisation record of operation 0, 16 host words.
enum RaxelStartWord {
  RAXEL_START_PLATFORM_1 = 1,     // in, metafile session: a value for the platform's hook
  RAXEL_START_NAME = 3,           // in: address of the output's name; a metafile session empties it
  RAXEL_START_PLATFORM_2 = 5,     // in, metafile session: a second one
  RAXEL_START_REPLY_BYTES = 9,    // in, raster driver: bytes of replies to make room for
  RAXEL_START_REPLIES = 10,       // out, raster driver: address of the reply buffer
  RAXEL_START_SETUP = 13,         // in: the setup handle; out, metafile session: the hook's, 0 here
  RAXEL_START_STATUS = 14,        // in: address of the host status record
  RAXEL_START_CAPABILITIES = 15,  // in, raster driver: address of 60 u32 to fill in
  RAXEL_START_WORDS = 16          // how many there are
};

// Words of the host's record for ExportCellData, 7 host words.
enum RaxelRecordWord {
  RAXEL_RECORD_SETUP = 2,   // in: the setup handle
  RAXEL_RECORD_STATUS = 6,  // in: address of the host status record, may be null
  RAXEL_RECORD_WORDS = 7    // how many there are
};

// Words of the host status record, 13 host words (raxel/filter.h).
enum RaxelStatusWord {
  RAXEL_STATUS_CONTEXT = 1,            // handed back with every status callback
  RAXEL_STATUS_CALLBACK = 2,           // a StatusCallback, or 0
  RAXEL_STATUS_VALUE = 4,              // metafile session: a value kept in the settings record
  RAXEL_STATUS_OUTPUT = 6,             // out: handle of the block that holds an output in memory
  RAXEL_STATUS_FRAME_LEFT = 7,         // metafile session: the picture's frame
  RAXEL_STATUS_FRAME_TOP = 8,          // its top
  RAXEL_STATUS_FRAME_RIGHT = 9,        // its right side
  RAXEL_STATUS_FRAME_BOTTOM = 10,      // its bottom
  RAXEL_STATUS_FRAME_RESOLUTION = 11,  // its units per inch; 0: the frame is in inches
  RAXEL_STATUS_PROC_CONTEXT = 12,      // host stream procedure: the context of its open call
  RAXEL_STATUS_WORDS = 13              // how many there are
};

// Values of a to d in calls of the status callback, callback(context, a, b, c, d, e, f). A plain report
// of progress has 0 in a and b, and the percentage in d.
enum RaxelReport {
  RAXEL_REPORT_ASK_AGAIN = 2,   // a of the follow-up when the host answered a report with stop
  RAXEL_REPORT_STOP = 61,       // its b: really stop?
  RAXEL_REPORT_STARTED = -2,    // b: the raster driver has started, and c is
  RAXEL_REPORT_COMPLETE = 100,  // the percentage at which an export is complete
  RAXEL_REPORT_STEP = 20,       // percent that an unframed picture counts for each conversion
  RAXEL_REPORT_WRITING = 50     // percent that it has reached at least when its file is begun
};

// Operations of a draw procedure, draw(op, a, b, c), in the order of a picture (raxel/filter.h).
enum RaxelDrawOp {
  RAXEL_DRAW_QUERY = 0,  // how large is the picture?
  RAXEL_DRAW_OPEN = 1,   // get ready; answers the rows of a band
  RAXEL_DRAW_CLOSE = 2,  // comes last
  RAXEL_DRAW_BAND = 3    // answers the handle of a band's rows
};

// What a draw procedure draws: PictureFormat's nKind.
enum RaxelPictureKind {
  RAXEL_KIND_CELL_DATA = 1,  // a pixel picture
  RAXEL_KIND_METAFILE = 4    // a metafile
};

#endif
