"""Files of a real SMB server over NFS, compared with the server's disk."""

import hashlib
import os
import pathlib
import random
import signal
import sys
import time

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from gateway import UNIX_USER, Gateway, wait_until  # noqa: E402
from nfs_raw import status  # noqa: E402

EAGER = "[{user}/*/*/attribttl={(0)}]\n[{user}/*/*/contentsttl={(0)}]\n"


@pytest.fixture(scope="module")
def gateway():
    with Gateway(settings=EAGER) as running:
        yield running


@pytest.fixture
def nfs(gateway):
    return gateway.nfs


@pytest.fixture
def place(gateway, request):
    """A directory of the test's own: its handle and its folder on the server's disk."""
    name = f"{len(list(gateway.disk().iterdir()))} {request.node.originalname}"
    folder = gateway.disk() / name
    folder.mkdir()
    return gateway.nfs.lookup(gateway.share(), name).file, folder


def names(nfs, directory):
    return sorted(entry.name for entry in nfs.listing(directory) if entry.name not in (".", ".."))


@pytest.mark.parametrize("size", [0, 1, 8191, 8192, 8193, 300001])
def test_a_file_goes_there_and_comes_back(nfs, place, size):
    directory, folder = place
    data = random.Random(size).randbytes(size)
    file = nfs.create(directory, "f", mode=0o644).file
    nfs.write_all(file, data)
    assert (folder / "f").read_bytes() == data
    assert nfs.getattr(file).size == size
    assert nfs.read_all(file) == data
    assert nfs.read(file, size + 10).data == b""


def test_what_another_machine_writes_is_read(nfs, place):
    directory, folder = place
    data = random.Random(1).randbytes(20000)
    (folder / "theirs").write_bytes(data)
    assert nfs.read_all(nfs.lookup(directory, "theirs").file) == data


@pytest.mark.parametrize("count", [0, 1, 1000])
def test_a_directory_is_listed_in_pages(nfs, place, count):
    directory, folder = place
    wanted = [f"name {i:05}" for i in range(count)]
    for name in wanted:
        (folder / name).touch()
    assert names(nfs, directory) == wanted
    assert sorted(entry.name for entry in nfs.listing(directory, 512))[2:] == wanted


def test_appends_follow_each_other(gateway):
    """The attributes of an open file aren't fetched again: its size has to follow the writes."""
    with Gateway() as lazy:
        file = lazy.nfs.create(lazy.share(), "log", mode=0o644).file
        for i in range(3):
            end = lazy.nfs.getattr(file).size
            assert end == 2 * i
            lazy.nfs.write(file, end, f"{i}\n".encode())
        lazy.nfs.setattr(file, size=3)
        assert lazy.nfs.getattr(file).size == 3
        assert (lazy.disk() / "log").read_bytes() == b"0\n1"


def test_reading_and_writing_one_file_in_turn(nfs, place):
    directory, folder = place
    (folder / "f").write_bytes(b"abcdef")
    file = nfs.lookup(directory, "f").file
    assert nfs.read(file).data == b"abcdef"
    nfs.write(file, 3, b"X")
    assert nfs.read(file).data == b"abcXef"
    assert (folder / "f").read_bytes() == b"abcXef"


def test_truncating_and_extending(nfs, place):
    directory, folder = place
    (folder / "f").write_bytes(b"0123456789")
    file = nfs.lookup(directory, "f").file
    for size, bytes_ in ((4, b"0123"), (6, b"0123\0\0"), (0, b"")):
        assert nfs.setattr(file, size=size).size == size
        assert (folder / "f").read_bytes() == bytes_
    nfs.write(file, 0, b"again")
    nfs.create(directory, "f", size=0)
    assert (folder / "f").read_bytes() == b""


def test_directories_come_and_go(nfs, place):
    directory, folder = place
    sub = nfs.mkdir(directory, "sub", mode=0o755).file
    assert (folder / "sub").is_dir()
    nfs.create(sub, "f")
    assert status(nfs.mkdir, directory, "sub") == 17
    assert status(nfs.rmdir, directory, "sub") == 66
    nfs.remove(sub, "f")
    nfs.rmdir(directory, "sub")
    assert names(nfs, directory) == [] == list(folder.iterdir())
    assert status(nfs.getattr, sub) == 70


