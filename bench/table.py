#!/usr/bin/env python3
"""Prints the results of the benchmarks as one table of ratios to the floor of each subject.

table.py times FILE...          Google Benchmark's JSON files
table.py instructions FILE      lines "SUBJECT/CANDIDATE MESSAGES INSTRUCTIONS", two per candidate
"""

import json
import statistics
import sys

FLOOR = "floor"
OURS = "velmoext1"

# Goals in the order of the table: the maximum ratio of the library to the floor, and the peers that
# must not be faster.
GOALS = {
    "encode": ("0.30", ["pugixml"]),
    "decode": ("0.28", ["pugixml"]),
    "record": ("0.40", ["Boost.Log", "spdlog"]),
    "replay": ("1.00", ["pugixml"]),
    "carry_over": ("0.50", []),
    "dispatch_1": ("1.15", []),
    "dispatch_4": ("1.15", []),
    "dispatch_16": ("1.15", []),
    "property_10": ("2.5", []),
    "property_100": ("2.5", []),
    "property_1000": ("2.5", []),
    "title": ("1.15", []),
    "text": ("1.15", []),
}

# The same subject, with messages that are spread over the heap.
SPREAD = "_spread"


def read_times(files):
    """Returns the nanoseconds of CPU time per message in each round.

    The result is {subject: {candidate: [value]}}.
    """
    rounds = {}
    for name in files:
        with open(name, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run["run_type"] != "iteration":
                continue
            subject, candidate = run["name"].split("/")[:2]
            nanoseconds = 1e9 / run["items_per_second"]
            rounds.setdefault(subject, {}).setdefault(candidate, []).append(nanoseconds)
    return rounds


def read_instructions(name):
    """Returns the instructions per message, without those of the start and of the first message.

    The result is {subject: {candidate: [value]}}.
    """
    counts = {}
    with open(name, encoding="utf-8") as file:
        for line in file:
            full_name, messages, instructions = line.split()
            counts.setdefault(full_name, {})[int(messages)] = int(instructions)
    result = {}
    for full_name, by_messages in counts.items():
        subject, candidate = full_name.split("/")
        (few, least), (many, most) = sorted(by_messages.items())
        result.setdefault(subject, {})[candidate] = [(most - least) / (many - few)]
    return result


def spread(values):
    """Returns half the interquartile range relative to the median; empty for too few rounds."""
    if len(values) < 4:
        return ""
    low, _, high = statistics.quantiles(values, n=4)
    return f" ± {(high - low) / 2 / statistics.median(values):.1%}"


def goal_of(subject):
    ratio, peers = GOALS[subject.removesuffix(SPREAD)]
    return ", ".join([ratio, *peers])


def print_table(measured, unit):
    print(f"| subject | floor, {unit} | {OURS}, {unit} | ratio | goal, ahead of | others, ratio |")
    print("|---|---|---|---|---|---|")
    subjects = [name + heap for name in GOALS for heap in ("", SPREAD)]
    for subject in filter(measured.__contains__, subjects):
        values = measured[subject]
        floor = statistics.median(values[FLOOR])
        ours = statistics.median(values[OURS])
        others = ", ".join(
            f"{name} {statistics.median(others) / floor:.2f}"
            for name, others in sorted(values.items())
            if name not in (FLOOR, OURS)
        )
        print(
            f"| {subject} | {floor:,.0f}{spread(values[FLOOR])} "
            f"| {ours:,.0f}{spread(values[OURS])} "
            f"| {ours / floor:.2f} | {goal_of(subject)} | {others} |"
        )


def main():
    kind, *files = sys.argv[1:]
    if kind == "times":
        print_table(read_times(files), "ns")
    else:
        print_table(read_instructions(files[0]), "instructions")


if __name__ == "__main__":
    main()
