"""The companion haldenctl against the daemon and a real SMB server, compared with the server's disk."""

import os
import pathlib
import random
import shutil
import signal
import socket
import subprocess
import sys
import time

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from daemon import Daemon  # noqa: E402
from gateway import ROOT, SMB_PASSWORD, UNIX_USER, Gateway, wait_until  # noqa: E402

PROGRAM = pathlib.Path(os.environ["HALDEN_BIN_DIR"]) / "haldenctl"
DONE, FAILED, USAGE, NO_ANSWER, INTERRUPTED = 0, 1, 2, 3, 130
SHARE = f"/{UNIX_USER}/pc/SHARE"


def encoded(password, user=UNIX_USER):
    return subprocess.run([PROGRAM, "encode-password", user], input=password + "\n", text=True, check=True,
                          capture_output=True).stdout.strip()


@pytest.fixture(scope="module")
def gateway():
    # The machine is logged on to with what haldenctl makes of its password, another one with what is no password of it.
    settings = (f"[{{user}}/pc/password={{({encoded(SMB_PASSWORD)})}}]\n"
                f"[{{user}}/wrong/password={{({encoded('wrong')})}}]\n[{{user}}/*/*/contentsttl={{(0)}}]\n"
                "[{user}/pc/SHARE/bannedchars={(!)}]\n")
    with Gateway(machines={"pc": {}, "wrong": {}}, settings=settings) as running:
        yield running


@pytest.fixture
def ctl(gateway):
    def run(*arguments, code=DONE, **options):
        """What haldenctl printed; `code` is what it has to end with."""
        done = subprocess.run([PROGRAM, "--port", str(gateway.daemon.port), "--root-handle", ROOT.hex(), *arguments],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, **options)
        assert done.returncode == code, (arguments, done)
        assert bool(done.stderr) == (code != DONE), done
        return (done.stderr if code else done.stdout).decode()
    return run


@pytest.mark.skipif(os.geteuid() != 0, reason="only root can send from a reserved port")
def test_a_daemon_may_serve_root_only():
    with Daemon("[nfsserver/network/reservedports={(1)}]") as daemon:
        command = [PROGRAM, "--port", str(daemon.port), "--root-handle", ROOT.hex(), "ls", "/"]
        refused = subprocess.run(command, user="nobody", capture_output=True, text=True, timeout=60)
        assert (refused.returncode, refused.stdout) == (FAILED, "")
        assert "it serves root only (nfsserver/network/reservedports)" in refused.stderr
        subprocess.run(command, check=True, timeout=60)


def test_a_tree_shows_names_links_and_directories(gateway, ctl):
    base = gateway.disk() / "tree"
    (base / "sub").mkdir(parents=True)
    for name in ("a", "Grüße €", "why;3F", "semi;;colon", "sub/b"):
        (base / name).write_text("text")
    (base / "-)way").write_text("sub/b")
    assert ctl("tree", f"{SHARE}/tree", env={"LC_ALL": "C.UTF-8"}).splitlines() == [
        f"{SHARE}/tree", "├── Grüße €", "├── a", "├── semi;colon", "├── sub", "│   └── b", "├── way -> sub/b", "└── why?",
        "", "1 directory, 6 files"]
    shallow = ctl("tree", "--depth", "1", f"{SHARE}/tree", env={"LC_ALL": "C"}).splitlines()
    assert shallow[4:6] == ["|-- sub", "|-- way -> sub/b"]
    assert ctl("ls", f"{SHARE}/tree").split("\n") == ["Grüße €", "a", "semi;colon", "sub", "way", "why?", ""]
    assert ctl("cat", f"{SHARE}/tree/way", f"{SHARE}/tree/sub/../a") == "texttext"
    assert "-> sub/b" in ctl("stat", f"{SHARE}/tree/way")
    modes = [line.split()[0] for line in ctl("ls", "-l", f"{SHARE}/tree").splitlines()]
    assert modes[3:5] == ["drwx------", "lrwx------"]
    assert ctl("ls", "/").split() == [UNIX_USER]


