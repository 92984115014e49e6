"""The whole road under load: many entries, many callers (test_faults.py has many bytes)."""

import random
import time

from daemon import sanitized
from gateway import UNIX_USER
from nfs_raw import status

SLOWNESS = 8 if sanitized() else 1
USERS = (UNIX_USER, "nobody")
GATEWAY = {"machines": {"pc": {}, "laptop": {}}, "users": USERS}


def test_a_directory_of_10000(nfs, place):
    directory, folder = place
    wanted = [f"{i} and some more text" for i in range(10000)]
    for name in wanted:
        (folder / name).touch()
    began = time.monotonic()
    entries = nfs.listing(directory, 4096)
    assert time.monotonic() - began < 10 * SLOWNESS
    assert sorted(entry.name for entry in entries[2:]) == sorted(wanted)
    assert len({entry.fileid for entry in entries}) == len(wanted) + 2
    for name in wanted[::2]:
        (folder / name).unlink()
    nfs.create(directory, "new")  # so the listing isn't up to date any more
    assert nfs.names(directory) == sorted(["new", *wanted[1::2]])
    assert status(nfs.lookup, directory, wanted[0]) == 2
    kept = {entry.name: entry.fileid for entry in entries}
    assert nfs.lookup(directory, wanted[1]).attributes.fileid == kept[wanted[1]]


def test_users_and_machines_at_once(gateway, nfs):
    """64 calls on their way, to every machine for every user, and each finds its own file."""
    files = {}
    for user in USERS:
        for machine in gateway.peers:
            share = gateway.share(machine, user=user)
            for i in range(16):
                files[machine, f"{user} {i}"] = nfs.create(share, f"{user} {i}", mode=0o644).file
    text = {key: f"{key}".encode().ljust(500) for key in files}
    mixed = random.Random(2).sample(list(files), len(files))
    written = nfs.pipelined((("write", files[key], 0, 0, 500, text[key]) for key in mixed), 64)
    assert {code for code, _ in written} == {0}
    assert {key: (gateway.disk(key[0]) / key[1]).read_bytes() for key in files} == text
    for key, (code, reply) in zip(mixed, nfs.pipelined((("read", files[key], 0, 500, 0) for key in mixed), 64)):
        reply.fattr()
        assert (code, reply.opaque()) == (0, text[key])
