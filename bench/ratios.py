#!/usr/bin/env python3
"""Prints what a run of the benchmarks says, as ratios of tvk to its peers.

    bench/ratios.py RESULTS.json...

RESULTS.json is what tvk_bench writes with --benchmark_out. The figures are medians of processor
time. A peer named ..._nohash does less work than the others, and one named ..._hardware has AES
instructions, so they are listed but not compared. A further file adds the rows that the ones before
lack; each is compared with the tvk of its own file.
"""

import json
import sys


WORKS = ["scan", "read", "write", "cache_hit", "to_932", "from_932", "utf8_decode", "utf8_count",
         "base64", "hex", "percent_encode", "percent_decode", "parse_date", "format_date", "split",
         "aes_encrypt", "aes_decrypt", "aes_keys", "cbc_encrypt", "cbc_decrypt", "notice", "fire",
         "read_xml", "xml_path"]
CORPORA = ["trading", "twitter", "citm_catalog", "canada",
           "24_ascii", "24_any", "1k_ascii", "1k_any", "64k_ascii", "64k_any", "16", "1k", "64k",
           "10_keys", "1k_keys", "100k_keys", "1_listener", "10_listeners", "100_listeners"]

UNITS = [("ns", 1), ("us", 1e3), ("ms", 1e6)]


def place(group):
    """The program runs its rows in random order."""
    work, _, corpus = group.partition("/")
    return WORKS.index(work), CORPORA.index(corpus) if corpus in CORPORA else 0, corpus


def rows_of(results):
    """Group -> peer -> row; and the rows that failed."""
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
    for peers in groups.values():
        for row in peers.values():
            row["tvk"] = peers.get("tvk")
    return groups, failures


def rows_of_all(paths):
    """The rows of all files, the groups in the order of WORKS; and those that failed."""
    groups = {}
    failures = []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            more, failed = rows_of(json.load(file))
        failures += failed
        for group, peers in more.items():
            groups[group] = peers | groups.get(group, {})
    ordered = dict(sorted(groups.items(), key=lambda item: place(item[0])))
    return ordered, list(dict.fromkeys(failures))


def speed(row):
    return row["items_per_second"]


def figure(row):
    """The time a document, or a look-up, takes; and the speed, where bytes are handled."""
    time = 1e9 / row["items_per_second"]
    unit = next(unit for unit in UNITS if time < 1000 * unit[1] or unit is UNITS[-1])
    text = f"{time / unit[1]:.3g} {unit[0]}"
    if "bytes_per_second" in row:
        text += f" ({row['bytes_per_second'] / 1e9:.3g} GB/s)"
    return text


def ratio(row):
    """What tvk made in the same run, to this."""
    return speed(row["tvk"]) / speed(row)


def is_peer(name):
    return not name.startswith("tvk") and not name.endswith(("_nohash", "_hardware"))


def table(head, rows):
    print("| " + " | ".join(head) + " |")
    print("|" + "---|" * (len(head) - 1) + "---:|")
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print()


def print_summary(groups):
    rows = []
    for group, peers in groups.items():
        others = {name: row for name, row in peers.items() if is_peer(name) and row["tvk"]}
        if "tvk" in peers and others:
            best = min(others, key=lambda name: ratio(others[name]))
            rows.append((group, figure(peers["tvk"]), best, figure(others[best]),
                         f"{ratio(others[best]):.2f}"))
    table(("row", "tvk", "best peer", "its figure", "tvk / best peer"), rows)


def print_all(groups):
    rows = []
    for group, peers in groups.items():
        for name in sorted(peers, key=lambda peer: -speed(peers[peer])):
            row = peers[name]
            to_tvk = f"{ratio(row):.2f}" if row["tvk"] else ""
            allocations = f"{row['allocs_per_doc']:.3g}" if "allocs_per_doc" in row else ""
            rows.append((group, name, figure(row), allocations, to_tvk))
    table(("row", "who", "median", "allocations", "tvk / who"), rows)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    groups, failures = rows_of_all(sys.argv[1:])
    print_summary(groups)
    print_all(groups)
    for failure in failures:
        print("FAILED " + failure, file=sys.stderr)
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
