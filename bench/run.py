#!/usr/bin/env python3
"""Runs the benchmarks and writes docs/benchmarks.md with its plots. scripts/bench builds first.

Usage: bench/run.py BUILD [--rounds N]

Documents are made once and kept in BUILD/documents; all results go to BUILD/results.json.
"""

import argparse
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
MIB = 1 << 20

# Name, options of make_document.py, benchmarks to run (a regular expression).
TASKS = r"^(parse|load|load, every index walked|print)/"
PEERS = TASKS + r"(DomDocument|libtarn|pugixml|tinyxml2|libxml2|expat)"
NEAREST = TASKS + r"(DomDocument|libtarn|pugixml)"
DOCUMENTS = [
    ("network, 64 MiB", ["--size", "64MiB"], "."),
    ("network, 1 MiB", ["--size", "1MiB"], PEERS),
    ("network, 8 MiB", ["--size", "8MiB"], PEERS),
    ("network, 512 MiB", ["--size", "512MiB"], NEAREST),
    ("network, 64 MiB, sorted", ["--size", "64MiB", "--order", "sorted"], PEERS),
    ("mixed, 64 MiB", ["--size", "64MiB", "--shape", "mixed"], PEERS),
    ("attributes, 64 MiB", ["--size", "64MiB", "--shape", "attributes"], PEERS),
    ("text, 64 MiB", ["--size", "64MiB", "--shape", "text"], PEERS),
]
ORDERS = ["sorted", "reversed", "shuffled"]
for order in ORDERS:
    DOCUMENTS.append((f"100,000 parameters, {order}",
                      ["--shape", "wide", "--count", "100000", "--order", order], NEAREST))
    DOCUMENTS.append((f"1,000,000 objects, {order}",
                      ["--shape", "tiny", "--count", "1000000", "--order", order], NEAREST))
MAIN = DOCUMENTS[0][0]
GROWTH = ["network, 1 MiB", "network, 8 MiB", MAIN, "network, 512 MiB"]


def note(text):
    print(f"{time.strftime('%H:%M:%S')}  {text}", file=sys.stderr, flush=True)


# Measuring

def document_file(folder, name, options):
    path = folder / (re.sub(r"[^a-z0-9]+", "-", name.lower()) + ".xml")
    if not path.exists():
        subprocess.run([sys.executable, str(HERE / "make_document.py"), *options, "-o", f"{path}.part"],
                       check=True)
        os.rename(f"{path}.part", path)
    return path


def google_benchmark(command, rounds):
    """Medians by name: {name: {"seconds": ..., "resident": ...}}. The benchmarks take turns."""
    run = subprocess.run(
        [*command, f"--benchmark_repetitions={rounds}", "--benchmark_enable_random_interleaving=true",
         "--benchmark_format=json"], check=True, stdout=subprocess.PIPE, text=True)
    results = {}
    units = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    for entry in json.loads(run.stdout)["benchmarks"]:
        if entry.get("aggregate_name") == "median":
            name = entry["run_name"].split("/iterations:")[0]
            results[name] = {"seconds": entry["real_time"] * units[entry["time_unit"]],
                             "resident": entry.get("resident")}
    return results


def counts(path):
    with open(path, "rb") as file:
        sums = {"bytes": 0, "elements": 0, "objects": 0}
        for line in file:
            sums["bytes"] += len(line)
            sums["elements"] += len(re.findall(rb"<[A-Za-z]", line))
            sums["objects"] += line.count(b"<managedObject")
    return sums


def measure_documents(build, rounds, only):
    folder = build / "documents"
    folder.mkdir(exist_ok=True)
    results = {}
    for name, options, which in DOCUMENTS:
        note(name)
        if not only.search(name):
            continue
        path = document_file(folder, name, options)
        results[name] = {
            **counts(path),
            "works": google_benchmark([str(build / "bin" / "documents"), str(path),
                                       f"--benchmark_filter={which}"], rounds)}
    return results


def process_cost(command):
    start = time.perf_counter()
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise RuntimeError(f"{command} gives {child.returncode}")
    return time.perf_counter() - start, usage.ru_maxrss * 1024


def measure_processes(build, rounds):
    name, options, _ = DOCUMENTS[0]
    folder = build / "documents"
    folder.mkdir(exist_ok=True)
    document = str(document_file(folder, name, options))
    commands = {"tarn check": [str(build / "bin" / "tarn"), "check", document],
                "xmllint --noout": ["xmllint", "--huge", "--noout", document]}
    costs = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            costs[name].append(process_cost(command))
    return {name: {"seconds": statistics.median(cost[0] for cost in rounds_of),
                   "bytes": statistics.median(cost[1] for cost in rounds_of)}
            for name, rounds_of in costs.items()}


