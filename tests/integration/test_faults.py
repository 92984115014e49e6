"""What goes wrong between the daemon and a server: killed, stopped, hung up, or refusing the password."""

import os
import pwd
import random
import shutil
import signal
import time

import pytest
from daemon import sanitized
from gateway import UNIX_USER, contents, wait_until
from nfs_raw import status

BLOCK = 8192
BLOCKS = (64 << 20) // BLOCK // (16 if sanitized() else 1)
STOPPED_SECONDS = float(os.environ.get("HALDEN_STOPPED_SECONDS", 5))
TIMEOUT = 2
GATEWAY = {"machines": {"pc": {}, "other": {}, "refuses": {"users": {"tester": "Another"}}}, "settings": f"""
[{{user}}/pc/smbtimeout={{({TIMEOUT})}}]
[{{user}}/*/*/attribttl={{(0)}}]
[{{user}}/*/*/contentsttl={{(0)}}]
[{{user}}/pc/sharenames={{(SHARE)(ABSENT)}}]
[{{user}}/pc/ABSENT/password={{()}}]
"""}


@pytest.fixture
def peer(gateway):
    return gateway.peers["pc"]


def test_a_server_that_closes_idle_connections(gateway, nfs, peer, place):
    """Whatever the first call is after that, it works, and the user hears nothing."""
    directory, folder = place
    file = nfs.create(directory, "f", mode=0o644).file
    for call, *arguments in [
            (nfs.read, file), (nfs.write, file, 0, b"x"), (nfs.listing, directory), (nfs.create, directory, "new"),
            (nfs.mkdir, directory, "dir"), (nfs.symlink, directory, "link", "to"), (nfs.remove, directory, "new"),
            (nfs.rename, directory, "dir", directory, "newer"), (nfs.rmdir, directory, "newer")]:
        peer.hang_up()
        time.sleep(0.05)
        call(*arguments)
    peer.hang_up()
    assert nfs.setattr(file, size=1, mtime=(1_000_000_000, 0)).size == 1
    assert contents(folder) == {"-)link": b"to", "f": b"x"}
    assert gateway.errors() == ""


def test_a_server_killed_in_the_middle_of_a_large_write(gateway, nfs, peer, place):
    directory, folder = place
    data = random.Random(1).randbytes(BLOCK * BLOCKS)
    file = nfs.create(directory, "large", mode=0o644).file

    def writes():
        for i in range(BLOCKS):
            if i == BLOCKS // 2 - 1:  # stopped first, so that a call is surely under way when it dies
                peer.signal(signal.SIGSTOP)
            if i == BLOCKS // 2:
                peer.restart()
            yield "write", file, 0, i * BLOCK, 0, data[i * BLOCK:(i + 1) * BLOCK]

    codes = [code for code, _ in nfs.pipelined(writes(), 8)]
    assert set(codes) <= {0, 5}
    assert 0 < codes.count(5) <= 64 and codes[-100:] == [0] * 100
    written = (folder / "large").read_bytes()
    assert len(written) == len(data)
    for i in (i for i, code in enumerate(codes) if code == 0):
        assert written[i * BLOCK:(i + 1) * BLOCK] == data[i * BLOCK:(i + 1) * BLOCK], i
    assert nfs.read_all(file) == written
    assert gateway.errors() != ""


def test_an_edited_profile_begins_anew_what_it_touches(gateway, nfs):
    touched, other = (nfs.create(gateway.share(machine), "f", mode=0o644).file for machine in ("pc", "other"))
    nfs.write(touched, 0, b"one")
    before = {name: peer.serving() for name, peer in gateway.peers.items()}
    for account in ("nobody", "tester"):
        gateway.daemon.write_profile(gateway.profile() + f"[nfsserver/shares/smb/{UNIX_USER}/pc/winname={{({account})}}]\n")
        nfs.readdir(gateway.root)
        assert status(nfs.getattr, touched) == 70
        nfs.write(other, 0, account.encode())
        assert gateway.peers["other"].serving() == before["other"]
        assert (status(nfs.lookup, gateway.share(), "f") == 0) == (account == "tester")
    assert gateway.peers["pc"].serving() != before["pc"]
    assert (gateway.disk() / "f").read_bytes() == b"one"
    assert (gateway.disk("other") / "f").read_bytes().startswith(b"tester")


