"""The companion haldenctl against the daemon and a real SMB server, compared with the server's disk."""

import os
import random
import shutil
import signal
import socket
import subprocess
import time

import pytest
from gateway import HALDENCTL, ROOT, UNIX_USER, stored_password, wait_until

DONE, FAILED, USAGE, NO_ANSWER, INTERRUPTED = 0, 1, 2, 3, 130
SHARE = f"/{UNIX_USER}/pc/SHARE"
GATEWAY = {"settings": "[{user}/*/*/contentsttl={(0)}]\n[{user}/pc/SHARE/bannedchars={(!)}]\n"}


def command(daemon, *arguments):
    return [HALDENCTL, "--port", str(daemon.port), "--root-handle", ROOT.hex(), *arguments]


def run(command, code=DONE, **options):
    """What haldenctl printed; `code` is what it has to end with."""
    done = subprocess.run(command, capture_output=True, timeout=60, **options)
    assert done.returncode == code, done
    assert bool(done.stderr) == (code != DONE), done
    return (done.stderr if code else done.stdout).decode()


@pytest.fixture
def ctl(gateway):
    return lambda *arguments, **options: run(command(gateway.daemon, *arguments), **options)


def test_a_tree_shows_names_links_and_directories(gateway, ctl):
    base = gateway.disk() / "tree"
    (base / "sub").mkdir(parents=True)
    for name in ("a", "Grüße €", "why;3F", "semi;;colon", "sub/b"):
        (base / name).write_text("text")
    (base / "-)way").write_text("sub/b")
    assert ctl("tree", f"{SHARE}/tree", env={"LC_ALL": "C.UTF-8"}).splitlines() == [
        f"{SHARE}/tree", "├── Grüße €", "├── a", "├── semi;colon", "├── sub", "│   └── b", "├── way -> sub/b", "└── why?",
        "", "1 directory, 6 files"]
    assert ctl("ls", f"{SHARE}/tree").split("\n") == ["Grüße €", "a", "semi;colon", "sub", "way", "why?", ""]
    assert ctl("cat", f"{SHARE}/tree/way", f"{SHARE}/tree/sub/../a") == "texttext"
    modes = [line.split()[0] for line in ctl("ls", "-l", f"{SHARE}/tree").splitlines()]
    assert modes[3:5] == ["drwx------", "lrwx------"]


def test_a_long_listing_is_whole(gateway, ctl):
    names = [f"file {i:04} of a directory that needs many pages" for i in range(1500)]
    for name in names:
        (gateway.disk() / "many" / name).mkdir(parents=True)
    assert ctl("ls", f"{SHARE}/many").splitlines() == names


@pytest.mark.parametrize("size", [0, 1, 8192, 8193, 3_000_001])
def test_a_file_goes_there_and_comes_back(gateway, ctl, tmp_path, size):
    data = random.Random(size).randbytes(size)
    (tmp_path / "out").write_bytes(data)
    remote = f"{SHARE}/is it {size}?.bin"
    disk = gateway.disk() / f"is it {size};3F.bin"
    for _ in range(2):  # the second time onto what is there
        ctl("put", tmp_path / "out", remote)
        assert disk.read_bytes() == data
    ctl("get", remote, tmp_path / "back")
    ctl("get", remote, cwd=tmp_path)
    assert (tmp_path / "back").read_bytes() == (tmp_path / f"is it {size}?.bin").read_bytes() == data
    assert subprocess.run(command(gateway.daemon, "cat", remote), capture_output=True).stdout == data
    assert not [path.name for path in gateway.disk().iterdir() if path.name.startswith("put")]


def test_changes_arrive_on_the_disk(gateway, ctl, tmp_path):
    disk = gateway.disk()
    (tmp_path / "f").write_text("text")
    ctl("mkdir", f"{SHARE}/d1", f"{SHARE}/d2")
    ctl("put", tmp_path / "f", f"{SHARE}/d1")
    ctl("mv", f"{SHARE}/d1/f", f"{SHARE}/d1/g")
    ctl("mv", f"{SHARE}/d1/g", f"{SHARE}/d2")
    assert (disk / "d2" / "g").read_text() == "text" and not list((disk / "d1").iterdir())
    ctl("ln", "../d2/g", f"{SHARE}/d1/way")
    assert (disk / "d1" / "-)way").read_text() == "../d2/g"
    assert ctl("cat", f"{SHARE}/d1/way") == "text"
    ctl("rm", f"{SHARE}/d1/way", f"{SHARE}/d2/g")
    ctl("rmdir", f"{SHARE}/d1", f"{SHARE}/d2")
    assert not (disk / "d1").exists() and not (disk / "d2").exists()


