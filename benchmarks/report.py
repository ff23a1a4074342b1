#!/usr/bin/env python3
"""Writes the performance page, its pictures and a line of reading.md from what scripts/bench has measured.

    report.py TIMES.json THREADS.json INSTRUCTIONS.txt PAGE.md"""
import json
import math
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys

THIS = "this library"
FLOOR = "floor"
RECORDS = {
    "A": "`ServerConnectionParameters` with all members: eight strings of 24, 20, 10, 18, 30, 12, 0 and 64 bytes",
    "B": "`AppInfo`: 8 update configuration entries, 3 HSDP entries, both keys, 1,620 bytes of text",
    "C": "`FileChunk` of 64 KiB",
    "D": "a list of 1,000 parameters: names of 24 bytes, values of 48",
}
ALONE = {
    "subscriptions": "subscriptions: 4 severities, 128 names each",
    "identifiers": "ten update identifiers",
    "event": "an event with all its strings",
    "event random": "the same with strings of random lengths",
}
DIRECTIONS = ("write", "read")
HAND, TRUSTED, VIEW, VERIFIED, READER = ("by hand", "this library, trusted", "this library, view",
                                         "this library, verified", "this library's reader")
FLAT_TRUSTED, FLAT_VERIFIED, CAPN = "FlatBuffers, trusted", "FlatBuffers, verified", "Cap'n Proto"
WAYS = (HAND, TRUSTED, VIEW, VERIFIED, READER, FLAT_TRUSTED, FLAT_VERIFIED, CAPN)
# What is asked of a message, and which way of this library does as much as another.
TASKS = {
    "verify": {READER: VERIFIED, FLAT_VERIFIED: VERIFIED, CAPN: VERIFIED},
    "touch": {READER: VERIFIED, FLAT_TRUSTED: TRUSTED, FLAT_VERIFIED: VERIFIED, CAPN: VERIFIED},
    "one text": {READER: VERIFIED, FLAT_TRUSTED: TRUSTED, FLAT_VERIFIED: VERIFIED, CAPN: VIEW},
}
PACKAGES = {
    "Protocol Buffers": "libprotobuf-dev", "FlatBuffers": "libflatbuffers-dev", "Cap'n Proto": "libcapnp-dev",
    "cereal": "libcereal-dev", "MessagePack": "libmsgpack-cxx-dev", "Google Benchmark": "libbenchmark-dev",
    "Valgrind": "valgrind",
}


class Times:
    """All samples of each conversion in nanoseconds, by its name; and the size of its message in bytes."""

    def __init__(self, path):
        self.samples = {}
        self.bytes = {}
        measured = json.loads(pathlib.Path(path).read_text())
        self.load = measured["context"]["load_avg"][0]
        for run in measured["benchmarks"]:
            if run["run_type"] == "iteration":
                self.samples.setdefault(run["run_name"], []).append(run["real_time"])
                self.bytes[run["run_name"]] = run["bytes"]

    def median(self, name):
        return statistics.median(self.samples[name])

    def spread(self, name):
        """Half the distance between the quartiles."""
        first, _, third = statistics.quantiles(self.samples[name], n=4)
        return (third - first) / 2


def number(value):
    """Three digits, or all before the point."""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def table(head, rows):
    lines = [head, ["---"] + ["---:"] * (len(head) - 1)] + rows
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def libraries(times, record):
    return [name.split("/")[2] for name in times.samples if name.startswith(f"{record}/write/")]


def cells(records):
    return [(record, direction) for direction in DIRECTIONS for record in records]


def cell(times, instructions, name):
    text = f"{number(times.median(name))} ± {number(times.spread(name))}"
    return text + (f" ({instructions[name]:,.0f})" if name in instructions else "")


def measured(times, instructions, records):
    head = [""] + [f"{record} {direction}" for record, direction in cells(records)]
    rows = []
    for library in libraries(times, next(iter(records))):
        row = [f"**{library}**" if library == THIS else library]
        for record, direction in cells(records):
            row.append(cell(times, instructions, f"{record}/{direction}/{library}"))
        rows.append(row)
    return table(head, rows)


def best_peer(values, record, direction, names):
    peers = [(values[f"{record}/{direction}/{library}"], library) for library in names
             if library not in (THIS, FLOOR)]
    return min(peers)


