"""Tests of bench/measure.py and bench/report.py. The first argument is the root of the project."""

import json
import pathlib
import stat
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
sys.path.insert(0, str(ROOT / "bench"))
sys.dont_write_bytecode = True

import measure  # noqa: E402
import report  # noqa: E402


def timed(name, times, **more):
    return {"row": name, "bytes": 1000, "documents": 10, "allocations": 2,
            "nanoseconds": times} | more


def results_of(*runs):
    return report.Results({
        "date": "2026-01-02", "quick": False, "full_corpora": True,
        "machine": {"model": "A processor", "cores": 2, "flags": ["avx2"], "memory_gib": 8,
                    "architecture": "x86_64", "system": "A system"},
        "about": {"compiler": "GNU 12", "flags": " -O3", "libraries": ["Alpha 1.0"],
                  "missing": ["BETA"]},
        "runs": list(runs)})


class ReportTest(unittest.TestCase):
    def test_ratio_is_the_median_of_the_ratios_within_rounds(self):
        results = results_of([timed("read/a/tvk", [10, 20, 40]),
                              timed("read/a/peer", [30, 20, 20])])
        self.assertEqual(results.timed["read/a"]["peer"].ratio, 1)
        self.assertEqual(results.timed["read/a"]["tvk"].time, 20)

    def test_best_peer_is_neither_tvk_nor_hardware(self):
        results = results_of([timed("aes/a/tvk", [10, 10]), timed("aes/a/tvk_x", [1, 1]),
                              timed("aes/a/p_hardware", [2, 2]), timed("aes/a/slow", [40, 40]),
                              timed("aes/a/fast", [20, 20])])
        rows = list(report.best_rows(results))
        self.assertEqual([(row[0], row[2], row[4]) for row in rows],
                         [("`aes/a`", "fast", "2.00"), ("`aes/a`, `tvk_x`", "fast", "20.00")])
        self.assertEqual(list(report.behind_rows(results)), [])
        self.assertEqual([row[2:] for row in report.behind_instructions(results)],
                         [("0.20", "p_hardware 0.20")])

    def test_rows_behind_name_every_faster_peer_the_fastest_first(self):
        results = results_of([timed("read/a/tvk", [10]), timed("read/a/p", [8]),
                              timed("read/a/q", [5]), timed("read/a/even", [9.96]),
                              timed("read/b/tvk", [10]), timed("read/b/p", [11])])
        self.assertEqual([(row[0], row[2], row[3]) for row in report.behind_rows(results)],
                         [("`read/a`", "0.50", "q 0.50, p 0.80")])

    def test_a_second_run_is_compared_with_its_own_tvk(self):
        results = results_of([timed("aes/a/tvk", [10, 10])],
                             [timed("aes/a/tvk", [20, 20]), timed("aes/a/tables", [30, 30])])
        self.assertEqual([row[4] for row in report.best_rows(results)], ["1.50"])

    def test_memory_counts_bytes(self):
        rows = [{"row": "memory/t/tvk", "bytes_a_message": 100, "blocks_a_message": 3,
                 "reader_bytes": 7},
                {"row": "memory/t/p", "bytes_a_message": 50, "blocks_a_message": 1,
                 "reader_bytes": 0},
                {"row": "peak/t/tvk", "peak_bytes": 1024, "reader_bytes": 0, "text_bytes": 512},
                {"row": "peak/t/p", "peak_bytes": 4096, "reader_bytes": 0, "text_bytes": 512}]
        results = results_of(rows)
        self.assertEqual(list(report.behind_memory(results)), [("`memory/t`", "0.50", "p 0.50")])
        self.assertIn("| `peak/t` | p | 0.5 | 4 | 0 | 4.00 |", report.as_page(results))

    def test_above_one_tvk_is_ahead_in_rates_as_in_delays(self):
        results = results_of([{"row": "road_rate/n/tvk", "a_second": 100},
                              {"row": "road_rate/n/p", "a_second": 200},
                              {"row": "road_delay/n/tvk", "median_us": 10, "p99_us": 40},
                              {"row": "road_delay/n/p", "median_us": 30, "p99_us": 20}])
        ratios = [(row[0], row[3], row[4]) for row in report.road_rows(results) if row[1] == "p"]
        self.assertEqual(ratios, [("`road_rate/n`", "a second", "**0.50**"),
                                  ("`road_delay/n`", "us, median", "3.00"),
                                  ("`road_delay/n`", "us, 99th percentile", "**0.50**")])
        self.assertEqual([row[2] for row in report.behind_roads(results)], ["200", "20"])
        self.assertEqual(list(report.memory_ratios(results)), [])

    def test_failures_are_told_and_the_rest_stays(self):
        results = results_of([timed("read/a/tvk", [10]), {"row": "read/a/p", "error": "differs"}])
        page = report.as_page(results)
        self.assertIn("- `read/a/p`: differs", page)
        self.assertIn("| `read/a` | tvk |", page)
        self.assertLess(page.index("## Where tvk is behind"), page.index("## Every row"))

    def test_rows_without_tvk_have_no_ratio(self):
        results = results_of([timed("read/a/p", [10]), {"row": "read/a/tvk", "error": "ended"}])
        self.assertEqual(list(report.best_rows(results)), [])
        self.assertIn("| `read/a` | p |", report.as_page(results))

    def test_page_tells_machine_and_command_and_no_paths(self):
        page = report.as_page(results_of([timed("read/a/tvk", [10])]))
        for text in ("A processor, 2 cores, 8 GiB", "avx2", "GNU 12", "Alpha 1.0", "beta",
                     "bench/run --report --data FOLDER", "2026-01-02"):
            self.assertIn(text, page)
        self.assertNotIn(str(ROOT), page)

    def test_figures_go_between_the_marks_of_the_readme(self):
        results = results_of([timed("scan/trading/tvk", [1000]), timed("scan/trading/p", [2500])])
        readme = "head\n<!-- figures -->\nold\n<!-- end of figures -->\ntail\n"
        new = report.with_figures(readme, results)
        self.assertTrue(new.startswith("head\n<!-- figures -->\n| work | tvk |"))
        self.assertTrue(new.endswith("| 2.50 |\n<!-- end of figures -->\ntail\n"))
        self.assertNotIn("old", new)
        self.assertEqual(report.with_figures(new, results), new)

    def test_digits(self):
        self.assertEqual([report.digits(number) for number in (0.05678, 1.2, 12.34, 999.6, 65745)],
                         ["0.0568", "1.2", "12.3", "1000", "65745"])

    def test_the_readme_has_the_marks(self):
        self.assertRegex((ROOT / "README.md").read_text("utf-8"), report.BLOCK)


