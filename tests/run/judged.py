#!/usr/bin/env python3
"""Encodes messages of real protocols by their public modules, and lets another program, tshark, say what they hold.

    judged.py ORVANE CORPUS FOLDER

The suite judged/Judged.ttcn logs a row for each message: protocol, octets, and the fields that the dissector must find.
Ends with 77 where tshark or the corpus is missing.
"""

import re
import shutil
import struct
import sys
from pathlib import Path

from round_trips import run, write_modules

HERE = Path(__file__).resolve().parent
SETS = "mobile-l3 sccp single-SNDCP_Types single-LLC_Types single-BSSAP_Types single-BSSGP_Types h248".split()
UNUSED = ("H248_Types", "SCCP_Mapping")
ROW = re.compile(r"judge: (\S+) ([0-9A-F]+) (.*?)\"?\r?$", re.MULTILINE)
EXPORTED_PDU = 252  # link layer where each packet names its dissector


def capture(rows):
    packets = b""
    for protocol, octets, _ in rows:
        name = protocol.encode() + bytes(-len(protocol) % 4)
        data = struct.pack(">HH", 12, len(name)) + name + bytes(4) + bytes.fromhex(octets)
        packets += struct.pack("<IIII", 0, 0, len(data), len(data)) + data
    return struct.pack("<IHHIIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, EXPORTED_PDU) + packets


def plain(text):
    """One form for the dissector's numbers, octets and truths."""
    text = {"True": "1", "False": "0"}.get(text, text).replace(":", "").lower()
    return str(int(text, 16)) if text.startswith("0x") else text


def main():
    orvane, corpus, folder = (Path(text).resolve() for text in sys.argv[1:])
    if not corpus.is_dir() or not shutil.which("tshark"):
        print("skipped: tshark or the corpus is missing")
        return 77
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(HERE / "judged", folder)
    shutil.copy(HERE.parents[1] / "examples" / "dns" / "Dns_Types.ttcn", folder)
    for name in SETS:
        write_modules(corpus / name, folder)
    for name in UNUSED:
        (folder / f"{name}.ttcn").unlink()
    mcfg = orvane.parent.parent / "share" / "orvane" / "make_linux.mcfg"
    run([orvane, "-v", "2", "-K", "-f", mcfg, "-r", "Judged", "-F", *sorted(folder.glob("*.ttcn"))], folder)
    run(["make", "-s", "-j2", "CFLAGS=-std=c11 -O0 -w"], folder)
    rows = ROW.findall(run(["./Judged"], folder))
    (folder / "rows.pcap").write_bytes(capture(rows))
    wanted = [dict(pair.split("=", 1) for pair in fields.split(" ")) for _, _, fields in rows]
    names = sorted({name for row in wanted for name in row})
    found = run(["tshark", "-r", "rows.pcap", "-T", "fields", *(word for name in names for word in ("-e", name))], folder)
    lines = [line.split("\t") for line in found.split("\n") if "\t" in line]
    faults = int(not len(lines) == len(rows) > 20)
    for (protocol, octets, _), line, row in zip(rows, lines, wanted):
        told = {name: [plain(text) for text in cell.split(",")] for name, cell in zip(names, line)}
        for name, value in row.items():
            if not set(plain(value).split(",")) <= set(told[name]):
                print(f"{protocol} {octets}: {name} is {told[name]}, not {value}")
                faults += 1
    print(f"{len(rows)} messages, {sum(map(len, wanted))} fields, {faults} faults")
    return faults != 0


if __name__ == "__main__":
    sys.exit(main())
