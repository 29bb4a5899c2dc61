#!/usr/bin/env python3
"""Prints obolo-bench's figures next to their references and floors, from one run.

Usage: bench_table.py RESULTS.json [MORE.json ...] [--markdown]

The JSON files are Google Benchmark outputs of obolo-bench, obolo-bench-phone
and obolo-bench-trust-store from the same run. Four tables:

- ratios: each kit figure beside the reference measured in the same run: the
  median of each over the run's repetitions, its spread (coefficient of
  variation), their ratio, and the target where there is one;
- hostile answers: how long each body holds the HTTP session's thread and the
  memory its decode adds at its peak, beside a normal bid answer;
- round trips on a mobile link: each figure beside its floor in round trips;
- scale: 1 to 1000 paywalls at once.
"""

import json
import re
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
    ("3. decode full bid answer", "BM_DecodeBid_Kit", "BM_DecodeBid_Simdjson",
     "simdjson DOM parse", 4.0, "time"),
    ("3b. decode full bid answer", "BM_DecodeBid_Kit", "BM_DecodeBid_NlohmannParse",
     "nlohmann parse", None, "time"),
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
    ("8c. login + logout (2 write groups of 5), file held", "BM_Store_LoginLogoutWhileHeld", "BM_Store_LoginLogout",
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
    ("15. new TLS connection checked against the system's store", "BM_TrustStore_Kit",
     "BM_TrustStore_BareDefaults", "bare libcurl, its default trust settings", None, "time"),
    ("15b. new TLS connection checked against the system's store", "BM_TrustStore_Kit",
     "BM_TrustStore_BareOneFile", "bare libcurl, the bundle file alone (floor)", None, "time"),
]

# (what, benchmarks, counter in µs, limit in µs): the longest value any
# repetition of the benchmarks reported, against an absolute limit.
LIMITS = [
    ("longest main-loop turn for an arriving image (6 to 6d)",
     ["BM_MainLoopHeld_Logo", "BM_MainLoopHeld_Bomb", "BM_MainLoopHeld_HugeJpegHeader",
      "BM_MainLoopHeld_HugeWebpHeader"], "longest_us", 50_000),
]

# (body, benchmark): the floor is BM_Hostile_FullBid.
HOSTILE = [
    ("1 MB of [", "BM_Hostile_Brackets1MB"),
    ("1 MiB of [ (the cap)", "BM_Hostile_BracketsAtCap"),
    ('{"a": nested, closed', "BM_Hostile_NestedObjects"),
    ("wide array of {} no member reads", "BM_Hostile_WideUnknownArray"),
    ("wide array of recommendations", "BM_Hostile_WideRecords"),
    ("one huge string", "BM_Hostile_HugeString"),
    ("one huge string of \\u escapes", "BM_Hostile_EscapedString"),
    ("many keys", "BM_Hostile_ManyKeys"),
]
HOSTILE_TIME_LIMIT_NS = 100e6
HOSTILE_MEMORY_LIMIT_KIB = 16 * 1024

# (figure, benchmark): each row is run at 25 and 150 ms one way.
ROUND_TRIPS = [
    ("11. time to card, warm connection", "BM_Phone_CardWarm"),
    ("11b. time to card, new connection, TLS resumed", "BM_Phone_CardResumed"),
    ("11c. time to card, new session (no connection, no TLS session)", "BM_Phone_CardCold"),
    ("11d. time to card, first in a new process (cold start)", "BM_Phone_CardFirstInProcess"),
    ("12. publisher logo beside the warm card", "BM_Phone_Logo"),
    ("13. new reader's whole purchase", "BM_Phone_Purchase"),
]
LINKS_MS = (25, 150)
ROUND_TRIP_SLACK_MS = 2.0

SCALE = (1, 10, 100, 1000)
SCALE_TARGET = 1.2

TO_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
SKIPPED_PARTS = ("iterations:", "repeats:", "manual_time", "real_time", "min_time:", "threads:")


def key(run_name):
    """The benchmark's name with its arguments, without run options."""
    return "/".join(part for part in run_name.split("/") if part and not part.startswith(SKIPPED_PARTS))


