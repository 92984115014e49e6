"""What goes wrong between the daemon and a server: killed, stopped, hung up, or refusing the password."""

import os
import pathlib
import pwd
import random
import shutil
import signal
import sys
import time

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from daemon import sanitized  # noqa: E402
from gateway import UNIX_USER, Gateway, wait_until  # noqa: E402
from nfs_raw import opaque, status, u32  # noqa: E402

BLOCK = 8192
BLOCKS = (64 << 20) // BLOCK // (16 if sanitized() else 1)
STOPPED_SECONDS = float(os.environ.get("HALDEN_STOPPED_SECONDS", 5))
TIMEOUT = 2


def test_a_server_killed_in_the_middle_of_a_large_write():
    with Gateway(settings="[{user}/pc/smbtimeout={(2)}]") as gateway:
        nfs, peer = gateway.nfs, gateway.peers["pc"]
        data = random.Random(1).randbytes(BLOCK * BLOCKS)
        file = nfs.create(gateway.share(), "large", mode=0o644).file

        def writes():
            for i in range(BLOCKS):
                if i == BLOCKS // 2 - 1:  # stopped first, so that a call is surely under way when it dies
                    peer.signal(signal.SIGSTOP)
                if i == BLOCKS // 2:
                    peer.restart()
                yield "write", file + u32(0, i * BLOCK, 0) + opaque(data[i * BLOCK:(i + 1) * BLOCK])

        codes = [code for code, _ in nfs.pipelined(writes(), 8)]
        assert set(codes) <= {0, 5}
        assert 0 < codes.count(5) <= 64 and codes[-100:] == [0] * 100
        written = (gateway.disk() / "large").read_bytes()
        assert len(written) == len(data)
        for i in (i for i, code in enumerate(codes) if code == 0):
            assert written[i * BLOCK:(i + 1) * BLOCK] == data[i * BLOCK:(i + 1) * BLOCK], i
        assert nfs.read(file, BLOCK).data == written[BLOCK:2 * BLOCK]
        assert gateway.errors() != ""


def test_an_edited_profile_begins_anew_what_it_touches():
    with Gateway({"pc": {}, "other": {}}) as gateway:
        nfs, profile = gateway.nfs, pathlib.Path(gateway.daemon.folder.name) / "profile"
        touched, other = (nfs.create(gateway.share(machine), "f", mode=0o644).file for machine in ("pc", "other"))

        def edit(text):
            (profile.parent / "new").write_text(text)
            (profile.parent / "new").rename(profile)
            nfs.readdir(gateway.root)

        text = profile.read_text()
        before = {name: peer.serving() for name, peer in gateway.peers.items()}
        edit(text + "# nothing new\n")
        nfs.write(touched, 0, b"one")
        for account in ("nobody", "tester"):
            edit(text + f"[nfsserver/shares/smb/{UNIX_USER}/pc/winname={{({account})}}]\n")
            assert status(nfs.getattr, touched) == 70
            nfs.write(other, 0, account.encode())
            assert gateway.peers["other"].serving() == before["other"]
            assert (status(nfs.lookup, gateway.share(), "f") == 0) == (account == "tester")
        assert gateway.peers["pc"].serving() != before["pc"]
        assert (gateway.disk() / "f").read_bytes() == b"one"
        assert (gateway.disk("other") / "f").read_bytes() == b"tester"


