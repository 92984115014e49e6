#!/usr/bin/python3
"""Runs a command, bench_gateway, beside a real SMB server and a daemon that leads to it, with what it asks for in the
environment: HALDEN_NFS_PORT, HALDEN_NFS_UID, HALDEN_NFS_<NAME> with the handles it calls for, HALDEN_SMB_* as
tests/support/with_smb_peer gives them. Before that it measures what needs no clock, on a daemon of its own: the
wake-ups and size of an idle one, and the size after a large listing.

Where the clock counts, all take part as real-time processes: what else the machine does waits for them.
"""

import contextlib
import os
import pathlib
import pwd
import re
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "tests/support"))
from gateway import UNIX_USER, Gateway  # noqa: E402

IDLE_SECONDS, CLEAN_UP_SECONDS = 35, 10
MIB = 1024  # in KiB
FILES, COLD_FILES, COLD_DIRECTORIES = 100000, 10000, 8
DATA_BYTES = 4 << 20

# What is warm stays so, however long a run takes.
SETTINGS = """[{user}/*/*/attribttl={(86400)}]
[{user}/*/*/contentsttl={(86400)}]
[{user}/*/*/openfilettl={(86400)}]
[{user}/*/*/syncwrites={(0)}]
"""


def report(what, value, unit, most):
    """False when the bound was missed."""
    print(f"{what:44} {value:8.1f} {unit:24} at most {most:6.1f}  {'met' if value <= most else 'MISSED'}", flush=True)
    return value <= most


def fill(folder, count):
    folder.mkdir()
    for number in range(count):
        (folder / f"some file name {number}.txt").touch()


def wake_ups(pid):
    text = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", text, re.MULTILINE).group(1))


def measure_idle(gateway):
    gateway.nfs.listing(gateway.share())  # there is a session, and nothing to do for it
    before = wake_ups(gateway.daemon.pid)
    time.sleep(IDLE_SECONDS)
    woken = wake_ups(gateway.daemon.pid) - before
    quiet = report(f"idle for {IDLE_SECONDS} s, clean-up every {CLEAN_UP_SECONDS} s", woken, "wake-ups",
                   IDLE_SECONDS // CLEAN_UP_SECONDS + 1)
    return report("resident size, idle", gateway.daemon.resident() / MIB, "MiB", 16) and quiet


def measure_size(gateway):
    fill(gateway.disk() / "many", FILES)
    directory = gateway.nfs.walk(gateway.share(), "many").file
    listed = len(gateway.nfs.listing(directory))
    assert listed == FILES + 2, listed
    return report(f"resident size after listing {FILES} files", gateway.daemon.resident() / MIB, "MiB", 160)


def handles(gateway):
    """Makes what the calls are about; gives their handles by the names that the program knows them under."""
    disk = gateway.disk()
    for name in ("data", "data of the client"):
        (disk / name).write_bytes(os.urandom(DATA_BYTES))
    fill(disk / "warm", 100)
    cold = [f"cold{number}" for number in range(COLD_DIRECTORIES)]
    for name in cold:
        fill(disk / name, COLD_FILES)
    share = gateway.share()
    warm = gateway.nfs.walk(share, "warm").file
    gateway.nfs.listing(warm)
    return {
        "DATA": gateway.nfs.walk(share, "data").file,
        "DIRECTORY": warm,
        "FILE": gateway.nfs.walk(warm, "some file name 7.txt").file,
        "COLD": b"".join(gateway.nfs.walk(share, name).file for name in cold),
    }


def run(command, gateway):
    environment = {f"HALDEN_NFS_{name}": handle.hex() for name, handle in handles(gateway).items()}
    environment["HALDEN_NFS_PORT"] = str(gateway.daemon.port)
    environment["HALDEN_NFS_UID"] = str(pwd.getpwnam(UNIX_USER).pw_uid)
    peer = next(iter(gateway.peers.values()))
    return subprocess.run(command, env={**peer.environment(), **environment}).returncode


def main(command):
    with Gateway() as gateway:
        small = all([measure_idle(gateway), measure_size(gateway)])
    with contextlib.suppress(PermissionError):
        os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))  # inherited by all that is started
    with Gateway(settings=SETTINGS) as gateway:
        return run(command, gateway) or not small


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
