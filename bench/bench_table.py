#!/usr/bin/env python3
"""Prints obolo-bench's figures next to their references, from one JSON run.

Usage: bench_table.py RESULTS.json [--markdown]

Each row pairs a kit figure with the reference it is measured against: the
median of each over the run's repetitions, its spread (coefficient of
variation), their ratio, and the target where there is one.
"""

import json
import sys

# (figure, kit benchmark, reference benchmark, what the reference is, target ratio or None, metric).
# Metrics: "time" is the benchmark's wall time; the others are its counters.
ROWS = [
    ("1. service call (create bid, decoded)", "BM_ServiceCall_Kit", "BM_ServiceCall_BareCurl",
     "bare libcurl, same request", 1.10, "time"),
    ("1b. service call, CPU of all threads", "BM_ServiceCall_Kit", "BM_ServiceCall_BareCurl",
     "bare libcurl, same request", None, "process_cpu_us"),
    ("1c. service call", "BM_ServiceCall_Kit", "BM_ServiceCall_BareCurlOnThread",
     "bare libcurl on a thread of its own", None, "time"),
    ("1d. bare libcurl on a thread of its own", "BM_ServiceCall_BareCurlOnThread", "BM_ServiceCall_BareCurl",
     "bare libcurl, same request", None, "time"),
    ("2. time to card (Obolo + loadPaywall)", "BM_TimeToCard_Kit", "BM_ServiceCall_BareCurl",
     "one bare bid round trip", 1.5, "time"),
    ("2b. time to card, publisher without logo", "BM_TimeToCard_KitWithoutLogo", "BM_ServiceCall_BareCurl",
     "one bare bid round trip", None, "time"),
    ("3. decode full bid answer", "BM_DecodeBid_Kit", "BM_DecodeBid_NlohmannParse",
     "nlohmann parse", 2.0, "time"),
    ("3b. decode full bid answer", "BM_DecodeBid_Kit", "BM_DecodeBid_Simdjson",
     "simdjson DOM parse", None, "time"),
    ("4. isOBTokenValid (SQLite store)", "BM_TokenValid_Kit", "BM_TokenValid_BareSqliteRead",
     "bare SQLite point read", None, "time"),
    ("4b. isOBTokenValid (SQLite store)", "BM_TokenValid_Kit", "BM_TokenValid_JwtDecodeOnly",
     "kit's JWT decode alone", None, "time"),
    ("5. peak RSS, demo purchase", "BM_PeakRss_DemoPurchase", "BM_PeakRss_IdleProgram",
     "same set-up, no reader", None, "peak_rss_kib"),
    ("5b. peak RSS, demo purchase", "BM_PeakRss_DemoPurchase", "BM_PeakRss_DemoHelp",
     "obolo-demo --help", None, "peak_rss_kib"),
    ("6. main loop held: a logo arrives (PNG)", "BM_MainLoopHeld_Logo", "BM_MainLoopHeld_EmptyTurn",
     "one empty main-loop turn", None, "time"),
    ("6b. main loop held: a decompression bomb arrives", "BM_MainLoopHeld_Bomb", "BM_MainLoopHeld_EmptyTurn",
     "one empty main-loop turn", None, "time"),
    ("6c. main loop held: JPEG claiming 65000²", "BM_MainLoopHeld_HugeJpegHeader", "BM_MainLoopHeld_EmptyTurn",
     "one empty main-loop turn", None, "time"),
    ("6d. main loop held: WebP claiming 16384²", "BM_MainLoopHeld_HugeWebpHeader", "BM_MainLoopHeld_EmptyTurn",
     "one empty main-loop turn", None, "time"),
    ("6e. inflating the bomb in full (before)", "BM_ImageBomb_InflateInFull", "BM_MainLoopHeld_EmptyTurn",
     "one empty main-loop turn", None, "time"),
    ("7. decode 512² PNG (session thread)", "BM_DecodeImage_Png", "BM_DecodeImage_CopyPixels",
     "copying the pixels once", None, "time"),
    ("7b. decode 512² JPEG", "BM_DecodeImage_Jpeg", "BM_DecodeImage_CopyPixels",
     "copying the pixels once", None, "time"),
    ("7c. decode 512² WebP (lossy)", "BM_DecodeImage_Webp", "BM_DecodeImage_CopyPixels",
     "copying the pixels once", None, "time"),
    ("7d. decode 512² GIF", "BM_DecodeImage_Gif", "BM_DecodeImage_CopyPixels",
     "copying the pixels once", None, "time"),
    ("7e. decode 4096×2048 PNG (the limit)", "BM_DecodeImage_LargestPng", "BM_DecodeImage_CopyLargestPixels",
     "copying the pixels once", None, "time"),
    ("7f. refuse the bomb (session thread)", "BM_DecodeImage_RefuseBomb", "BM_ImageBomb_InflateInFull",
     "inflating it in full", None, "time"),
    ("8. longest store write, file held by another process", "BM_Store_WriteWhileHeld", "BM_Store_Write",
     "longest write, file not held", None, "longest_wait_us"),
    ("8b. longest store read, file held by another process", "BM_Store_ReadWhileHeld", "BM_Store_Read",
     "longest read, file not held", None, "longest_wait_us"),
    ("8c. login + logout (10 writes), file held", "BM_Store_LoginLogoutWhileHeld", "BM_Store_LoginLogout",
     "the same, file not held", None, "time"),
    ("8d. store write (rollback journal, file alone whole)", "BM_Store_Write", "BM_Store_BareWalWrite",
     "bare SQLite WAL write (value in -wal)", None, "time"),
    ("8e. store write (rollback journal, file alone whole)", "BM_Store_Write", "BM_Store_BareWalWriteCheckpointed",
     "bare WAL write + TRUNCATE checkpoint", None, "time"),
    ("9. emit point, no observer registered", "BM_Observer_EmitPointWithoutObserver",
     "BM_Observer_BareFunctionCall", "a bare function call", None, "time"),
    ("9b. emit point, no observer registered", "BM_Observer_EmitPointWithoutObserver",
     "BM_Observer_DecisionWithoutObserver", "one card decision, no observer", None, "time"),
    ("9c. one card decision, one no-op observer", "BM_Observer_DecisionWithNoOpObserver",
     "BM_Observer_DecisionWithoutObserver", "the same, no observer", None, "time"),
]

