"""Changes under the hands of those who have files open: handles go on, and nothing is lost on the way."""

import os

from gateway import contents
from nfs_raw import status

# Files below are called as a share is: they are found all the same.
GATEWAY = {"machines": {"pc": {"shares": {"share": {}, "other": {}}}, "pc2": {}},
           "settings": "[{user}/pc/share/bannedchars={(%)}]\n"}


def test_an_open_file_goes_on_through_every_rename(nfs, place):
    directory, folder = place
    outer = nfs.mkdir(directory, "outer").file
    inner = nfs.mkdir(outer, "inner").file
    log = nfs.put(inner, "log", b"1")
    fileid = nfs.getattr(log).fileid
    renames = [(inner, "log", inner, "log"), (inner, "log", inner, "log.1"), (inner, "log.1", outer, ".nfs0001"),
               (outer, ".nfs0001", inner, "log"), (outer, "inner", directory, "inner"), (directory, "outer", inner, "outer"),
               (directory, "inner", directory, "INNER")]
    for count, rename in enumerate(renames, 1):
        assert nfs.read(log).data == b"1" * count
        nfs.rename(*rename)
        nfs.write(log, count, b"1")
        assert (nfs.getattr(log).size, nfs.getattr(log).fileid) == (count + 1, fileid)
    assert nfs.walk(directory, "INNER/log").file == log
    assert nfs.walk(directory, "INNER/outer").file == outer
    assert contents(folder) == {"INNER": None, "INNER/log": b"11111111", "INNER/outer": None}
    assert status(nfs.lookup, directory, "outer") == status(nfs.lookup, inner, "log.1") == 2


def test_a_file_that_takes_anothers_place_keeps_its_handle(nfs, place):
    directory, folder = place
    other = nfs.mkdir(directory, "other").file
    for from_, to in ((directory, directory), (other, directory), (directory, other)):
        new, old = nfs.put(from_, "new", b"new"), nfs.put(to, "log", b"older")
        assert nfs.read(old).data == b"older"
        nfs.rename(from_, "new", to, "log")
        assert status(nfs.read, old) == status(nfs.write, old, 0, b"lost") == 70
        nfs.write(new, 3, b"er")
        assert nfs.lookup(to, "log").file == new
        nfs.rename(to, "log", to, "log.1")
        again = nfs.put(to, "log", b"third")
        nfs.write(new, 5, b"!")
        assert (nfs.read(new).data, nfs.read(again).data) == (b"newer!", b"third")
        for name in ("log", "log.1"):
            nfs.remove(to, name)
    assert contents(folder) == {"other": None}


def test_a_rename_that_cannot_be_leaves_its_target_alone(gateway, nfs, place):
    directory, folder = place
    for name in ("empty", "full"):
        nfs.mkdir(directory, name)
    nfs.put(nfs.lookup(directory, "full").file, "f", b"inside")
    for name in ("f", "gone", "target"):
        nfs.put(directory, name, name.encode())
    elsewhere = gateway.share("pc", "other"), gateway.share("pc2")
    for share in elsewhere:
        nfs.put(share, "target", b"theirs")
    (folder / "gone").unlink()
    before = contents(folder)
    full = nfs.lookup(directory, "full").file
    refused = {("f", share, "target"): 18 for share in elsewhere} | {
        ("f", directory, "100%"): 13, ("f", directory, "."): 13, ("f", directory, "x" * 256): 63,
        ("gone", directory, "target"): 2, ("none", directory, "target"): 2, ("f", full, "none/"): 13,
        ("f", directory, "empty"): 21, ("empty", directory, "target"): 20, ("empty", directory, "full"): 66,
        ("full", full, "f"): 13, ("f", nfs.lookup(directory, "target").file, "x"): 20}
    assert {call: status(nfs.rename, directory, *call) for call in refused} == refused
    assert contents(folder) == before
    assert contents(gateway.disk("pc", "other")) == contents(gateway.disk("pc2")) == {"target": b"theirs"}


