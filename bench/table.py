#!/usr/bin/env python3
"""Turns results of the benchmarks into one table of ratios.

    table.py [--save FILE] [--compare FILE] RESULT...

A RESULT is Google Benchmark's JSON, or an object of samples by row as --save
writes it. --compare prints below the table what has changed against a saved run
by more than the spread of both.
"""

import argparse
import json
import re
import statistics
import sys

# Rows in their order: a benchmark's name, its argument with its unit, and the
# goal for ours / floor. Rows that were not run are left out.
ROWS = [
    ("forwarded call", "{} thread", 1.10),
    ("forwarded call after a failed load", "", 1.25),
    ("first answer, cold", "", 1.30),
    ("whole process to a token", "", 1.15),
    ("token request", "", 1.15),
    ("jar to document", "{} cookie", 1.15),
    ("document to jar", "{} cookie", 1.15),
    ("choice among modules", "{} module", 1.30),
    ("expansion, one variable", "{} unit", 3),
    ("expansion, many variables", "{} unit", 3),
    ("scope", "{} word", 1.30),
    ("UTF-8 to wide, 1 MB", "", 2),
    ("wide to UTF-8, 1 MB", "", 2),
    ("callback to a token", "", 1.20),
    ("silent renewal", "", 1.20),
    ("token from memory", "", 1.10),
    ("first answer, signed in", "", 1.50),
]

SCALES = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def n_log_n(count):
    return count * max(1.0, count.bit_length() - 1)


# Growth of our time from the second to the third argument, beside that of a function.
# Twice as much is what the caches explain; another function would give a hundred.
GROWTH_GOAL = 2
GROWTH = {
    "choice among modules": ("n log n", n_log_n),
    "expansion, one variable": ("linear", lambda count: count),
    "expansion, many variables": ("linear", lambda count: count),
}


def read_benchmarks(report, samples):
    """Nanoseconds of each repetition, by (row, argument) and side."""
    # The time of the processor is the steadier one where a benchmark has one thread
    # and does not wait; Wine counts it in steps too coarse for that.
    windows = report["context"]["executable"].endswith(".exe")
    for run in report["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run["run_type"] != "iteration":
            continue
        row, _, rest = run["run_name"].partition("|")
        side, *suffixes = rest.split("/")
        argument = next((int(s) for s in suffixes if s.isdigit()), None)
        if any(s.startswith("threads:") for s in suffixes):
            argument = run["threads"]
        by_clock = windows or {"real_time", "manual_time"} & set(suffixes)
        time = run["real_time" if by_clock else "cpu_time"] * SCALES[run["time_unit"]]
        samples.setdefault((row, argument), {}).setdefault(side, []).append(time)


def key_text(key):
    return key[0] if key[1] is None else f"{key[0]}|{key[1]}"


def read(files):
    samples = {}
    for name in files:
        with open(name, encoding="utf-8") as file:
            report = json.load(file)
        if "benchmarks" in report:
            read_benchmarks(report, samples)
            continue
        for text, sides in report.items():
            row, _, argument = text.partition("|")
            samples[row, int(argument) if argument else None] = sides
    return samples


def deviation(values):
    """The median absolute deviation, in the measure of a standard deviation."""
    middle = statistics.median(values)
    return 1.4826 * statistics.median(abs(value - middle) for value in values)


def show(value):
    for limit, name in ((1e3, "ns"), (1e6, "us"), (1e9, "ms"), (float("inf"), "s")):
        if value < limit:
            return f"{value / SCALES[name]:.3g} {name}"
    raise ValueError(value)


def label(row, argument, unit):
    if argument is None:
        return row
    return f"{row}, {unit.format(f'{argument:,}')}{'' if argument == 1 else 's'}"


def lines_of_table(samples):
    known = {row for row, _, _ in ROWS}
    unknown = {row for row, _ in samples} - known
    if unknown:
        sys.exit(f"rows without a goal: {', '.join(sorted(unknown))}")
    for row, unit, goal in ROWS:
        arguments = sorted((a for r, a in samples if r == row), key=lambda a: a or 0)
        medians = {}
        for argument in arguments:
            sides = samples[row, argument]
            floor, ours = (statistics.median(sides[side]) for side in ("floor", "ours"))
            medians[argument] = ours
            ratio = ours / floor
            yield (label(row, argument, unit), show(floor), show(ours),
                   f"{ratio:.2f}", f"{goal:.2f}", "" if round(ratio, 2) <= goal else "above")
        if row in GROWTH and len(arguments) == 3:
            name, function = GROWTH[row]
            low, high = arguments[1:]
            expected = function(high) / function(low)
            measured = medians[high] / medians[low]
            ratio = measured / expected
            yield (f"{row}, {low:,} to {high:,}: {name}", f"x {expected:.0f}",
                   f"x {measured:.0f}", f"{ratio:.2f}", f"{GROWTH_GOAL:.2f}",
                   "" if round(ratio, 2) <= GROWTH_GOAL else "above")


def print_table(lines):
    lines = [("what", "floor", "ours", "ratio", "goal", "")] + list(lines)
    widths = [max(len(line[i]) for line in lines) for i in range(5)]
    for number, line in enumerate(lines):
        cells = [line[0].ljust(widths[0])] + [line[i].rjust(widths[i]) for i in range(1, 5)]
        print(("| " + " | ".join(cells) + " | " + line[5]).rstrip())
        if number == 0:
            print("|" + "|".join(["-" * (widths[0] + 2)] +
                                 ["-" * (width + 1) + ":" for width in widths[1:]]) + "|")


def compare(samples, before):
    """A change counts if the medians differ by more than three deviations of both,
    and by more than two in a hundred."""
    changes = 0
    for row, unit, _ in ROWS:
        for key in sorted((k for k in samples if k[0] == row), key=lambda k: k[1] or 0):
            if key not in before:
                continue
            for side in ("floor", "ours"):
                old, new = before[key][side], samples[key][side]
                was, now = statistics.median(old), statistics.median(new)
                if abs(now - was) > max(3 * (deviation(old) + deviation(new)), 0.02 * was):
                    changes += 1
                    print(f"{label(*key, unit)}, {side}: {show(was)} -> {show(now)} "
                          f"({100 * (now / was - 1):+.1f} %)")
    print(f"{changes} changes beyond the noise")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--save")
    parser.add_argument("--compare")
    parser.add_argument("results", nargs="+")
    options = parser.parse_args()
    samples = read(options.results)
    if options.save:
        with open(options.save, "w", encoding="utf-8") as file:
            json.dump({key_text(key): sides for key, sides in samples.items()}, file, indent=1)
    print_table(lines_of_table(samples))
    if options.compare:
        print()
        compare(samples, read([options.compare]))


if __name__ == "__main__":
    main()
