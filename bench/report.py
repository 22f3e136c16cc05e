#!/usr/bin/env python3
"""Tells what a run of the benchmarks measured, as ratios of tvk to its peers.

    bench/report.py RESULTS.json            prints the tables
    bench/report.py RESULTS.json --write    writes bench/RESULTS.md, and the short table of README.md

RESULTS.json is what measure.py writes. A figure is the median over all rounds; a ratio is the median of
the ratios within the rounds.
"""

import argparse
import json
import pathlib
import re
import signal
import statistics
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNITS = [("ns", 1), ("us", 1e3), ("ms", 1e6)]
EVEN = 0.995  # below this, two digits say that tvk is behind

# What a peer's tree is, the kind nearest to tvk's last.
READ_KINDS = [
    ("overwritten by the next document, or lies in the text",
     ("simdjson_dom", "rapidjson_insitu_pool")),
    ("in memory taken beforehand and reused", ("rapidjson_pool", "boost_json_pool")),
    ("in memory of its own", ("rapidjson", "boost_json", "nlohmann_ordered")),
    ("in memory of its own, names in order", ("nlohmann", "jsoncpp")),
]

# The short table of the project's README.
CHOSEN = [
    ("scan/trading", "JSON to events, trading messages"),
    ("scan/twitter", "JSON to events, twitter"),
    ("read/trading", "JSON to messages, trading messages"),
    ("write/trading", "messages to JSON, trading messages"),
    ("cache_hit/feed_order", "look-up of a shared value"),
    ("utf8_count/messages", "counting characters of UTF-8"),
    ("to_932/messages", "UTF-8 to the code page 932"),
    ("base64/1k_any", "base64 of 1 KB"),
    ("hex/1k_any", "hexadecimal digits of 1 KB"),
    ("percent_encode/query", "percent-encoding a query"),
    ("percent_decode/query", "percent-decoding a query"),
    ("cbc_encrypt/1k", "AES-CBC encryption of 1 KB, by tables"),
    ("cbc_decrypt/1k", "AES-CBC decryption of 1 KB, by tables"),
    ("parse_date/day", "parsing a date and time"),
    ("format_date/day", "formatting a date and time"),
]


class Timed:
    """A row, beside the tvk of its own run."""

    def __init__(self, row, tvk):
        self.peer = row["row"].rpartition("/")[2]
        self.times = row["nanoseconds"]
        self.bytes_each = row["bytes"] / row["documents"]
        self.allocations = row.get("allocations")
        self.ratios = ([time / own for time, own in zip(self.times, tvk["nanoseconds"])]
                       if tvk else None)

    @property
    def time(self):
        return statistics.median(self.times)

    @property
    def ratio(self):
        """Above 1, tvk is the faster."""
        return statistics.median(self.ratios)

    def figure(self):
        unit = next(unit for unit in UNITS if self.time < 999.5 * unit[1] or unit is UNITS[-1])
        text = f"{digits(self.time / unit[1])} {unit[0]}"
        return text + f" ({digits(self.bytes_each / self.time)} GB/s)" if self.bytes_each else text

    def is_tvk(self):
        return self.peer.partition("_")[0] == "tvk"

    def has_instructions(self):
        return self.peer.endswith("_hardware")


class Results:
    """`timed`: group -> peer -> Timed. `measured`: group -> peer -> row. In the order of the program."""

    def __init__(self, results):
        self.raw = results
        self.timed, self.measured, self.failures = {}, {}, []
        for run in results["runs"]:
            rows = {row["row"]: row for row in run}
            for name, row in rows.items():
                group, _, peer = name.rpartition("/")
                if "error" in row:
                    self.failures.append(f"`{name}`: {row['error']}")
                elif "nanoseconds" in row:
                    tvk = rows.get(group + "/tvk", {})
                    timed = Timed(row, tvk if "nanoseconds" in tvk else None)
                    self.timed.setdefault(group, {}).setdefault(peer, timed)
                else:
                    self.measured.setdefault(group, {}).setdefault(peer, row)
        self.failures = list(dict.fromkeys(self.failures))

    def peers(self, group):
        """Those that tvk is compared with, the fastest first."""
        rows = self.timed.get(group, {}).values()
        compared = [row for row in rows
                    if row.ratios and not row.is_tvk() and not row.has_instructions()]
        return sorted(compared, key=lambda row: row.ratio)

    def forms(self, group):
        """tvk, and its other forms."""
        return [row for row in self.timed.get(group, {}).values() if row.is_tvk() and row.ratios]


