// SPDX-License-Identifier: MIT
// The raster driver: the filter driven like a graphics device, one numbered function at a time.
//
// A host asks RASTER_dd_entry for the working entry and sends it, in this order:
//
//   RAXEL_ENTRY_START    the initialisation record                     state becomes initialised
//   RAXEL_ENTRY_EXECUTE  function records, RAXEL_OP_...
//                          OPEN_DEVICE      open the output            open
//                          BEGIN_PICTURE                               picture
//                          WINDOW, BACKGROUND, VIEWPORT, VIEWPORT_MODE
//                          BEGIN_BODY                                  body
//                          COLORS
//                          PRIMITIVE        begin raster
//                          CELL_ARRAY       rows, any number of times
//                          PRIMITIVE        end raster
//                          END_PICTURE                                 ended
//                                           (another picture may begin)
//                          CLOSE_DEVICE     close the output           initialised
//   RAXEL_ENTRY_END
//
// Each call below names the states in which the opcode table lets it run, in brackets; in any other
// state, and for an opcode that is not in the table, nothing happens and the dispatch answers 0.
//
// Function records have fixed byte offsets on every build, native numbers, and may lie at any
// address. Their first 32-bit word is the opcode. "RESULT" of a dispatch is the last error code that
// the function pushed, 0 when it pushed none.
#ifndef RAXEL_DRIVER_H
#define RAXEL_DRIVER_H

#include "raxel/cell_array.h"
#include "raxel/driver_codes.h"
#include "raxel/driver_state.h"
#include "raxel/filter_codes.h"
#include "raxel/settings.h"
#include "raxel/types.h"

RAXEL_BEGIN

// ---- The entries

// Op RAXEL_ENTRY_VERSION copies the version into 4 bytes at `out`, RAXEL_ENTRY_ADDRESS the address of
// RASTER_dd_entry32 into sizeof(void *) bytes; every other op, and a null `out`, does nothing. Returns 0.
RAXEL_EXPORT int32_t RASTER_dd_entry(uint32_t op, void *out, uint32_t unused);

// The working entry. RAXEL_ENTRY_...
//   START    RASTER_initdvr(record), unless hCommon is set, a state block is there and its nState is not
//            -1: then nothing. Returns what it returns, else 0. A null record is 300
//   EXECUTE  Executes the function record and returns its RESULT; nothing, and 0, for a null record.
//   END      RASTER_termdvr. Returns 0.
//   VERSION  Copies the version into the record's first 4 bytes, unless that is null. Returns 4.
// Any other op does nothing and returns 0.
RAXEL_EXPORT int32_t RASTER_dd_entry32(HostWord unused, uint32_t op, void *record);

// The initialisation record, RAXEL_START_... (byte 4 * N on a 32-bit build), aligned as host words:
//   NAME          up to 143 characters; null or empty: the output goes to memory
//   REPLY_BYTES   up to 2^31 - 1
//   REPLIES       out: the driver's until op -1
//   SETUP         0: nothing can be output
//   STATUS        borrowed until op -1; 0: no reports
//   CAPABILITIES  60 32-bit words, aligned as such, filled in as listed; 0: none
// Reports (0, -2, 100, 0, 0, 0) to the status callback when callback and context are both set: progress
// will count to 100. Returns 0; 300 without a record, without room for the replies, when hCommon is set
// and there is no state block, and when the callback destroys the setup or ends the session; 303 for a name
// of 144 characters or more. After a failure there is no state block.
RAXEL_EXPORT int32_t RASTER_initdvr(HostWord *record);

// Closes an open device, frees the replies and the state block. Returns 0.
RAXEL_EXPORT int32_t RASTER_termdvr(void);

// ---- Dispatch

// Every driver function takes the address of its record as a word and hands a word back, which the
// dispatch ignores: the record's address where nothing else is said.
typedef HostWord (*DriverFunction)(HostWord record);
#ifndef RAXEL_NO_SHORT_NAMES  // getfunc
// The function of the first table row with this opcode if the row allows the current state; otherwise
// d_noop. Without a state block always d_noop.
RAXEL_EXPORT DriverFunction getfunc(uint32_t opcode);
#endif
// Accepts a record and does nothing.
RAXEL_EXPORT HostWord d_noop(HostWord record);

// Whether an opcode (low 16 bits, signed) can be used in the state at the time of asking: a
// RaxelSupport. For RAXEL_OP_PRIMITIVE the answer is InqGDPSupport(argument).
RAXEL_EXPORT int32_t InquireSupport(uint32_t opcode, int32_t argument);

// Word -primitive of GDPSupport for -7..-1, else 0. All words are 0, also those of -5 and -6, which d_gdp
// carries out, unless the host stores others.
RAXEL_EXPORT int32_t InqGDPSupport(int32_t primitive);
RAXEL_EXPORT extern int32_t GDPSupport[8];

// Allocate and free the state block; with hCommon set nothing is allocated. All return 0.
RAXEL_EXPORT int32_t AllocGlobal(void);
RAXEL_EXPORT int32_t FreeGlobal(void);
RAXEL_EXPORT int32_t LockGlobal(HostWord unused);
RAXEL_EXPORT int32_t UnlockGlobal(HostWord unused);

