#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Asks the shells to complete, and holds --help, the manual page and the completions against each other.

    complete.py --build FOLDER --source FOLDER
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

import shared


def output(*command, folder=None):
    return subprocess.run(command, capture_output=True, text=True, check=True, cwd=folder).stdout


class Checks:
    def __init__(self):
        self.passed = self.failed = 0

    def same(self, what, got, wanted):
        if got == wanted:
            self.passed += 1
        else:
            self.failed += 1
            print(f"FAILED {what}: {got!r} instead of {wanted!r}")


def bash(share, *words, folder=None):
    script = (f"source {share}/raxel-export.bash; COMP_WORDS=({' '.join(words)!s}); "
              f"COMP_CWORD={len(words) - 1}; _raxel_export; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
    return sorted(line for line in output("bash", "-c", script, folder=folder).splitlines() if line)


def fish(share, line):
    text = output("fish", "--no-config", "-c", f"source {share}/raxel-export.fish; complete -C '{line}'")
    return sorted(entry.split("\t")[0] for entry in text.splitlines())


def main():
    build, *_ = shared.places()
    share = os.path.join(build, "share")
    checks = Checks()

    # One list. In the help an option begins its line.
    help_text = output(os.path.join(build, "raxel-export"), "--help")
    options = set(re.findall(r"^  (?:-\w, |    )(--[a-z-]+)", help_text, re.M))
    shorts = set(re.findall(r"^  (-\w), --", help_text, re.M))
    checks.same("options in the help", len(options) > 25, True)
    page = os.path.join(share, "raxel-export.1")
    if os.path.exists(page):
        with open(page) as text:
            lines = [line for line in text.read().splitlines() if re.match(r"(\\fB-\w\\fR, )?\\fB--", line)]
        checks.same("options of the manual page", {re.search(r"--[a-z-]+", line)[0] for line in lines}, options)
        for name in ("raxel.3", "raxel.ini.5"):
            checks.same(name, os.path.getsize(os.path.join(share, name)) > 1000, True)

    modes = ["auto", "bilevel", "color16", "color256", "color8", "grey16", "grey256", "rgb"]
    everything = sorted(options | shorts)
    checks.same("bash: options", bash(share, "raxel-export", "-"), everything)
    checks.same("bash: --comp", bash(share, "raxel-export", "--comp"), ["--compress"])
    checks.same("bash: --mode", bash(share, "raxel-export", "--mode", "''"), modes)
    checks.same("bash: -m co", bash(share, "raxel-export", "-m", "co"), ["color16", "color256", "color8"])
    checks.same("bash: --mode=", bash(share, "raxel-export", "--mode", "="), modes)
    checks.same("bash: --mode=bi", bash(share, "raxel-export", "--mode", "=", "bi"), ["bilevel"])
    with tempfile.TemporaryDirectory() as folder:
        os.mkdir(os.path.join(folder, "a folder"))
        open(os.path.join(folder, "a picture.png"), "w").close()
        checks.same("bash: files", bash(share, "raxel-export", "a", folder=folder), ["a folder", "a picture.png"])
        open(os.path.join(folder, "ega.gpl"), "w").close()
        checks.same("bash: names and files", bash(share, "raxel-export", "--palette", "e", folder=folder), ["ega.gpl", "ega16", "eink7"])
        checks.same("bash: folders", bash(share, "raxel-export", "-d", "a", folder=folder), ["a folder"])
    checks.same("bash: --dpi", bash(share, "raxel-export", "--dpi", "''"), [])
    if shutil.which("fish"):
        checks.same("fish: options", {o for o in fish(share, "raxel-export --") if o.startswith("--")}, options)
        checks.same("fish: --mode", fish(share, "raxel-export --mode "), modes)
        checks.same("fish: --palette", set(fish(share, "raxel-export --palette e")) >= {"ega16", "eink7"}, True)
        checks.same("fish: -c t", fish(share, "raxel-export -c t"), ["t4", "t6"])
    if shutil.which("zsh"):
        # What the file hands to zsh's own function, one option or argument a line.
        handed = output("zsh", "-f", "-c", f"_arguments() {{ print -rl -- \"$@\" }}; source {share}/raxel-export.zsh")
        checks.same("zsh: options", set(re.findall(r"(--[a-z-]+)=?\[", handed)), options)
        checks.same("zsh: modes", re.findall(r"^(?:\(.*\))?--mode=\[.*\]:MODE:\((.*)\)$", handed, re.M),
                    ["auto bilevel grey16 grey256 color8 color16 color256 rgb"])
        # The function behind an option whose argument is a word or a file.
        kinds = re.findall(r"^--palette=\[.*\]:FILE\|NAME:\{(.*)\}$", handed, re.M)
        tried = output("zsh", "-f", "-c", "_alternative() { print -rl -- $@ }; " + kinds[0].replace("\\:", ":") if kinds else "true")
        checks.same("zsh: --palette", tried, "words:word:(eink7 ega16 web216)\nfiles:file:_files\n")
    print(f"complete: {checks.passed} passed, {checks.failed} failed")
    return 1 if checks.failed else 0


if __name__ == "__main__":
    sys.exit(main())