def test_renames_over_what_the_tree_has_not_seen_or_may_not_write(nfs, place):
    directory, folder = place
    unseen = nfs.mkdir(directory, "unseen").file
    (folder / "unseen" / "f").write_bytes(b"old")
    (folder / "unseen" / "Late").write_bytes(b"old")
    file = nfs.put(directory, "f", b"new")
    nfs.rename(directory, "f", unseen, "f")
    assert contents(folder / "unseen") == {"f": b"new", "Late": b"old"}
    nfs.rename(unseen, "f", unseen, "LATE")  # for the server the same name
    assert (nfs.names(unseen), nfs.read(file).data) == (["Late"], b"new")
    for where, name in ((directory, "ro"), (unseen, "ro"), (unseen, "ro2")):
        nfs.setattr(nfs.put(where, name, b"read-only"), mode=0o444)
    nfs.rename(unseen, "Late", unseen, "ro")
    nfs.rename(unseen, "ro", directory, "ro")
    nfs.remove(unseen, "ro2")
    assert contents(folder) == {"unseen": None, "ro": b"new"}


def test_a_directory_takes_the_place_of_an_empty_one(nfs, place):
    directory, folder = place
    inner = nfs.mkdir(directory, "inner").file
    for parent in (directory, inner):
        full, empty = nfs.mkdir(directory, "full").file, nfs.mkdir(parent, "empty").file
        nfs.put(full, "f", b"inside")
        assert nfs.names(empty) == []
        nfs.rename(directory, "full", parent, "empty")
        assert nfs.lookup(parent, "empty").file == full
        assert (nfs.names(full), status(nfs.listing, empty)) == (["f"], 70)
    assert {path for path in contents(folder) if path.endswith("f")} == {"empty/f", "inner/empty/f"}
    (folder / "empty" / "f").unlink()  # by another machine, a moment ago
    nfs.rename(directory, "inner", directory, "empty")
    assert contents(folder) == {"empty": None, "empty/empty": None, "empty/empty/f": b"inside"}


def test_links_among_files(nfs, place):
    directory, folder = place
    (folder / "-)late").write_bytes(b"a long target of another machine")
    nfs.symlink(directory, "link", "to")
    for name in ("file", "plain", "other"):
        nfs.put(directory, name, name.encode())
    assert [status(nfs.symlink, directory, name, "x") for name in ("late", "link", "file")] == [17] * 3
    link = nfs.lookup(directory, "link").file
    nfs.rename(directory, "link", directory, "moved")
    assert (nfs.readlink(link), nfs.lookup(directory, "moved").file) == ("to", link)
    nfs.rename(directory, "moved", directory, "file")  # clients see both under one name, but the share doesn't
    nfs.rename(directory, "plain", directory, "late")
    assert nfs.names(directory) == ["file", "late", "other"]
    assert contents(folder) == {"-)file": b"to", "late": b"plain", "other": b"other"}


def test_two_who_remove_one_tree_end_cleanly(gateway, nfs, place):
    directory, folder = place
    top = nfs.mkdir(directory, "top").file
    for i in range(3):
        sub = nfs.mkdir(top, f"{i}").file
        for j in range(5):
            nfs.put(sub, f"{j}", b"x")

    def both(procedure, where, name):
        calls = [client.begin(procedure, where, name) for client in (nfs, second)]
        return sorted(client.finish(xid).u32() for client, xid in zip((nfs, second), calls))

    assert [status(call, directory, "top") for call in (nfs.create, nfs.mkdir, nfs.rmdir)] == [21, 17, 66]
    assert status(nfs.setattr, directory, size=1) == 21
    with gateway.daemon.client(uid=os.geteuid()) as second:
        for i in range(3):
            sub = nfs.lookup(top, f"{i}").file
            assert [both("remove", sub, f"{j}") for j in range(5)] == [[0, 2]] * 5
            assert both("rmdir", top, f"{i}") == [0, 2]
    nfs.rmdir(directory, "top")
    assert (contents(folder), status(nfs.getattr, top)) == ({}, 70)


def test_calls_that_wait_mean_the_name_and_not_what_had_it(nfs, place):
    """A removal that waits behind a rename of its file finds what stands at the name by then."""
    directory, folder = place
    for name in ("a", "b", "c"):
        nfs.put(directory, name, name.encode())
    calls = [nfs.begin("rename", directory, "a", directory, "kept"), nfs.begin("remove", directory, "a"),
             nfs.begin("rename", directory, "c", directory, "b"), nfs.begin("remove", directory, "b")]
    assert [nfs.finish(xid).u32() for xid in calls] == [0, 2, 0, 0]
    assert contents(folder) == {"kept": b"a"}
