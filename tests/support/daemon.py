"""The built daemon with a profile of the test's own, in a scratch folder, on a free port.

    with Daemon("[nfsserver/server/cleanupdelay={(1)}]") as daemon:
        with daemon.client(uid=1000) as client:
            client.null()
"""

import contextlib
import os
import pathlib
import re
import signal
import socket
import subprocess
import tempfile

from nfs_raw import NfsClient
from waiting import wait_until

PROGRAM = pathlib.Path(os.environ["HALDEN_BIN_DIR"]) / "haldenmapd"
START_SECONDS, STOP_SECONDS = 60, 10


def sanitized():
    """Whether the daemon is built with AddressSanitizer, which keeps memory of its own."""
    return b"__asan_init" in PROGRAM.read_bytes()


def free_udp_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as free:
        free.bind(("127.0.0.1", 0))
        return free.getsockname()[1]


class Daemon:
    """`profile` is configuration text besides the port. `logs` is the folder of its logs, gone at the end."""

    def __init__(self, profile="", environment=None):
        self.profile, self.environment = profile, {**os.environ, **(environment or {})}

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="haldenmapd.")
        root = pathlib.Path(self.folder.name)
        self.profile_file, self.logs = root / "profile", root / "logs"
        self.logs.mkdir()
        self.port = free_udp_port()
        self.write_profile(self.profile)
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()
        output = (self.logs / "output").read_text(errors="replace")
        self.folder.cleanup()
        if output:  # a daemon has nothing to say there, but a sanitizer has
            raise RuntimeError(output)

    def write_profile(self, text):
        """In one step, as a careful editor does."""
        new = self.profile_file.with_name("new")
        new.write_text(f"[nfsserver/mount/port={{({self.port})}}]\n{text}\n")
        new.rename(self.profile_file)

    def start(self):
        before = set(self.logs.glob("cl[0-9]*.log"))
        # Its output goes to a file: a pipe would be kept open by the daemon.
        with open(self.logs / "output", "a") as output:
            code = subprocess.run([PROGRAM, self.profile_file, self.logs], stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=output, env=self.environment, timeout=START_SECONDS).returncode
        logs = set(self.logs.glob("cl[0-9]*.log")) - before
        if code != 0 or len(logs) != 1:
            raise RuntimeError(f"the daemon didn't start: code {code}\n{(self.logs / 'output').read_text()}")
        self.log = logs.pop()
        self.pid = int(self.log.stem[2:])

    def stop(self, number=signal.SIGTERM):
        with contextlib.suppress(ProcessLookupError):
            os.kill(self.pid, number)
            if not wait_until(lambda: not self.alive(), STOP_SECONDS):
                os.kill(self.pid, signal.SIGKILL)

    def client(self, **options):
        """Options are those of NfsClient."""
        return NfsClient(self.port, **options)

    def _status(self, field):
        text = pathlib.Path(f"/proc/{self.pid}/status").read_text()
        return re.search(rf"^{field}:\s*(\S+)", text, re.MULTILINE).group(1)

    def alive(self):
        with contextlib.suppress(FileNotFoundError):
            return self._status("State") != "Z"

    def resident(self):
        """Resident size in KiB."""
        return int(self._status("VmRSS"))
