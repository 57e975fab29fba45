#!/usr/bin/env python3
"""Prints how fast whole programs read one log, and the memory that they need.

programs.py VELMOLOG LOG

LOG is an XML log. Programs that read lines get the same messages as JSON lines, which velmolog
writes beside LOG. A program that is not installed is left out.
"""

import os
import shutil
import subprocess
import sys

COUNT_BY_TYPE = "reduce inputs as $m ({}; .[$m.type] += 1)"
COUNT_BY_LEVEL = ";SELECT log_level, count(*) FROM all_logs GROUP BY log_level"
MEBIBYTE = 1048576


def run(command, output):
    """Returns the processor time in seconds and the peak of memory in MiB."""
    child = subprocess.Popen(command, stdout=output, stdin=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"programs.py: failed: {' '.join(command)}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def print_row(name, command, log):
    if shutil.which(command[0]) is None:
        return
    with open(os.devnull, "wb") as nothing:
        seconds, memory = run(command, nothing)
    size = os.path.getsize(log)
    print(f"| {name} | {size / MEBIBYTE:,.0f} | {seconds:.2f} | {size / 1e6 / seconds:,.0f} | {memory:,.0f} |")


def main():
    velmolog, log = sys.argv[1:]
    lines = log + ".jsonl"
    with open(lines, "wb") as output:
        seconds, memory = run([velmolog, "--format", "json", log], output)
    size = os.path.getsize(log)
    print("| program | input, MiB | CPU, s | input, MB/s | peak memory, MiB |")
    print("|---|---|---|---|---|")
    print_row("velmolog stats", [velmolog, "stats", log], log)
    print_row("velmolog check", [velmolog, "check", log], log)
    print_row("velmolog show", [velmolog, "show", log], log)
    print(f"| velmolog, to JSON lines | {size / MEBIBYTE:,.0f} | {seconds:.2f} | {size / 1e6 / seconds:,.0f} | {memory:,.0f} |")
    print_row("xmllint --stream", ["xmllint", "--stream", "--noout", log], log)
    print_row("jq, counts by type", ["jq", "-n", COUNT_BY_TYPE, lines], lines)
    print_row("lnav, counts by level", ["lnav", "-n", "-c", COUNT_BY_LEVEL, lines], lines)
    os.remove(lines)


if __name__ == "__main__":
    main()