def test_a_server_that_stops_for_a_while():
    """Calls to it fail when their time is up, other machines don't notice, and then all is as before."""
    settings = f"[{{user}}/*/smbtimeout={{({TIMEOUT})}}]\n[{{user}}/*/*/attribttl={{(0)}}]\n"
    with Gateway({"pc": {}, "other": {}}, settings) as gateway:
        nfs, peer = gateway.nfs, gateway.peers["pc"]
        stopped, other = (nfs.create(gateway.share(machine), "f", mode=0o644).file for machine in ("pc", "other"))
        for file in (stopped, other):
            nfs.write(file, 0, b"before")
        peer.signal(signal.SIGSTOP)
        try:
            end = time.monotonic() + STOPPED_SECONDS
            with gateway.daemon.client(**gateway.client_options) as second:
                while time.monotonic() < end:
                    waiting = [second.start(100003, 2, 6, stopped + u32(0, 100, 0)) for _ in range(2)]
                    began = time.monotonic()
                    nfs.write(other, 0, b"meanwhile")
                    assert nfs.read(other).data == b"meanwhile"
                    assert time.monotonic() - began < TIMEOUT / 2
                    assert [second.finish(xid).u32() for xid in waiting] == [5, 5]
                    assert time.monotonic() - began < 3 * TIMEOUT + 1
        finally:
            peer.signal(signal.SIGCONT)
        assert wait_until(lambda: status(nfs.read, stopped) == 0)
        assert nfs.read(stopped).data == b"before"
        assert nfs.write(stopped, 6, b" after").size == 12
        assert (gateway.disk() / "f").read_bytes() == b"before after"
        assert "The remote server took too long to respond to a request" in gateway.errors()


def test_a_dead_machine_holds_up_one_call_only():
    """All calls that come meanwhile fail with it, later ones at once; attributes of its shares don't wait for it."""
    settings = f"[{{user}}/pc/smbtimeout={{({TIMEOUT})}}]\n[{{user}}/pc/*/attribttl={{(0)}}]\n[{{user}}/pc/*/contentsttl={{(0)}}]"
    with Gateway(settings=settings) as gateway:
        nfs, peer, share = gateway.nfs, gateway.peers["pc"], gateway.share()
        file = nfs.create(share, "f", mode=0o644).file
        peer.signal(signal.SIGSTOP)
        try:
            with gateway.daemon.client(**gateway.client_options) as second:
                began = time.monotonic()
                waiting = [second.start(100003, 2, 6, file + u32(0, 100, 0)) for _ in range(20)]
                nfs.getattr(share)
                assert time.monotonic() - began < TIMEOUT / 2
                assert [second.finish(xid).u32() for xid in waiting] == [5] * 20
                assert time.monotonic() - began < 2 * TIMEOUT + 2  # one call's, and one attempt to connect
            told = len(gateway.errors().splitlines())
            for _ in range(10):
                began = time.monotonic()
                assert (status(nfs.read, file), status(nfs.lookup, share, "f"), status(nfs.getattr, share)) == (5, 5, 0)
                assert time.monotonic() - began < TIMEOUT / 2
                time.sleep(0.1)
            assert len(gateway.errors().splitlines()) == told
        finally:
            peer.signal(signal.SIGCONT)
        assert wait_until(lambda: status(nfs.read, file) == 0, 6)


def test_a_short_stop_is_only_waited_for():
    with Gateway() as gateway:
        file = gateway.nfs.create(gateway.share(), "f", mode=0o644).file
        gateway.peers["pc"].signal(signal.SIGSTOP)
        calls = [gateway.nfs.start(100003, 2, 8, file + u32(0, i, 0) + opaque(b"%d" % i)) for i in range(10)]
        time.sleep(2)
        gateway.peers["pc"].signal(signal.SIGCONT)
        assert [gateway.nfs.finish(call).u32() for call in calls] == [0] * 10
        assert (gateway.disk() / "f").read_bytes() == b"0123456789"
        assert gateway.errors() == ""