def test_refusals_say_why_and_change_nothing(gateway, ctl, tmp_path):
    disk = gateway.disk()
    (disk / "full").mkdir()
    (disk / "full" / "f").write_text("kept")
    for huge, size in ((tmp_path / "huge", 2**31), (disk / "huge", 2**32 + 1)):
        huge.touch()
        os.truncate(huge, size)
    (tmp_path / "kept").write_text("kept")
    os.mkfifo(tmp_path / "fifo")
    (tmp_path / "taken").mkdir()
    (tmp_path / "taken" / "f").mkdir()
    for words, *arguments in [
        ("no such file", "cat", f"{SHARE}/none"),
        ("is a directory", "cat", f"{SHARE}/full"),
        ("isn't a directory", "ls", f"{SHARE}/full/f/g"),
        ("isn't empty", "rmdir", f"{SHARE}/full"),
        ("is a directory; rmdir", "rm", f"{SHARE}/full"),
        ("beyond NFS version 2", "put", tmp_path / "huge", f"{SHARE}/full/f"),
        ("beyond NFS version 2", "get", f"{SHARE}/huge", tmp_path / "kept"),
        ("regular file", "put", tmp_path / "fifo", f"{SHARE}/full/f"),
        ("that is its name", "mv", f"{SHARE}/full/f", f"{SHARE}/full/f"),
        ("permission denied", "put", tmp_path / "kept", f"{SHARE}/full/a name that is refused!"),
        ("directory", "get", f"{SHARE}/full/f", tmp_path / "taken"),
    ]:
        assert words in ctl(*arguments, code=FAILED), arguments
    assert (tmp_path / "kept").read_text() == "kept"
    assert [path.name for path in (disk / "full").iterdir()] == ["f"]
    assert list((tmp_path / "taken").iterdir()) == [tmp_path / "taken" / "f"]


def test_an_interrupt_leaves_what_was_there(gateway, tmp_path):
    local, disk = tmp_path / "local", gateway.disk() / "interrupted"
    disk.mkdir()
    for source, target in [(local / "f", f"{SHARE}/interrupted/f"), (f"{SHARE}/interrupted/f", local / "f")]:
        large, kept = (local, disk) if target != local / "f" else (disk, local)
        shutil.rmtree(local, ignore_errors=True)
        local.mkdir()
        (kept / "f").write_text("kept")
        with open(large / "f", "wb") as file:
            file.truncate(1 << 30)
        copying = subprocess.Popen(command(gateway.daemon, "put" if kept == disk else "get", source, target),
                                   stderr=subprocess.DEVNULL)
        assert wait_until(lambda: sum(path.stat().st_size > 4 for path in kept.iterdir()) > 0), "nothing was begun"
        copying.send_signal(signal.SIGINT)
        assert copying.wait(30) == INTERRUPTED
        assert [path.name for path in kept.iterdir()] == ["f"] and (kept / "f").read_text() == "kept"


def test_wrong_use_has_a_code_of_its_own(ctl):
    for arguments in [], ["frob"], ["mv", "a"], ["ls", "--port", "0"], ["--root-handle", "6x", "ls"]:
        ctl(*arguments, code=USAGE)


def test_no_daemon_is_told_apart():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as deaf:
        deaf.bind(("127.0.0.1", 0))
        port = str(deaf.getsockname()[1])
        began = time.monotonic()
        assert "2 seconds" in run([HALDENCTL, "--port", port, "--timeout", "2", "ls"], NO_ANSWER)
        assert 2 <= time.monotonic() - began < 10
        first, again = deaf.recv(9000), deaf.recv(9000)
        assert first == again, "the call is sent again under its xid"
    assert "nobody listens" in run([HALDENCTL, "--port", port, "ls"], NO_ANSWER)


def test_the_stored_form_of_a_password():
    """It is the one that profiles have had from the start."""
    assert stored_password("Secret1", "games") == "0DFD580E5B27226E"
    assert stored_password("päss wörd", "games") == "C02CCF6284F6C2649C56D8B1A26CF539" != stored_password("päss wörd", "fred")
    for refused in ("€", "x" * 191):
        run([HALDENCTL, "encode-password", "fred"], FAILED, input=refused.encode())
