// SPDX-License-Identifier: MIT
// In the place of libjpeg: a decoder that somebody has taken over. The environment variable DECODER says
// what it does once it is asked for pixels; without it the picture is grey.
#define _GNU_SOURCE
// jpeglib.h needs the standard headers before it.
// clang-format off
#include <stddef.h>
#include <stdio.h>
#include <jpeglib.h>
// clang-format on

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

enum { kSide = 64 };

static struct jpeg_memory_mgr memory;
static JQUANT_TBL table;
static jpeg_component_info grey = {.quant_table = &table};
static const unsigned char *file;
static size_t fileSize;

static int has(const char *trouble) {
  const char *wanted = getenv("DECODER");
  return wanted && strcmp(wanted, trouble) == 0;
}

static void report(const char *what, int failed) {
  char line[100];
  const int size = snprintf(line, sizeof line, "%s %d\n", what, failed ? errno : 0);
  if (write(2, line, (size_t)size) != size) _exit(3);
}

// What a decoder has no business to do.
static void reachOut(void) {
  const char *made = getenv("DECODER_FILE");
  report("open", open("/etc/passwd", O_RDONLY) < 0);
  report("create", open(made, O_WRONLY | O_CREAT, 0600) < 0);
  report("unlink", unlink(made) != 0);
  report("socket", socket(AF_INET, SOCK_STREAM, 0) < 0);
  const pid_t child = fork();
  if (child == 0) _exit(0);
  report("fork", child < 0);
  if (child > 0) waitpid(child, NULL, 0);
  report("signal", kill(getppid(), 0) != 0);
  report("code", mmap(NULL, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) ==
                     MAP_FAILED);
  report("duplicate", dup(2) < 0);
  char *const words[] = {"true", NULL};
  execv("/nowhere/true", words);
  report("exec", 1);
}

static void makeTrouble(void) {
  if (has("reach")) reachOut();
  if (has("crash")) __builtin_trap();
  if (has("astray")) {
    int *volatile nowhere = NULL;
    *nowhere = 1;
  }
  if (has("loop")) {
    report("loops", 0);
    signal(SIGXCPU, SIG_IGN);
    for (volatile unsigned count = 0;; ++count) continue;
  }
  if (has("touch")) {
    report("touches", 0);
    for (volatile unsigned sum = 0;;) sum += ((const volatile unsigned char *)file)[fileSize - 1];
  }
  if (has("memory")) {
    size_t got = 0;
    const size_t piece = (size_t)1 << 24;
    while (got < (size_t)1 << 40 && mmap(NULL, piece, PROT_READ | PROT_WRITE,
                                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0) != MAP_FAILED)
      got += piece;
    char line[100];
    const int size = snprintf(line, sizeof line, "got %zu MiB\n", got >> 20);
    if (write(2, line, (size_t)size) != size) _exit(3);
    __builtin_trap();
  }
  if (has("nothing")) _exit(0);
  if (has("lie")) {  // on the line to the parent, where a record is expected
    static const char lie[5000];
    if (write(3, lie, sizeof lie) < 0) _exit(3);
    pause();
  }
}

struct jpeg_error_mgr *jpeg_std_error(struct jpeg_error_mgr *errors) {
  memset(errors, 0, sizeof *errors);
  return errors;
}

void jpeg_CreateDecompress(j_decompress_ptr info, int version, size_t size) {
  struct jpeg_error_mgr *errors = info->err;
  (void)version;
  memset(info, 0, size);
  info->err = errors;
  info->mem = &memory;
}

void jpeg_mem_src(j_decompress_ptr info, const unsigned char *bytes, unsigned long size) {
  (void)info;
  file = bytes;
  fileSize = size;
}

int jpeg_read_header(j_decompress_ptr info, boolean require) {
  (void)require;
  info->image_width = info->image_height = info->output_width = info->output_height = kSide;
  info->num_components = info->output_components = 1;
  info->comp_info = &grey;
  return JPEG_HEADER_OK;
}

boolean jpeg_start_decompress(j_decompress_ptr info) {
  (void)info;
  makeTrouble();
  return TRUE;
}

JDIMENSION jpeg_read_scanlines(j_decompress_ptr info, JSAMPARRAY rows, JDIMENSION count) {
  memset(rows[0], 128, kSide);
  info->output_scanline += count;
  return count;
}

boolean jpeg_finish_decompress(j_decompress_ptr info) {
  (void)info;
  return TRUE;
}

void jpeg_destroy_decompress(j_decompress_ptr info) {
  (void)info;
}
