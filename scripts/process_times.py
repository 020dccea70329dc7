#!/usr/bin/env python3
"""Whole-process times of `velmorant-snippet`, interleaved so that a machine's
drift between minutes falls on every command alike.

Every round runs each command once (`--help`, `show` without a picture, and
`show INTENT --png FILE` for every intent), for each program given; prints the
median and quartiles over the rounds. Layers kept on disk are used as `show`
uses them (run it once before, as the warm-up rounds do).

Usage: scripts/process_times.py ROUNDS PROGRAM [PROGRAM...]
  e.g. scripts/process_times.py 30 build/release/src/cli/velmorant-snippet /tmp/before
"""
import os
import statistics
import sys
import tempfile
import time

INTENTS = ("LightsOffIntent TimeAsleepIntent ReadinessIntent WristTempIntent SleepFuelIntent "
           "SleepSpO2Intent RespirationIntent LatestBedtimeIntent SleepRingsIntent").split()


def main():
    if len(sys.argv) < 3 or not sys.argv[1].isdigit():
        sys.exit(__doc__.strip().splitlines()[-2].strip())
    rounds, programs = int(sys.argv[1]), [os.path.abspath(p) for p in sys.argv[2:]]
    png = os.path.join(tempfile.mkdtemp(), "card.png")
    commands = []
    for program in programs:
        commands.append((program, "--help", [program, "--help"]))
        commands.append((program, "show SleepSpO2Intent", [program, "show", "SleepSpO2Intent"]))
        commands += [(program, f"show {i} --png", [program, "show", i, "--png", png]) for i in INTENTS]
    devnull = os.open(os.devnull, os.O_WRONLY)

    def once(argv):
        start = time.perf_counter()
        pid = os.posix_spawn(argv[0], argv, os.environ, file_actions=[(os.POSIX_SPAWN_DUP2, devnull, 1)])
        _, status = os.waitpid(pid, 0)
        if status != 0:
            sys.exit(f"{' '.join(argv)}: exit status {status >> 8}")
        return (time.perf_counter() - start) * 1000

    times = {(p, name): [] for p, name, _ in commands}
    for _, _, argv in commands:
        once(argv), once(argv)
    for _ in range(rounds):
        for program, name, argv in commands:
            times[(program, name)].append(once(argv))
    print(f"load {os.getloadavg()[0]:.2f}, {rounds} rounds, ms")
    for program, name, _ in commands:
        t = sorted(times[(program, name)])
        print(f"{os.path.basename(program):<20} {name:<36} median {statistics.median(t):5.1f}  "
              f"quartiles {t[len(t) // 4]:5.1f} to {t[3 * len(t) // 4]:5.1f}")


if __name__ == "__main__":
    main()