def ratios(times, instructions, records):
    """This library against the floor, and against the best peer of each column; below 1 it is ahead."""
    medians = {name: times.median(name) for name in times.samples}
    names = libraries(times, next(iter(records)))
    head = ["this library /"] + [f"{record} {direction}" for record, direction in cells(records)]
    rows = []
    for what, values in (("time", medians), ("instructions", instructions)):
        own = [values.get(f"{record}/{direction}/{THIS}") for record, direction in cells(records)]
        if None in own:
            continue
        floors = [values[f"{record}/{direction}/{FLOOR}"] for record, direction in cells(records)]
        rows.append([f"floor, {what}"] + [f"{a / b:.2f}" for a, b in zip(own, floors)])
        if len(names) > 2:
            peers = [best_peer(values, record, direction, names) for record, direction in cells(records)]
            rows.append([f"best peer, {what}"] + [f"{a / b:.2f} ({peer})" for a, (b, peer) in zip(own, peers)])
    return table(head, rows)


def looks(times, instructions):
    rows = []
    for task in TASKS:
        for record in RECORDS:
            names = [f"{record}/{task}/{way}" for way in WAYS]
            rows.append([f"{record}, {task}"] + [cell(times, instructions, name) if name in times.samples else ""
                                                 for name in names])
    return table([""] + [f"**{way}**" if way.startswith(f"{THIS},") else way for way in WAYS], rows)


def look_ratios(times, instructions):
    """This library against each other way, by the way of its own that does as much; below 1 it is ahead."""
    others = (READER, FLAT_VERIFIED, FLAT_TRUSTED, CAPN)
    rows = []
    for task, counterparts in TASKS.items():
        for record in RECORDS:
            row = [f"{record}, {task}"]
            for other in others:
                if other not in counterparts:
                    row.append("")
                    continue
                own, peer = (f"{record}/{task}/{way}" for way in (counterparts[other], other))
                time, count = times.median(own) / times.median(peer), instructions[own] / instructions[peer]
                row.append(f"{time:.3f} ({count:.3f})")
            hand, own = f"{record}/{task}/{HAND}", f"{record}/{task}/{TRUSTED}"
            row.append(f"{times.median(own) - times.median(hand):+.2f} ns" if hand in times.samples else "")
            rows.append(row)
    return table(["this library /"] + list(others) + ["more than by hand"], rows)


# The pictures. Plain SVG with a background of its own, readable on a light and on a dark page.

INK, PALE, OWN, OTHER, FLOORS = "#222222", "#dddddd", "#c2410c", "#94a3b8", "#0f766e"


def svg(width, height, parts):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" '
            f'font-family="sans-serif" font-size="12" fill="{INK}">\n'
            f'<rect width="{width}" height="{height}" fill="#ffffff"/>\n' + "\n".join(parts) + "\n</svg>\n")


def text(x, y, content, anchor="start", weight="normal", fill=INK, size=12):
    content = content.replace("&", "&amp;").replace("<", "&lt;")
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-weight="{weight}" font-size="{size}" '
            f'fill="{fill}">{content}</text>')


def bars(times):
    """A panel for each record and direction: how many times the floor's time each library takes."""
    names = [name for name in libraries(times, "A") if name != FLOOR]
    panel_width, panel_height, left, top, longest = 320, 34 + 19 * len(names), 16, 70, 10.0
    parts = [text(left, 26, "Time to convert a record, as a multiple of copying its bytes", weight="bold", size=17),
             text(left, 46, "Shorter is better. The line is the floor: the bytes copied, or the owned record built from "
                  "bytes, with no check at all.")]
    for row, direction in enumerate(DIRECTIONS):
        for column, record in enumerate(RECORDS):
            x0, y0 = left + column * panel_width, top + row * (panel_height + 14)
            floor = times.median(f"{record}/{direction}/{FLOOR}")
            parts.append(text(x0, y0 + 12, f"{record}, {direction}", weight="bold", size=13))
            unit = (panel_width - 175) / longest
            start = x0 + 112
            for i, library in enumerate(names):
                ratio = times.median(f"{record}/{direction}/{library}") / floor
                y = y0 + 24 + 19 * i
                own = library == THIS
                parts.append(text(start - 6, y + 11, library, "end", "bold" if own else "normal", OWN if own else INK))
                parts.append(f'<rect x="{start}" y="{y}" width="{min(ratio, longest) * unit:.1f}" height="14" '
                             f'fill="{OWN if own else OTHER}"/>')
                arrow = " →" if ratio > longest else ""
                parts.append(text(start + min(ratio, longest) * unit + 4, y + 11, f"{ratio:.2f}{arrow}",
                                  weight="bold" if own else "normal", fill=OWN if own else INK))
            parts.append(f'<line x1="{start + unit:.1f}" x2="{start + unit:.1f}" y1="{y0 + 20}" '
                         f'y2="{y0 + 24 + 19 * len(names)}" stroke="{FLOORS}" stroke-width="1.5"/>')
    return svg(left * 2 + panel_width * len(RECORDS), top + 2 * (panel_height + 14), parts)


