#!/usr/bin/env python3
"""Writes the corpus from known requests and answers. Files of findings beside them stay."""

from pathlib import Path

FOLDER = Path(__file__).parent / "corpus"
ALL_THE_REST = 240
FRAME, JSON, FAULT, SHORT_WAIT, LONG_WAIT = 240, 241, 242, 243, 244


def crc(data, value=0):
    for byte in data:
        value ^= byte << 8
        for _ in range(8):
            value = (value << 1) ^ 0x1021 if value & 0x8000 else value << 1
            value &= 0xFFFF
    return value.to_bytes(2, "little")


def frame(command, payload=b""):
    head = bytes([0xAA, 0x5A, 1, command]) + len(payload).to_bytes(4, "little") + payload
    return head + crc(head)


def envelope(text):
    body = bytes([1, 0x17]) + (len(text) + 8).to_bytes(2, "big") + bytes(8) + text
    return body + b"\0\0"


def reads(*answers):
    """A read of its own for each answer, the last one with all that is left."""
    script = b"".join(bytes([len(a)]) + a for a in answers[:-1])
    return script + bytes([ALL_THE_REST]) + answers[-1]


def write(fuzzer, name, data):
    folder = FOLDER / fuzzer
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


ORIGIN_RECORD = bytes.fromhex("05012D00F153651400000015" "49D1AAE20214E065AB4B76AAACA889")
V1_RECORD = bytes.fromhex("0201" "E3D63401" "03" "01" "2D" "00F15365" "14000000") + bytes(range(16))

PROPERTY_QUERY = b'{"timestamp":1,"seqNum":1,"cmdType":145,"info":""}'
PICTURE_QUERY = (b'{"timestamp":0,"seqNum":0,"cmdType":156,"subType":0,'
                 b'"info":{"open_count":10,"angle":9,"offset":0,"length":500}}')

ANSWERS = [
    ("heartbeat", 0, frame(1, b"\x01")),
    ("serial-number", 1, frame(2, b"\x03\x00SHELF000001")),
    ("serial-number-set", 2, frame(3, b"\x03\x00")),
    ("app-version", 3, frame(2, b"\x02\x002.3.1")),
    ("system-version", 4, frame(2, b"\x15\x005.10.8")),
    ("qv-version", 5, frame(0xC2, b"\xD4\x00qv 1.4.0")),
    ("model-info", 6, frame(0xC2, b"\xCC\x00model_v1")),
    ("property", 7, frame(2, b"\x0F\x00\x1E")),
    ("property-set", 8, frame(3, b"\x0F\x00")),
    ("gyro", 9, b"3success"),
    ("reboot", 10, frame(5, b"\x00")),
    ("garbage-before", 7, b"\x33\x5A\x00\xAA" + frame(2, b"\x0F\x00\x1E")),
    ("huge-length", 7, bytes.fromhex("AA5A0102FFFFFFFF0F001E0000")),
    ("no-payload", 7, frame(2)),
    ("capture", 13, frame(6, b"\x00\x05")),
    ("capture-v1", 14, frame(0xC6, b"\x00\x05")),
    ("delete", 15, frame(8, b"\x00")),
    ("delete-v1", 16, frame(0xC8, b"\x00")),
]


