#!/usr/bin/env python3
"""Compares, under wine, the start of LmCalTab with that of an empty window: wine_bench.py WINE_RUN FOLDER

WINE_RUN is the command that runs a Windows program under wine. FOLDER has empty_window.exe and start_probe.exe. The
latter is LmCalTab linked with first_paint, with main.cpp instead of windows_main.cpp. Both exit after their window has
been painted for the first time. They run in turn, and each round gives one ratio of their processor times and one of
their elapsed times. Needs a desktop.
"""
import os
import statistics
import subprocess
import sys
import time

ROUNDS = 15
run, folder = sys.argv[1:]


def times(program):
    """Returns the processor time and the elapsed time of one run in milliseconds."""
    began = time.monotonic()
    process = subprocess.Popen([run, f'{folder}/{program}.exe'], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f'{program} ended with the status {status}')
    return 1e3 * (usage.ru_utime + usage.ru_stime), 1e3 * (time.monotonic() - began)


def describe(values, digits):
    low, middle, high = statistics.quantiles(values, n=4)
    return f'{middle:.{digits}f} ({low:.{digits}f} to {high:.{digits}f})'


times('empty_window')
rounds = [(times('start_probe'), times('empty_window')) for _ in range(ROUNDS)]
print('start to exit: median of all rounds (range of the middle half of the values)')
for kind, name in enumerate(['processor time', 'elapsed time']):
    ours, empty = ([one[program][kind] for one in rounds] for program in (0, 1))
    ratios = [a / b for a, b in zip(ours, empty)]
    print(f'{name}: LmCalTab {describe(ours, 0)} ms, an empty window {describe(empty, 0)} ms, ratio {describe(ratios, 2)}')
