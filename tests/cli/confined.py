#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Decoders that somebody has taken over reach nothing and cost nothing but their picture, and honest ones give the
same pixels in a process of their own.

    confined.py --build FOLDER --source FOLDER
"""

import ctypes
import io
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile

from PIL import Image

import shared
from processes import Replaced, is_running, until

REACHES = ("open", "create", "unlink", "socket", "fork", "signal", "code", "duplicate", "exec")
NO_PERMISSION, NO_FILE, FAULT, NO_DESCRIPTOR = 1, 2, 14, 24  # errno
KINDS = ("jpg", "jpeg", "tif", "tiff", "gif", "webp", "jp2")
ENOUGH = 4  # pictures of a kind from this machine


class Argument(ctypes.Structure):
    """What libseccomp compares in a call."""
    _fields_ = [("number", ctypes.c_uint), ("how", ctypes.c_int), ("value", ctypes.c_uint64), ("more", ctypes.c_uint64)]


def takes_filters():
    """Whether the kernel lets a process filter its calls. Some containers do not."""
    PR_SET_SECCOMP, SECCOMP_MODE_FILTER = 22, 2
    libc = ctypes.CDLL(None, use_errno=True)
    return libc.prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, None) == -1 and ctypes.get_errno() == FAULT


def refuse_filters():
    """Has the kernel refuse all further filters of this process and those that it starts. Checked where it is used."""
    ALLOW, REFUSE, EQUAL, PR_SET_SECCOMP = 0x7FFF0000, 0x00050000 | NO_PERMISSION, 4, 22
    lib = ctypes.CDLL("libseccomp.so.2")
    lib.seccomp_init.restype = ctypes.c_void_p
    rules = ctypes.c_void_p(lib.seccomp_init(ALLOW))
    for call, when in ((b"prctl", (Argument(0, EQUAL, PR_SET_SECCOMP, 0),)), (b"seccomp", ())):
        lib.seccomp_rule_add_array(rules, REFUSE, lib.seccomp_syscall_resolve_name(call), len(when), (Argument * len(when))(*when))
    lib.seccomp_load(rules)


class Confined(Replaced):
    def __init__(self, build, program, source, folder):
        super().__init__(program, folder)
        self.source = source
        self.jpeg = os.path.join(folder, "in.jpg")
        Image.new("L", (64, 64), 7).save(self.jpeg)
        self.decoders = os.path.join(build, "tests/cli/decoders")

    def taken_over(self, trouble, *arguments, **how):
        """The command with a decoder that makes trouble, on its way to replace the old file."""
        self.put_old()
        env = dict(os.environ, LD_LIBRARY_PATH=self.decoders, DECODER=trouble,
                   DECODER_FILE=os.path.join(self.folder, "made"))
        return self.start(*arguments, self.jpeg, self.target, env=env, **how)

    def refused(self, trouble, says, **how):
        process = self.taken_over(trouble, **how)
        code = process.end(60)
        self.check(f"{trouble}: the exit code", code == 66, process)
        said = process.said().splitlines()
        self.check(f"{trouble}: what is said", bool(said) and said[-1] == f"raxel-export: {self.jpeg} (JPEG): is damaged: {says}", process)
        self.kept(trouble, process)
        return process

    def errors(self, process):
        said = (line.split() for line in process.said().splitlines())
        return {words[0]: int(words[1]) for words in said if len(words) == 2 and words[0] in REACHES}

    def reaches(self):
        """Everything that a decoder has no business to do is refused, and is not without the sandbox."""
        if not takes_filters():
            return "skipped: this kernel takes no filters of system calls"
        errors = self.errors
        process = self.taken_over("reach")
        self.check("reach: the exit code", process.end(60) == 0, process)
        seen = errors(process)
        self.check("reach: what is refused", seen == dict.fromkeys(REACHES, NO_PERMISSION), process)
        process = self.taken_over("reach", "--no-sandbox")
        self.check("reach, no sandbox: the exit code", process.end(60) == 0, process)
        self.check("reach, no sandbox: the test could not fail", errors(process) == {**dict.fromkeys(REACHES, 0), "exec": NO_FILE}, process)
        process = self.taken_over("reach", "--dry-run", stdout=subprocess.DEVNULL)
        process.end(60)
        self.check("reach, dry run: what is refused", errors(process) == seen, process)
        return f"{len(seen)} ways out refused"

    def unfiltered(self):
        """Where the kernel takes no filter pictures are read all the same, under the limits."""
        how = {"preexec_fn": refuse_filters} if takes_filters() else {}
        process = self.taken_over("reach", **how)
        self.check("no filter: the exit code", process.end(60) == 0, process)
        seen = self.errors(process)
        # The limit of descriptors is 0.
        self.check("no filter: its limits", [seen.get(key) for key in ("open", "create", "socket", "duplicate")] == [NO_DESCRIPTOR] * 4, process)
        self.check("no filter: the test could not fail", seen.get("signal") == 0, process)
        process = self.taken_over("crash", **how)
        self.check("no filter: a crash", process.end(60) == 66, process)
        self.kept("no filter: a crash", process)
        return "a system without filters"

    def ends(self):
        """However a decoder ends, the command says so and keeps the old file."""
        crashed = self.refused("crash", f"its decoder ended by signal {signal.SIGILL.value}")
        self.refused("nothing", "its decoder ended too soon")
        self.refused("lie", "what its decoder tells makes no sense")
        if not shared.sanitized(self.program):  # which look after such writes themselves
            self.refused("astray", f"its decoder ended by signal {signal.SIGSEGV.value}")
        process = self.taken_over("crash", "--no-sandbox")
        self.check("crash, no sandbox: the test could not fail", process.end(60) < 0 or process.code == 1, process)
        # A limit of the whole command holds for its decoders. This one does not care for the signal.
        slow = self.refused("loop", "its decoder took too long", preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (2, 2)))
        self.check("loop: its time", 1.5 < slow.cpu < 4, slow)
        if not self.sanitized:  # whose memory has no limit
            most = 600 << 20
            large = self.refused("memory", f"its decoder ended by signal {signal.SIGILL.value}",
                                 preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (most, most)))
            got = int(large.said().split()[1])
            self.check("memory: how much it gets", 0 < got < 600, large)
        # The others of a batch are exported.
        self.put_old()
        to = os.path.join(self.folder, "to")
        os.makedirs(to)
        env = dict(os.environ, LD_LIBRARY_PATH=self.decoders, DECODER="crash")
        sample = os.path.join(self.source, "samples/page.png")
        for jobs in ("1", "2"):
            process = self.start("-j", jobs, "-d", to, self.jpeg, sample, env=env)
            self.check(f"batch of {jobs}: the exit code", process.end(60) == 66, process)
            self.check(f"batch of {jobs}: what is written", os.listdir(to) == ["page.tif"], os.listdir(to))
            os.unlink(os.path.join(to, "page.tif"))
        return f"a crash takes {crashed.cpu * 1000:.0f} ms of work"

    def family(self, leader):
        """The decoder's process under the command."""
        with open(f"/proc/{leader}/task/{leader}/children") as file:
            return [int(pid) for pid in file.read().split()]

    def stops(self):
        """Ctrl-C, kill -9 and a crash end both at once."""
        # The sanitizers tell of a crash themselves.
        crashes = () if self.sanitized else ((signal.SIGABRT, 70), (signal.SIGSEGV, 70))
        ends = ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGKILL, -9), *crashes)
        for number, code in ends:
            process = self.taken_over("loop", start_new_session=True)
            until(lambda: "loops" in process.said() or process.has_ended())
            decoders = self.family(process.pid)
            self.check(f"{number.name}: a decoder at work", len(decoders) == 1, decoders)
            if number == signal.SIGINT:
                os.killpg(process.pid, number)  # as a terminal does
            else:
                process.send(number)
            self.check(f"{number.name}: the exit code", process.end(10) == code, process)
            self.check(f"{number.name}: the decoder goes on", until(lambda: not any(is_running(pid) for pid in decoders), 10), decoders)
            self.kept(number.name, process)
            if code == 70:
                said = re.search("given up.* want of memory", process.said())
                self.check(f"{number.name}: what it says", said and ("crash" in said[0]) == (number == signal.SIGSEGV), process)
        return f"{len(ends)} signals"

    def cuts(self):
        """Somebody cuts the input short while the decoder reads it where it lies."""
        process = self.taken_over("touch")
        until(lambda: "touches" in process.said() or process.has_ended())
        whole = os.path.getsize(self.jpeg)
        os.truncate(self.jpeg, 0)
        code = process.end(60)
        said = process.said().splitlines()[-1]
        self.check("cut: the exit code", code == 66, process)
        self.check("cut: what it says",
                   said == f"raxel-export: {self.jpeg}: was cut short while it was being read; start again when it is whole", process)
        self.kept("cut", process)
        Image.new("L", (64, 64), 7).save(self.jpeg)
        return f"an input of {whole} bytes cut short"

    def children(self):
        """All pages of an input go through one child."""
        if not shutil.which("strace"):
            return "skipped: strace is not installed"
        pages = [Image.new("L", (64, 64), shade).convert("P") for shade in range(40)]
        inputs, out, calls = [], os.path.join(self.folder, "pages.tif"), os.path.join(self.folder, "calls")
        for form in ("tiff", "gif"):
            inputs.append(os.path.join(self.folder, "many." + form))
            pages[0].save(inputs[-1], save_all=True, append_images=pages[1:])
        # Leaks are not found under a tracer.
        env = dict(os.environ, ASAN_OPTIONS="detect_leaks=0")
        counts = []
        for options, count in ((inputs[:1], 1), (inputs[1:], 1), ([*inputs, self.jpeg, *inputs], 5), (["--page", "3-38", inputs[0]], 1)):
            done = subprocess.run(["strace", "-f", "-qq", "-o", calls, "-e", "trace=clone,clone3,fork,vfork", self.program, "-q", "--pages",
                                   *options, "-o", out], env=env, capture_output=True, text=True)
            with open(calls) as file:
                counts.append(sum(re.match(r"\d+ +(clone3?|v?fork)\(", line) is not None for line in file))
            self.check(f"children of {options}: the exit code", done.returncode == 0, done.stderr)
            self.check(f"children of {options}", counts[-1] == count, counts[-1])
        return f"{counts} children"

    def pictures(self):
        """Pictures of all formats that are decoded in a child."""
        photo = Image.open(os.path.join(self.source, "samples/photo.png")).convert("RGB")
        small = photo.resize((61, 40))
        made = []

        def save(name, image, form, **options):
            made.append(os.path.join(self.folder, name))
            image.save(made[-1], form, **options)

        save("photo.jpg", photo, "JPEG", dpi=(300, 200))
        save("grey.jpg", small.convert("L"), "JPEG", progressive=True)
        save("inks.jpg", small.convert("CMYK"), "JPEG")
        for turn in range(1, 9):
            exif = Image.Exif()
            exif[0x0112] = turn
            save(f"turn{turn}.jpg", small, "JPEG", exif=exif)
        for name, image, compression in (("lzw", photo, "tiff_lzw"), ("fax", photo.convert("1"), "group4"),
                                         ("jpeg", small, "jpeg"), ("table", small.convert("P"), "packbits"),
                                         ("inks", small.convert("CMYK"), "tiff_adobe_deflate"),
                                         ("clear", small.convert("RGBA"), "tiff_lzw"), ("deep", Image.frombytes("I;16", (61, 40), bytes(range(244)) * 20), None)):
            save(f"{name}.tiff", image, "TIFF", compression=compression, dpi=(203, 98))
        save("clear.webp", small.convert("RGBA"), "WEBP", lossless=True)
        save("photo.webp", photo, "WEBP")
        save("photo.jp2", small, "JPEG2000")
        save("grey.jp2", small.convert("L"), "JPEG2000")
        frames = [small.rotate(angle).convert("P") for angle in (90, 180, 270)]
        save("frames.gif", small.convert("P"), "GIF", save_all=True, append_images=frames)
        save("pages.tiff", small, "TIFF", save_all=True, append_images=[frame.convert("L") for frame in frames])
        whole = io.BytesIO()
        small.save(whole, "JPEG")
        made.append(os.path.join(self.folder, "cut.jpg"))
        with open(made[-1], "wb") as out:
            out.write(whole.getvalue()[:600])
        made.append(os.path.join(self.folder, "alpha.pam"))
        with open(made[-1], "wb") as out:
            out.write(b"P7\nWIDTH 61\nHEIGHT 40\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + small.convert("RGBA").tobytes())
        here = sorted(os.path.join(folder, name) for folder, _, names in os.walk("/usr/share") for name in names)
        here = [path for path in here if path.endswith(KINDS) and os.path.isfile(path) and os.path.getsize(path) < 200000]
        for kind in KINDS:
            made += [path for path in here if path.endswith("." + kind)][:ENOUGH]
        return made

    def same(self):
        """Bytes, codes and messages are the same with a child and without."""
        pictures = self.pictures()
        read = 0
        for options in ((), ("--pages",)):
            for path in pictures if not options else [path for path in pictures if path.endswith(("gif", "tiff", "tif"))]:
                results = []
                for sandbox in ((), ("--no-sandbox",)):
                    out = os.path.join(self.folder, f"out{len(sandbox)}.tif")
                    done = subprocess.run([self.program, *sandbox, *options, path, out], capture_output=True)
                    content = None
                    if os.path.exists(out):
                        with open(out, "rb") as file:
                            content = file.read()
                        os.unlink(out)
                    results.append((done.returncode, done.stderr, content))
                read += results[0][2] is not None
                self.check(f"{path} {options}: not the same", results[0] == results[1], [(r[0], r[1], len(r[2] or b"")) for r in results])
                if options == () and path.startswith(self.folder) and not path.endswith("cut.jpg"):
                    self.check(f"{path}: not read", results[0][0] == 0, results[0][:2])
        for path in (path for path in pictures if ".tif" in path):
            seen = [subprocess.run([self.program, *sandbox, "--inspect", "--json", path], capture_output=True)
                    for sandbox in ((), ("--no-sandbox",))]
            self.check(f"{path}: not inspected the same", (seen[0].returncode, seen[0].stdout, seen[0].stderr) ==
                       (seen[1].returncode, seen[1].stdout, seen[1].stderr), [s.stdout[-300:] for s in seen])
        return f"{read} exports of {len(pictures)} pictures"


def main():
    shared.take_signals()
    build, source, program = shared.places()
    with tempfile.TemporaryDirectory(prefix="raxel-confined-") as folder:
        tried = Confined(build, program, source, folder)
        for step in (tried.reaches, tried.unfiltered, tried.ends, tried.stops, tried.cuts, tried.children, tried.same):
            print(step())
    return shared.tell(tried.faults, f"confined: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