def client_corpora():
    for name, command, answer in ANSWERS:
        write("answers", name, bytes([command]) + reads(answer))
    write("answers", "in-two-reads", bytes([7]) + reads(frame(2, b"\x0F\x00\x1E")[:9], frame(2, b"\x0F\x00\x1E")[9:]))

    write("catalogues", "one-record", bytes([0]) + reads(frame(7, b"\x01" + ORIGIN_RECORD)))
    write("catalogues", "eleven-records", bytes([0]) + reads(frame(7, b"\x0B" + ORIGIN_RECORD * 11)))
    write("catalogues", "part-of-a-record", bytes([0]) + reads(frame(7, b"\x02" + ORIGIN_RECORD + b"\x06\x01")))
    write("catalogues", "empty", bytes([0]) + reads(frame(7, b"\x00")))
    write("catalogues", "v1-one-record", bytes([1]) + reads(frame(0xC7, b"\x01" + V1_RECORD)))
    write("catalogues", "v1-twelve-records", bytes([1]) + reads(frame(0xC7, b"\x0C" + V1_RECORD * 12)))
    picture = frame(9, b"\x00" + bytes(range(20)))
    for name, count, captured in (("found", 1, 5), ("not-found", 7, 6)):
        write("catalogues", "take-picture-" + name, bytes([2]) + reads(
            frame(8, b"\x00"), frame(6, bytes([0, captured])), frame(7, bytes([count]) + ORIGIN_RECORD * count),
            picture, frame(8, b"\x00")))

    write("json", "version", bytes([0]) + reads(envelope(b'{"result":0,"version":"1.0.3"}')))
    write("json", "empty-text", bytes([0]) + reads(envelope(b"")))
    head = b'{"size":%d}<<BINARY>>'
    write("json", "picture", bytes([2]) + reads(envelope(head % 20 + bytes(range(20)))))
    write("json", "picture-of-two-pieces", bytes([2]) + reads(
        envelope(head % 600 + bytes(150))[:239], envelope(b"<<BINARY>>" + bytes(100))))
    for name, text in (("no-size", b"{}"), ("negative", b'"size":-1'), ("too-large", b'"size":99999999999'),
                       ("no-number", b'"size":x')):
        write("json", "picture-" + name, bytes([2]) + reads(envelope(text + b"<<BINARY>>abc")))

    for command in (0, 1):
        for size in (0, 20, 21, 0xFFFFFFFF):
            write("transfer", f"command-{command}-size-{size}",
                  bytes([command]) + size.to_bytes(4, "little") + b"\x05" + reads(picture))
    write("transfer", "refused", bytes([0, 20, 0, 0, 0, 5]) + reads(frame(9, b"\x01" + bytes(20))))

    for name, command, code in (("app", 0, 0x1B), ("system", 1, 0x0B)):
        for offset in (0, 512, 1300, 1301, 0x80000000):
            write("uploads", f"{name}-offset-{offset}", bytes([command]) + reads(
                frame(code, b"\x00" + offset.to_bytes(4, "little")), frame(code, b"\x00")))
    write("uploads", "model", bytes([2]) + reads(frame(0xCB, b"\x01\x00" + bytes(4)), frame(0xCB, b"\x02\x00")))
    write("uploads", "model-refused", bytes([2]) + reads(frame(0xCB, b"\x01\x01" + bytes(4))))
    announced = frame(0x1D, b"\x01\x00" + (1300).to_bytes(4, "little"))
    write("uploads", "app-v1", bytes([3]) + reads(*[announced] * 5, *[frame(0x1E, b"\x00")] * 11))


def request(command, payload=b""):
    return bytes([FRAME, command, len(payload)]) + payload + bytes([SHORT_WAIT])