def test_a_server_that_stops_for_a_while(gateway, nfs, peer, place):
    """Calls to it fail when their time is up, other machines don't notice, and then all is as before. Calls that wait
    with another fail with it, later ones at once; attributes of its shares don't wait for it."""
    directory, folder = place
    share = gateway.share()
    stopped, other = nfs.put(directory, "f", b"before"), nfs.put(gateway.share("other"), "meanwhile", b"before")
    peer.signal(signal.SIGSTOP)
    try:
        end = time.monotonic() + STOPPED_SECONDS
        with gateway.client() as second:
            began = time.monotonic()
            waiting = [second.begin("read", stopped, 0, 100, 0) for _ in range(20)]
            nfs.getattr(share)
            assert time.monotonic() - began < TIMEOUT / 2
            while time.monotonic() < end:
                meanwhile = time.monotonic()
                nfs.write(other, 0, b"meanwhile")
                assert nfs.read(other).data == b"meanwhile"
                assert time.monotonic() - meanwhile < TIMEOUT / 2
                assert [second.finish(xid).u32() for xid in waiting] == [5] * len(waiting)
                assert time.monotonic() - began < 2 * TIMEOUT + 2  # one call's, and one attempt to connect
                began = time.monotonic()
                waiting = [second.begin("read", stopped, 0, 100, 0) for _ in range(2)]
            assert [second.finish(xid).u32() for xid in waiting] == [5] * len(waiting)
        told = len(gateway.errors().splitlines())
        for _ in range(10):
            began = time.monotonic()
            assert (status(nfs.read, stopped), status(nfs.lookup, directory, "f"), status(nfs.getattr, share)) == (5, 5, 0)
            assert time.monotonic() - began < TIMEOUT / 2
            time.sleep(0.1)
        assert len(gateway.errors().splitlines()) == told
    finally:
        peer.signal(signal.SIGCONT)
    assert wait_until(lambda: status(nfs.read, stopped) == 0, 6)
    assert nfs.read(stopped).data == b"before"
    assert nfs.write(stopped, 6, b" after").size == 12
    assert (folder / "f").read_bytes() == b"before after"
    assert "The remote server took too long to respond to a request" in gateway.errors()


def test_what_cant_be_listed_is_not_empty(gateway, nfs, peer, place):
    """A mirroring tool would empty its other side."""
    directory, folder = place
    absent = gateway.share(share="ABSENT")
    full, going = (nfs.mkdir(directory, name).file for name in ("full", "going"))
    file = nfs.create(full, "file").file
    assert (status(nfs.listing, absent), status(nfs.lookup, absent, "file")) == (5, 5)
    (folder / "going").rmdir()
    time.sleep(0.01)
    assert (status(nfs.listing, going), status(nfs.lookup, going, "file")) == (2, 2)
    peer.kill()
    assert (status(nfs.listing, full), status(nfs.lookup, full, "file")) == (5, 5)
    assert nfs.names(nfs.walk(gateway.root, f"{UNIX_USER}/pc").file) == ["ABSENT", "SHARE"]
    peer.restart()
    assert wait_until(lambda: status(nfs.lookup, full, "file") == 0)
    assert nfs.lookup(full, "file").file == file
    assert nfs.names(full) == ["file"]


@pytest.mark.parametrize("kind", ["nothing", "file of his", "FIFO", "link to a file of root's", "directory", "home of another"])
def test_the_error_file_is_written_as_the_user(gateway, nfs, kind):
    """Nobody can make the daemon, which may do more than he, write where he may not, or wait."""
    owner, errors, secret = pwd.getpwnam(UNIX_USER), gateway.error_file, gateway.folder / "secret"
    shutil.rmtree(errors) if errors.is_dir() else errors.unlink(missing_ok=True)
    os.chown(errors.parent, owner.pw_uid if kind != "home of another" else 0, -1)
    secret.write_text("untouched")
    {"file of his": lambda: (errors.touch(), os.chown(errors, owner.pw_uid, -1)),
     "FIFO": lambda: (os.mkfifo(errors), os.chown(errors, owner.pw_uid, -1)),
     "link to a file of root's": lambda: errors.symlink_to(secret), "directory": errors.mkdir}.get(kind, str)()

    nfs.timeout = 10
    assert status(nfs.listing, gateway.share("refuses")) == 13

    assert secret.read_text() == "untouched"
    if kind in ("nothing", "file of his"):
        assert errors.stat().st_uid == owner.pw_uid
        assert (f": logging on to 127.0.0.1 port {gateway.peers['refuses'].port}: Access denied (class 1, code 5);"
                " the user name or the password is wrong") in errors.read_text()
        assert "Secret1" not in errors.read_text() + gateway.log()
    elif kind == "home of another":
        assert not errors.exists()
    assert status(nfs.getattr, gateway.root) == 0
