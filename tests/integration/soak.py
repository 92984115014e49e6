#!/usr/bin/python3
"""A long random walk through the whole road, and what it leaves behind in the daemon.

    HALDEN_BIN_DIR=build/bin tests/integration/soak.py [--calls 100000] [--seed N]

Two machines in turns, with session time-outs so short that each one's session has ended when its turn comes again:
the walk passes through hundreds of connections. What is read must be what was written, and in the end the disks are
compared. Prints the daemon's resident size and descriptors; fails when they grow after the first tenth.
"""

import argparse
import os
import pathlib
import random
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from gateway import Gateway  # noqa: E402
from random_walk import RandomWalk  # noqa: E402

SETTINGS = """[nfsserver/server/cleanupdelay={(1)}]
[{user}/*/sessiontimeout={(1)}]
[{user}/*/*/openfilettl={(1)}]
[{user}/*/*/attribttl={(1)}]
[{user}/*/*/contentsttl={(1)}]
"""
TURN_SECONDS = 3.5
MOST_GROWTH = 1024  # KiB


def descriptors(pid):
    return len(os.listdir(f"/proc/{pid}/fd"))


def is_connected(peer):
    """Whether the daemon has a connection to this server."""
    established, port = "01", f":{peer.port:04X}"
    rows = [line.split() for line in pathlib.Path("/proc/net/tcp").read_text().splitlines()[1:]]
    return any(row[2].endswith(port) and row[3] == established for row in rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--calls", type=int, default=100000)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().getrandbits(32))
    options = parser.parse_args()
    print(f"seed {options.seed}")
    with Gateway({"one": {}, "two": {}}, SETTINGS) as gateway:
        walks = {machine: RandomWalk(gateway.nfs, gateway.share(machine), options.seed + number)
                 for number, machine in enumerate(gateway.peers)}
        soak(gateway, walks, options.calls)
        for machine, walk in walks.items():
            walk.check_disk(gateway.disk(machine))


def soak(gateway, walks, most_calls):
    pid = gateway.daemon.pid
    began = time.monotonic()
    calls = ended = early = 0
    while calls < most_calls:
        for machine, walk in walks.items():
            before = walk.calls
            end = time.monotonic() + TURN_SECONDS
            while time.monotonic() < end:
                walk.step()
            calls += walk.calls - before
            ended += sum(not is_connected(peer) for name, peer in gateway.peers.items() if name != machine)
        size = gateway.daemon.resident()
        print(f"{time.monotonic() - began:6.0f} s {calls:7} calls {ended:4} sessions ended  {size:6} KiB resident "
              f"{descriptors(pid):3} descriptors", flush=True)
        if not early and calls >= most_calls / 10:
            early, early_descriptors = size, descriptors(pid)
    assert size - early <= MOST_GROWTH, f"the daemon has grown from {early} to {size} KiB"
    assert descriptors(pid) <= early_descriptors, "the daemon has left descriptors open"
    assert ended > 0, "no session ended"


if __name__ == "__main__":
    main()
