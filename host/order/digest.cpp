// SPDX-License-Identifier: MIT
#include "order/digest.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>

#include "buffer.h"
#include "failure.h"
#include "loading.h"

namespace host {
namespace {

constexpr size_t kDigestBytes = 32;

// What is needed of libcrypto, whose records are seen through pointers only.
struct Crypto {
  void *(*EVP_MD_CTX_new)() = nullptr;
  void (*EVP_MD_CTX_free)(void *) = nullptr;
  const void *(*EVP_sha256)() = nullptr;
  int (*EVP_DigestInit_ex)(void *, const void *, void *) = nullptr;
  int (*EVP_DigestUpdate)(void *, const void *, size_t) = nullptr;
  int (*EVP_DigestFinal_ex)(void *, unsigned char *, unsigned *) = nullptr;
};

bool load(Crypto &to) {
  void *library = dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL);
  return library && resolve(library, "EVP_MD_CTX_new", to.EVP_MD_CTX_new) &&
         resolve(library, "EVP_MD_CTX_free", to.EVP_MD_CTX_free) &&
         resolve(library, "EVP_sha256", to.EVP_sha256) &&
         resolve(library, "EVP_DigestInit_ex", to.EVP_DigestInit_ex) &&
         resolve(library, "EVP_DigestUpdate", to.EVP_DigestUpdate) &&
         resolve(library, "EVP_DigestFinal_ex", to.EVP_DigestFinal_ex);
}

const Crypto &crypto() {
  static Crypto functions{};
  static const bool loaded = load(functions);
  if (!loaded) throw Failure(kLibrary, "libcrypto.so.3: cannot be loaded, and --manifest needs it");
  return functions;
}

void readInto(const Crypto &to, void *context, const std::string &path, const Buffer &room) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const auto fail = [&](int error) {
    if (fd >= 0) close(fd);
    throw Failure(kNoInput, path + ": cannot be read: " + std::strerror(error), error);
  };
  if (fd < 0) fail(errno);
  for (;;) {
    const ssize_t got = read(fd, room.data(), room.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail(errno);
    if (got == 0) break;
    to.EVP_DigestUpdate(context, room.data(), static_cast<size_t>(got));
  }
  close(fd);
}

}  // namespace

std::string digestOf(const std::vector<std::string> &paths) {
  const Crypto &functions = crypto();
  const std::unique_ptr<void, void (*)(void *)> context(functions.EVP_MD_CTX_new(),
                                                        functions.EVP_MD_CTX_free);
  if (!context || functions.EVP_DigestInit_ex(context.get(), functions.EVP_sha256(), nullptr) != 1)
    throw Failure(kLibrary, "libcrypto.so.3: has no SHA-256");
  const Buffer room(size_t{1} << 18);
  for (const std::string &path : paths) readInto(functions, context.get(), path, room);
  std::array<uint8_t, kDigestBytes> digest{};
  functions.EVP_DigestFinal_ex(context.get(), digest.data(), nullptr);
  std::string text;
  for (const uint8_t byte : digest) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

}  // namespace host
