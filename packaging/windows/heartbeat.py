#!/usr/bin/env python3
"""Asks the camera at the other end of a pseudo-terminal for a heartbeat: heartbeat.py DEVICE"""
import os
import select
import sys
import time

REQUEST = bytes.fromhex("AA5A01010100000000 5EFA")
ANSWER_START = bytes.fromhex("AA5A01010100000001")
ANSWER_SIZE = 11
TIME_S = 5


def main():
    device = os.open(sys.argv[1], os.O_RDWR | os.O_NOCTTY)
    os.write(device, REQUEST)
    answer = b""
    end = time.monotonic() + TIME_S
    while len(answer) < ANSWER_SIZE and select.select([device], [], [], max(0, end - time.monotonic()))[0]:
        answer += os.read(device, ANSWER_SIZE)
    print("heartbeat answer:", answer.hex(" "))
    return 0 if answer.startswith(ANSWER_START) and len(answer) == ANSWER_SIZE else 1


sys.exit(main())
