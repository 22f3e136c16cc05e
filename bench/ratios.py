#!/usr/bin/env python3
"""Prints what a run of the benchmarks says, as ratios of tvk to its peers.

    bench/ratios.py RESULTS.json

RESULTS.json is what tvk_bench writes with --benchmark_out. The figures are medians of processor
time. A peer named ..._nohash does less work than the others, so it is listed but not compared.
"""

import json
import sys


WORKS = ["scan", "read", "write", "cache_hit", "to_932", "from_932", "utf8_decode", "utf8_count",
         "base64", "hex", "parse_date", "format_date", "split"]
CORPORA = ["trading", "twitter", "citm_catalog", "canada",
           "24_ascii", "24_any", "1k_ascii", "1k_any", "64k_ascii", "64k_any"]

UNITS = [("ns", 1), ("us", 1e3), ("ms", 1e6)]


def place(group):
    """The program runs its rows in random order."""
    work, _, corpus = group.partition("/")
    return WORKS.index(work), CORPORA.index(corpus) if corpus in CORPORA else 0, corpus


def rows_of(results):
    """Group -> peer -> row, in the order of WORKS; and the rows that failed."""
    groups = {}
    failures = []
    for row in results["benchmarks"]:
        name = row["run_name"]
        if row.get("error_occurred"):
            failures.append(f"{name}: {row['error_message']}")
            continue
        whole = row["run_type"] == "iteration" and row.get("repetitions", 1) == 1
        if whole or row.get("aggregate_name") == "median":
            group, _, peer = name.rpartition("/")
            groups.setdefault(group, {})[peer] = row
    ordered = dict(sorted(groups.items(), key=lambda item: place(item[0])))
    return ordered, list(dict.fromkeys(failures))


def speed(row):
    return row["items_per_second"]


def figure(row):
    """The time a document, or a look-up, takes; and the speed."""
    time = 1e9 / row["items_per_second"]
    unit = next(unit for unit in UNITS if time < 1000 * unit[1] or unit is UNITS[-1])
    return f"{time / unit[1]:.3g} {unit[0]} ({row['bytes_per_second'] / 1e9:.3g} GB/s)"


def is_peer(name):
    return not name.startswith("tvk") and not name.endswith("_nohash")


def table(head, rows):
    print("| " + " | ".join(head) + " |")
    print("|" + "---|" * (len(head) - 1) + "---:|")
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print()


def print_summary(groups):
    rows = []
    for group, peers in groups.items():
        others = {name: row for name, row in peers.items() if is_peer(name)}
        if "tvk" in peers and others:
            best = max(others, key=lambda name: speed(others[name]))
            ratio = speed(peers["tvk"]) / speed(others[best])
            rows.append((group, figure(peers["tvk"]), best, figure(others[best]), f"{ratio:.2f}"))
    table(("row", "tvk", "best peer", "its figure", "tvk / best peer"), rows)


def print_all(groups):
    rows = []
    for group, peers in groups.items():
        tvk = peers.get("tvk")
        for name in sorted(peers, key=lambda peer: -speed(peers[peer])):
            row = peers[name]
            ratio = f"{speed(tvk) / speed(row):.2f}" if tvk else ""
            allocations = f"{row['allocs_per_doc']:.3g}" if "allocs_per_doc" in row else ""
            rows.append((group, name, figure(row), allocations, ratio))
    table(("row", "who", "median", "allocations", "tvk / who"), rows)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    with open(sys.argv[1], encoding="utf-8") as file:
        groups, failures = rows_of(json.load(file))
    print_summary(groups)
    print_all(groups)
    for failure in failures:
        print("FAILED " + failure, file=sys.stderr)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
