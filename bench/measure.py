#!/usr/bin/env python3
"""Runs the rows of tvk_bench and keeps what they measured.

    bench/measure.py PROGRAM RESULTS.json [--data FOLDER] [--filter REGEX] [--quick]

RESULTS.json is what report.py reads.
"""

import argparse
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys

QUICK = ["--rounds", "5", "--slice", "3"]

# Both look at the environment when a program starts.
WITHOUT_AES_INSTRUCTIONS = {"OPENSSL_ia32cap": "~0x200000000000000", "NETTLE_FAT_OVERRIDE": "none"}

FLAGS_THAT_MATTER = ["sse4_1", "sse4_2", "avx", "avx2", "bmi2", "avx512f", "avx512bw", "avx512vbmi",
                     "avx512vl", "gfni", "aes", "vaes", "pclmulqdq", "neon", "asimd"]


class Program:
    def __init__(self, path, options, environment=None):
        self.path = path
        self.options = options
        self.environment = {**os.environ, **(environment or {})}

    def ask(self, question):
        return subprocess.run([self.path, question], env=self.environment, check=True,
                              capture_output=True, text=True).stdout

    def rows(self):
        return self.ask("--list").split()

    def run(self, rows, progress):
        """What the rows measured, or why not, in their order."""
        found = {}
        groups = len(dict.fromkeys(map(group_of, rows)))
        started = 0
        with subprocess.Popen([self.path, *self.options, *rows], env=self.environment,
                              stdout=subprocess.PIPE, text=True, errors="replace") as process:
            for line in map(object_of, process.stdout):
                if "group" in line:
                    started += 1
                    progress(f"[{started}/{groups}] {line['group']}")
                elif "row" in line:
                    found[line["row"]] = line
        return [found.get(row, {"row": row, "error": "wrote nothing"}) for row in rows]


def group_of(row):
    return row.rpartition("/")[0]


def object_of(line):
    """Nothing for a line that is cut off."""
    try:
        return json.loads(line)
    except json.JSONDecodeError:
        return {}


def with_their_tvk(rows, all_rows):
    """Rows that a second run adds, and tvk's beside them."""
    groups = set(map(group_of, rows))
    return [row for row in all_rows
            if row in rows or (group_of(row) in groups and row.endswith("/tvk"))]


def processor(text):
    """The model and the flags of /proc/cpuinfo."""
    model = re.search(r"^model name\s*: (.*)$", text, re.MULTILINE)
    flags = re.search(r"^(?:flags|Features)\s*: (.*)$", text, re.MULTILINE)
    known = set(flags[1].split()) if flags else set()
    return (model[1].strip() if model else "unknown",
            [flag for flag in FLAGS_THAT_MATTER if flag in known])


def machine():
    def read(path):
        try:
            return pathlib.Path(path).read_text("utf-8")
        except OSError:
            return ""

    model, flags = processor(read("/proc/cpuinfo"))
    memory = re.search(r"^MemTotal:\s*(\d+) kB", read("/proc/meminfo"), re.MULTILINE)
    system = re.search(r'^PRETTY_NAME="(.*)"', read("/etc/os-release"), re.MULTILINE)
    return {"model": model, "cores": os.cpu_count(), "flags": flags,
            "memory_gib": round(int(memory[1]) / 2**20) if memory else None,
            "architecture": os.uname().machine, "system": system[1] if system else os.uname().sysname}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("program")
    parser.add_argument("results")
    parser.add_argument("--data")
    parser.add_argument("--filter", default="")
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()

    arguments = (["--data", options.data] if options.data else []) + (QUICK if options.quick else [])
    program = Program(options.program, arguments)
    tables = Program(options.program, arguments, WITHOUT_AES_INSTRUCTIONS)
    wanted = re.compile(options.filter)
    progress = lambda text: print(text, file=sys.stderr, flush=True)

    rows = [row for row in program.rows() if wanted.search(row)]
    results = {"date": datetime.date.today().isoformat(), "quick": options.quick,
               "full_corpora": bool(options.data), "machine": machine(),
               "about": json.loads(program.ask("--about")),
               "runs": [program.run(rows, progress)]}
    # What works without AES instructions where the processor has them.
    all_rows = program.rows()
    more = [row for row in tables.rows() if row not in all_rows and wanted.search(row)]
    if more:
        results["runs"].append(tables.run(with_their_tvk(more, tables.rows()), progress))
    pathlib.Path(options.results).write_text(json.dumps(results), "utf-8")
    if not rows and not more:
        sys.exit(f"no row matches {options.filter}")


if __name__ == "__main__":
    main()
