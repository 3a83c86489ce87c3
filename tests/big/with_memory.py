"""Runs a command where enough memory is free: with_memory.py GIB COMMAND...

Ends with 77, by which ctest tells a test that is left out, where it is not."""

import os
import sys

SKIPPED = 77


def available_gib():
    with open("/proc/meminfo") as file:
        kilobytes = {line.split(":")[0]: int(line.split()[1]) for line in file}
    return kilobytes["MemAvailable"] / (1 << 20)


def main():
    wanted, command = float(sys.argv[1]), sys.argv[2:]
    if available_gib() < wanted:
        print(f"left out: {wanted:g} GiB of memory are wanted, {available_gib():.1f} GiB are free")
        sys.exit(SKIPPED)
    os.execv(command[0], command)


if __name__ == "__main__":
    main()
