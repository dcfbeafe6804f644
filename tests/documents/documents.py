#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes the documents at their word: their links lead somewhere, their commands run, their dump is the file,
and their table of tags has those that are written.

    documents.py --build FOLDER --source FOLDER links|commands|dump|directory
"""

import json
import os
import re
import struct
import subprocess
import sys
import tempfile


# Where what the documents name in code of its own is to be found.
FOLDERS = r"src|host|include|tests|docs|examples|samples|bench|fuzz|python|debian|cmake|\.ci"


def pages(source):
    """All documents, as (path from the root, text)."""
    names = subprocess.run(["git", "-C", source, "ls-files", "--cached", "--others", "--exclude-standard", "*.md"],
                           capture_output=True, text=True).stdout.split()
    if not names:  # an archive
        names = [os.path.relpath(os.path.join(where, name), source) for where, _, files in os.walk(source)
                 for name in files if name.endswith(".md") and "/build/" not in where]
    for name in sorted(names):
        if os.path.exists(os.path.join(source, name)):
            with open(os.path.join(source, name), encoding="utf-8") as text:
                yield name, text.read()


def anchor(heading):
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def links(source):
    faults, seen = [], 0
    texts = dict(pages(source))
    anchors = {name: {anchor(line.lstrip("#")) for line in text.splitlines() if line.startswith("#")}
               for name, text in texts.items()}
    for name, text in texts.items():
        prose = re.sub(r"^    .*$", "", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S), flags=re.M)
        for target in re.findall(r"\]\(([^)\s]+)\)", prose):
            if re.match(r"[a-z]+:", target):
                continue
            seen += 1
            path, _, place = target.partition("#")
            path = os.path.normpath(os.path.join(os.path.dirname(name), path)) if path else name
            if not os.path.exists(os.path.join(source, path)):
                faults.append(f"{name}: {target}: there is no {path}")
            elif place and place not in anchors.get(path, ()):
                faults.append(f"{name}: {target}: {path} has no such heading")
        for path in re.findall(rf"`((?:{FOLDERS})/[\w./-]+)`", text):
            seen += 1
            # `src/folder/name` may stand for a header and its source.
            if not any(os.path.exists(os.path.join(source, path + end)) for end in ("", ".h")):
                faults.append(f"{name}: there is no {path}")
        for line in re.findall(r"^    (?:\w+=\S+ )*(\S*bench/\w.*)$", text, re.M):
            seen += 1
            faults += [f"{name}: {line}: {what}" for what in missing_of(source, line)]
    return faults, f"{seen} links", seen > 40


def missing_of(source, line):
    """What a line that measures speaks of and there is not: a script with its options, or a program built from one file."""
    path, *words = line.split()
    file = os.path.join(source, path if path.endswith(".py") else f"bench/{os.path.basename(path)}.cpp")
    if not os.path.exists(file):
        return [f"there is no {path}"]
    if not path.endswith(".py"):
        return []
    with open(file, encoding="utf-8") as text:
        program = text.read()
    options = [word for word in words if word.startswith("--")]
    names = [name for option, value in zip(words, words[1:]) if option == "--only" for name in value.split(",")]
    return [f"it does not know {word}" for word in options if f'add_argument("{word}"' not in program] + \
        [f"it does not know {name}" for name in names if f'"{name}": ' not in program]


def commands(source, build):
    """Runs what stands in code of its own and begins with raxel-export, ./dev export or printf."""
    faults, ran = [], 0
    with open(os.path.join(source, "dev"), encoding="utf-8") as text:
        helps = re.findall(r"^## (\w+)(.*)", text.read(), re.M)
    known = {word for word, _ in helps}
    for name, text in pages(source):
        # Those have pictures of their own: tests/cli/recipes.py, python/tests/test_machines.py.
        if name in ("docs/recipes.md", "docs/machines.md"):
            continue
        for word, options in re.findall(r"`\./dev (\w+)([^`\n]*)`", text):
            if not all(any(word == name and option in told for name, told in helps)
                       for option in re.findall(r"--\w+", options) or [""]):
                faults.append(f"{name}: ./dev {word}{options}: there is no such command")
        with tempfile.TemporaryDirectory() as folder:
            os.symlink(os.path.join(source, "samples"), os.path.join(folder, "samples"))
            environment = {"PATH": build + ":/usr/bin:/bin", "LC_ALL": "C", "HOME": folder}
            for line in re.findall(r"^    (\S.*)$", text, re.M):
                word = re.match(r"\./dev (\w+)", line)
                if word and word.group(1) not in known:
                    faults.append(f"{name}: {line}: there is no such command")
                line = re.sub(r"^\./dev export ", "raxel-export ", line)
                if not re.match(r"(raxel-export [^|]|printf .* >)", line) or re.search(r"[A-Z]{2,}\b(?!\.)", line.split("'")[-1]):
                    continue  # no command, or a pattern of one: INPUT OUTPUT
                done = subprocess.run(["sh", "-c", line], cwd=folder, env=environment, capture_output=True, text=True)
                ran += 1
                if done.returncode:
                    faults.append(f"{name}: {line}: ends with {done.returncode}: {done.stderr}")
    return faults, f"{ran} commands", ran >= 6


def dump(source, build):
    """docs/format.md shows a file byte by byte, and the commands that write it."""
    with open(os.path.join(source, "docs/format.md"), encoding="utf-8") as text:
        page = text.read()
    shown, faults = bytearray(), []
    for place, codes in re.findall(r"^    ([0-9A-F]{3})  ((?:[0-9A-F]{2} )+) ", page, re.M):
        if int(place, 16) != len(shown):
            faults.append(f"{place} stands at {len(shown):03X}")
        shown += bytes.fromhex(codes)
    with tempfile.TemporaryDirectory() as folder:
        for line in re.findall(r"^    ((?:printf|raxel-export) .*tiny.*)$", page, re.M):
            subprocess.run(["sh", "-c", line], cwd=folder, env={"PATH": build + ":/usr/bin:/bin"}, check=True)
        with open(os.path.join(folder, "tiny.tif"), "rb") as file:
            written = file.read()
    for at in range(max(len(shown), len(written))):
        if shown[at:at + 1] != written[at:at + 1]:
            faults.append(f"at {at:03X}: the page says {shown[at:at + 4].hex(' ')}, the file {written[at:at + 4].hex(' ')}")
            break
    told = re.search(r"All (\d+) bytes", page)
    if not told or int(told.group(1)) != len(written):
        faults.append(f"the file has {len(written)} bytes")
    return faults, f"{len(written)} bytes", len(written) > 100


def directory(source, build):
    """docs/format.md lists the tags of finished files with their types."""
    with open(os.path.join(source, "docs/format.md"), encoding="utf-8") as text:
        table = text.read().split("\n## The directory\n")[1].split("\n## ")[0]
    told = {}
    for tags, kind in re.findall(r"^\| (\d[\d, to]*) \| [^|]* \| ([A-Z]+) \|", table, re.M):
        ends = [int(tag) for tag in re.findall(r"\d+", tags)]
        told |= {tag: kind for tag in (range(ends[0], ends[1] + 1) if "to" in tags else ends)}
    written, samples = {}, os.path.join(source, "samples")
    with tempfile.TemporaryDirectory() as folder:
        profile = os.path.join(folder, "any.icc")
        with open(profile, "wb") as file:  # the least that is one
            file.write((struct.pack(">I4sI4s4s4s", 200, b"test", 0x04000000, b"mntr", b"RGB ", b"XYZ ") + bytes(12) + b"acsp").ljust(200, b"\0"))
        texts = f"--icc {profile} --description d --artist a --copyright c --date now"
        for options, inputs in ((f"-m rgb -c lzw --predictor horizontal {texts}", ["photo"]), ("-m color256", ["chart8"]),
                                ("-m bilevel -c t4", ["page"]), ("-m bilevel -c t6", ["page"]),
                                ("-m bilevel -c t6 --layout tiles", ["photo"]), ("--pages", ["photo", "page"])):
            out = os.path.join(folder, "out.tif")
            command = [os.path.join(build, "raxel-export"), "-q", *options.split()]
            subprocess.run([*command, *(os.path.join(samples, name + ".png") for name in inputs), "-o", out], check=True)
            said = json.loads(subprocess.run([command[0], "--inspect", "--json", out], check=True, capture_output=True).stdout)
            written |= {entry["tag"]: entry["type"] for entry in said["results"][0]["entries"]}
    faults = [f"tag {tag}: the page says {told.get(tag)}, and files have {written.get(tag)}"
              for tag in sorted(told | written) if told.get(tag) != written.get(tag)]
    return faults, f"{len(written)} tags", len(written) > 20


def main():
    arguments = dict(zip(sys.argv[1:5:2], sys.argv[2:5:2]))
    build, source, what = os.path.abspath(arguments["--build"]), os.path.abspath(arguments["--source"]), sys.argv[5]
    faults, summary, enough = {"links": lambda: links(source), "commands": lambda: commands(source, build),
                               "dump": lambda: dump(source, build), "directory": lambda: directory(source, build)}[what]()
    for fault in faults:
        print(f"FAILED {fault}")
    print(f"{summary}, {len(faults)} faults" + ("" if enough else ": too few to be all"))
    return bool(faults) or not enough


if __name__ == "__main__":
    sys.exit(main())
