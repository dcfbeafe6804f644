#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Follows what the installed binaries need and load at run time, and asks for the licence of each library.

    licences.py --source FOLDER BINARY...

Every library stands in a table below with the licence that its own copyright file gives. One that is not there,
or that is under the GPL, is a fault: raxel is under the MIT licence, and so are its programs as they run.
"""

import argparse
import os
import re
import subprocess
import sys

# By the beginning of the soname. The GPL libraries of the compiler grant what is compiled with them an exception.
LICENCES = {
    "ld-linux-x86": "LGPL-2.1+ (loader)",
    "libc": "LGPL-2.1+",
    "libm": "LGPL-2.1+",
    "libdl": "LGPL-2.1+",
    "libpthread": "LGPL-2.1+",
    "libgcc_s": "GCC runtime exception",
    "libstdc++": "GCC runtime exception",
    "libgomp": "GCC runtime exception",
    # Loaded when a picture of theirs comes, or a manifest is asked for.
    "libcrypto": "Apache-2.0",
    "libdeflate": "MIT",
    "libjpeg": "IJG, BSD-3-Clause, zlib",
    "liblept": "BSD-2-Clause",
    "libspng": "BSD-2-Clause",
    "libtiff": "libtiff",
    "libwebp": "BSD-3-Clause",
    "libwebpdemux": "BSD-3-Clause",
    # What those need in turn.
    "libLerc": "Apache-2.0",
    "libgif": "MIT",
    "liblzma": "public domain",
    "libopenjp2": "BSD-2-Clause",
    "libpng16": "libpng",
    "libwebpmux": "BSD-3-Clause",
    "libz": "zlib",
    "libzstd": "BSD-3-Clause (or GPL-2)",
    "libsharpyuv": "BSD-3-Clause",
}
# The distribution's own choice for one of its libraries: no binary of ours names it, and libtiff works without.
# Debian builds its libtiff with JBIG-KIT.
CHOICES_OF_DEBIAN = {("libtiff", "libjbig"): "GPL-2+"}


def base(soname):
    return re.match(r"(.+?)(-\d[\d.]*)?\.so", soname).group(1)


def needed(path):
    lines = subprocess.run(["readelf", "-dW", path], capture_output=True, text=True, check=True).stdout
    return re.findall(r"\(NEEDED\)\s+Shared library: \[(.+)\]", lines)


def places():
    lines = subprocess.run(["/sbin/ldconfig", "-p"], capture_output=True, text=True, check=True).stdout
    found = {}
    for name, path in re.findall(r"^\s+(\S+) \(.*\) => (\S+)$", lines, re.M):
        found.setdefault(name, path)
    return found


def opened(source):
    """What the sources load by name, with the file that does."""
    names = {}
    for folder in ("src", "host"):
        for where, _, files in os.walk(os.path.join(source, folder)):
            for file in files:
                if file.endswith((".cpp", ".h")):
                    with open(os.path.join(where, file), encoding="utf-8") as text:
                        for name in re.findall(r'"(lib[A-Za-z0-9_+-]+\.so[0-9.]*)"', text.read()):
                            names[name] = file
    return names


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", required=True)
    parser.add_argument("binaries", nargs="+")
    options = parser.parse_args()
    where, faults, seen = places(), [], {}
    wanted = [(name, os.path.basename(path), True) for path in options.binaries for name in needed(path)]
    loaded = opened(options.source)
    if not {"liblept.so.5", "libtiff.so.6"} <= set(loaded):
        faults.append(f"the sources load {sorted(loaded)}: where are Leptonica and libtiff?")
    wanted += [(name, file, True) for name, file in loaded.items()]
    while wanted:
        name, by, ours = wanted.pop()
        if name in seen:
            continue
        licence = LICENCES.get(base(name)) or (not ours and CHOICES_OF_DEBIAN.get((base(by), base(name))))
        seen[name] = f"{licence}, for {by}"
        if not licence:
            faults.append(f"{name}, for {by}: a library without a licence in the table")
        if name in where:
            wanted += [(more, name, False) for more in needed(where[name])]
    for name in sorted(seen):
        print(f"{name}: {seen[name]}")
    for fault in faults:
        print(fault)
    return bool(faults)


if __name__ == "__main__":
    sys.exit(main())