// ---- Errors and replies

// Records an error. With room, on top of the stack; without (as delivered: nErrMax is 0) over the top
// entry, which is FirstError when there is no stack, and nErrLost counts. The same code again from the
// same function is recorded once. Codes keep their low 16 bits.
RAXEL_EXPORT void push_er(int32_t code);

// 3842 [every state]   16 i32 n
// Replies with the number of entries that follow (4 bytes: n, or as many as there are), then each, the
// newest first (8 bytes), which leave the stack. A negative n is answered as it came, and none follow.
RAXEL_EXPORT HostWord d_popes(HostWord record);

// 3843 [every state]   Empties the stack; FirstError stays. Returns its argument.
RAXEL_EXPORT HostWord d_empes(HostWord value);

// Replies with nErrCount (4 bytes), FirstError (8), nErrLost (4). No opcode leads here. Returns 0.
RAXEL_EXPORT HostWord dq_es(void);

// Appends to the reply buffer, cut where it ends.
RAXEL_EXPORT void mov2buf(const void *source, uint32_t count);

// ---- The device and its pictures

// 1 [initialised]   Empties the error stack and opens the output: through the setup's stream procedure
// (escape 81; its context is word 12 of the status record), by name, or into memory that the driver keeps
// to itself. RESULT 303 when the output cannot be opened; a procedure that refuses goes unreported.
RAXEL_EXPORT HostWord d_opdv(HostWord record);

// 2 [open, picture, body, ended]   Asks the host whether to keep the output, closes it, and deletes it when
// the host says stop (RESULT 901). RESULT 303 when it cannot be closed.
RAXEL_EXPORT HostWord d_cldv(HostWord record);

// 3 [open, ended]   Begins a picture.
RAXEL_EXPORT HostWord d_begp(HostWord record);

// 4 [picture]   Begins its body.
RAXEL_EXPORT HostWord d_begpb(HostWord record);

// 5 [body]   Ends it.
RAXEL_EXPORT HostWord d_endp(HostWord record);

// 518 [picture]   16 f64 x1, y1, z1, x2, y2, z2      the window, in pixels
RAXEL_EXPORT HostWord ds_dvwn(HostWord record);

// 519 [picture]   16 u8 red, green, blue             the background, kept only
RAXEL_EXPORT HostWord ds_bgc(HostWord record);

// 520 [picture]   16 f64 x1, y1, z1, x2, y2, z2      the viewport; z1 and z2 are not taken
RAXEL_EXPORT HostWord ds_dvvp(HostWord record);

// 521 [picture]   16 i16 mode, 24 f64 scale
// Mode 1 with a scale of millimetres a unit gives the resolution 25.4 / scale, rounded; modes 0 and 2 and
// a scale of 0 give none; other modes are ignored.
RAXEL_EXPORT HostWord ds_vpsm(HostWord record);

// 767 [every state but initialised]   Replies with the window: 6 f64.
RAXEL_EXPORT HostWord dq_dvwn(HostWord record);

// 765 [every state but initialised]   Replies with x1, y2, 0, y1, x2, 0 of the viewport: 6 f64.
RAXEL_EXPORT HostWord dq_dvvp(HostWord record);

// 1314 [body]   4 u32 L, 16 u32 first, 20 (L - 2) / 3 colours R, G, B
// Treats the record's own colours by nColorOp, in place, and stores them from index `first` on; what would
// go past index 255 is dropped.
RAXEL_EXPORT HostWord ds_ct(HostWord record);

// 771, 772, 773, 774, 2310 [body]   Accepted, without effect.
RAXEL_EXPORT HostWord ds_axc(HostWord record);
RAXEL_EXPORT HostWord ds_tran(HostWord record);
RAXEL_EXPORT HostWord ds_clpr(HostWord record);
RAXEL_EXPORT HostWord ds_clip(HostWord record);
RAXEL_EXPORT HostWord ds_dm(HostWord record);

// No opcode leads to these two, and they do nothing; the first returns its first argument.
RAXEL_EXPORT HostWord d_reset(HostWord first, HostWord second);
RAXEL_EXPORT HostWord ds_fl(HostWord record);

// Asks the host, as the plain report (0, 0, 0, 0, 0, 0), whether to stop. Pushes and returns 901 when it
// does; otherwise 0.
RAXEL_EXPORT int32_t RASTER_escape(void);

// Default attribute tables, for the host to fill: 64 zero bytes each. The driver reads none of them.
RAXEL_EXPORT extern uint8_t ln_def[64];
RAXEL_EXPORT extern uint8_t tx_def[64];
RAXEL_EXPORT extern uint8_t mk_def[64];
RAXEL_EXPORT extern uint8_t fl_def[64];
RAXEL_EXPORT extern uint8_t eg_def[64];
RAXEL_EXPORT extern uint8_t dtr_def[64];

RAXEL_END

#endif
