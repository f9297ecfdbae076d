#!/usr/bin/env python3
"""Measures shelf-camera: start, memory, uploads side by side.

Usage: bench/commandline.py BUILD-FOLDER [--size BYTES] [--cameras N]
"""
import argparse
import os
import pty
import select
import statistics
import subprocess
import sys
import tempfile
import time
import tty

PACE = 46080  # bytes per second


def rusage_of(command, **options):
    """Seconds of the command, its processor time in seconds and its largest memory in MiB."""
    begin = time.monotonic()
    process = subprocess.Popen(command, **options)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - begin
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{' '.join(command)}: exit code {os.waitstatus_to_exitcode(status)}")
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def milliseconds_to_first_byte(program):
    master, slave = pty.openpty()
    tty.setraw(slave)
    begin = time.monotonic()
    process = subprocess.Popen([program, "-p", os.ttyname(slave), "heartbeat"],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    select.select([master], [], [], 10)
    elapsed = (time.monotonic() - begin) * 1000
    process.wait()
    os.close(master)
    os.close(slave)
    return elapsed


def start_cameras(program, folder, count):
    cameras = []
    for number in range(count):
        link = os.path.join(folder, f"camera{number}")
        log = open(link + ".log", "w", encoding="utf-8")
        camera = subprocess.Popen([program, "--link", link, "--pace", str(PACE)], stdout=log)
        cameras.append((camera, link))
    for _, link in cameras:
        while not os.path.exists(link):
            time.sleep(0.01)
    return cameras


def measure_uploads(arguments, programs, folder):
    image = os.path.join(folder, "image.bin")
    with open(image, "wb") as file:
        file.write(os.urandom(arguments.size))
    cameras = start_cameras(programs["virtual-camera"], folder, arguments.cameras)
    command = [programs["shelf-camera"], "--yes"]
    for _, link in cameras:
        command += ["-p", link]
    command += ["upload", "app", image, "--no-wait"]
    try:
        seconds, processor, memory = rusage_of(command, stdout=subprocess.DEVNULL)
    finally:
        for camera, _ in cameras:
            camera.terminate()
            camera.wait()
    # Version before, announcement with its pause of 2 s, verdict.
    line = arguments.size / PACE
    print(f"| {arguments.cameras} uploads of {arguments.size} bytes | whole command {seconds:.2f} s, "
          f"of the line {line:.2f} s | processor {100 * processor / seconds:.1f} % of a core | "
          f"memory {memory:.1f} MiB |")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--size", type=int, default=1 << 20)
    parser.add_argument("--cameras", type=int, default=8)
    arguments = parser.parse_args()
    programs = {"shelf-camera": os.path.join(arguments.build, "cli/shelf-camera"),
                "virtual-camera": os.path.join(arguments.build, "emulator/virtual-camera")}
    starts = [milliseconds_to_first_byte(programs["shelf-camera"]) for _ in range(11)]
    print(f"| start to the first byte on the line | median {statistics.median(starts):.1f} ms, "
          f"most {max(starts):.1f} ms |")
    with tempfile.TemporaryDirectory() as folder:
        arguments_of_one = argparse.Namespace(size=arguments.size, cameras=1)
        measure_uploads(arguments_of_one, programs, folder)
    with tempfile.TemporaryDirectory() as folder:
        measure_uploads(arguments, programs, folder)


if __name__ == "__main__":
    main()