def aggregates(documents):
    """{benchmark key: {aggregate name: entry}} for every file's aggregate entries."""
    found = {}
    for document in documents:
        for entry in document.get("benchmarks", []):
            if entry.get("run_type") != "aggregate":
                continue
            found.setdefault(key(entry["run_name"]), {})[entry["aggregate_name"]] = entry
    return found


def value(entries, aggregate, metric):
    entry = (entries or {}).get(aggregate)
    if entry is None:
        return None
    if metric == "time":
        if aggregate == "cv":
            return entry["real_time"]  # a fraction, whatever the unit
        return entry["real_time"] * TO_NS[entry["time_unit"]]
    return entry.get(metric)


def show(number, metric="time"):
    if number is None:
        return "n/a"
    if metric in ("peak_rss_kib", "kib"):
        return f"{number / 1024:.1f} MiB" if abs(number) >= 1024 else f"{number:.0f} KiB"
    if metric in ("process_cpu_us", "longest_wait_us"):
        number *= 1e3  # shown like a time
    if metric == "ms":
        number *= 1e6
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if abs(number) >= scale:
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


def print_table(header, lines, markdown):
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


def ratio_table(found, markdown):
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
    print_table(["figure", "kit (median)", "reference", "reference (median)", "ratio", "target", "met"], lines,
                markdown)


def card_phases(found):
    """Where row 2's time goes: the medians of its phase counters."""
    for title, name in (("2", "BM_TimeToCard_Kit"), ("2b", "BM_TimeToCard_KitWithoutLogo")):
        entries = found.get(name)
        phases = [(label, value(entries, "median", counter)) for label, counter in (
            ("loadPaywall returned", "loaded_us"), ("the bid's answer on the session thread", "answered_us"),
            ("the paywall decided", "decided_us"))]
        total = value(entries, "median", "time")
        if total is None or any(v is None for _, v in phases):
            continue
        print(f"{title}. time to card, when each step was done: "
              + ", ".join(f"{label} {show(v * 1e3, 'time')}" for label, v in phases)
              + f", the card shown {show(total)}")
    print()


def limits_table(found):
    for what, benchmarks, counter, limit in LIMITS:
        values = [value(found.get(name, {}), "max", counter) for name in benchmarks]
        values = [v for v in values if v is not None]
        if not values:
            continue
        longest = max(values)
        verdict = "met" if longest <= limit else "MISSED"
        print(f"{what}: {show(longest * 1e3, 'time')} (limit {show(limit * 1e3, 'time')}): {verdict}")
    print()


def hostile_table(found, markdown):
    if "BM_Hostile_FullBid" not in found:
        return
    floor = found["BM_Hostile_FullBid"]
    lines = [["10. normal full bid answer (floor)", show(value(floor, "median", "body_kib"), "kib"),
              show(value(floor, "median", "time")), show(value(floor, "median", "peak_added_kib"), "kib"), "—", ""]]
    for title, benchmark in HOSTILE:
        entries = found.get(benchmark)
        held = value(entries, "median", "time")
        held_max = value(entries, "max", "time")
        added = value(entries, "max", "peak_added_kib")
        met = ""
        if held_max is not None and added is not None:
            met = "yes" if held_max <= HOSTILE_TIME_LIMIT_NS and added <= HOSTILE_MEMORY_LIMIT_KIB else "NO"
        lines.append(["10. " + title, show(value(entries, "median", "body_kib"), "kib"),
                      show(held) + f" (max {show(held_max)})", show(added, "kib"),
                      "≤ 100 ms, ≤ 16 MiB", met])
    print_table(["hostile answer", "body", "session thread held (median)", "peak memory added (max)", "target",
                 "met"], lines, markdown)


