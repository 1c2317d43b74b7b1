#!/usr/bin/env python3
"""Writes a configuration document of a given size, the same one for the same seed.

Shapes:
  network     objects as planning tools write them: parameters of long names, with values of many
              kinds, lists of plain values and of items, an extension
  mixed       the same kinds of elements, with short names and values
  attributes  many objects with long names and no parameters
  text        parameters with long values
  tiny        objects with one parameter
  wide        one object with many parameters
"""

import argparse
import random
import sys

CLASSES = ["SITE", "CELL", "RADIO", "LINK", "PORT", "CLOCK", "POWER", "ALARM", "ROUTE"]
QUALITIES = ("administrative operational maximum minimum default reserved primary secondary uplink "
             "downlink handover measurement synchronization redundant external").split()
QUANTITIES = ("State TransmitPower Threshold TimerInSeconds Bandwidth Identifier Priority Address "
              "FrequencyOffset Weight Mode ReportInterval").split()
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


def value(rng, quantity):
    if quantity in ("State", "Mode"):
        return rng.choice(["unlocked", "locked", "shuttingDown", "enabled", "automatic"])
    if quantity == "Address":
        return ".".join(str(rng.randrange(256)) for _ in range(4))
    if quantity == "Identifier":
        return f"site-{rng.randrange(10 ** 6)}.region-{rng.randrange(100)}.operator.example"
    return str(rng.choice([rng.randrange(10), rng.randrange(1000), -rng.randrange(10 ** 6)]))


# Each class has its own parameters, in its own order.
def class_parameters(number):
    rng = random.Random(number)
    names = [(quality, quantity) for quality in QUALITIES for quantity in QUANTITIES]
    return rng.sample(names, 8 + number)


CLASS_PARAMETERS = [class_parameters(number) for number in range(len(CLASSES))]


def network(rng, number):
    body = "".join(
        f'   <p name="{quality}{quantity}">{value(rng, quantity)}</p>\n'
        for quality, quantity in CLASS_PARAMETERS[number % len(CLASSES)])
    body += '   <list name="neighbourCells">\n'
    body += "".join(f"    <p>NET-1/SITE-{rng.randrange(10 ** 4)}/CELL-{rng.randrange(10 ** 6)}</p>\n"
                    for _ in range(rng.randrange(1, 5)))
    body += '   </list>\n   <list name="transportPorts">\n'
    for port in range(rng.randrange(1, 4)):
        body += (f'    <item>\n     <p name="portIdentifier">{port}</p>\n'
                 f'     <p name="lineRateInMegabits">{rng.randrange(100000)}</p>\n    </item>\n')
    body += '   </list>\n   <extension name="planningTool">\n'
    body += f'    <p name="comment">approved &amp; checked, revision &lt; {rng.randrange(1000)}</p>\n'
    return body + "   </extension>\n"


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
    "network": network,
    "mixed": lambda rng, number: mixed(rng),
    "attributes": lambda rng, number: "",
    "text": lambda rng, number: f'   <p name="note">{"lorem ipsum " * rng.randrange(20, 60)}</p>\n',
    "tiny": lambda rng, number: f'   <p name="id">{rng.randrange(1000)}</p>\n',
}


def managed_object(rng, shape, number):
    name = f"NET-1/SITE-{number // 64}/RADIO-{number // 8}/CELL-{number}"
    if shape == "attributes":
        name = "/".join(f"GROUP{level}-{number >> level}" for level in range(8)) + f"/CELL-{number}"
    head = f'  <managedObject class="{CLASSES[number % len(CLASSES)]}" distName="{name}" version="1.0">\n'
    return head + BODIES[shape](rng, number) + "  </managedObject>\n"


def in_order(rng, order, count):
    numbers = list(range(count))
    if order == "shuffled":
        rng.shuffle(numbers)
    elif order == "reversed":
        numbers.reverse()
    return numbers


def wide_object(rng, order, count):
    yield '  <managedObject class="NET" distName="NET-1" version="1.0">\n'
    for number in in_order(rng, order, count):
        yield f'   <p name="param{number:08d}">{rng.randrange(1000)}</p>\n'
    yield "  </managedObject>\n"


def objects(rng, shape, order, size, count):
    if shape == "wide":
        yield from wide_object(rng, order, count or max(1, size // 38))
        return
    sample = sum(len(managed_object(random.Random(n), shape, n)) for n in range(100, 200)) / 100
    count = count or max(1, int(size / sample))
    # Numbers of one width, so that their order is the byte order of the names.
    first = 10 ** len(str(count))
    for number in in_order(rng, order, count):
        yield managed_object(rng, shape, first + number)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--size", default="1MiB", type=size_in_bytes,
                        help="about so many bytes; KiB, MiB and GiB are understood (1MiB)")
    parser.add_argument("--count", type=int,
                        help="so many objects, or parameters of a wide one, whatever the size")
    parser.add_argument("--seed", default=1, type=int, help="of the random numbers (1)")
    parser.add_argument("--order", default="shuffled", choices=["sorted", "shuffled", "reversed"],
                        help="of the names of the objects, or of the parameters (shuffled)")
    parser.add_argument("--shape", default="network", choices=[*BODIES, "wide"],
                        help="of the objects (network)")
    parser.add_argument("-o", "--output", default="-", help="file to write (standard output)")
    arguments = parser.parse_args()

    out = sys.stdout if arguments.output == "-" else open(arguments.output, "w", encoding="utf-8")
    with out:
        out.write('<?xml version="1.0" encoding="UTF-8"?>\n<tarn xmlns="tarn21.xsd" version="2.1">\n'
                  ' <cmData type="actual">\n  <header>\n'
                  '   <log dateTime="Sun Nov 15 17:43:13 +0000 2026" action="made">bench</log>\n'
                  "  </header>\n")
        rng = random.Random(arguments.seed)
        out.writelines(objects(rng, arguments.shape, arguments.order, arguments.size,
                               arguments.count))
        out.write(" </cmData>\n</tarn>\n")


if __name__ == "__main__":
    main()