def test_renames(nfs, place):
    directory, folder = place
    for name in ("a", "b"):
        (folder / name).mkdir()
    (folder / "a" / "f").write_bytes(b"data")
    a, b = (nfs.lookup(directory, name).file for name in ("a", "b"))
    assert nfs.read(nfs.lookup(a, "f").file).data == b"data"  # open, and closed for what follows
    nfs.rename(a, "f", a, "g")
    nfs.rename(a, "g", b, "h")  # this server doesn't know the move command
    (folder / "b" / "over").write_bytes(b"old")
    nfs.rename(b, "h", b, "over")
    nfs.rename(b, "over", b, "OVER")
    assert {p.name: p.read_bytes() for p in (folder / "b").iterdir()} == {"OVER": b"data"}
    assert nfs.read(nfs.lookup(b, "OVER").file).data == b"data"  # now open below what is renamed
    nfs.rename(directory, "b", a, "c")
    assert (folder / "a" / "c" / "OVER").read_bytes() == b"data"
    assert status(nfs.rename, directory, "no such", directory, "x") == 2


def test_links_are_files_that_other_machines_see(nfs, place):
    directory, folder = place
    nfs.symlink(directory, "link", "to/some where")
    link = nfs.lookup(directory, "link")
    assert (link.attributes.type, nfs.readlink(link.file)) == (5, "to/some where")
    assert (folder / "-)link").read_bytes() == b"to/some where"
    assert names(nfs, directory) == ["link"]
    nfs.remove(directory, "link")
    assert list(folder.iterdir()) == []
    assert status(nfs.link, directory, directory, "hard") == 13


def test_every_name_comes_back_as_it_was_given(nfs, place):
    """What Windows can't hold is escaped on the server, and what looks like an escape is the name of another file."""
    directory, folder = place
    wanted = [f"{chr(code)}{code}" for code in range(1, 128) if chr(code) != "/" and chr(code) != "\\"]
    wanted += ["end.", "end ", "end. ", " end", "...", "CON", "nul.txt", "Com7", "LPT1 .x", "con.x.y", "LOCK$"]
    wanted += [";3F", ";;3F", "?", ";", ";;", "a;b", "a;;b", "a;3Bb", ";43ON", "-)d", "y" * 251 + "~1.c"]
    for name in wanted:
        file = nfs.mkdir(directory, name).file if name == "-)d" else nfs.create(directory, name, mode=0o644).file
        if name != "-)d":
            nfs.write(file, 0, name.encode())
    assert names(nfs, directory) == sorted(wanted)
    assert len(list(folder.iterdir())) == len(wanted)
    for name in set(wanted) - {"-)d"}:
        assert nfs.read_all(nfs.lookup(directory, name).file) == name.encode()
    others = {"Smith; Jones": "Smith; Jones", "a;41": "a;41", "a;;;b": "a;;b;;", "a;41b": "a;41b"}
    for stored in others:
        (folder / stored).write_text(stored)
    (folder / "dir; others").mkdir()
    assert wait_until(lambda: names(nfs, directory) == sorted([*wanted, *others.values(), "dir; others"]))
    for stored, name in others.items():
        assert nfs.read_all(nfs.lookup(directory, name).file).decode() == stored
    inside = nfs.lookup(directory, "dir; others").file
    nfs.create(inside, "new")
    nfs.rename(directory, "Smith; Jones", inside, "x;y")
    assert sorted(path.name for path in (folder / "dir; others").iterdir()) == ["new", "x;;y"]
    for name in names(nfs, inside):
        nfs.remove(inside, name)
    nfs.rmdir(directory, "dir; others")
    for name in names(nfs, directory):
        (nfs.rmdir if name == "-)d" else nfs.remove)(directory, name)
    assert list(folder.iterdir()) == []


def test_a_name_that_is_no_utf_8_is_refused(nfs, place):
    directory, folder = place
    for name in (b"a\xff", b"\xc0\xae\xc0\xae", b"\xed\xa0\x80", b"cut\xe2\x82", b"\xf8\x88\x80\x80\x80"):
        calls = [(nfs.lookup, name), (nfs.create, name), (nfs.mkdir, name), (nfs.symlink, name, "to"), (nfs.remove, name),
                 (nfs.rmdir, name), (nfs.rename, name, directory, "new"), (nfs.rename, "old", directory, name)]
        assert [status(call, directory, *more) for call, *more in calls] == [13] * len(calls)
    assert list(folder.iterdir()) == []


