#!/usr/bin/python3
"""Random and mutated datagrams for the port of a daemon on loopback, and what they do to its memory.

    HALDEN_BIN_DIR=build/bin tests/integration/flood.py [--count 1000000] [--seed N]

Every batch ends with a NULL call whose answer is waited for, so that no datagram is lost in a full queue and a daemon
that hangs or dies is found at once. All that comes back must be well-formed replies.
"""

import argparse
import collections
import pathlib
import random
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from daemon import Daemon  # noqa: E402
from nfs_raw import (  # noqa: E402
    MOUNT, NFS, PROCEDURES, SHAPES, NoAnswer, Reader, RpcError, auth_null, auth_unix, call_bytes, opaque, sattr, u32)

BATCH = 32
WORDS = [0, 1, 2, 3, 4, 31, 32, 33, 255, 8192, 8193, 65536, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFB, 0xFFFFFFFC, 0xFFFFFFFF]
HANDLE = b"flood".ljust(32, b"\0")


def arguments_of_procedures(handle, name, data):
    """The arguments of each procedure that has any, whole. `name` is one as it travels."""
    parts = {"h": handle, "n": name, "d": opaque(data), "w": u32(0), "c": u32(4096), "s": sattr(mode=0o644, size=0)}
    return {procedure: b"".join(parts[letter] for letter in shape) for procedure, (shape, _) in SHAPES.items()}


def sample_calls(rng):
    """One call of each procedure, whose arguments decode."""
    name, handle = opaque(rng.randbytes(rng.randrange(40))), rng.choice([HANDLE, rng.randbytes(32)])
    arguments = arguments_of_procedures(handle, name, rng.randbytes(rng.randrange(300)))
    for procedure, number in PROCEDURES.items():
        yield NFS, 2, number, arguments.get(procedure, b"")
    yield NFS, 2, rng.randrange(18, 200), rng.randbytes(rng.randrange(100))
    yield MOUNT, 1, rng.randrange(8), name


def mutate(rng, datagram):
    data = bytearray(datagram)
    for _ in range(rng.randrange(4)):
        at = rng.randrange(len(data) + 1)
        word = at & ~3
        begin, end, piece = rng.choice([
            (at, len(data), b""), (len(data), len(data), rng.randbytes(rng.randrange(64))), (at, at + 1, rng.randbytes(1)),
            (at, at, rng.randbytes(rng.randrange(8))), (word, word + 4, u32(rng.choice(WORDS)))])
        data[begin:end] = piece
    return bytes(data)


def datagrams(rng):
    """Without an end: some all random, some calls, most of them calls with faults."""
    while True:
        for program, version, procedure, args in sample_calls(rng):
            credentials = rng.choice([auth_null(), auth_unix(1000, 100, range(rng.randrange(17)))])
            call = call_bytes(rng.getrandbits(32), program, version, procedure, args, credentials)
            yield mutate(rng, call)
            if rng.random() < 0.2:
                yield rng.randbytes(rng.choice([0, 4, 8, 40, 100, 1000, 9000, 9216, 9217, 20000]))


def flood(daemon, count, seed):
    """Sends `count` of them. Gives how many answers of each kind came. Raises when the daemon doesn't answer, or not
    properly."""
    kinds = collections.Counter()
    source = datagrams(random.Random(seed))
    with daemon.client(timeout=60) as client:
        for start in range(0, count, BATCH):
            for _ in range(min(BATCH, count - start)):
                client.send(next(source))
            client.start(NFS, 2, 0, credentials=auth_null())
            while True:
                reply = client.receive()
                if reply is None:
                    raise NoAnswer(f"after {start + BATCH} datagrams of seed {seed}")
                if Reader(reply).u32() == client.xid:
                    break
                try:
                    client.results(reply)
                    kinds["SUCCESS"] += 1
                except RpcError as said:
                    kinds[said.name] += 1
    return kinds


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=1000000)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().getrandbits(32))
    options = parser.parse_args()
    print(f"seed {options.seed}")
    with Daemon() as daemon:
        flood(daemon, 10000, options.seed + 1)  # before the first look at the memory
        before, began = daemon.resident(), time.monotonic()
        kinds = flood(daemon, options.count, options.seed)
        print(f"{options.count} datagrams in {time.monotonic() - began:.0f} s; resident size {before} KiB before, "
              f"{daemon.resident()} KiB after")
        print("answers:", ", ".join(f"{kind} {number}" for kind, number in kinds.most_common()))


if __name__ == "__main__":
    main()
