#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""report.py SOURCE BUILD: a quick report has every table and plot, each table its rows in order.

BUILD holds raxel-export and the program ratios_program, which stands for those that are compared with others.
"""

import os
import re
import subprocess
import sys
import tempfile

SOURCE, BUILD = map(os.path.realpath, sys.argv[1:])
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(SOURCE, "bench"))

import command_bench
import report

PAIRS = [f"PackBits, {picture}" for picture in (
    "photo", "noise", "scan", "chart", "page", "sky", "map", "icon", "stamp", "line")]


# The ways to work on many machines are tried where they are described: to start a cluster takes long.
TRIED = [name for name in report.TABLES if name != "machines"]


def must(found, wanted, what):
    if found != wanted:
        sys.exit(f"{what}: found\n  {found}\nwanted\n  {wanted}")


def sections(text):
    """Name to lines of what stands between marks."""
    parts = re.findall(r"<!-- report: (\w+) -->\n(.*?)<!-- end of report -->\n", text, re.DOTALL)
    must(len({name for name, _ in parts}), len(parts), "tables, each of them once")
    return {name: body.strip().splitlines() for name, body in parts}


def column(lines, at=0):
    """A column of a table below its head, without the rows where it is empty."""
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines if line.startswith("|")]
    for row in rows:
        must(len(row), len(rows[0]), f"cells of {row}")
    return [row[at] for row in rows[2:] if row[at]]


def quick_report(folder):
    build = os.path.join(folder, "build")
    os.mkdir(build)
    for name in ("raxel-export", "raxel.so", "libraxelhost.so.0"):
        os.symlink(os.path.join(BUILD, name), os.path.join(build, name))
    for name in ("export_bench", "writer_bench", "coders_bench"):
        os.symlink(os.path.join(BUILD, "ratios_program"), os.path.join(build, name))
    document = os.path.join(folder, "performance.md")
    with open(os.path.join(SOURCE, "docs/performance.md"), encoding="utf-8") as text:
        before = text.read()
    with open(document, "w", encoding="utf-8") as text:
        text.write(before)
    run = subprocess.run([sys.executable, os.path.join(SOURCE, "bench/report.py"), "--quick", "--build", build,
                          "--into", document, "--folder", folder, "--only", ",".join(TRIED)],
                         stderr=subprocess.PIPE, text=True)
    if run.returncode:
        sys.exit(run.stderr)
    with open(document, encoding="utf-8") as text:
        return before, text.read(), run.stderr


def main():
    must(report.that_fit((1000, 4000, 16000), 2304000000), [1000, 4000, 16000], "squares for which there is room")
    must(report.that_fit((1000, 4000, 16000), 2303999999), [1000, 4000], "squares for which there is room")
    with tempfile.TemporaryDirectory(prefix="raxel-report-") as folder:
        before, after, said = quick_report(folder)
        outside = lambda text: re.sub(r"(<!-- report: \w+ -->\n).*?(?=<!-- end of report -->\n)", r"\1", text, flags=re.DOTALL)
        must(outside(after), outside(before), "what stands outside the tables")
        made = sections(after)
        must(sorted(made), sorted(report.TABLES), "tables")
        for name in TRIED:
            if f", {name}\n" not in said or f"{name} is done" not in said:
                sys.exit(f"nothing was said about {name}:\n{said}")
        for name in ("pipeline", "writer", "coders"):
            must(column(made[name]), PAIRS, f"rows of {name}")
        jobs = command_bench.jobs("raxel-export")
        must(column(made["processes"]), list(jobs), "jobs")
        must(column(made["processes"], 2), [rival for job in jobs.values() for rival in list(job)[1:]], "rivals")
        must(column(made["growth"]), ["0.25", "1"], "megapixels")
        must(sorted(set(column(made["python"], 1))), ["Pillow", "libvips", "raxel, Pillow's image", "raxel, array", "tifffile"],
             "who saves from Python")
        must(column(made["small"]), ["`raxel-export -j 2 -d`", "`xargs -P2 ppm2tiff`"], "rows of small pictures")
        must(column(made["quantizers"]), ["portrait", "chart", "portrait, ms"], "pictures to be reduced")
        must(made["machine"][0].startswith("These tables in one run: "), True, "the sentence about the machine")
        for name in ("growth", "quantizers"):
            must(sum(f"]({name}.svg)" in line for line in made[name]), 1, f"links to {name}.svg")
            with open(os.path.join(folder, f"{name}.svg"), encoding="utf-8") as plot:
                must("</svg>" in plot.read(), True, f"{name}.svg is a plot")


if __name__ == "__main__":
    main()
