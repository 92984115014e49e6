"""The whole road for a test: real SMB servers, the daemon with a profile that leads to them, and an NFS client.

    with Gateway() as gateway:
        share = gateway.share()                       # the NFS handle of the first share of the first machine
        gateway.nfs.create(share, "a.txt")
        (gateway.disk() / "a.txt").read_bytes()       # the same file on the server's disk

Everything runs in a network of its own that has only loopback: entering it (once, for the whole test process) is part of
`with`. Needs root.
"""

import contextlib
import os
import pathlib
import pwd
import socket
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent))

from daemon import PROGRAM, Daemon  # noqa: E402
from smb_peer import NAME, SmbPeer, enter_private_network  # noqa: E402
from waiting import wait_until  # noqa: E402,F401

HALDENCTL = PROGRAM.with_name("haldenctl")
EAGER = "[{user}/*/*/attribttl={(0)}]\n[{user}/*/*/contentsttl={(0)}]\n"  # settings with which nothing is served from memory
UNIX_USER = "games"  # every Debian has one
SMB_USER, SMB_PASSWORD = "tester", "Secret1"
ROOT = b"the root of a test".ljust(32, b"\0")


def free_tcp_port():
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        return free.getsockname()[1]


def stored_password(password, user):
    """A password in the form in which a profile holds it."""
    return subprocess.run([HALDENCTL, "encode-password", user], input=password + "\n", text=True, check=True,
                          capture_output=True).stdout.strip()


def contents(folder):
    """Path -> bytes of a file, None for a directory."""
    return {str(path.relative_to(folder)): None if path.is_dir() else path.read_bytes() for path in folder.rglob("*")}


class Gateway:
    """machines: name in the name space -> arguments of SmbPeer besides the port ({"pc": {}} by default). settings: keys
    of the profile besides those that lead to the servers, as text lines; a line may hold {user}. environment: of the
    daemon, over this process's own.

    nfs: an NfsClient whose root is `root`. peers: name -> SmbPeer. daemon: the Daemon. errors(): what the user was told.
    """

    def __init__(self, machines=None, settings="", environment=None):
        self.machines, self.settings, self.environment = machines or {"pc": {}}, settings, environment
        self.uid, self.root = pwd.getpwnam(UNIX_USER).pw_uid, ROOT

    def __enter__(self):
        enter_private_network()
        with contextlib.ExitStack() as stack:
            self.folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="halden-gateway-")))
            self.folder.chmod(0o755)
            home = self.folder / "home"
            home.mkdir()
            os.chown(home, self.uid, -1)
            self.error_file = home / "errors"
            self.peers = {}
            for machine, options in self.machines.items():
                options = {"users": {SMB_USER: SMB_PASSWORD}, "port": free_tcp_port(), **options}
                self.peers[machine] = stack.enter_context(SmbPeer(**options))
            self.daemon = stack.enter_context(Daemon(self.profile(), self.environment))
            self.nfs = stack.enter_context(self.client())
            stack.push(self._show_logs)
            self.nfs.getattr(self.root)
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *exception):
        return self._stack.__exit__(*exception)

    def _show_logs(self, kind, *_):
        if kind:
            print(f"--- the daemon's log\n{self.log()}\n--- the user's errors\n{self.errors()}", file=sys.stderr)

    def profile(self):
        user = f"nfsserver/shares/smb/{UNIX_USER}"
        lines = [f"[nfsserver/server/encoding/rpc={{(UTF-8)}}]", f"[{user}/logfile={{({self.error_file})}}]",
                 f"[{user}/machinenames={{{''.join(f'({machine})' for machine in self.machines)}}}]"]
        for machine, peer in self.peers.items():
            lines += [f"[{user}/{machine}/{key}={{({value})}}]" for key, value in {
                "ipaddress": "127.0.0.1", "port": peer.port, "nbtname": NAME, "winname": SMB_USER,
                "password": stored_password(SMB_PASSWORD, UNIX_USER)}.items()]
            lines.append(f"[{user}/{machine}/sharenames={{{''.join(f'({share})' for share in peer.shares)}}}]")
            lines += [f"[{user}/{machine}/{share}/password={{()}}]" for share in peer.shares]
        return "\n".join([*lines, self.settings.replace("{user}", user)])

    def client(self):
        """One more that calls as the user does."""
        return self.daemon.client(uid=self.uid, timeout=30, encoding="utf-8")

    def share(self, machine=None, share=None):
        """The handle of a share; the first machine's first one if none is named."""
        machine = machine or next(iter(self.peers))
        share = share or next(iter(self.peers[machine].shares))
        return self.nfs.walk(self.root, f"{UNIX_USER}/{machine}/{share}").file

    def disk(self, machine=None, share=None):
        """The folder behind a share on its server's disk."""
        return self.peers[machine or next(iter(self.peers))].root(share)

    def errors(self):
        return self.error_file.read_text(errors="replace") if self.error_file.exists() else ""

    def log(self):
        return self.daemon.log.read_text(errors="replace")
