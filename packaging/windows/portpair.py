#!/usr/bin/env python3
"""Two pseudo-terminals joined like two serial ports by a null-modem line.

    portpair.py LINK LINK

A symbolic link to each is made at the given paths. Both stay open here, so that programs may close and open
them as often as they like. Says "joined" and carries bytes until it is killed.
"""
import os
import select
import sys
import tty

PIECE = 4096


def main():
    masters = []
    kept_open = []
    for link in sys.argv[1:3]:
        master, slave = os.openpty()
        tty.setraw(slave)
        if os.path.lexists(link):
            os.remove(link)
        os.symlink(os.ttyname(slave), link)
        masters.append(master)
        kept_open.append(slave)
    print("joined", flush=True)
    other = {masters[0]: masters[1], masters[1]: masters[0]}
    while True:
        for source in select.select(masters, [], [])[0]:
            data = os.read(source, PIECE)
            while data:
                data = data[os.write(other[source], data):]


main()