def measure_instructions(build):
    run = subprocess.run([sys.executable, str(HERE / "instructions.py"), str(build), "--json"],
                         check=True, stdout=subprocess.PIPE, text=True)
    return json.loads(run.stdout)


# Processes come first: memory that this one takes in between would count as theirs.
def measure(build, rounds, only):
    results = {"rounds": rounds}
    note("processes")
    results["processes"] = measure_processes(build, rounds)
    results["documents"] = measure_documents(build, rounds, only)
    note("look-ups")
    results["lookups"] = google_benchmark([str(build / "bin" / "lookups")], rounds)
    note("instructions")
    results["instructions"] = measure_instructions(build)
    return results


# Report

class Results:
    def __init__(self, results):
        self.results = results

    def document(self, name):
        return self.results["documents"][name]

    def seconds(self, work, document=MAIN):
        return self.document(document)["works"][work]["seconds"]

    def rate(self, work, document=MAIN):
        return self.document(document)["bytes"] / self.seconds(work, document) / 1e6

    def ratio(self, ours, theirs, document=MAIN):
        return self.seconds(theirs, document) / self.seconds(ours, document)

    def memory(self, work, document=MAIN):
        return self.document(document)["works"][work]["resident"] / self.document(document)["bytes"]


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    return "\n".join(lines + ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows])


def goals(r):
    growth = (r.rate("load/libtarn/warm", "network, 8 MiB") /
              r.rate("load/libtarn/warm", "network, 512 MiB"))
    processes = r.results["processes"]
    ours, theirs = processes["tarn check"], processes["xmllint --noout"]
    lookups = {name: entry["seconds"] for name, entry in r.results["lookups"].items()}
    validation = (r.seconds("load and validate/libtarn/warm") / r.seconds("load/libtarn/warm")) - 1
    times = "{:.2f} times".format
    return [
        ("`DomDocument` parse against pugixml's, warm", "1.2 times",
         times(r.ratio("parse/DomDocument/warm", "parse/pugixml/warm"))),
        ("the same, cold", "0.85 times",
         times(r.ratio("parse/DomDocument/cold", "parse/pugixml/cold"))),
        ("load against pugixml and indexes, cold", "3 times",
         times(r.ratio("load/libtarn/cold", "load/pugixml and indexes/cold"))),
        ("the same, warm", "3 times",
         times(r.ratio("load/libtarn/warm", "load/pugixml and indexes/warm"))),
        ("load with every index walked once, cold", "2 times",
         times(r.ratio("load, every index walked/libtarn/cold",
                       "load, every index walked/pugixml and indexes/cold"))),
        ("the same, warm", "2 times",
         times(r.ratio("load, every index walked/libtarn/warm",
                       "load, every index walked/pugixml and indexes/warm"))),
        ("load against pugixml's bare parse, warm", "0.9 times",
         times(r.ratio("load/libtarn/warm", "parse/pugixml/warm"))),
        ("validation on top of the load, warm", "0.2 loads", "{:.2f} loads".format(validation)),
        ("load and validation against libyang's", "15 times",
         times(r.ratio("load and validate/libtarn/cold", "load and validate/libyang/cold"))),
        ("print against pugixml's, cold", "3 times",
         times(r.ratio("print/libtarn/cold", "print/pugixml/cold"))),
        ("the same, warm", "3 times", times(r.ratio("print/libtarn/warm", "print/pugixml/warm"))),
        ("merge of a delta that updates every object, against libyang's", "10 times",
         times(r.ratio("merge of a delta that updates every object/libtarn/cold",
                       "merge of a delta that updates every object/libyang/cold"))),
        ("object among 1,000,000 by name, against `std::map`", "1 time",
         times(lookups["object/std::map/1000000"] / lookups["object/libtarn/1000000"])),
        ("parameter among 16 by name, against pugixml's children", "1 time",
         times(lookups["parameter/pugixml/16"] / lookups["parameter/libtarn/16"])),
        ("parameter among 1,000", "20 times",
         times(lookups["parameter/pugixml/1000"] / lookups["parameter/libtarn/1000"])),
        ("time for a byte at 512 MiB against 8 MiB, warm", "at most 1.15", "{:.2f}".format(growth)),
        ("memory of the document, every index used (64-bit)", "at most 6.2 times the text",
         times(r.memory("load, every index walked/libtarn/cold"))),
        ("`tarn check` against `xmllint --noout`, time", "4 times",
         times(theirs["seconds"] / ours["seconds"])),
        ("the same, memory", "a third", "{:.2f}".format(ours["bytes"] / theirs["bytes"])),
    ]


