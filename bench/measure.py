#!/usr/bin/env python3
"""Runs the rows of tvk_bench and keeps what they measured.

    bench/measure.py PROGRAM RESULTS.json [--data FOLDER] [--filter REGEX] [--quick]

Each group of rows runs in a process of its own. When a row ends its process, or holds it up, the
group runs once more without that row, so nothing else is lost. RESULTS.json is what report.py reads.
"""

import argparse
import datetime
import json
import os
import pathlib
import re
import signal
import subprocess
import sys

QUICK = ["--rounds", "5", "--slice", "3"]
PATIENCE_SECONDS = 150

# Both look at the environment when a program starts.
WITHOUT_AES_INSTRUCTIONS = {"OPENSSL_ia32cap": "~0x200000000000000", "NETTLE_FAT_OVERRIDE": "none"}

FLAGS_THAT_MATTER = ["sse4_1", "sse4_2", "avx", "avx2", "bmi2", "avx512f", "avx512bw", "avx512vbmi",
                     "avx512vl", "gfni", "aes", "vaes", "pclmulqdq", "neon", "asimd"]


def group_of(row):
    return row.rpartition("/")[0]


def in_groups(rows):
    """Group -> its rows, in the order of the program."""
    groups = {}
    for row in rows:
        groups.setdefault(group_of(row), []).append(row)
    return groups


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

    def run(self, rows):
        """What the rows wrote, and why the process ended early, or None."""
        try:
            done = subprocess.run([self.path, *self.options, *rows], env=self.environment,
                                  stdout=subprocess.PIPE, text=True, errors="replace",
                                  timeout=PATIENCE_SECONDS, check=False)
        except subprocess.TimeoutExpired as late:
            return lines_of((late.stdout or b"").decode("utf-8", "replace")), "takes too long"
        return lines_of(done.stdout), reason_of(done.returncode)


def reason_of(status):
    if status == 0:
        return None
    return f"ends the program: {signal.Signals(-status).name}" if status < 0 else f"exits with {status}"


def lines_of(text):
    """The last line may be cut off."""
    lines = []
    for line in text.splitlines():
        try:
            lines.append(json.loads(line))
        except json.JSONDecodeError:
            break
    return lines


def run_group(program, rows):
    """The results and failures of the rows: row -> object."""
    left = list(rows)
    ended = {}
    while left:
        lines, reason = program.run(left)
        results = {line["row"]: line for line in lines if "begins" not in line}
        if reason is None:
            return ended | results
        begun = [line["row"] for line in lines if "begins" in line]
        culprit = begun[-1] if begun else left[0]
        ended[culprit] = {"row": culprit, "error": reason}
        left.remove(culprit)
    return ended


def run_all(program, rows, progress):
    results = {}
    groups = in_groups(rows)
    for number, (group, members) in enumerate(groups.items(), 1):
        progress(f"[{number}/{len(groups)}] {group}")
        found = run_group(program, members)
        for row in members:
            results[row] = found.get(row, {"row": row, "error": "wrote nothing"})
    return list(results.values())


def with_their_tvk(rows, all_rows):
    """Rows that a second run adds, and tvk's beside them."""
    groups = in_groups(rows)
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
               "runs": [run_all(program, rows, progress)]}
    # What works without AES instructions where the processor has them.
    all_rows = program.rows()
    more = [row for row in tables.rows() if row not in all_rows and wanted.search(row)]
    if more:
        results["runs"].append(run_all(tables, with_their_tvk(more, tables.rows()), progress))
    pathlib.Path(options.results).write_text(json.dumps(results), "utf-8")
    if not rows and not more:
        sys.exit(f"no row matches {options.filter}")


if __name__ == "__main__":
    main()
