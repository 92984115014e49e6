"""A real SMB1 server for tests: Debian's smbd (and nmbd) in a scratch folder, on loopback, stopped by pid.

In Python:          with SmbPeer(users={"tester": "Secret1"}) as peer: run(command, env=peer.environment())
On a command line:  tests/support/with_smb_peer -- COMMAND...     (see --help)

The command line runs everything in a network of its own, in which only loopback exists: ports can't clash and nothing
leaves the machine. In Python, enter_private_network() does the same.
"""

import argparse
import contextlib
import ctypes
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
from pathlib import Path

from waiting import wait_until

CLONE_NEWNS, CLONE_NEWNET, MS_REC, MS_PRIVATE = 0x00020000, 0x40000000, 0x4000, 0x40000
NEEDED = ("smbd", "nmbd", "nmblookup", "smbpasswd", "ip")
PORT = 1139
NAME, WORKGROUP = "PEER", "TESTGRP"
NMBD_ADDRESS = "127.0.0.2"
READY_SECONDS = 20

COMMON_OPTIONS = {"netbios name": NAME, "workgroup": WORKGROUP, "server role": "standalone server", "bind interfaces only": "yes"}
NMBD_OPTIONS = {**COMMON_OPTIONS, "interfaces": f"{NMBD_ADDRESS}/8", "wins support": "yes"}
SMBD_OPTIONS = {
    **COMMON_OPTIONS, "interfaces": "127.0.0.1/8", "usershare max shares": "0", "time server": "yes",
    "load printers": "no", "printing": "bsd", "printcap name": "/dev/null", "disable spoolss": "yes",
    "server min protocol": "CORE", "server max protocol": "NT1", "server signing": "disabled",
    "lanman auth": "yes", "ntlm auth": "ntlmv1-permitted", "smb1 unix extensions": "no",
}
SHARE_OPTIONS = {
    "read only": "no", "guest ok": "yes", "force user": "root", "case sensitive": "no", "store dos attributes": "yes",
    **{f"map {attribute}": "no" for attribute in ("archive", "system", "hidden", "readonly")}, "hide dot files": "no",
    "smbd:writetimeupdatedelay": "0",  # else the time in a close request is lost when a write came shortly before
}


def enter_private_network():
    """This process and all it starts see only a loopback of their own from here on. Once is enough."""
    if getattr(enter_private_network, "done", False):
        return
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNET | CLONE_NEWNS) != 0:
        raise OSError(ctypes.get_errno(), "unshare: a network of its own needs root")
    libc.mount(b"none", b"/", None, MS_REC | MS_PRIVATE, None)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    for folder in ("/var/log/samba", "/run/samba"):  # smbd writes there whatever it is told
        if os.path.isdir(folder):
            subprocess.run(["mount", "-t", "tmpfs", "tmpfs", folder], check=True)
    enter_private_network.done = True


class PeerError(RuntimeError):
    pass


