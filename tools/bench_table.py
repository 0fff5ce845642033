#!/usr/bin/env python3
"""Runs the benchmark suite (or reads its JSON) and prints one table:
operation, MirelImage time, OpenCV time, and the ratio OpenCV / MirelImage
(above 1 means MirelImage is faster).

Usage: tools/bench_table.py [mirel_bench | results.json] [benchmark flags...]
Each row is run --benchmark_repetitions times (default 9, in random order
among the other rows) and the median is reported, which keeps the table steady on
a machine that is doing other work. Rows that also have a "paired" twin (the
streaming rows) get a last column: the same ratio from calls made in turns,
our call then OpenCV's, which both meet the same load of the machine."""
import json
import subprocess
import sys


def main():
    if len(sys.argv) > 1 and sys.argv[1].endswith(".json"):
        with open(sys.argv[1]) as f:
            data = json.load(f)
    else:
        binary = sys.argv[1] if len(sys.argv) > 1 else "build/bench/mirel_bench"
        flags = ["--benchmark_format=json", "--benchmark_min_time=0.2", "--benchmark_repetitions=9",
                 "--benchmark_report_aggregates_only=true", "--benchmark_enable_random_interleaving=true"]
        out = subprocess.run([binary] + flags + sys.argv[2:],
                             check=True, capture_output=True, text=True).stdout
        data = json.loads(out)
    rows = {}
    order = []
    for b in data["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"]).replace("/real_time", "").replace("/manual_time", "")
        row, _, side = name.rpartition("/")
        side = side.split("/")[0]
        if row not in rows:
            rows[row] = {}
            order.append(row)
        rows[row][side] = b["real_time"]
        if side == "paired" and b.get("mirel_us"):
            rows[row]["paired_ratio"] = b["opencv_us"] / b["mirel_us"]
    paired = any("paired_ratio" in r for r in rows.values())
    print(f"{'operation':44} {'mirel (us)':>12} {'opencv (us)':>12} {'ratio':>7}" + (f" {'paired':>7}" if paired else ""))
    for row in order:
        m = rows[row].get("mirel")
        o = rows[row].get("opencv")
        ms = f"{m:12.1f}" if m is not None else f"{'-':>12}"
        os_ = f"{o:12.1f}" if o is not None else f"{'-':>12}"
        ratio = f"{o / m:7.2f}" if m and o else f"{'-':>7}"
        p = rows[row].get("paired_ratio")
        extra = (f" {p:7.2f}" if p is not None else f" {'-':>7}") if paired else ""
        print(f"{row:44} {ms} {os_} {ratio}{extra}")


if __name__ == "__main__":
    main()