def test_a_server_that_closes_idle_connections():
    """Whatever the first call is after that, it works, and the user hears nothing."""
    with Gateway(settings="[{user}/*/*/attribttl={(0)}]\n[{user}/*/*/contentsttl={(0)}]\n") as gateway:
        nfs, share = gateway.nfs, gateway.share()
        file = nfs.create(share, "f", mode=0o644).file
        calls = [(nfs.getattr, file), (nfs.read, file), (nfs.write, file, 0, b"x"), (nfs.listing, share),
                 (nfs.lookup, share, "f"), (nfs.create, share, "new"), (nfs.mkdir, share, "dir"),
                 (nfs.symlink, share, "link", "to"), (nfs.rename, share, "new", share, "newer"),
                 (nfs.remove, share, "newer"), (nfs.rmdir, share, "dir")]
        for call, *arguments in calls:
            gateway.peers["pc"].hang_up()
            time.sleep(0.05)
            assert (call.__name__, status(call, *arguments)) == (call.__name__, 0)
        gateway.peers["pc"].hang_up()
        assert nfs.setattr(file, size=1, mtime=(1_000_000_000, 0)).size == 1
        assert sorted(path.name for path in gateway.disk().iterdir()) == ["-)link", "f"]
        assert gateway.errors() == ""


def test_what_cant_be_listed_is_not_empty():
    """A mirroring tool would empty its other side."""
    settings = "[{user}/*/*/contentsttl={(0)}]\n[{user}/pc/sharenames={(SHARE)(ABSENT)}]\n[{user}/pc/ABSENT/password={()}]\n"
    with Gateway(settings=settings) as gateway:
        nfs, peer, disk = gateway.nfs, gateway.peers["pc"], gateway.disk()
        (disk / "full").mkdir()
        (disk / "full" / "file").touch()
        (disk / "going").mkdir()
        share, absent = gateway.share(), gateway.share(share="ABSENT")
        full, going = (nfs.lookup(share, name).file for name in ("full", "going"))
        file = nfs.lookup(full, "file").file
        assert (status(nfs.listing, absent), status(nfs.lookup, absent, "file")) == (5, 5)
        (disk / "going").rmdir()
        time.sleep(0.01)
        assert (status(nfs.listing, going), status(nfs.lookup, going, "file")) == (2, 2)
        peer.kill()
        assert (status(nfs.listing, full), status(nfs.lookup, full, "file")) == (5, 5)
        for path, names in ((UNIX_USER, ["pc"]), (f"{UNIX_USER}/pc", ["ABSENT", "SHARE"])):
            directory = nfs.walk(gateway.root, path).file
            assert sorted(entry.name for entry in nfs.listing(directory)[2:]) == names
            assert [status(nfs.getattr, nfs.lookup(directory, name).file) for name in names] == [0] * len(names)
        peer.restart()
        assert wait_until(lambda: status(nfs.lookup, full, "file") == 0)
        assert nfs.lookup(full, "file").file == file
        assert [entry.name for entry in nfs.listing(full)[2:]] == ["file"]


@pytest.fixture(scope="module")
def refused():
    with Gateway(machines={"pc": {"users": {"tester": "Another"}}}) as running:
        yield running


@pytest.mark.parametrize("place", ["nothing", "file of his", "FIFO", "link to a file of root's", "directory",
                                   "home of another"])
def test_the_error_file_is_written_as_the_user(refused, tmp_path, place):
    """Nobody can make the daemon, which may do more than he, write where he may not, or wait."""
    owner, errors, secret = pwd.getpwnam(UNIX_USER), refused.error_file, refused.folder / "secret"
    shutil.rmtree(errors) if errors.is_dir() else errors.unlink(missing_ok=True)
    os.chown(errors.parent, owner.pw_uid if place != "home of another" else 0, -1)
    secret.write_text("untouched")
    {"file of his": lambda: (errors.touch(), os.chown(errors, owner.pw_uid, -1)),
     "FIFO": lambda: (os.mkfifo(errors), os.chown(errors, owner.pw_uid, -1)),
     "link to a file of root's": lambda: errors.symlink_to(secret), "directory": errors.mkdir}.get(place, str)()

    refused.nfs.timeout = 10
    assert status(refused.nfs.listing, refused.share()) == 13

    assert secret.read_text() == "untouched"
    if place in ("nothing", "file of his"):
        assert errors.stat().st_uid == owner.pw_uid
        assert ": Access denied (class 1, code 5); the user name or the password is wrong" in errors.read_text()
    elif place == "home of another":
        assert not errors.exists()
    assert status(refused.nfs.getattr, refused.root) == 0