def test_a_long_listing_is_whole(gateway, ctl):
    names = [f"file {i:04} of a directory that needs many pages" for i in range(1500)]
    (gateway.disk() / "many").mkdir()
    for name in names:
        (gateway.disk() / "many" / name).touch()
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
    assert subprocess.run([PROGRAM, "--port", str(gateway.daemon.port), "--root-handle", ROOT.hex(), "cat", remote],
                          capture_output=True).stdout == data
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
        ("no such file", "get", f"{SHARE}/none", tmp_path / "kept"),
        ("is a directory", "cat", f"{SHARE}/full"),
        ("isn't a directory", "ls", f"{SHARE}/full/f/g"),
        ("isn't empty", "rmdir", f"{SHARE}/full"),
        ("is a directory; rmdir", "rm", f"{SHARE}/full"),
        ("exists already", "mkdir", f"{SHARE}/full"),
        ("beyond NFS version 2", "put", tmp_path / "huge", f"{SHARE}/full/f"),
        ("beyond NFS version 2", "get", f"{SHARE}/huge", tmp_path / "kept"),
        ("regular file", "put", tmp_path / "fifo", f"{SHARE}/full/f"),
        ("No such file", "put", tmp_path / "none", f"{SHARE}/full/f"),
        ("that is its name", "mv", f"{SHARE}/full/f", f"{SHARE}/full/f"),
        ("permission denied", "put", tmp_path / "kept", f"{SHARE}/full/a name that is refused!"),
        ("permission denied", "mkdir", f"/{UNIX_USER}/pc/new"),
        ("directory", "get", f"{SHARE}/full/f", tmp_path / "taken"),
    ]:
        assert words in ctl(*arguments, code=FAILED), arguments
    assert (tmp_path / "kept").read_text() == "kept"
    assert [path.name for path in (disk / "full").iterdir()] == ["f"]
    assert list((tmp_path / "taken").iterdir()) == [tmp_path / "taken" / "f"]
    (disk / "seen").touch()
    assert "no such file" in ctl("stat", f"{SHARE}/none", f"{SHARE}/seen", code=FAILED)


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
        copying = subprocess.Popen([PROGRAM, "--port", str(gateway.daemon.port), "--root-handle", ROOT.hex(),
                                    "put" if kept == disk else "get", source, target], stderr=subprocess.DEVNULL)
        assert wait_until(lambda: sum(path.stat().st_size > 4 for path in kept.iterdir()) > 0), "nothing was begun"
        copying.send_signal(signal.SIGINT)
        assert copying.wait(30) == INTERRUPTED
        assert [path.name for path in kept.iterdir()] == ["f"] and (kept / "f").read_text() == "kept"


def test_wrong_use_has_a_code_of_its_own(ctl):
    for arguments in ([], ["frob"], ["mv", "a"], ["ls", "--port", "0"], ["--root-handle", "6", "ls"],
                      ["--root-handle", "6x", "ls"], ["--encoding", "KLINGON", "ls"]):
        ctl(*arguments, code=USAGE)


def test_no_daemon_is_told_apart(gateway):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as deaf:
        deaf.bind(("127.0.0.1", 0))
        port = str(deaf.getsockname()[1])
        began = time.monotonic()
        silent = subprocess.run([PROGRAM, "--port", port, "--timeout", "2", "ls"], capture_output=True, text=True)
        assert silent.returncode == NO_ANSWER and "2 seconds" in silent.stderr
        assert 2 <= time.monotonic() - began < 10
        first, again = deaf.recv(9000), deaf.recv(9000)
        assert first == again, "the call is sent again under its xid"
    refused = subprocess.run([PROGRAM, "--port", port, "ls"], capture_output=True, text=True)
    assert refused.returncode == NO_ANSWER and "nobody listens" in refused.stderr
    other = subprocess.run([PROGRAM, "--port", str(gateway.daemon.port), "ls"], capture_output=True, text=True)
    assert other.returncode == FAILED and "--root-handle" in other.stderr


def test_a_wrong_password_is_told_to_the_user(gateway, ctl):
    ctl("ls", f"/{UNIX_USER}/wrong/SHARE", code=FAILED)
    assert "wrong" in gateway.errors()


def test_a_password_survives_its_stored_form():
    stored = encoded("päss wörd")
    assert set(stored) <= set("0123456789ABCDEF") and len(stored) == 32
    assert stored != encoded("päss wörd", "fred")
    for refused in ("€", "x" * 191):
        done = subprocess.run([PROGRAM, "encode-password", "fred"], input=refused, text=True, capture_output=True)
        assert done.returncode == FAILED and done.stderr and not done.stdout


def test_names_in_the_encoding_of_a_profile_without_one(tmp_path):
    with Gateway(settings="[nfsserver/server/encoding/rpc={(ISO-8859-1)}]", client={"encoding": "latin-1"}) as gateway:
        (tmp_path / "f").write_text("text")
        start = [PROGRAM, "--port", str(gateway.daemon.port), "--root-handle", ROOT.hex(), "--encoding", "ISO-8859-1"]
        subprocess.run([*start, "put", tmp_path / "f", f"{SHARE}/Grüße"], check=True)
        assert (gateway.disk() / "Grüße").read_text() == "text"
        assert subprocess.run([*start, "ls", SHARE], capture_output=True).stdout.decode() == "Grüße\n"
        refused = subprocess.run([*start, "ls", f"{SHARE}/€"], capture_output=True, text=True)
        assert refused.returncode == FAILED and "encoding" in refused.stderr