# Stands for tvk_bench: after a row "crash" it writes half a line and ends.
PROGRAM = """#!/usr/bin/env python3
import json, os, sys
rows = [each for each in sys.argv[1:] if "/" in each]
if "--list" in sys.argv:
    print("read/a/tvk\\nread/a/crash\\nread/a/p\\nread/b/tvk")
    if os.environ.get("NETTLE_FAT_OVERRIDE"):
        print("read/b/tables")
elif "--about" in sys.argv:
    print(json.dumps({"compiler": "", "flags": "", "libraries": [], "missing": []}))
for row in rows:
    print(json.dumps({"group": row.rpartition("/")[0]}))
    if row.endswith("crash"):
        print('{"row": "read')
        sys.exit(1)
    print(json.dumps({"row": row, "bytes": 0, "documents": 1, "nanoseconds": [1, 2]}))
"""


class MeasureTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.path = self.folder / "program"
        self.path.write_text(PROGRAM, "utf-8")
        self.path.chmod(self.path.stat().st_mode | stat.S_IXUSR)

    def measure(self, *options):
        """The status of measure.py and what it kept."""
        target = self.folder / "results.json"
        status = subprocess.run([sys.executable, ROOT / "bench/measure.py", self.path, target, *options],
                                capture_output=True, check=False).returncode
        return status, json.loads(target.read_text("utf-8"))

    def test_a_program_that_ends_early_keeps_what_it_wrote(self):
        program = measure.Program(str(self.path), [])
        steps = []
        rows = ["read/a/tvk", "read/a/crash", "read/a/p"]
        found = program.run(rows, steps.append)
        self.assertEqual([row["row"] for row in found], rows)
        self.assertIn("nanoseconds", found[0])
        self.assertEqual([row.get("error") for row in found], [None, "wrote nothing", "wrote nothing"])
        self.assertEqual(steps[0], "[1/1] read/a")

    def test_second_run_takes_new_rows_and_their_tvk(self):
        status, results = self.measure()
        self.assertEqual(status, 0)
        self.assertEqual([[row["row"] for row in run] for run in results["runs"]],
                         [["read/a/tvk", "read/a/crash", "read/a/p", "read/b/tvk"],
                          ["read/b/tvk", "read/b/tables"]])

    def test_a_filter_that_no_row_of_the_second_run_matches_is_no_failure(self):
        status, results = self.measure("--filter", "^read/a/p$")
        self.assertEqual(status, 0)
        self.assertEqual(len(results["runs"]), 1)

    def test_a_filter_that_no_row_matches_is_one(self):
        self.assertEqual(self.measure("--filter", "^write/")[0], 1)

    def test_processor(self):
        text = "processor: 0\nmodel name\t: Some Name\nflags\t\t: fpu avx2 aes avx\n\n"
        self.assertEqual(measure.processor(text), ("Some Name", ["avx", "avx2", "aes"]))
        self.assertEqual(measure.processor(""), ("unknown", []))


if __name__ == "__main__":
    unittest.main()