def test_names_that_latin_1_cannot_hold_are_shown_as_escapes():
    """Each in a way of its own, by which it is found again."""
    with Gateway(settings=EAGER, client={"encoding": "iso-8859-1"}, rpc="ISO-8859-1") as gateway:
        nfs, share, folder = gateway.nfs, gateway.share(), gateway.disk()
        shown = {"日本": "#65E5#672C", "日.": "#65E5.", "日.日.txt": "#65E5.#65E5.txt", "😀": "#D83D#DE00", "é#1": "é#1",
                 "#65E5": "##65E5"}
        for name in shown:
            (folder / name).write_text(name)
        assert names(nfs, share) == sorted(shown.values())
        for name, form in shown.items():
            assert nfs.read_all(nfs.lookup(share, form).file).decode() == name
        nfs.create(share, "new #672C")
        nfs.rename(share, "#65E5.", share, "#65E5x")
        nfs.remove(share, "##65E5")
        assert {path.name for path in folder.iterdir()} == {*shown, "日x", "new 本"} - {"日.", "#65E5"}


def test_names_that_an_8_bit_server_cannot_hold_are_refused():
    """Nothing is shortened: the server hears of no such name, and the user reads which character it is."""
    peer = {"options": {"unicode": "no", "dos charset": "CP850"}}
    with Gateway({"pc": peer}, settings=EAGER + "[{user}/*/encoding={(CP850)}]\n") as gateway:
        nfs, share, folder = gateway.nfs, gateway.share(), gateway.disk()
        nfs.write(nfs.create(share, "doc1", mode=0o644).file, 0, b"keep")
        nfs.create(share, "Grüße", mode=0o644)
        for name in ("doc–1", "–.", "日", "日.–.", "😀"):
            calls = [(nfs.create, name), (nfs.mkdir, name), (nfs.symlink, name, "to"),
                     (nfs.rename, "doc1", share, name)]
            assert [status(call, share, *more) for call, *more in calls] == [13] * 4
        assert {path.name for path in folder.iterdir()} == {"doc1", "Grüße"}
        assert (folder / "doc1").read_bytes() == b"keep"
        assert 'names are in IBM850, which has no "–" (2013)' in gateway.errors()


@pytest.mark.parametrize("name, stored", [("Grüße ☺", None), ("😀 beyond", None), ("what?", "what;3F"), ("a;b", "a;;b"), ("x" * 255, None)])
def test_names(nfs, place, name, stored):
    directory, folder = place
    file = nfs.create(directory, name, mode=0o644).file
    nfs.write(file, 0, b"here")
    assert [p.name for p in folder.iterdir()] == [stored or name]
    assert names(nfs, directory) == [name]
    assert nfs.read(nfs.lookup(directory, name).file).data == b"here"


def test_names_of_another_case_are_the_same_file(nfs, place):
    directory, folder = place
    (folder / "ReadMe.TXT").write_bytes(b"x")
    assert nfs.read(nfs.lookup(directory, "readme.txt").file).data == b"x"


@pytest.mark.parametrize("matchlong", [0, 1])
def test_a_similar_name_is_never_changed(matchlong):
    """What a look-up finds by its long form is at most looked at: calls that change something mean the very name."""
    with Gateway(settings=EAGER + f"[{{user}}/*/*/matchlong={{({matchlong})}}]\n") as gateway:
        nfs, share, folder = gateway.nfs, gateway.share(), gateway.disk()
        similar = nfs.create(share, "a?b", mode=0o644).file
        nfs.write(similar, 0, b"keep")
        assert status(nfs.lookup, share, "a:b") == (0 if matchlong else 2)
        assert [status(call, share, "a:b") for call in (nfs.remove, nfs.rmdir)] == [2, 2]
        assert status(nfs.rename, share, "a:b", share, "c") == 2
        nfs.create(share, "ab", size=0)
        nfs.mkdir(share, "a*b")
        nfs.symlink(share, "a|b", "somewhere")
        nfs.create(share, "plain")
        nfs.rename(share, "plain", share, 'a"b')
        assert sorted(names(nfs, share)) == ['a"b', "a*b", "a?b", "ab", "a|b"]
        assert nfs.read_all(nfs.lookup(share, "a?b").file) == b"keep"
        assert (folder / "a;3Fb").read_bytes() == b"keep"