# The peer with which the ratios of a task compare.
PEER_OF = {"parse": "parse/pugixml", "load": "load/pugixml and indexes",
           "load, every index walked": "load, every index walked/pugixml and indexes",
           "load and validate": "load and validate/libyang", "validate": "validate/libyang",
           "print": "print/pugixml",
           "merge of a delta that updates every object":
               "merge of a delta that updates every object/libyang",
           "release": "release/pugixml", "limit": None}
# Tasks that build something whose memory can be measured, if the document is large enough.
BUILDING = ["parse", "load", "load, every index walked"]
LEAST_FOR_MEMORY = 8 * MIB


# libtarn first; the limits in their own order.
LIBRARIES = ["DomDocument", "libtarn", "pugixml", "pugixml and indexes", "tinyxml2", "libxml2",
             "expat (events)", "libyang"]


def place_of(library):
    return (LIBRARIES.index(library) if library in LIBRARIES else len(LIBRARIES), library)


def works_table(r, name):
    document = r.document(name)
    works = document["works"]
    rows = []
    for task, peer in PEER_OF.items():
        its_works = {name.rsplit("/", 1)[0] for name in works if name.startswith(task + "/")}
        for work in sorted(its_works, key=lambda work: place_of(work[len(task) + 1:])):
            row = [task, work[len(task) + 1:]]
            for memory in ["cold", "warm"]:
                if f"{work}/{memory}" not in works:
                    row += ["", "", ""]
                    continue
                seconds = r.seconds(f"{work}/{memory}", name)
                reference = works.get(f"{peer}/{memory}")
                row += [f"{seconds * 1e3:,.1f}", f"{r.rate(f'{work}/{memory}', name):,.0f}",
                        f"{reference['seconds'] / seconds:.2f}" if reference else ""]
            row.append(f"{r.seconds(f'{work}/cold', name) * 1e9 / document['elements']:,.0f}")
            has_memory = (task in BUILDING and "events" not in work and
                            document["bytes"] >= LEAST_FOR_MEMORY)
            row.append(f"{r.memory(f'{work}/cold', name):.2f}" if has_memory else "")
            rows.append(row)
    return table(["Task", "Library", "cold, ms", "MB/s", "ratio", "warm, ms", "MB/s", "ratio",
                  "ns an element, cold", "memory"], rows)


def memory_table(r):
    works = ["parse/DomDocument", "load/libtarn", "load, every index walked/libtarn",
             "parse/pugixml", "load/pugixml and indexes", "parse/tinyxml2", "parse/libxml2",
             "parse/libyang"]
    parse = r.memory("parse/pugixml/cold")
    return table(["Work", "bytes for each byte of text", "pugixml's"],
                 [(work, f"{r.memory(work + '/cold'):.2f}", f"{r.memory(work + '/cold') / parse:.2f}")
                  for work in works])


def other_documents(r):
    parts = []
    for name, options, _ in DOCUMENTS:
        if name == MAIN:
            continue
        document = r.document(name)
        parts.append(f"### {name[0].upper()}{name[1:]}\n\n`bench/make_document.py "
                     f"{' '.join(options)}`: {document['bytes']:,} bytes, {document['objects']:,} "
                     f"managed objects, {document['elements']:,} elements.\n\n"
                     f"{works_table(r, name)}\n")
    return "\n".join(parts).rstrip()


def orders_table(r):
    rows = []
    for what, unit in [("100,000 parameters", 100_000), ("1,000,000 objects", 1_000_000)]:
        for order in ORDERS:
            name = f"{what}, {order}"
            row = [name]
            for task in ["load", "load, every index walked"]:
                ours, theirs = f"{task}/libtarn/warm", f"{task}/pugixml and indexes/warm"
                row += [f"{r.seconds(ours, name) * 1e9 / unit:,.0f}",
                        f"{r.ratio(ours, theirs, name):.2f}"]
            rows.append(row)
    return table(["Document", "load, ns each", "ratio", "with every index walked, ns each", "ratio"],
                 rows)


def lookups_table(r):
    entries = r.results["lookups"]
    rows = []
    for what, peer in [("object", "std::map"), ("parameter", "pugixml")]:
        for count in sorted(int(name.rsplit("/", 1)[1]) for name in entries
                            if name.startswith(f"{what}/libtarn/")):
            ours = entries[f"{what}/libtarn/{count}"]["seconds"]
            theirs = entries[f"{what}/{peer}/{count}"]["seconds"]
            rows.append([f"{what} among {count:,}", f"{ours * 1e9:,.0f}", peer,
                         f"{theirs * 1e9:,.0f}", f"{theirs / ours:.1f}"])
    return table(["Look-up", "libtarn, ns", "against", "ns", "ratio"], rows)


def processes_table(r):
    base = r.results["processes"]["xmllint --noout"]
    return table(["Process", "seconds", "ratio", "MB", "ratio"],
                 [(f"`{name}`", f"{cost['seconds']:.3f}", f"{base['seconds'] / cost['seconds']:.2f}",
                   f"{cost['bytes'] / 1e6:,.0f}", f"{base['bytes'] / cost['bytes']:.2f}")
                  for name, cost in r.results["processes"].items()])


