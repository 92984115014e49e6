"""The whole road under load and at its edges: many entries, many bytes, many callers, names that servers can't hold."""

import hashlib
import pathlib
import random
import sys
import time

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from daemon import sanitized  # noqa: E402
from gateway import UNIX_USER, Gateway  # noqa: E402
from nfs_raw import opaque, status, u32  # noqa: E402

SLOWNESS = 8 if sanitized() else 1
MIB = 1 << 20
USERS = (UNIX_USER, "nobody")


@pytest.fixture(scope="module")
def gateway():
    with Gateway({"pc": {}, "laptop": {}}, "[{user}/*/*/nosetreadonly={(0)}]\n[{user}/laptop/oldsetattr={(1)}]", users=USERS) as running:
        yield running


@pytest.fixture
def nfs(gateway):
    return gateway.nfs


@pytest.fixture
def place(gateway, request):
    """A directory of the test's own: its handle and its folder on the server's disk."""
    name = request.node.name
    return gateway.nfs.mkdir(gateway.share(), name, mode=0o755).file, gateway.disk() / name


def names(nfs, directory, count=8192):
    return [entry.name for entry in nfs.listing(directory, count)][2:]


def test_a_directory_of_10000(nfs, place):
    directory, folder = place
    wanted = [f"{i} and some more text" for i in range(10000)]
    for name in wanted:
        (folder / name).touch()
    began = time.monotonic()
    entries = nfs.listing(directory, 4096)
    assert time.monotonic() - began < 10 * SLOWNESS
    assert sorted(entry.name for entry in entries[2:]) == sorted(wanted)
    assert len({entry.fileid for entry in entries}) == len(wanted) + 2
    for name in wanted[::2]:
        (folder / name).unlink()
    nfs.create(directory, "new")  # so the listing isn't up to date any more
    assert sorted(names(nfs, directory)) == sorted(["new", *wanted[1::2]])
    assert status(nfs.lookup, directory, wanted[0]) == 2
    kept = {entry.name: entry.fileid for entry in entries}
    assert nfs.lookup(directory, wanted[1]).attributes.fileid == kept[wanted[1]]


def test_a_large_file_with_many_calls_in_flight(nfs, place):
    directory, folder = place
    size = 64 * MIB // SLOWNESS
    data = random.Random(1).randbytes(size)
    file = nfs.create(directory, "large", mode=0o644).file
    began = time.monotonic()
    # More of them at once than a socket has room for would be lost.
    written = nfs.pipelined((("write", file + u32(at, at, 8192) + opaque(data[at:at + 8192]))
                             for at in range(0, size, 8192)), 8)
    assert {code for code, _ in written} == {0}
    assert hashlib.sha256((folder / "large").read_bytes()).digest() == hashlib.sha256(data).digest()
    seen = hashlib.sha256()
    for code, reply in nfs.pipelined(("read", file + u32(at, 8192, 8192)) for at in range(0, size, 8192)):
        assert code == 0 and reply.fattr().size == size
        seen.update(reply.opaque())
    assert seen.digest() == hashlib.sha256(data).digest()
    assert time.monotonic() - began < 60


def test_users_and_machines_at_once(gateway):
    """64 calls on their way, to every machine for every user, and each finds its own file."""
    nfs, files = gateway.nfs, {}
    for user in USERS:
        for machine in gateway.peers:
            share = gateway.share(machine, user=user)
            for i in range(16):
                files[machine, f"{user} {i}"] = nfs.create(share, f"{user} {i}", mode=0o644).file
    text = {key: f"{key}".encode().ljust(500) for key in files}
    mixed = random.Random(2).sample(list(files), len(files))
    for code, _ in nfs.pipelined((("write", files[key] + u32(0, 0, 500) + opaque(text[key])) for key in mixed), 64):
        assert code == 0
    assert {key: (gateway.disk(key[0]) / key[1]).read_bytes() for key in files} == text
    replies = nfs.pipelined((("read", files[key] + u32(0, 500, 0)) for key in mixed), 64)
    for key, (code, reply) in zip(mixed, replies):
        reply.fattr()
        assert (code, reply.opaque()) == (0, text[key])


NAMES = {
    "plain": "plain", ".dot": ".dot", "-": "-", "UPPER": "UPPER", "a;3Fb": "a;;3Fb", ";": ";;", "a;41": "a;;41",
    'q?"<>*|:': "q;3F;22;3C;3E;2A;7C;3A", "日" * 85: "日" * 85, "Ünïcode ☺": "Ünïcode ☺", "é": "é",
    " lead": " lead", "a+b=[c],": "a+b=[c],", "~": "~", "x" * 255: "x" * 255,
}


def test_names(nfs, place):
    directory, folder = place
    for name in NAMES:
        nfs.write(nfs.create(directory, name, mode=0o644).file, 0, name.encode())
    assert {path.name: path.read_bytes() for path in folder.iterdir()} == {
        stored: name.encode() for name, stored in NAMES.items()}
    assert sorted(names(nfs, directory, 1024)) == sorted(NAMES)
    sub = nfs.mkdir(directory, "sub", mode=0o755).file
    for name in NAMES:
        nfs.rename(directory, name, sub, name)
        assert nfs.read(nfs.lookup(sub, name).file).data == name.encode()
        nfs.remove(sub, name)
        nfs.mkdir(sub, name, mode=0o755)
        nfs.rmdir(sub, name)
    assert names(nfs, sub) == [] == list((folder / "sub").iterdir())