def test_special_files_are_refused_and_nothing_is_made(nfs, place):
    directory, folder = place
    (folder / "there").write_bytes(b"kept")
    for mode in (0o010644, 0o020644, 0o060644, 0o140644, 0o120777):  # a FIFO comes as a character device, too
        for name in ("special", "there"):
            assert status(nfs.create, directory, name, mode=mode, size=0) == 1, oct(mode)
    assert nfs.create(directory, "plain", mode=0o100644).attributes.mode == 0o100700
    assert sorted(path.name for path in folder.iterdir()) == ["plain", "there"]
    assert (folder / "there").read_bytes() == b"kept"


def test_modes_without_effect_and_the_size_of_disks():
    """What the server doesn't hold is neither an error nor shown; the disk is the server's, in each dialect."""
    with Gateway({"pc": {"shares": {"SHARE": {}, "FIXED": {"read only": "yes"}}},
                  "old": {"options": {"server max protocol": "LANMAN2"}}}, EAGER) as gateway:
        nfs = gateway.nfs
        (gateway.disk(share="FIXED") / "f").touch()
        shares = gateway.share(), gateway.share(share="FIXED")
        file, fixed = nfs.create(shares[0], "f").file, nfs.lookup(shares[1], "f").file
        above = gateway.root, nfs.lookup(gateway.root, UNIX_USER).file
        for handle in (file, fixed, *shares, *above):
            shown = nfs.getattr(handle)
            for mode in (0o777, 0):
                kept = nfs.setattr(handle, mode=mode, uid=4711, gid=4711)
                assert (kept.mode, kept.uid, kept.gid) == (shown.mode, shown.uid, shown.gid)
        for handle in above:
            assert nfs.statfs(handle)[1:] == (512, 2097152, 1048576, 1048576)
        disk = os.statvfs(gateway.disk())
        for handle in (file, *shares):
            told = nfs.statfs(handle)
            assert abs(told.blocks * told.bsize - disk.f_blocks * disk.f_frsize) <= told.bsize
            assert abs(told.bavail * told.bsize - disk.f_bavail * disk.f_frsize) < 1 << 30  # others write, too
        told = nfs.statfs(gateway.share("old"))  # what the old form can say
        assert told.blocks * told.bsize >= min(disk.f_blocks * disk.f_frsize, 1 << 31) // 2
        assert told.bfree <= told.blocks


def test_many_calls_in_flight(nfs, place):
    directory, folder = place
    data = random.Random(3).randbytes(64 * 8192)
    (folder / "f").write_bytes(data)
    file = nfs.lookup(directory, "f").file
    args = [file + (8192 * i).to_bytes(4, "big") + (8192).to_bytes(4, "big") * 2 for i in range(64)]
    calls = [nfs.start(100003, 2, 6, each) for each in args]
    got = b""
    for xid in calls:
        reply = nfs.finish(xid)
        assert reply.u32() == 0
        reply.fattr()
        got += reply.opaque()
    assert hashlib.sha256(got).digest() == hashlib.sha256(data).digest()


def test_a_refusal_is_told_to_the_user_in_words(gateway, nfs, place):
    directory, folder = place
    file = nfs.create(directory, "f", mode=0o644).file
    (folder / "f").unlink()
    assert status(nfs.read, file) == 2
    assert wait_until(lambda: ": opening: File not found (class 1, code 2)" in gateway.errors())
    line = next(line for line in gateway.errors().splitlines() if "File not found" in line)
    assert line.startswith(f"tester({UNIX_USER})\\\\PEER(pc)\\SHARE\\")


def test_a_lost_connection_costs_no_call_and_no_file(gateway, nfs, place):
    """The server's process of this connection dies: what was open is opened again on a new one."""
    directory, folder = place
    file = nfs.create(directory, "f", mode=0o644).file
    nfs.write(file, 0, b"before")
    peer = gateway.peers["pc"].processes[0].pid
    for child in pathlib.Path(f"/proc/{peer}/task/{peer}/children").read_text().split():
        os.kill(int(child), signal.SIGKILL)
    time.sleep(0.3)
    assert nfs.read(file).data == b"before"
    nfs.write(file, 6, b" after")
    assert (folder / "f").read_bytes() == b"before after"


def test_a_wrong_password_is_told(tmp_path):
    with Gateway(machines={"pc": {"users": {"tester": "Another"}}}) as gateway:
        assert status(gateway.nfs.listing, gateway.share()) == 13
        port = gateway.peers["pc"].port
        assert f": logging on to 127.0.0.1 port {port}: Access denied (class 1, code 5); the user name or the pass" in (
            gateway.errors())
        assert "Secret1" not in gateway.errors() + gateway.log()