GROWTH = {"list": "parameters in a list", "strings": "bytes in each of two strings", "set": "names in a set"}


def growth_sizes(times, what):
    pattern = re.compile(rf"{what} (\d+)/write/")
    return sorted(int(match[1]) for name in times.samples if (match := pattern.match(name)))


def per_byte(values, times, what, size, direction):
    name = f"{what} {size}/{direction}/{THIS}"
    return values[name] / times.bytes[name]


def curves(times, instructions):
    """Time and instructions per byte over the size, both axes logarithmic."""
    width, height, left, top = 290, 170, 60, 70
    medians = {name: times.median(name) for name in times.samples}
    parts = [text(16, 26, "Cost of each byte of a message as it grows", weight="bold", size=17),
             text(16, 46, "Both axes logarithmic. A line that is level, or falls to a level, is a cost that grows with the "
                  "bytes and no faster.")]
    for row, (unit, values) in enumerate((("ns per byte", medians), ("instructions per byte", instructions))):
        for column, (what, title) in enumerate(GROWTH.items()):
            sizes = growth_sizes(times, what)
            x0, y0 = left + column * (width + 60), top + row * (height + 70)
            points = {direction: [per_byte(values, times, what, size, direction) for size in sizes]
                      for direction in DIRECTIONS}
            low = math.floor(math.log10(min(map(min, points.values()))))
            high = math.ceil(math.log10(max(map(max, points.values()))))
            place_x = [x0 + width * i / (len(sizes) - 1) for i in range(len(sizes))]

            def place_y(value):
                return y0 + height - height * (math.log10(value) - low) / (high - low)

            for power in range(low, high + 1):
                y = place_y(10 ** power)
                parts.append(f'<line x1="{x0}" x2="{x0 + width}" y1="{y:.1f}" y2="{y:.1f}" stroke="{PALE}"/>')
                parts.append(text(x0 - 6, y + 4, f"{10.0 ** power:g}", "end", size=10))
            for x, size in zip(place_x, sizes):
                parts.append(text(x, y0 + height + 14, f"{size // 1000}k" if size >= 1000 and size % 1000 == 0
                                  else str(size), "middle", size=9))
            parts.append(text(x0 + width / 2, y0 + height + 30, title, "middle", size=11))
            if column == 0:
                parts.append(text(x0 - 44, y0 - 8, unit, weight="bold"))
            for direction, colour in zip(DIRECTIONS, (OWN, FLOORS)):
                line = " ".join(f"{x:.1f},{place_y(value):.1f}" for x, value in zip(place_x, points[direction]))
                parts.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"/>')
                parts.append(text(place_x[-1] + 4, place_y(points[direction][-1]) + 4, direction, fill=colour, size=11))
    return svg(left + 3 * (width + 60), top + 2 * (height + 70), parts)


def growth_table(times, instructions):
    rows = []
    for what, title in GROWTH.items():
        for size in growth_sizes(times, what):
            row = [f"{size:,} {title}"]
            for direction in DIRECTIONS:
                name = f"{what} {size}/{direction}/{THIS}"
                row.append(f"{number(times.median(name))} ± {number(times.spread(name))}")
                row.append(f"{times.median(name) / times.bytes[name]:.3f}")
                row.append(f"{instructions[name] / times.bytes[name]:.2f}")
            rows.append(row)
    return table(["", "write, ns", "ns/byte", "instr./byte", "read, ns", "ns/byte", "instr./byte"], rows)