def digits(number):
    """Three that count."""
    return f"{number:.3g}" if number < 999.5 else f"{number:.0f}"


def ratio_of(form, peer):
    """Of a form of tvk: the plain one stands beside each peer, the others in the first run alone."""
    if form.peer == "tvk":
        return peer.ratio
    return statistics.median([time / own for time, own in zip(peer.times, form.times)])


def shown(ratio):
    return f"**{ratio:.2f}**" if ratio < EVEN else f"{ratio:.2f}"


def table(head, rows):
    """Columns whose head ends in ':' are set to the right."""
    names = [name.rstrip(":") for name in head]
    rules = ["---:" if name.endswith(":") else "---" for name in head]
    lines = [names, rules, *rows]
    return "".join("| " + " | ".join(map(str, line)) + " |\n" for line in lines)


def titled(group, form):
    return f"`{group}`" if form.peer == "tvk" else f"`{group}`, `{form.peer}`"


def behind_rows(results):
    for group in results.timed:
        for form in results.forms(group):
            lost = [(ratio_of(form, peer), peer) for peer in results.peers(group)]
            lost = sorted(((ratio, peer) for ratio, peer in lost if ratio < EVEN),
                          key=lambda pair: pair[0])
            if lost:
                yield (titled(group, form), form.figure(), f"{lost[0][0]:.2f}",
                       ", ".join(f"{peer.peer} {ratio:.2f}" for ratio, peer in lost))


def behind_instructions(results):
    for group, rows in results.timed.items():
        others = sorted((row for row in rows.values() if row.ratios and row.has_instructions()),
                        key=lambda row: row.ratio)
        lost = [row for row in others if row.ratio < EVEN]
        if lost:
            yield (f"`{group}`", rows["tvk"].figure(), f"{lost[0].ratio:.2f}",
                   ", ".join(f"{row.peer} {row.ratio:.2f}" for row in lost))


def memory_ratios(results):
    """Bytes of each peer to those of tvk: (group, peer, ratio)."""
    for group, rows in results.measured.items():
        if not group.startswith(("memory/", "peak/")):
            continue
        key = "bytes_a_message" if group.startswith("memory/") else "peak_bytes"
        if "tvk" in rows:
            for peer, row in rows.items():
                if not peer.startswith("tvk"):
                    yield group, peer, row[key] / rows["tvk"][key]


def behind_memory(results):
    groups = {}
    for group, peer, ratio in memory_ratios(results):
        if ratio < EVEN:
            groups.setdefault(group, []).append((ratio, peer))
    for group, lost in groups.items():
        lost.sort()
        yield (f"`{group}`", f"{lost[0][0]:.2f}",
               ", ".join(f"{peer} {ratio:.2f}" for ratio, peer in lost))


def best_rows(results):
    for group in results.timed:
        peers = results.peers(group)
        for form in results.forms(group):
            if peers:
                best = min(peers, key=lambda peer: ratio_of(form, peer))
                yield (titled(group, form), form.figure(), best.peer, best.figure(),
                       shown(ratio_of(form, best)))


def kind_rows(results):
    for group in results.timed:
        if not group.startswith("read/"):
            continue
        for kind, names in READ_KINDS:
            peers = [peer for peer in results.peers(group) if peer.peer in names]
            if peers:
                yield f"`{group}`", kind, peers[0].peer, peers[0].figure(), shown(peers[0].ratio)