def round_trip_table(found, markdown):
    lines = []
    for title, benchmark in ROUND_TRIPS:
        for link in LINKS_MS:
            entries = found.get(f"{benchmark}/{link}")
            if not entries:
                continue
            floor_rtt = value(entries, "median", "floor_rtt")
            rtt_ms = value(entries, "median", "rtt_ms")
            beyond = value(entries, "median", "beyond_floor_ms")
            counted = value(entries, "median", "round_trips")
            connections = value(entries, "median", "connections")
            extra = ""
            if benchmark == "BM_Phone_Logo":
                after = value(entries, "median", "logo_after_card_ms")
                extra = f"; lands {after:+.1f} ms after the card" if after is not None else ""
            if benchmark == "BM_Phone_Purchase":
                # "rt3_the customer bid" counters: each step's round trips, in order.
                median = entries.get("median", {})
                steps = sorted((name for name in median if re.match(r"rt\d+_", name)),
                               key=lambda name: int(name[2:name.index("_")]))
                extra = "; " + ", ".join(
                    f"{name[name.index('_') + 1:]} {median[name]:.0f}"
                    + (f" ({median['ms' + name[2:]]:.0f} ms)" if "ms" + name[2:] in median else "")
                    for name in steps)
            met = "" if beyond is None else ("yes" if beyond <= ROUND_TRIP_SLACK_MS else "NO")
            # Where the time beyond the floor went, as the service relay saw it.
            parts = [(name, value(entries, "median", counter)) for name, counter in (
                ("kit before its first byte", "kit_before_ms"), ("kit on the link", "client_ms"),
                ("sandbox", "server_ms"), ("kit after the answer", "kit_after_ms"))]
            where = ", ".join(f"{name} {ms:.1f}" for name, ms in parts if ms is not None)
            lines.append([
                title,
                f"{link} ms ({rtt_ms:.0f} ms RTT)" if rtt_ms else f"{link} ms",
                show(value(entries, "median", "time")) + spread(entries, "time"),
                f"{floor_rtt:.0f} RTT = {show(floor_rtt * rtt_ms, 'ms')}" if floor_rtt and rtt_ms else "n/a",
                "n/a" if beyond is None else f"{beyond:+.1f} ms",
                ("n/a" if counted is None else f"{counted:.0f} RTT, {connections:.0f} new conn.") + extra,
                where or "—",
                f"≤ floor + {ROUND_TRIP_SLACK_MS:.0f} ms",
                met,
            ])
    if lines:
        print_table(["figure", "one way", "kit (median)", "floor", "beyond floor", "relay counted",
                     "of the time beyond (ms)", "target", "met"],
                    lines, markdown)


def scale_table(found, markdown):
    per = {}
    lines = []
    for count in SCALE:
        entries = found.get(f"BM_Scale_Paywalls/{count}")
        if not entries:
            continue
        per[count] = value(entries, "median", "per_paywall_us")
    for count in SCALE:
        entries = found.get(f"BM_Scale_Paywalls/{count}")
        if not entries:
            continue
        ratio = per[count] / per[10] if per.get(10) and per.get(count) else None
        target = "" if count != 1000 else f"≤ {SCALE_TARGET:.1f}× of 10"
        met = "" if count != 1000 or ratio is None else ("yes" if ratio <= SCALE_TARGET else "NO")
        lines.append([
            f"14. {count} paywall{'s' if count > 1 else ''} at once",
            show(value(entries, "median", "time")) + spread(entries, "time"),
            show(per[count] * 1e3 if per[count] is not None else None),
            "n/a" if ratio is None else f"{ratio:.2f}×",
            show(value(entries, "median", "peak_rss_kib"), "kib"),
            show(value(entries, "median", "added_kib_per_paywall"), "kib"),
            f"{value(entries, 'median', 'threads'):.0f} (alone {value(entries, 'median', 'alone_threads'):.0f})",
            target,
            met,
        ])
    if lines:
        print_table(["scale", "time to every decision", "per paywall", "per paywall vs 10", "peak RSS",
                     "added per paywall", "threads", "target", "met"], lines, markdown)


def main(argv):
    files = [arg for arg in argv[1:] if not arg.startswith("--")]
    if not files:
        print(__doc__, file=sys.stderr)
        return 2
    documents = []
    for name in files:
        with open(name, encoding="utf-8") as file:
            documents.append(json.load(file))
    markdown = "--markdown" in argv[1:]
    found = aggregates(documents)

    ratio_table(found, markdown)
    limits_table(found)
    card_phases(found)
    hostile_table(found, markdown)
    round_trip_table(found, markdown)
    scale_table(found, markdown)

    context = documents[0].get("context", {})
    loads = [document.get("context", {}).get("load_avg") for document in documents]
    print(f"{context.get('num_cpus', '?')} CPUs; load average when each program's run ended: "
          + "; ".join(", ".join(f"{x:.2f}" for x in load) if load else "unknown" for load in loads)
          + "; ± is the coefficient of variation over the repetitions")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