class SmbPeer:
    """One smbd, and on request one nmbd, from `with` to its end.

    users: name -> password. shares: name -> its extra options. options: extra global options. tz: the server's time
    zone. nmbd: whether there is a name server too, on 127.0.0.2.
    """

    def __init__(self, users=None, shares=None, port=PORT, options=None, tz=None, nmbd=False):
        if missing := [tool for tool in NEEDED if not shutil.which(tool)]:
            raise PeerError(f"{', '.join(missing)} not found: ./dev setup installs the real SMB peer")
        if os.geteuid() != 0:
            raise PeerError("the real SMB peer needs root: it adds users to its own password file")
        self.users, self.shares = users or {"tester": "Secret1"}, shares or {"SHARE": {}}
        self.port, self.options, self.tz, self.nmbd = port, options or {}, tz, nmbd
        self.processes = []

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="halden-smb-"))
        try:
            self._prepare()
            self._start_smbd()
            if self.nmbd:
                self._start_nmbd()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(10)
            process.kill()
            process.wait()
        self._stop_rpc_helper()
        shutil.rmtree(self.folder, ignore_errors=True)

    def root(self, share=None):
        """The folder behind a share, the first one if none is named."""
        return self.folder / "shares" / (share or next(iter(self.shares)))

    def environment(self):
        """What a test needs to know, on top of the environment of this process."""
        (user, password), share = next(iter(self.users.items())), next(iter(self.shares))
        known = {"PORT": self.port, "NAME": NAME, "USER": user, "PASSWORD": password, "SHARE": share, "ROOT": self.root()}
        return {**os.environ, **{f"HALDEN_SMB_{key}": str(value) for key, value in known.items()}}

    # What happens to servers.

    def serving(self):
        """The processes of its connections."""
        smbd = self.processes[0].pid
        return [*map(int, Path(f"/proc/{smbd}/task/{smbd}/children").read_text().split())]

    def signal(self, number):
        """To smbd and all that serve its connections."""
        for pid in (*self.serving(), self.processes[0].pid):
            os.kill(pid, number)

    def hang_up(self):
        """Ends its connections; it takes new ones."""
        for pid in (ended := self.serving()):
            os.kill(pid, signal.SIGKILL)
        assert wait_until(lambda: not set(ended) & set(self.serving()), READY_SECONDS)

    def kill(self):
        self.signal(signal.SIGKILL)
        self.processes.pop(0).wait()

    def restart(self):
        """Also of one that was killed."""
        if self.processes:
            self.kill()
        self._start_smbd()
        self.processes.insert(0, self.processes.pop())

    # Everything below is how it is done.

    def _prepare(self):
        self.folder.chmod(0o755)
        for name in ("log", "shares"):
            (self.folder / name).mkdir()
        for share in self.shares:
            self.root(share).mkdir()
        self._write_config("smb", {**SMBD_OPTIONS, "smb ports": self.port, **self.options}, self.shares)
        self._write_users()

    def _write_config(self, name, options, shares):
        """name.conf, and below name/ the folders that samba keeps its state in."""
        state = self.folder / name
        state.mkdir()
        kinds = ("private", "lock", "state", "cache", "pid", "ncalrpc")
        for kind in kinds:
            (state / kind).mkdir(mode=0o700 if kind == "private" else 0o755)
        settings = {
            "log level": "0",  # first: samba logs while it reads the rest
            **{f"{kind} {'dir' if kind in ('private', 'ncalrpc') else 'directory'}": state / kind for kind in kinds},
            "log file": self.folder / "log" / "log.%m", "passdb backend": f"tdbsam:{state}/private/passdb.tdb",
            "nmbd:socket dir": state / "nmbd", **options,
        }
        sections = {"global": settings} | {
            share: {"path": self.root(share), **SHARE_OPTIONS, **extra} for share, extra in shares.items()}
        (self.folder / f"{name}.conf").write_text("".join(
            f"[{section}]\n" + "".join(f"  {key} = {value}\n" for key, value in content.items())
            for section, content in sections.items()))

    def _write_users(self):
        """The users are real for smbd and for nobody else: a library in front of the C library's look-ups names them."""
        lines = "".join(f"{user}:x:{60001 + i}:65534:{user}:/nonexistent:/bin/false\n"
                        for i, user in enumerate(self.users))
        (self.folder / "passwd").write_text(Path("/etc/passwd").read_text() + lines)
        (self.folder / "group").write_text(Path("/etc/group").read_text())
        for user, password in self.users.items():
            done = subprocess.run(["smbpasswd", "-c", self.folder / "smb.conf", "-L", "-s", "-a", user], text=True,
                                  input=f"{password}\n" * 2, capture_output=True, env=self._environment_of_samba())
            if done.returncode != 0 or "cannot be preloaded" in done.stderr:
                raise PeerError(f"smbpasswd failed: {done.stdout}{done.stderr} (it needs libnss-wrapper, as ./dev setup installs)")

    def _environment_of_samba(self):
        wrapped = {"LD_PRELOAD": "libnss_wrapper.so", "NSS_WRAPPER_PASSWD": str(self.folder / "passwd"),
                   "NSS_WRAPPER_GROUP": str(self.folder / "group")}
        return {**os.environ, **wrapped, **({"TZ": self.tz} if self.tz else {})}

    def _start(self, name, ready, *extra):
        """In a session of its own, for on its end smbd kills its whole process group."""
        command = [name, "--foreground", "--no-process-group", f"--log-basename={self.folder}/log",
                   f"--configfile={self.folder}/{name[:-1]}.conf", *extra]
        with open(self.folder / "log" / f"{name}.output", "wb") as output:
            started = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                       start_new_session=True, env=self._environment_of_samba())
        self.processes.append(started)
        if not wait_until(lambda: started.poll() is not None or ready(), READY_SECONDS) or started.poll() is not None:
            logs = [path.read_text(errors="replace") for path in (self.folder / "log").iterdir()]
            raise PeerError(f"{name} isn't there after its start:\n{''.join(logs)}")

    def _start_smbd(self):
        self._start("smbd", lambda: answers_session_request(self.port))

    def _start_nmbd(self):
        self._write_config("nmb", NMBD_OPTIONS, {})
        (self.folder / "lmhosts").touch()
        query = ["nmblookup", f"--configfile={self.folder}/nmb.conf", "--recursion", f"--unicast={NMBD_ADDRESS}", f"{NAME}#20"]
        self._start("nmbd", lambda: subprocess.run(query, capture_output=True).returncode == 0,
                    f"--hosts={self.folder}/lmhosts")

    def _stop_rpc_helper(self):
        """smbd starts it for some remote calls; it makes itself a session and outlives smbd."""
        with contextlib.suppress(OSError, ValueError):
            os.kill(int((self.folder / "smb" / "pid" / "samba-dcerpcd.pid").read_text()), signal.SIGTERM)


