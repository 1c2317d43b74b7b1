#!/usr/bin/env python3
"""Writes a configuration document of a given size, the same one for the same seed.

Shapes:
  mixed       objects with parameters, lists of both kinds and extensions
  attributes  many objects with long names and no parameters
  text        parameters with long values
  tiny        objects with one parameter
  wide        one object with many parameters
"""

import argparse
import random
import sys

CLASSES = ["SITE", "CELL", "RADIO", "LINK", "PORT", "CLOCK", "POWER", "ALARM", "ROUTE"]
UNITS = {"KiB": 1 << 10, "MiB": 1 << 20, "GiB": 1 << 30}


def size_in_bytes(text):
    for unit, factor in UNITS.items():
        if text.endswith(unit):
            return int(text[: -len(unit)]) * factor
    return int(text)


def parameters(rng, count, length=4):
    names = rng.sample(range(4 * count), count)
    return "".join(
        f'   <p name="param{n:06d}">{rng.randrange(10 ** length):0{length}d}</p>\n' for n in names)


def mixed(rng):
    body = parameters(rng, 8)
    body += '   <list name="neighbours">\n'
    body += "".join(f"    <p>{rng.randrange(100000)}</p>\n" for _ in range(4))
    body += '   </list>\n   <list name="ports">\n'
    for port in range(2):
        body += f'    <item>\n     <p name="id">{port}</p>\n     <p name="rate">{rng.randrange(1000)}</p>\n    </item>\n'
    body += '   </list>\n   <extension name="planner">\n'
    body += f'    <p name="note">a &amp; b &lt; {rng.randrange(1000)}</p>\n   </extension>\n'
    return body


BODIES = {
    "mixed": mixed,
    "attributes": lambda rng: "",
    "text": lambda rng: f'   <p name="note">{"lorem ipsum " * rng.randrange(20, 60)}</p>\n',
    "tiny": lambda rng: f'   <p name="id">{rng.randrange(1000)}</p>\n',
}


def managed_object(rng, shape, number):
    name = f"NET-1/SITE-{number // 64}/RADIO-{number // 8}/CELL-{number}"
    if shape == "attributes":
        name = "/".join(f"GROUP{level}-{number >> level}" for level in range(8)) + f"/CELL-{number}"
    head = f'  <managedObject class="{CLASSES[number % len(CLASSES)]}" distName="{name}" version="1.0">\n'
    return head + BODIES[shape](rng) + "  </managedObject>\n"


def wide_object(rng, size):
    yield '  <managedObject class="NET" distName="NET-1" version="1.0">\n'
    count = max(1, size // 38)
    numbers = list(range(count))
    rng.shuffle(numbers)
    for number in numbers:
        yield f'   <p name="param{number:08d}">{rng.randrange(1000)}</p>\n'
    yield "  </managedObject>\n"


def objects(rng, shape, order, size):
    if shape == "wide":
        yield from wide_object(rng, size)
        return
    sample = sum(len(managed_object(random.Random(n), shape, n)) for n in range(100, 200)) / 100
    numbers = list(range(max(1, int(size / sample))))
    width = len(str(len(numbers)))
    # Numbers of one width, so that their order is the byte order of the names.
    numbers = [10 ** width + n for n in numbers]
    if order == "shuffled":
        rng.shuffle(numbers)
    elif order == "reversed":
        numbers.reverse()
    for number in numbers:
        yield managed_object(rng, shape, number)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--size", default="1MiB", type=size_in_bytes,
                        help="about so many bytes; KiB, MiB and GiB are understood (1MiB)")
    parser.add_argument("--seed", default=1, type=int, help="of the random numbers (1)")
    parser.add_argument("--order", default="shuffled", choices=["sorted", "shuffled", "reversed"],
                        help="of the objects' names (shuffled)")
    parser.add_argument("--shape", default="mixed", choices=[*BODIES, "wide"],
                        help="of the objects (mixed)")
    parser.add_argument("-o", "--output", default="-", help="file to write (standard output)")
    arguments = parser.parse_args()

    out = sys.stdout if arguments.output == "-" else open(arguments.output, "w", encoding="utf-8")
    with out:
        out.write('<?xml version="1.0" encoding="UTF-8"?>\n<tarn xmlns="tarn21.xsd" version="2.1">\n'
                  ' <cmData type="actual">\n  <header>\n'
                  '   <log dateTime="Sun Nov 15 17:43:13 +0000 2026" action="made">bench</log>\n'
                  "  </header>\n")
        rng = random.Random(arguments.seed)
        out.writelines(objects(rng, arguments.shape, arguments.order, arguments.size))
        out.write(" </cmData>\n</tarn>\n")


if __name__ == "__main__":
    main()