def spread(row):
    if len(row.ratios) < 4:
        return ""
    low, _, high = statistics.quantiles(row.ratios, n=4)
    return f"{low:.2f} to {high:.2f}"


def all_rows(results):
    for group, rows in results.timed.items():
        for row in sorted(rows.values(), key=lambda row: row.time):
            allocations = "" if row.allocations is None else digits(row.allocations)
            own = row.peer == "tvk" or not row.ratios
            yield (f"`{group}`", row.peer, row.figure(), allocations, "" if own else shown(row.ratio),
                   "" if own else spread(row))


def kept_rows(results):
    for rows in (rows for group, rows in results.measured.items() if group.startswith("memory/")):
        for peer, row in sorted(rows.items(), key=lambda item: item[1]["bytes_a_message"]):
            yield (peer, f"{row['bytes_a_message']:.0f}", f"{row['blocks_a_message']:.2f}",
                   f"{row['reader_bytes']:.0f}",
                   "" if peer == "tvk" else
                   shown(row["bytes_a_message"] / rows["tvk"]["bytes_a_message"]))


def peak_rows(results):
    for group, rows in results.measured.items():
        if not group.startswith("peak/"):
            continue
        for peer, row in sorted(rows.items(), key=lambda item: item[1]["peak_bytes"]):
            yield (f"`{group}`", peer, kib(row["text_bytes"]), kib(row["peak_bytes"]),
                   kib(row["reader_bytes"]),
                   "" if peer == "tvk" else shown(row["peak_bytes"] / rows["tvk"]["peak_bytes"]))


ROAD_UNITS = {"a_second": "a second", "median_us": "us, median", "p99_us": "us, 99th percentile",
              "p999_us": "us, 99.9th percentile"}


def road_rows(results):
    for group, rows in results.measured.items():
        if not group.startswith("road_"):
            continue
        for key, unit in ROAD_UNITS.items():
            for peer, row in rows.items():
                if key in row:
                    ratio = ""
                    if not peer.startswith("tvk") and "tvk" in rows:
                        quotient = row[key] / rows["tvk"][key]
                        ratio = shown(1 / quotient if key == "a_second" else quotient)
                    yield f"`{group}`", peer, digits(row[key]), unit, ratio


def behind_roads(results):
    return (row for row in road_rows(results) if row[-1].startswith("**"))


def kib(number):
    return digits(number / 1024)


BEST_HEAD = ("row", "tvk", "best peer", "its figure", "ratio:")
ALL_HEAD = ("row", "who", "figure", "allocations:", "ratio:", "middle half of the rounds")
KEPT_HEAD = ("who", "bytes a message:", "blocks a message:", "reader, bytes:", "ratio:")
ROAD_HEAD = ("row", "who", "figure:", "", "ratio:")
PEAK_HEAD = ("row", "who", "text, KiB:", "peak, KiB:", "of it the unused reader:", "ratio:")


def as_text(results):
    tables = [(BEST_HEAD, best_rows(results)), (ALL_HEAD, all_rows(results)),
              (ROAD_HEAD, road_rows(results)), (KEPT_HEAD, kept_rows(results)), (PEAK_HEAD, peak_rows(results))]
    filled = [(head, list(rows)) for head, rows in tables]
    return "\n".join(table(head, rows) for head, rows in filled if rows)


def section(title, text, head, rows):
    rows = list(rows)
    return f"## {title}\n\n{text}\n\n" + (table(head, rows) if rows else "None.\n") + "\n"


def command(results):
    return "bench/run --report" + (" --data FOLDER" if results.raw["full_corpora"] else "")