def answers_session_request(port):
    """A server that only listens may reset the first connections that it takes."""
    name = b"\x20" + b"CA" * 16 + b"\0"
    with socket.socket() as probe, contextlib.suppress(OSError):
        probe.settimeout(1)
        probe.connect(("127.0.0.1", port))
        probe.sendall(b"\x81\0\0\x44" + name + name)
        return probe.recv(4)[:1] == b"\x82"
    return False


class Capture:
    """Every packet of a port on loopback, TCP or UDP, from `with` to its end, in a file that tshark reads."""

    def __init__(self, file, port):
        self.file, self.port = Path(file), port
        self.command = ["dumpcap", "-q", "-i", "lo", "-f", f"tcp port {port} or udp port {port}", "-w", str(file)]

    def __enter__(self):
        self.process = subprocess.Popen(self.command, stderr=subprocess.PIPE, text=True)
        if not any(line.startswith("File:") for line in self.process.stderr):  # it is ready when it names its file
            raise PeerError("dumpcap doesn't capture")
        return self

    def __exit__(self, *_):
        """Packets reach its file late on a busy machine: once a last datagram is there, all before it are."""
        mark = b"the capture ends here"
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            assert wait_until(lambda: sender.sendto(mark, ("127.0.0.1", self.port)) and
                              mark in self.file.read_bytes()[-65536:], READY_SECONDS), "dumpcap writes nothing"
        self.process.send_signal(signal.SIGINT)
        self.process.communicate(timeout=10)

    def frames(self, dissector, wanted, *fields):
        """The fields of each packet that a filter of tshark wants. dissector: as for its option -d."""
        command = ["tshark", "-2", "-r", self.file, "-d", dissector, "-Y", wanted, "-T", "fields"]
        command += [part for field in fields for part in ("-e", field)]
        return [line.split("\t") for line in subprocess.check_output(command, text=True).splitlines()]



def main():
    parser = argparse.ArgumentParser(
        prog="with_smb_peer", description="Runs COMMAND beside a real SMB1 server, in a network that has only loopback.",
        epilog="COMMAND finds HALDEN_SMB_PORT, _NAME, _USER, _PASSWORD, _SHARE and _ROOT (the folder of the share).")
    parser.add_argument("command", nargs="+", metavar="COMMAND")
    command = parser.parse_args().command
    enter_private_network()
    with SmbPeer() as peer:
        return subprocess.run(command, env=peer.environment()).returncode


if __name__ == "__main__":
    sys.exit(main())