def instructions_table(r):
    return table(["Phase", "instructions a byte"], r.results["instructions"].items())


def machine():
    cpu = re.search(r"model name\s*:\s*(.*)", Path("/proc/cpuinfo").read_text())
    return f"{cpu.group(1) if cpu else platform.machine()}, {os.cpu_count()} processors, " \
           f"Linux {platform.release()}"


# Plots

def gnuplot(output, commands, data):
    script = f'set terminal svg size 760,360 font "sans-serif,13" background "white"\n' \
             f'set output "{output}"\nset grid ytics\nset border 3\nset tics nomirror\n{commands}'
    blocks = "".join(f"${name} << END\n{rows}\nEND\n" for name, rows in data.items())
    subprocess.run(["gnuplot"], input=blocks + script, text=True, check=True)


def bars(output, title, label, values):
    rows = "\n".join(f'"{name}" {value}' for name, value in values)
    gnuplot(output, f'set title "{title}"\nset ylabel "{label}"\nset style fill solid 0.8\n'
            'set boxwidth 0.6\nset yrange [0:*]\nunset key\nset xtics rotate by -20\n'
            'plot $bars using 0:2:xtic(1) with boxes linecolor rgb "#3b6ea5"\n', {"bars": rows})


def plots(r, folder):
    folder.mkdir(exist_ok=True)
    throughput = [("DomDocument", "parse/DomDocument"), ("libtarn, indexed", "load/libtarn"),
                  ("pugixml", "parse/pugixml"), ("pugixml, indexed", "load/pugixml and indexes"),
                  ("tinyxml2", "parse/tinyxml2"), ("libxml2", "parse/libxml2"),
                  ("expat, events", "parse/expat (events)"), ("libyang", "parse/libyang")]
    bars(folder / "throughput.svg", "Parsing and loading 64 MiB, cold", "MB/s",
         [(name, r.rate(f"{work}/cold")) for name, work in throughput])
    bars(folder / "memory.svg", "Memory of the document, text included", "bytes for each byte of text",
         [(name, r.memory(f"{work}/cold")) for name, work in throughput if "expat" not in name])
    lines = {"libtarn": "load/libtarn/warm", "pugixml": "parse/pugixml/warm",
             "indexed": "load/pugixml and indexes/warm"}
    data = {key: "\n".join(f"{r.document(name)['bytes'] / MIB} "
                           f"{r.seconds(work, name) * 1e9 / r.document(name)['bytes']}"
                           for name in GROWTH) for key, work in lines.items()}
    gnuplot(folder / "growth.svg",
            'set title "Growth, warm"\nset logscale x 2\nset xlabel "MiB of text"\n'
            'set ylabel "ns a byte"\nset yrange [0:*]\nset key top left\n'
            'plot $libtarn with linespoints lw 2 title "libtarn, load", '
            '$pugixml with linespoints lw 2 title "pugixml, parse", '
            '$indexed with linespoints lw 2 title "pugixml and indexes"\n', data)


def write(results):
    r = Results(results)
    text = (HERE / "benchmarks.md.in").read_text()
    values = {"machine": machine(), "rounds": results["rounds"],
              "bytes": f"{r.document(MAIN)['bytes']:,}", "objects": f"{r.document(MAIN)['objects']:,}",
              "elements": f"{r.document(MAIN)['elements']:,}",
              "goals": table(["Task", "target", "measured"], goals(r)), "works": works_table(r, MAIN),
              "memory": memory_table(r), "others": other_documents(r), "orders": orders_table(r),
              "lookups": lookups_table(r), "processes": processes_table(r),
              "instructions": instructions_table(r)}
    for key, value in values.items():
        text = text.replace(f"@{key}@", str(value))
    (ROOT / "docs" / "benchmarks.md").write_text(text)
    plots(r, ROOT / "docs" / "benchmarks")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--rounds", type=int, default=7, help="medians of so many (7)")
    parser.add_argument("--only", default="", metavar="REGEX",
                        help="measure these documents again and keep the results of the others")
    parser.add_argument("--write-only", action="store_true", help="from the results that are there")
    arguments = parser.parse_args()
    results_file = arguments.build / "results.json"
    if not arguments.write_only:
        results = measure(arguments.build.resolve(), arguments.rounds, re.compile(arguments.only))
        if arguments.only:
            earlier = json.loads(results_file.read_text())["documents"]
            results["documents"] = {**earlier, **results["documents"]}
        results_file.write_text(json.dumps(results, indent=1))
    write(json.loads(results_file.read_text()))


if __name__ == "__main__":
    main()