def threads_table(times):
    """Google Benchmark divides the time by the number of threads; this gives the time each of them takes."""
    rows = {}
    for name in times.samples:
        direction, count = re.match(r".*/(write|read)/.*threads:(\d+)$", name).groups()
        rows.setdefault(int(count), {})[direction] = times.median(name) * int(count)
    return table(["threads, an arena each", "write, ns", "read, ns"],
                 [[str(count), number(row["write"]), number(row["read"])] for count, row in sorted(rows.items())])


def command_output(*command):
    return subprocess.run(command, check=False, capture_output=True, text=True).stdout.strip()


def machine():
    cpu = re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    memory = re.search(r"^MemTotal:\s*(\d+)", pathlib.Path("/proc/meminfo").read_text(), re.MULTILINE)
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    compiler = command_output("c++", "--version").splitlines()[0]
    versions = []
    for name, package in PACKAGES.items():
        version = command_output("dpkg-query", "-W", "-f=${Version}", package)
        versions.append(f"{name} {re.split(r'[-+]', version.split(':')[-1])[0]}")
    return (f"{cpu[1] if cpu else platform.machine()} with {os.cpu_count()} cores and "
            f"{int(memory[1]) / 2**20:.0f} GiB of memory, {system}, {compiler} with `-O2`. {', '.join(versions)}.")


# Kept by hand: what whoever wants to make it faster need not try again.
TRIED = """## What was tried and left out

Measured with GCC 12 on the records above, each for itself. Strings and blobs of 8 to 64 bytes are copied in place; one
shared function copies all others.

| idea | what came of it |
| --- | --- |
| every copy in place, whatever its size | A written with 253 instructions instead of 269; 25 KB more text |
| in place only from 16 to 32 bytes, or from 16 to 64 | A written in 16.2 or 14 ns instead of 12.2 |
| the shared copy with fewer comparisons, or local so that the compiler knows which registers it spares | 20 to 33 instructions fewer for A, and no time |
| writers of large records shared by all that hold one | 120 instructions more for B; 5 KB less text |
| one loop for all lists | 5,000 instructions more for D; 0.6 KB less text |
| identifiers copied one at a time, or by one `memcpy` | 104 or 91 instructions instead of 92; both take a sixth longer |
| a pointer as the writer's cursor | three instructions more for each pointer that is written |
| an event's strings placed by the steps of its writer, inlined | 19 instructions more |
| nested readers inlined beyond those of lists and optionals | 23 instructions fewer for A read, B read 4 % slower; 9 KB more text |
| one room test for a run of strings | 2 instructions of 13 for each string, which the processor pairs anyway |
| `-fno-ipa-sra` | 0.8 KB less text; reading events and subscriptions takes up to 1.6 % more instructions |
"""