def camera_corpus():
    size = (3).to_bytes(4, "little")
    digest = bytes.fromhex("900150983CD24FB0D6963F7D28E17F72")
    requests = {
        "heartbeat": request(1, b"\x00"),
        "properties": request(2, b"\x03") + request(3, b"\x0F\x1E") + request(2, b"\x10") * 4 + request(0xC2, b"\xCC"),
        "restart": request(5) + bytes([LONG_WAIT]) + request(1, b"\x00"),
        "pictures": request(6) + bytes([LONG_WAIT]) + request(7) + request(9, b"\x21" + bytes(4) + size) + request(8, b"\xFF"),
        "pictures-v1": request(0xC6) + bytes([LONG_WAIT]) + request(0xC7) + request(0xC9, b"\x21\0" + bytes(4) + size)
                       + request(0xC8, b"\xFF\xFF"),
        "app-upload": request(0x1B, size + digest) + bytes([LONG_WAIT, 3]) + b"abc" + bytes([SHORT_WAIT]),
        "model-upload": request(0xCB, b"\x01" + size + digest + b"model") + bytes([LONG_WAIT, 3]) + b"abc",
        "app-v1": request(0x1D, b"\x01" + size + digest + b"app") * 5 + request(0x1E, size + bytes(4)) * 11,
        "raw-frame": bytes([10]) + bytes.fromhex("AA5A0106000000006986"),
        "fault": bytes([FAULT, 3]) + request(1, b"\x00"),
    }
    for name, script in requests.items():
        for kind in (0, 4):
            write("camera", f"{name}-type-{kind}", bytes([kind, 7]) + script)
    for name, text in (("version", PROPERTY_QUERY), ("picture", PICTURE_QUERY)):
        write("camera", "json-" + name, bytes([3, 0, JSON, len(text)]) + text + bytes([SHORT_WAIT]))


RECORDING = b"""camera line recording 1
start -
device -
baud 9600
offset 0
serials kept
"""
RECORDED = b"""# remark
 6.678 tool AA 5A 01
 9.157 camera 33
"""
PROFILE = b"camera profile 1\ntype ostra\n"
PROFILE_LINES = {
    "delay": b"delay getSn 8 12 30\ndelay any 1 2 3\n",
    "fault": b"# remark\nfault bad-check@getSn#2-4\nrest 20\n",
    "line": b"line ftdi,bits=1e-5\nboot-bytes 4F4B\n",
    "values": b"text getSn SHELF1\nvalue getProperty:15 1E\norientation 45 3 unknown 981\n",
}
JOB = b'/dev/ttyUSB0 1 ostra sn "SC 1"'


def pure_corpora():
    heartbeat = bytes([FRAME, 1, 1, 1, 0])
    write("frames", "frame", bytes([0]) + heartbeat)
    write("frames", "garbage-and-frame", bytes([1, 3]) + b"\xAA\x33\x01" + heartbeat * 2)
    write("frames", "damaged-frame", bytes([0, 242, 2, 1, 1, 3, 9]) + heartbeat)
    write("frames", "envelope", bytes([0, JSON, len(PROPERTY_QUERY)]) + PROPERTY_QUERY + heartbeat)
    write("records", "two", b"\0\x02" + ORIGIN_RECORD * 2)
    write("records", "v1", b"\x01\x01" + V1_RECORD)
    write("records", "part", b"\0\x02" + ORIGIN_RECORD + b"\x06")
    write("envelopes", "version", b"\x05" + b'{"result":0,"version":"1.0.3"}')
    write("envelopes", "nested", b"\x05" + b'{"a":[1,2.5,null],"b":{"c":true}}')
    write("envelopes", "picture", b"\x05" + b'{"result":0,"size":3}<<BINARY>>\xFF\xD8\xFF')
    write("announcements", "image", bytes([2, 5]) + bytes(5) + bytes(range(16)) + b"\x03\0\0\0")
    write("announcements", "model", bytes([3, 6, 1, 0]) + bytes(4) + bytes(range(16)) + b"\x03\0\0\0model")
    write("recordings", "exchange", RECORDING + RECORDED)
    write("recordings", "head", RECORDING)
    for name, lines in PROFILE_LINES.items():
        write("profiles", name, PROFILE + lines)
    write("profiles", "other-version", b"camera profile 2\ntype ostra\n")
    write("options", "job", b"\0" + JOB)
    write("options", "fault", b"\0" + b"truncate=3@getSn#2")
    write("options", "offset", b"\0" + b"offset=size+1@modelUpdate")
    write("options", "line", b"\x01" + b"ftdi,latency=20,bits=1e-5")


client_corpora()
pure_corpora()
camera_corpus()
