#!/usr/bin/python3
"""Runs a benchmark beside a real SMB server, relays that put a distance between the two, and a daemon that leads to the
server directly and through each relay.

    beside_servers.py [--idle] [--daemons-ttls] PROGRAM [ARGUMENT...]

The program finds in its environment HALDEN_NFS_PORT, _UID, _PID (the daemon's), _ROOT (its handle) and _USER, for each
distance HALDEN_RELAY_<microseconds> (the relay's port), HALDEN_SMB_PID (the server's) and HALDEN_SMB_* as
tests/support/with_smb_peer gives them. The machine is called pc, through a relay pc<microseconds>.

--daemons-ttls  what the daemon learned ages as fast as it does by default; otherwise it stays true, however long a run takes
--idle          before all else, measures what needs no clock, on a daemon of its own: the wake-ups and size of an idle
                one, and the size after a large listing

All take part as real-time processes: what else the machine does waits for them.
"""

import argparse
import contextlib
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "tests/support"))
from gateway import ROOT, UNIX_USER, Gateway, free_tcp_port  # noqa: E402
from smb_peer import NAME, enter_private_network  # noqa: E402

RELAY = os.environ["HALDEN_BENCH_DIR"] + "/bench_relay"
DISTANCES = (0, 1000, 5000)  # round trips in microseconds
IDLE_SECONDS, CLEAN_UP_SECONDS, LISTED_FILES = 35, 10, 100000
MIB = 1024  # in KiB
BUSY = 0.7

SETTINGS = """[{user}/*/*/syncwrites={(0)}]
[{user}/*/treelimit={(2048)}]
"""
LASTING = """[{user}/*/*/attribttl={(86400)}]
[{user}/*/*/contentsttl={(86400)}]
[{user}/*/*/openfilettl={(86400)}]
"""
DISTANT_MACHINE = """[{user}/%(name)s/port={(%(port)d)}]
[{user}/%(name)s/ipaddress={(127.0.0.1)}]
[{user}/%(name)s/nbtname={(%(nbtname)s)}]
[{user}/%(name)s/sharenames={(SHARE)}]
[{user}/%(name)s/SHARE/password={()}]
"""


def report(what, value, unit, most):
    """False when the bound was missed."""
    print(f"{what:40} {value:8.1f} {unit:24} at most  {most:6.1f}  {'met' if value <= most else 'MISSED'}", flush=True)
    return value <= most


def wake_ups(pid):
    text = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", text, re.MULTILINE).group(1))


def measure_idle(gateway):
    gateway.nfs.listing(gateway.share())  # there is a session, and nothing to do for it
    before = wake_ups(gateway.daemon.pid)
    time.sleep(IDLE_SECONDS)
    woken = wake_ups(gateway.daemon.pid) - before
    quiet = report(f"idle {IDLE_SECONDS} s, clean-up every {CLEAN_UP_SECONDS} s", woken, "wake-ups",
                   IDLE_SECONDS // CLEAN_UP_SECONDS + 1)
    return report("resident size, idle", gateway.daemon.resident() / MIB, "MiB", 16) and quiet


def measure_size(gateway):
    folder = gateway.disk() / "many"
    folder.mkdir()
    for number in range(LISTED_FILES):
        (folder / f"some file name {number}.txt").touch()
    listed = len(gateway.nfs.listing(gateway.nfs.walk(gateway.share(), "many").file))
    assert listed == LISTED_FILES + 2, listed
    return report(f"size after listing {LISTED_FILES} files", gateway.daemon.resident() / MIB, "MiB", 160)


@contextlib.contextmanager
def relay(target, distance):
    """Its port."""
    port = free_tcp_port()
    process = subprocess.Popen([RELAY, str(port), str(target), str(distance)])
    try:
        yield port
    finally:
        process.kill()
        process.wait()


@contextlib.contextmanager
def servers(settings):
    """The environment to find them by."""
    enter_private_network()
    with contextlib.ExitStack() as stack:
        port = free_tcp_port()
        relays = {distance: stack.enter_context(relay(port, distance)) for distance in DISTANCES}
        machines = {f"pc{distance}": port for distance, port in relays.items()}
        settings += f"[{{user}}/machinenames={{{''.join(f'({name})' for name in ['pc', *machines])}}}]\n"
        settings += "".join(DISTANT_MACHINE % {"name": name, "port": port, "nbtname": NAME}
                            for name, port in machines.items())
        gateway = stack.enter_context(LikeMachines({"pc": {"port": port}}, settings))
        yield {
            **gateway.peers["pc"].environment(), "HALDEN_SMB_PID": str(gateway.peers["pc"].processes[0].pid),
            **{f"HALDEN_RELAY_{distance}": str(port) for distance, port in relays.items()},
            "HALDEN_NFS_PORT": str(gateway.daemon.port), "HALDEN_NFS_PID": str(gateway.daemon.pid),
            "HALDEN_NFS_UID": str(gateway.uid), "HALDEN_NFS_ROOT": ROOT.hex(), "HALDEN_NFS_USER": UNIX_USER,
        }


class LikeMachines(Gateway):
    """All machines are logged on to as the one that has a server."""

    def profile(self):
        return re.sub(r"/pc/(winname|password)=", r"/*/\1=", super().profile())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--idle", action="store_true")
    parser.add_argument("--daemons-ttls", action="store_true")
    parser.add_argument("program", nargs=argparse.REMAINDER)
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # servers have sessions of their own and would outlive it
    small = True
    if (load := os.getloadavg()[0]) > BUSY:
        print(f"The machine is busy with something else (load {load:.1f}): what follows is rough.", flush=True)
    with contextlib.suppress(PermissionError):
        os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))  # inherited by all that is started
    if options.idle:
        with Gateway() as gateway:
            small = all([measure_idle(gateway), measure_size(gateway)])
    with servers(SETTINGS + (LASTING if not options.daemons_ttls else "")) as environment:
        return subprocess.run(options.program, env=environment).returncode or not small


if __name__ == "__main__":
    sys.exit(main())