def page(times, threads, instructions):
    randoms = [name for name in ("A random", "B random", "D random")]
    samples = len(next(iter(times.samples.values())))
    return f"""# Performance

What it costs to convert a record, and to look at one in its message, beside what it costs other serializers, and
beside a floor: the bytes copied, without any check. This page and its pictures are written by

    scripts/bench

![Bars: this library beside the others, as multiples of the floor](performance.svg)

Records:

{chr(10).join(f"- {key}: {what}" for key, what in RECORDS.items())}

Nanoseconds, the median of {samples} interleaved samples ± half the distance between the quartiles; in parentheses the
instructions.

{measured(times, instructions, RECORDS)}

As ratios; below 1, this library is ahead:

{ratios(times, instructions, RECORDS)}

The same records with strings of random lengths, between 0 and twice as long: 128 different ones of A and of B and 4
lists, one after the other, so that no length can be foreseen.

{measured(times, instructions, randoms)}

{ratios(times, instructions, randoms)}

What the others have no counterpart of:

{chr(10).join(f"- {what}" for what in ALONE.values())}

{measured(times, instructions, ALONE)}

{ratios(times, instructions, ALONE)}

## Reading in place

What it costs to look at a message where it stands, without making a record of it. Three things are asked: whether all
of it is good ("verify"); what its fields come to, numbers added up and of each text and blob the size and the first
byte ("touch"); and one text: the proxy's password in A, `productInfo.updCfgArray.items[5].field2` in B, the file's name
in C and the last parameter's name in D. Figures as above.

{looks(times, instructions)}

- trusted: nothing is tested, as in a message that was verified before.
- view: each pointer that is followed is tested, and no other: `RecordView`. Cap'n Proto's reader works so too, within
  its default limits; as these are the limits of one message, each message gets a new reader.
- verified: all of the message is verified before anything is looked at: `Verified`. So it is by FlatBuffers' verifier.
  Cap'n Proto has none; what stands under "verify" is its `totalSize()`, which follows and tests each pointer.
- by hand: `memcpy` at offsets, by somebody who knows the layout and trusts the message.
- this library's reader: the owned record, made, looked at and destroyed.

As ratios of time, in parentheses of instructions; below 1, this library is ahead. Each is compared with the way of
this library that tests as much: the reader and FlatBuffers' verifier with "verified", FlatBuffers without it with
"trusted", Cap'n Proto with the view where one text is read and otherwise with "verified". The last column is what
"trusted" takes beyond what the same takes by hand.

{look_ratios(times, instructions)}

## How cost grows

![Curves: time and instructions for each byte](growth.svg)

{growth_table(times, instructions)}

A small message pays for the call and for each of its members; per byte of a larger one, that becomes less. The
instructions for each byte of a list stay level from 30 parameters on; where the time still rises, as it does once records
and message no longer fit into the caches, the processor waits for memory. Valgrind counts the C library's copy of a long
string as one instruction a byte, hence the step at 16,384.

Each thread for itself, on record B. Nothing is shared but the memory allocator, which the reader asks for its strings.

{threads_table(threads)}

## How it is measured

Everybody starts from the same owned records and gives back owned records. Writing goes into a buffer that is used
again; whatever message objects or builders a library needs in between are part of its time, and used again where it
allows that. Reading builds a new record, whose destruction is part of the time. Before anything is measured, each
library's result is compared with the original. Everybody is called through a pointer: this library's functions in its
shared library as it is installed, the others through a virtual function. All run in one process, bound to one core, in
random order; memory that was given back stays with the process. FlatBuffers' messages are verified before they are
read; texts are bytes to Protocol Buffers and Cap'n Proto, so that nobody pays for an encoding. zpp_bits, struct_pack
and bitsery take part where
`-DVYN_CONNECTOR_COMMON_BENCH_PEERS=FOLDER`, an argument of `scripts/bench`, names a folder with their headers.

Looking at a message is one function for each way and question, called through a pointer. Before anything is measured,
its answer is compared with that of the original record. Everybody tests for what may be missing: optional members, and
lists that are shorter than expected.

The floor of writing copies the payload back to back with short copies inlined, without lengths, pointers, alignment or
checks. The floor of reading builds the owned record from such a payload, its sizes known beforehand. Ten identifiers
are read with room for a hundred and sixty by either, as the format asks for.

An instruction count is the difference between 15 runs and 5 under Callgrind, divided by ten, in a process of its own.

{TRIED}
Machine: {machine()} Its load was {times.load:.2f} when the measuring began.
"""


def update_reading(page, times):
    """The line of the page on ways to read that says what each of them takes."""
    reader, verified, view, trusted = (number(times.median(f"B/{look}")) for look in (
        f"verify/{READER}", f"verify/{VERIFIED}", f"one text/{VIEW}", f"one text/{TRUSTED}"))
    head = "| takes, for record B of [the benchmarks](performance.md) |"
    line = f"{head} {reader} ns | {view} ns for a text | {verified} ns, then {trusted} ns for a text |"
    lines = page.read_text().splitlines()
    lines[[other.startswith(head) for other in lines].index(True)] = line
    page.write_text("\n".join(lines) + "\n")


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    times, threads = Times(sys.argv[1]), Times(sys.argv[2])
    instructions = {}
    for line in pathlib.Path(sys.argv[3]).read_text().splitlines():
        name, count = line.rsplit(maxsplit=1)
        instructions[name.strip()] = float(count)
    target = pathlib.Path(sys.argv[4])
    target.parent.mkdir(exist_ok=True)
    target.write_text(page(times, threads, instructions))
    target.with_name("performance.svg").write_text(bars(times))
    update_reading(target.with_name("reading.md"), times)
    target.with_name("growth.svg").write_text(curves(times, instructions))


if __name__ == "__main__":
    main()