def about(results):
    machine, built = results.raw["machine"], results.raw["about"]
    memory = f", {machine['memory_gib']} GiB of memory" if machine["memory_gib"] else ""
    missing = ", ".join(name.lower() for name in built["missing"]) or "none"
    rows = [
        ("date", results.raw["date"]),
        ("command", f"`{command(results)}`"),
        ("machine", f"{machine['model']}, {machine['cores']} cores{memory}, {machine['architecture']}"),
        ("flags that matter", ", ".join(machine["flags"]) or "none"),
        ("system", machine["system"]),
        ("compiler", f"{built['compiler']}, `{built['flags'].strip()}`"),
        ("peers", ", ".join(built["libraries"])),
        ("peers that are missing", missing),
    ]
    return table(("", ""), rows)


def as_page(results):
    page = f"""# Results

Written by `{command(results)}`; [README.md](README.md) tells what each row is. A ratio is that of speeds, or of
bytes in the tables of memory: above 1.00 tvk is ahead, and where it is behind the ratio is **bold**. All of a
row's peers took turns with tvk, round after round; a figure is the median over the rounds, a ratio the
median of the ratios within the rounds.

{about(results)}
"""
    page += section("Where tvk is behind", "Every peer that is faster, the fastest first.",
                    ("row", "tvk", "ratio:", "behind"), behind_rows(results))
    page += section("Where tvk takes more memory", "The most frugal peer first.",
                    ("row", "ratio:", "behind"), behind_memory(results))
    page += section("Where tvk is behind over the network", "Peers that are faster.", ROAD_HEAD,
                    behind_roads(results))
    page += section("Where peers have AES instructions",
                    "tvk's cipher works by tables, these peers by instructions of the processor.",
                    ("row", "tvk", "ratio:", "behind"), behind_instructions(results))
    if results.failures:
        page += "## Rows that failed\n\n" + "".join(f"- {each}\n" for each in results.failures) + "\n"
    page += section("Against the best peer", "A form of tvk that is not the plain one has its name behind the row's.",
                    BEST_HEAD, best_rows(results))
    page += section("Reading, by what a peer's tree is", "The best peer of each kind.",
                    ("row", "the tree is", "best peer", "its figure", "ratio:"), kind_rows(results))
    page += section("Over the network",
                    "A whole client at the end of a connection on the loopback interface, by the clock of the "
                    "wall; server and client share the machine. These rows do not take turns: a rate is the "
                    "median of five rounds, the delays are those of one run.",
                    ROAD_HEAD, road_rows(results))
    page += section("Memory of messages that are kept",
                    "All messages of the feed are alive; the reader is what reading needs besides, "
                    "with tvk parser and cache.", KEPT_HEAD, kept_rows(results))
    page += section("Peak of memory while reading", "The text is the longest document.",
                    PEAK_HEAD, peak_rows(results))
    page += section("Every row", "The fastest first.", ALL_HEAD, all_rows(results))
    return page.rstrip("\n") + "\n"


BLOCK = re.compile(r"(<!-- figures -->\n).*?(<!-- end of figures -->)", re.DOTALL)


def with_figures(readme, results):
    """The project's README with its short table made anew."""
    rows = []
    for group, title in CHOSEN:
        peers = results.peers(group)
        if peers:
            rows.append((title, results.timed[group]["tvk"].figure(), peers[0].figure(),
                         peers[0].peer, shown(peers[0].ratio)))
    block = table(("work", "tvk", "best peer", "which", "ratio:"), rows)
    return BLOCK.sub(lambda found: found[1] + block + found[2], readme)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("results")
    parser.add_argument("--write", action="store_true")
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # a reader that has seen enough
    options = parser.parse_args()

    results = Results(json.loads(pathlib.Path(options.results).read_text("utf-8")))
    print(as_text(results))
    if options.write:
        (ROOT / "bench/RESULTS.md").write_text(as_page(results), "utf-8")
        readme = ROOT / "README.md"
        readme.write_text(with_figures(readme.read_text("utf-8"), results), "utf-8")
    for failure in results.failures:
        print("FAILED " + failure, file=sys.stderr)
    sys.exit(1 if results.failures else 0)


if __name__ == "__main__":
    main()
