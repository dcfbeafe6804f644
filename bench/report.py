#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures everything and writes the tables and plots of docs/performance.md, between the lines that mark them.

    report.py --build FOLDER [--quick] [--only NAME,...] [--into FILE] [--folder FOLDER] [--runs N]

A table stands between `<!-- report: NAME -->` and `<!-- end of report -->`; plots go beside the document. All
commands of a row take turns, and ratios are those of medians. --quick measures next to nothing, to see that
the run still works: its figures say nothing.
"""

import argparse
import os
import platform
import re
import shutil
import subprocess
import sys
import tempfile
import time

import numpy
from PIL import Image

import command_bench
import quantize_bench

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def tell(text):
    """Progress, for whoever waits."""
    print(f"report: {text}", file=sys.stderr, flush=True)


def rows(heads, cells):
    return ["| " + " | ".join(heads) + " |", "|" + "---|" * len(heads),
            *("| " + " | ".join(row) + " |" for row in cells)]


def said(*command):
    """The first line that a program says about itself."""
    run = subprocess.run(command, check=False, capture_output=True, text=True)
    return (run.stdout or run.stderr).strip().splitlines()[0]


def machine(wanted, folder):
    with open("/proc/cpuinfo", encoding="utf-8") as cpu:
        model = next((line.split(":", 1)[1].strip() for line in cpu if line.startswith("model name")), platform.machine())
    versions = ", ".join([
        re.search(r"LIBTIFF, Version [0-9.]+", said("tiffinfo", "-h")).group().replace("LIBTIFF, Version", "libtiff"),
        "ImageMagick " + said("convert", "--version").split()[2],
        " ".join(said("gm", "version").split()[:2]), "libvips " + said("vips", "--version").split("-")[1]])
    load = os.getloadavg()[0]
    said_of = "These tables" if wanted.only else "All of it"
    return [f"{said_of} in one run: {model}, {os.cpu_count()} cores, load {load:.1f} at its end, files in "
            f"`{wanted.folder}`; {versions}."]


def processes(wanted, folder):
    command_bench.write_photo(folder, SOURCE)
    cells = []
    jobs = command_bench.jobs(command_bench.program(wanted.build))
    for number, (job, commands) in enumerate(jobs.items(), 1):
        tell(f"processes, {number} of {len(jobs)}: {job}")
        found = command_bench.measure(commands, folder, wanted.runs)
        (_, (wall, processor, peak)), *rivals = found.items()
        for name, theirs in rivals:
            cells.append([job, f"{wall:.1f}", name, f"{theirs[0]:.1f}", f"{wall / theirs[0]:.2f}",
                          f"{processor / theirs[1]:.2f}", f"{peak:.0f}", f"{theirs[2]:.0f}"])
            job = ""
    return rows(["job", "ours, ms", "rival", "its ms", "ratio", "ratio of processor time", "our peak, MiB", "its"], cells)


def ratios(bench):
    """A table of the rows that a program with ratios.h prints at its end."""
    def measure(wanted, folder):
        command = [os.path.join(wanted.build, bench)]
        if wanted.quick:
            command += ["--benchmark_repetitions=2", "--benchmark_min_time=0.001", "--benchmark_filter=PackBits"]
        run = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, env={**os.environ, "TMPDIR": folder})
        table = run.stdout[run.stdout.rindex("ours MB/s"):].splitlines()[1:]
        cells = [re.split(r" {2,}", line.strip()) for line in table if line.strip()]
        return rows(["", "ours, MB/s", "theirs, MB/s", "ratio"], [[cell.replace("/", ", ") for cell in row] for row in cells])
    return measure


def quantizers(wanted, folder):
    methods = quantize_bench.rivals(wanted.build)
    paths = quantize_bench.pictures(folder)
    if wanted.quick:
        paths = {name: paths[name] for name in ("portrait", "chart")}
    found = quantize_bench.compare(methods, paths, folder, wanted.runs)
    both = lambda texts: " / ".join(texts)
    cells = [[picture, *(both(f"{errors[picture][name]:.2f}" for errors, _ in found.values()) for name in methods)]
             for picture in paths]
    first = next(iter(paths))
    cells.append([f"{first}, ms", *(both(f"{1000 * seconds[name]:.0f}" for _, seconds in found.values()) for name in methods)])
    drawing = os.path.join(os.path.dirname(wanted.into), "quantizers.svg")
    quantize_bench.plot({colors: {name: (seconds[name], errors[first][name]) for name in methods}
                         for colors, (errors, seconds) in found.items()}, drawing)
    return [*rows(["", *methods], cells), "", "![error and time of five quantizers](quantizers.svg)"]


GROWTH = {
    "none": (["-c", "none"], "photo.ppm"),
    "LZW": (["-c", "lzw"], "photo.ppm"),
    "T.6": (["-c", "t6"], "page.pbm"),
    "256 colours": (["-m", "color256", "--no-dither"], "photo.ppm"),
}


def write_squares(folder, side):
    """A photo and a page of so many rows and columns, which repeat a picture of 1000 of them."""
    photo = Image.open(os.path.join(folder, "photo.ppm")).crop((0, 0, 1000, 1000))
    page = Image.open(os.path.join(SOURCE, "samples/page.png")).convert("1").crop((0, 0, 1000, 1000))
    bits = 1 - numpy.asarray(page).astype(numpy.uint8)
    across = -(-side // 1000)
    color = numpy.tile(numpy.asarray(photo), (1, across, 1))[:, :side]
    black = numpy.packbits(numpy.tile(bits, (1, across))[:, :side], axis=1)
    for name, head, band in (("photo.ppm", "P6\n%d %d\n255\n", color), ("page.pbm", "P4\n%d %d\n", black)):
        with open(os.path.join(folder, "square-" + name), "wb") as out:
            out.write((head % (side, side)).encode())
            for top in range(0, side, 1000):
                out.write(band[:side - top].tobytes())


def room(folder):
    """Bytes that files in a folder and a process beside them may take, as far as the system says."""
    free = shutil.disk_usage(folder).free
    with open("/proc/meminfo", encoding="utf-8") as memory:
        available = [1024 * int(line.split()[1]) for line in memory if line.startswith("MemAvailable:")]
    return min([free, *available])


def that_fit(sides, free):
    """The sides of squares for which there is room: for the photo, its file, and once more what is held of it."""
    return [side for side in sides if 9 * side**2 <= free]


def growth(wanted, folder):
    command_bench.write_photo(folder, SOURCE)
    program = command_bench.program(wanted.build)
    all_sides = (500, 1000) if wanted.quick else (1000, 2000, 4000, 8000, 16000)
    sides = that_fit(all_sides, room(folder))
    missing = [f"{side * side / 1e6:g}" for side in all_sides if side not in sides]
    if missing:
        tell(f"no room for {', '.join(missing)} megapixels in {wanted.folder}: left out")
    if not sides:
        return [f"No room for pictures in `{wanted.folder}`."]
    found = {name: [] for name in GROWTH}
    for side in sides:
        tell(f"growth, {side * side / 1e6:g} megapixels")
        write_squares(folder, side)
        commands = {name: [program, *options, "square-" + picture, "out.tif"] for name, (options, picture) in GROWTH.items()}
        for name, measured in command_bench.measure(commands, folder, wanted.runs if side < 8000 else min(3, wanted.runs)).items():
            found[name].append((measured[0] * 1e6 / side**2, measured[1] * 1e6 / side**2, measured[2]))
    sizes = [side * side / 1e6 for side in sides]
    plot_growth(sizes, found, os.path.join(os.path.dirname(wanted.into), "growth.svg"))
    cells = [[f"{size:g}", *(f"{wall:.2f} / {processor:.2f} / {peak:.0f}" for wall, processor, peak in measured)]
             for size, *measured in zip(sizes, *found.values())]
    return [*rows(["megapixels", *found], cells), "",
            "Nanoseconds a pixel by the clock, the same in processor time, and MiB of memory at most."
            + (f" There was no room for {', '.join(missing)} megapixels." if missing else ""), "",
            "![time a pixel and memory as pictures grow](growth.svg)"]


def plot_growth(sizes, found, file):
    import matplotlib
    matplotlib.use("Agg")
    matplotlib.rcParams["svg.hashsalt"] = "raxel"
    from matplotlib import pyplot
    figure, panels = pyplot.subplots(1, 2, figsize=(9, 3.6))
    for panel, which, label in zip(panels, (0, 2), ("nanoseconds a pixel", "peak memory, MiB")):
        for name, measured in found.items():
            panel.plot(sizes, [values[which] for values in measured], "o-", label=name)
        panel.set_xscale("log", base=4)
        panel.set_xticks(sizes, [f"{size:g}" for size in sizes])
        panel.set_ylim(bottom=0)
        panel.set_xlabel("megapixels")
        panel.set_ylabel(label)
    panels[0].legend()
    figure.tight_layout()
    figure.savefig(file, metadata={"Date": None})
    pyplot.close(figure)


def small(wanted, folder):
    """Many small pictures: parts of the sample photo, 64 by 64 pixels each."""
    photo = Image.open(os.path.join(SOURCE, "samples/photo.png")).convert("RGB")
    count = 40 if wanted.quick else 4000
    os.makedirs(os.path.join(folder, "in"))
    for n in range(count):
        x, y = n * 7 % (photo.width - 64), n * 13 % (photo.height - 64)
        photo.crop((x, y, x + 64, y + 64)).save(os.path.join(folder, "in", f"{n:04}.ppm"))
    begin = "rm -rf out; mkdir out; "
    commands = {
        "`raxel-export -j 2 -d`": ["sh", "-c", begin + f"exec '{command_bench.program(wanted.build)}' -q -j 2 -d out in/*.ppm"],
        "`xargs -P2 ppm2tiff`": ["sh", "-c", begin + "ls in | sed 's/.ppm$//' | xargs -P2 -I{} ppm2tiff in/{}.ppm out/{}.tif"],
    }
    found = command_bench.measure(commands, folder, min(5, wanted.runs))
    if len(os.listdir(os.path.join(folder, "out"))) != count:
        sys.exit(f"not all of {count} small pictures were written")
    first = next(iter(found.values()))
    return rows([f"{count} pictures of 64 by 64", "ms a picture", "ratio", "ratio of processor time"],
                [[name, f"{wall / count:.3f}", f"{first[0] / wall:.2f}", f"{first[1] / processor:.2f}"]
                 for name, (wall, processor, _) in found.items()])


def printed(bench, quick):
    """The table that a program prints, with its options for a trial."""
    def measure(wanted, folder):
        command = ["/usr/bin/python3", os.path.join(SOURCE, "bench", bench), "--build", wanted.build, "--folder", folder,
                   *(quick if wanted.quick else ["--runs", str(wanted.runs)])]
        table = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
        return [*table, "", f"{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} at the end."]
    return measure


TABLES = {
    "pipeline": ratios("export_bench"),
    "writer": ratios("writer_bench"),
    "coders": ratios("coders_bench"),
    "processes": processes,
    "growth": growth,
    "small": small,
    "quantizers": quantizers,
    "python": printed("python_bench.py", ["--runs", "1", "--width", "400"]),
    "machines": printed("machines_bench.py", ["--runs", "1", "--pictures", "4"]),
    "machine": machine,  # last, as it tells how busy the machine was
}


def between(text, name, lines):
    """The document with these lines as its table of that name."""
    begin, end = f"<!-- report: {name} -->\n", "<!-- end of report -->\n"
    if text.count(begin) != 1:
        sys.exit(f"the document has not one line {begin.strip()}")
    head, rest = text.split(begin)
    if end not in rest:
        sys.exit(f"the table {name} does not end")
    return head + begin + "\n" + "\n".join(lines) + "\n\n" + end + rest.split(end, 1)[1]


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--quick", action="store_true")
    arguments.add_argument("--only", default=",".join(TABLES))
    arguments.add_argument("--into", default=os.path.join(SOURCE, "docs/performance.md"))
    arguments.add_argument("--folder", default="/dev/shm")
    arguments.add_argument("--runs", type=int, default=9)
    wanted = arguments.parse_args()
    wanted.build, wanted.into = os.path.realpath(wanted.build), os.path.abspath(wanted.into)
    if wanted.quick:
        wanted.runs = 1
        command_bench.WIDTH, command_bench.HEIGHT = 400, 300
    names = wanted.only.split(",")
    if unknown := set(names) - set(TABLES):
        sys.exit(f"there is no table {', '.join(unknown)}; there are {', '.join(TABLES)}")
    with open(wanted.into, encoding="utf-8") as document:
        text = document.read()
    for name in names:
        between(text, name, [])  # what has no place in the document shall not be found out after an hour
    made, begin = {}, time.monotonic()
    for number, name in enumerate(names, 1):
        tell(f"table {number} of {len(names)}, {name}")
        with tempfile.TemporaryDirectory(prefix="raxel-bench-", dir=wanted.folder) as folder:
            made[name] = TABLES[name](wanted, folder)
        tell(f"{name} is done, {time.monotonic() - begin:.0f} s since the beginning")
    with open(wanted.into, encoding="utf-8") as document:
        text = document.read()
    for name, lines in made.items():
        text = between(text, name, lines)
    with open(wanted.into, "w", encoding="utf-8") as document:
        document.write(text)


if __name__ == "__main__":
    main()
