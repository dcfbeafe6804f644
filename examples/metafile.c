// SPDX-License-Identifier: MIT
/* A host that runs a metafile session.

     metafile path/to/raxel.so picture.tif

   This platform records no metafiles: its hooks are empty. The session therefore opens and closes
   its output and ends with code 300, which this host expects. */
#include "host.h"

int main(int argc, char **argv) {
  int32_t (*entry)(uint32_t, void *, uint32_t);
  int32_t (*session)(HostWord, uint32_t, void *);
  Handle (*create_setup)(HostWord, const char *, const char *, const char *);
  int32_t (*destroy_setup)(Handle);
  SessionCommon **common;
  SessionCommon block;
  char name[RAXEL_NAME_ROOM];
  if (argc != 3 || strlen(argv[2]) >= sizeof name) fail("usage: metafile LIBRARY OUTPUT");
  open_library(argv[1]);
  FIND(entry, "dd_entry");
  FIND(create_setup, "CreateSetup");
  FIND(destroy_setup, "DestroySetup");
  FIND(common, "lpCommon");
  entry(RAXEL_ENTRY_ADDRESS, &session, 0);

  /* The session's common block is the host's. State 1 is closed. */
  memset(&block, 0, sizeof block);
  block.nSessState = 1;
  *common = &block;

  Handle setup = create_setup(0, "", "", "");
  HostWord status[RAXEL_STATUS_WORDS] = {0};
  HostWord init[RAXEL_START_WORDS] = {0};
  strcpy(name, argv[2]);
  init[RAXEL_START_NAME] = (HostWord)name; /* taken, and its first byte cleared */
  init[RAXEL_START_SETUP] = setup;
  init[RAXEL_START_STATUS] = (HostWord)status;
  int32_t opened = session(0, RAXEL_ENTRY_START, init);
  if (opened != RAXEL_OK) fail("the session does not open");

  /* A platform with metafiles would record drawing functions here, each through RAXEL_ENTRY_EXECUTE. */

  int32_t ended = session(0, RAXEL_ENTRY_END, NULL);
  *common = NULL;
  destroy_setup(setup);
  if (ended != RAXEL_NO_MEMORY) fail("a picture, where none was recorded");
  printf("no metafile was recorded: code %d\n", (int)ended);
  return 0;
}