# (what, benchmarks, counter in µs, limit in µs): the longest value any
# repetition of the benchmarks reported, against an absolute limit.
LIMITS = [
    ("longest main-loop turn for an arriving image (6 to 6d)",
     ["BM_MainLoopHeld_Logo", "BM_MainLoopHeld_Bomb", "BM_MainLoopHeld_HugeJpegHeader",
      "BM_MainLoopHeld_HugeWebpHeader"], "longest_us", 50_000),
]

TO_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def aggregates(document):
    """{benchmark name: {aggregate name: entry}} for the run's aggregate entries."""
    found = {}
    for entry in document.get("benchmarks", []):
        if entry.get("run_type") != "aggregate":
            continue
        name = entry["run_name"].split("/")[0]
        found.setdefault(name, {})[entry["aggregate_name"]] = entry
    return found


def value(entries, aggregate, metric):
    entry = entries.get(aggregate)
    if entry is None:
        return None
    if metric == "time":
        if aggregate == "cv":
            return entry["real_time"]  # a fraction, whatever the unit
        return entry["real_time"] * TO_NS[entry["time_unit"]]
    return entry.get(metric)


def show(number, metric):
    if number is None:
        return "n/a"
    if metric == "peak_rss_kib":
        return f"{number / 1024:.1f} MiB"
    if metric in ("process_cpu_us", "longest_wait_us"):
        number *= 1e3  # shown like a time
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if number >= scale:
            return f"{number / scale:.3g} {unit}"
    return f"{number:.3g} ns"


def ratio_text(ratio):
    if ratio is None:
        return "n/a"
    if ratio >= 1000:
        return f"{ratio:,.0f}×"
    if ratio < 0.01:
        return f"1/{1 / ratio:,.0f}"
    return f"{ratio:.2f}×"


def spread(entries, metric):
    cv = value(entries, "cv", metric) if entries else None
    return "" if cv is None else f" ±{cv * 100:.0f}%"


def main(argv):
    if len(argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    with open(argv[1], encoding="utf-8") as file:
        document = json.load(file)
    markdown = "--markdown" in argv[2:]
    found = aggregates(document)

    header = ["figure", "kit (median)", "reference", "reference (median)", "ratio", "target", "met"]
    lines = []
    for title, kit, reference, described, target, metric in ROWS:
        kit_entries, reference_entries = found.get(kit, {}), found.get(reference, {})
        kit_median = value(kit_entries, "median", metric)
        reference_median = value(reference_entries, "median", metric)
        ratio = kit_median / reference_median if kit_median and reference_median else None
        met = "" if target is None or ratio is None else ("yes" if ratio <= target else "NO")
        lines.append([
            title,
            show(kit_median, metric) + spread(kit_entries, metric),
            described,
            show(reference_median, metric) + spread(reference_entries, metric),
            ratio_text(ratio),
            "—" if target is None else f"≤ {target:.2f}×",
            met,
        ])

    context = document.get("context", {})
    load = context.get("load_avg")
    note = (f"{context.get('num_cpus', '?')} CPUs; load average when the run ended: "
            + (", ".join(f"{x:.2f}" for x in load) if load else "unknown")
            + "; ± is the coefficient of variation over the repetitions")
    if markdown:
        print("| " + " | ".join(header) + " |")
        print("|" + "|".join("---" for _ in header) + "|")
        for line in lines:
            print("| " + " | ".join(line) + " |")
    else:
        widths = [max(len(row[i]) for row in [header] + lines) for i in range(len(header))]
        for row in [header] + lines:
            print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
    print()
    for what, benchmarks, counter, limit in LIMITS:
        values = [value(found.get(name, {}), "max", counter) for name in benchmarks]
        values = [v for v in values if v is not None]
        if not values:
            continue
        longest = max(values)
        verdict = "met" if longest <= limit else "MISSED"
        print(f"{what}: {show(longest * 1e3, 'time')} (limit {show(limit * 1e3, 'time')}): {verdict}")
    print(note)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