@pytest.mark.parametrize("name, code", [
    ("../up", 13), ("a/b", 13), ("..\\up", 13), ("a\\b", 13), (b"a\0b", 13), ("", 13), ("x" * 256, 63), ("日" * 86, 63)])
def test_names_that_lead_away_are_refused(nfs, gateway, name, code):
    share = gateway.share()
    if not (gateway.disk() / "inner").exists():
        nfs.create(nfs.mkdir(share, "inner", mode=0o755).file, "f", mode=0o644)
    inner = nfs.lookup(share, "inner").file
    before = sorted(gateway.disk().rglob("*"))
    calls = [(nfs.create, inner, name), (nfs.mkdir, inner, name), (nfs.symlink, inner, name, "to"),
             (nfs.rename, inner, "f", inner, name)]
    assert [status(*each) for each in calls] == [code] * 4
    assert status(nfs.lookup, inner, name) in (2, 63)
    assert sorted(gateway.disk().rglob("*")) == before


def test_links_dont_look_like_directories_themselves(nfs, place):
    directory, folder = place
    for name in ("", ".", ".."):
        assert status(nfs.symlink, directory, name, "to") == status(nfs.create, directory, f"-){name}") == 13
    (folder / "-)").touch()
    nfs.mkdir(directory, "new")
    assert names(nfs, directory) == ["new"]


def test_links(nfs, place):
    directory, folder = place
    targets = {"short": "x", "way": "../some/where else", "日本": "für/ünï", "long": "t" * 1000, "wide": "日本/😀", "look-alike": "Ã©"}
    for name, target in targets.items():
        nfs.symlink(directory, name, target)
    assert {path.name: path.read_bytes() for path in folder.iterdir()} == {
        f"-){name}": target.encode("utf-8" if name in ("wide", "look-alike") else "iso-8859-1")
        for name, target in targets.items()}
    for name, target in targets.items():
        link = nfs.lookup(directory, name)
        assert (link.attributes.type, link.attributes.size) == (5, (folder / f"-){name}").stat().st_size)
        assert nfs.readlink(link.file) == target
    assert status(nfs.symlink, directory, "short", "again") == 17
    assert status(nfs.symlink, directory, "bad", b"a\xff") == status(nfs.symlink, directory, "bad", b"a\0b") == 13
    (folder / "-)no path").write_bytes(b"a\0b")
    nfs.mkdir(directory, "new")  # lists the directory again
    nfs.rmdir(directory, "new")
    assert status(nfs.readlink, nfs.lookup(directory, "no path").file) == 5
    nfs.remove(directory, "no path")
    nfs.rename(directory, "short", directory, "renamed")
    assert sorted(names(nfs, directory)) == sorted(["renamed", *list(targets)[1:]])


def test_attributes(gateway, nfs):
    directory, folder = nfs.mkdir(gateway.share("laptop"), "attributes").file, gateway.disk("laptop") / "attributes"
    (folder / "f").write_bytes(b"x" * 1000)
    with open(folder / "huge", "wb") as huge:
        huge.truncate(5 << 30)
    file, seen = nfs.lookup(directory, "f")
    assert (seen.type, seen.mode, seen.size, seen.blocks) == (1, 0o100700, 1000, 2)
    assert nfs.setattr(file, mode=0o444).mode == 0o100500
    assert status(nfs.write, file, 0, b"y") == 13
    assert (folder / "f").read_bytes() == b"x" * 1000
    assert nfs.setattr(file, mode=0o644).mode == 0o100700
    assert nfs.write(file, 0, b"y").size == 1000
    assert nfs.lookup(directory, "huge").attributes.size == 0xFFFFFFFF


def test_rename_onto_itself_and_others(nfs, place):
    directory, folder = place
    for name in ("file", "other"):
        nfs.write(nfs.create(directory, name, mode=0o644).file, 0, name.encode())
    sub = nfs.mkdir(directory, "sub", mode=0o755).file
    for old, new in (("file", "file"), ("file", "FILE"), ("FILE", "File")):
        assert status(nfs.rename, directory, old, directory, new) in (0, 13)
        assert [p.read_bytes() for p in folder.iterdir() if p.name.lower() == "file"] == [b"file"]
    nfs.rename(directory, "file", directory, "other")
    assert (folder / "other").read_bytes() == b"file"
    nfs.rename(directory, "sub", directory, "SUB")
    nfs.rename(directory, "other", nfs.lookup(directory, "SUB").file, "moved")
    assert sorted(str(p.relative_to(folder)) for p in folder.rglob("*")) == ["SUB", "SUB/moved"]
    assert status(nfs.rename, directory, "SUB", nfs.lookup(directory, "SUB").file, "inside") == 13
    assert (folder / "SUB" / "moved").read_bytes() == b"file"
    assert status(nfs.rename, sub, "moved", sub, "again") in (0, 70)


def test_rename_to_a_name_that_has_just_gone(nfs, place):
    directory, folder = place
    other = nfs.mkdir(directory, "other", mode=0o755).file
    nfs.write(nfs.create(other, "new", mode=0o644).file, 0, b"the old one")
    nfs.write(nfs.create(directory, "old", mode=0o644).file, 0, b"the new one")
    nfs.remove(other, "new")  # and nobody looks into the directory before this:
    nfs.rename(directory, "old", other, "new")
    assert (folder / "other" / "new").read_bytes() == b"the new one"
