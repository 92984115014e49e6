#!/usr/bin/python3
"""A long random walk through the whole road, and what it leaves behind in the daemon.

    HALDEN_BIN_DIR=build/bin tests/integration/soak.py [--calls 100000] [--callers 8] [--seed N] [--restarts]

Callers who don't wait for each other walk, each in directories of its own.
Two machines in turns, with session time-outs so short that each one's session has ended when its turn comes again:
the walk passes through hundreds of connections. What is read must be what was written, and in the end the disks are
compared. Prints the daemon's resident size and descriptors; fails when they grow: from the first tenth to the end, or,
where the daemon is restarted, from one of its lives to the next.
"""

import argparse
import os
import pathlib
import random
import signal
import sys
import time
from concurrent.futures import ThreadPoolExecutor

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


def is_connected(peer):
    """Whether the daemon has a connection to this server."""
    return f":{peer.port:04X} 01 " in pathlib.Path("/proc/net/tcp").read_text()  # the other end's port, and ESTABLISHED


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--calls", type=int, default=100000)
    parser.add_argument("--callers", type=int, default=8)
    parser.add_argument("--restarts", action="store_true",
                        help="kill and start a server before each turn, and the daemon before each tenth")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().getrandbits(32))
    options = parser.parse_args()
    print(f"seed {options.seed}")
    with Gateway({"one": {}, "two": {}}, SETTINGS) as gateway:
        clients = [gateway.client() for _ in range(options.callers)]
        walks = {machine: [RandomWalk(nfs, gateway.nfs.mkdir(gateway.share(machine), str(number)).file,
                                      options.seed + number) for number, nfs in enumerate(clients)]
                 for machine in gateway.peers}
        soak(gateway, walks, options.calls, options.restarts)
        for machine in walks:
            for number, walk in enumerate(walks[machine]):
                walk.check_disk(gateway.disk(machine) / str(number))


def turns(gateway, walks, restarts):
    """Steps for a while at each machine. Gives how many other sessions had ended."""
    ended = 0
    for machine, walk in walks.items():
        if restarts:
            gateway.peers[machine].restart()
        end = time.monotonic() + TURN_SECONDS
        with ThreadPoolExecutor(len(walk)) as callers:
            for _ in callers.map(lambda one: step_until(one, end), walk):
                pass
        ended += sum(not is_connected(peer) for name, peer in gateway.peers.items() if name != machine)
    return ended


def step_until(walk, end):
    while time.monotonic() < end:
        walk.step()


def soak(gateway, walks, most_calls, restarts):
    began = time.monotonic()
    calls = ended = lives = 0
    early = None  # resident size and descriptors after a tenth of the calls, which is one life
    while calls < most_calls:
        ended += turns(gateway, walks, restarts)
        calls = sum(walk.calls for of_machine in walks.values() for walk in of_machine)
        now = gateway.daemon.resident(), len(os.listdir(f"/proc/{gateway.daemon.pid}/fd"))
        print(f"{time.monotonic() - began:6.0f} s {calls:7} calls {ended:4} sessions ended  {now[0]:6} KiB resident "
              f"{now[1]:3} descriptors", flush=True)
        if calls < (lives + 1) * most_calls / 10:
            continue
        lives += 1
        early = early or now
        assert now[0] - early[0] <= MOST_GROWTH, f"the daemon has grown from {early[0]} to {now[0]} KiB"
        assert now[1] <= early[1], "the daemon has left descriptors open"
        if restarts:
            gateway.daemon.stop(signal.SIGKILL)
            gateway.daemon.start()
            gateway.nfs.getattr(gateway.root)
            for machine in walks:
                for number, walk in enumerate(walks[machine]):
                    walk.handles = {"": gateway.nfs.lookup(gateway.share(machine), str(number)).file}
    assert ended > 0, "no session ended"


if __name__ == "__main__":
    main()
