#!/usr/bin/env python3
"""Runs a program beside a name server on 127.0.0.1, in a network namespace of its own, which the caller has made.

The domain in the question decides how the server answers; see ZONES.
usage: name_server.py PROGRAM [ARGUMENT ...]
"""
import fcntl
import socket
import struct
import subprocess
import sys
import threading

SIOCSIFFLAGS, UP = 0x8914, 0x1


def servers(*rows):
    """SRV records of (priority, port, host), with a pointer to the name of the question."""
    out = b''
    for priority, port, host in rows:
        name = b''.join(bytes([len(part)]) + part for part in host.split(b'.')) + b'\0'
        out += struct.pack('>HHHIHHHH', 0xc00c, 33, 1, 60, 6 + len(name), priority, 100, port) + name
    return out


# Domain: response code, number of records, records.
ZONES = {
    b'good': (0, 2, servers((10, 389, b'dc2.good'), (0, 3268, b'd\x1bc1.good'))),
    b'cut': (0, 9, servers((0, 389, b'dc1.cut')) + b'\xc0'),
    b'none': (3, 0, b''),
    b'empty': (0, 0, b''),
    b'broken': (2, 0, b''),
    b'refused': (5, 0, b''),
    b'circle': (0, 1, struct.pack('>HHHIHHHHH', 0xc00c, 33, 1, 60, 8, 0, 0, 389, 0xc000 + 12 + 200)),
    b'short': (0, 1, struct.pack('>HHHIH', 0xc00c, 33, 1, 60, 0)),
    b'garbage': None,
}


def serve(server):
    while True:
        query, client = server.recvfrom(4096)
        question = query[12:query.index(b'\0', 12) + 5]
        zone = ZONES[question[:-5].split(b'_msdcs')[1][1:]]
        server.sendto(b'\xff', client)  # not an answer to anything
        if zone:
            code, count, records = zone
            server.sendto(query[:2] + struct.pack('>HHHHH', 0x8180 + code, 1, count, 0, 0) + question + records, client)


with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as server:
    fcntl.ioctl(server, SIOCSIFFLAGS, struct.pack('16sH22x', b'lo', UP))
    server.bind(('127.0.0.1', 53))
    threading.Thread(target=serve, args=(server,), daemon=True).start()
    sys.exit(subprocess.run(sys.argv[1:], check=False).returncode)
