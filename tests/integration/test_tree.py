"""The name space that the daemon makes up from its profile: users, machines, shares. There is no server."""

import contextlib
import pwd

import pytest
from daemon import Daemon
from gateway import ROOT
from nfs_raw import status

USERS = ["ann", "bob", "eve"]
MACHINES = [f"pc{i}" for i in range(10)]
SHARES = [f"share {i}" for i in range(5)]
OWNER = pwd.getpwnam("games")
DIRECTORY = 0o40000


def profile():
    lines = ["[nfsserver/server/encoding/rpc={(UTF-8)}]", "[nfsserver/shares/smb/*/*/sharesttl={(0)}]",
             "[nfsserver/shares/smb/*/logfile={()}]",
             "[nfsserver/shares/smb/*/*/ipaddress={(127.0.0.1)}]", "[nfsserver/shares/smb/*/*/port={(1)}]"]
    for user in USERS:
        key = f"nfsserver/shares/smb/{user}"
        wildcard = "(*)" if user == "eve" else ""
        lines += [f"[{key}/unixname={{({OWNER.pw_name})}}]", f"[{key}/*/unixname={{({OWNER.pw_name})}}]",
                  f"[{key}/*/*/unixname={{({OWNER.pw_name})}}]",
                  f"[{key}/machinenames={{{''.join(f'({name})' for name in MACHINES)}{wildcard}}}]"]
        for machine in MACHINES:
            lines.append(f"[{key}/{machine}/sharenames={{{''.join(f'({name})' for name in SHARES)}(no password)}}]")
            lines += [f"[{key}/{machine}/{share}/password={{()}}]" for share in SHARES]
    return "\n".join(lines)


@contextlib.contextmanager
def client(profile):
    with Daemon(profile) as daemon, daemon.client(uid=OWNER.pw_uid, timeout=30, encoding="utf-8") as made:
        made.getattr(ROOT)
        yield made


@pytest.fixture
def nfs():
    with client(profile()) as made:
        yield made


def explore(nfs, directory=ROOT, parent=ROOT, path="", levels=3):
    """Path -> (handle, file id) of all below a directory, with the rules of a file system checked on the way."""
    entries = nfs.listing(directory, 400)
    assert [entry.name for entry in entries[:2]] == [".", ".."]
    assert [entry.fileid for entry in entries[:2]] == [nfs.getattr(each).fileid for each in (directory, parent)]
    found = {}
    for entry in entries[2:]:
        handle, attributes = nfs.lookup(directory, entry.name)
        assert attributes.fileid == entry.fileid
        mode = DIRECTORY | (448 if levels == 1 else 320)
        assert (attributes.type, attributes.mode, attributes.uid, attributes.gid) == (2, mode, *OWNER[2:4])
        assert nfs.getattr(handle).fileid == entry.fileid
        found[f"{path}{entry.name}"] = handle, entry.fileid
        if levels > 1:
            found |= explore(nfs, handle, directory, f"{path}{entry.name}/", levels - 1)
    return found


def test_all_of_it_is_walked_and_its_handles_stay(nfs):
    found = explore(nfs)
    expected = {f"{user}/{machine}/{share}" for user in USERS for machine in MACHINES for share in SHARES}
    assert {path for path in found if path.count("/") == 2} == expected
    assert len(found) == 3 + 30 + 150
    for part in (0, 1):
        assert len({each[part] for each in found.values()} - {(ROOT, 2)[part]}) == len(found)
    assert explore(nfs) == found  # the share lists were made anew meanwhile
    assert all(nfs.getattr(handle).fileid == fileid for handle, fileid in found.values())


def test_a_wildcard_brings_machines_on_look_up(nfs):
    ann, eve = (nfs.lookup(ROOT, user).file for user in ("ann", "eve"))
    assert status(nfs.lookup, ann, "laptop") == 2
    for name in ("laptop", "grün", "x" * 255):
        assert nfs.lookup(eve, name).file == nfs.lookup(eve, name).file
    for name in ("ls", "cd", "..+", "x" * 256, "a\nb", "LAPTOP", "My Halden Drives"):
        assert status(nfs.lookup, eve, name) == 2, name
    assert nfs.names(eve) == sorted([*MACHINES, "laptop", "grün", "x" * 255])


def test_empty_names_and_dots_lead_nowhere_new(nfs):
    eve = nfs.lookup(ROOT, "eve").file
    expected = {"": (2, 2, 2, 2), ".": (0, 13, 13, 13), "..": (0, 13, 13, 13)}
    assert {name: tuple(status(call, eve, name, *more) for call, *more in [
        (nfs.lookup,), (nfs.remove,), (nfs.rmdir,), (nfs.rename, eve, "new")]) for name in expected} == expected
    assert [nfs.lookup(eve, name).file for name in (".", "..")] == [eve, ROOT]
    assert nfs.names(eve) == nfs.names(nfs.lookup(ROOT, "ann").file)


def test_handles_of_what_has_gone_are_stale(nfs):
    eve = nfs.lookup(ROOT, "eve").file
    machine, configured = (nfs.lookup(eve, name).file for name in ("gone", "pc2"))
    inside = machine[:31] + b"\1"
    assert [status(nfs.getattr, handle) for handle in (inside, bytes(32), b"\xff" * 32)] == [70] * 3
    for i in range(1024):  # so many machines are kept, and the one longest unused makes room
        nfs.lookup(eve, f"passer-by {i}")
    assert [status(nfs.getattr, handle) for handle in (eve, configured, machine, inside)] == [0, 0, 70, 70]
    for call, *more in [(nfs.getattr,), (nfs.readdir,), (nfs.lookup, "x"), (nfs.read,), (nfs.write, 0, b"x"), (nfs.statfs,),
                        (nfs.create, "x"), (nfs.remove, "x"), (nfs.setattr,), (nfs.readlink,), (nfs.rename, "x", eve, "y")]:
        assert status(call, machine, *more) == 70, call
    assert status(nfs.rename, eve, "pc2", machine, "y") == status(nfs.link, eve, machine, "y") == 70
    assert nfs.lookup(eve, "gone").file != machine


def test_a_root_of_the_profile_outlives_a_restart_and_no_other_handle_does():
    handles = []
    for _ in range(2):
        with client(f"[nfsserver/mount/roothandle={{({ROOT.hex()})}}]\n{profile()}") as nfs:
            assert [status(nfs.getattr, handle) for handle in handles] == [70] * len(handles)
            handles = [nfs.walk(ROOT, path).file for path in ("ann", "ann/pc1", "ann/pc1/share 1")]
            assert [status(nfs.getattr, handle) for handle in handles] == [0] * len(handles)


def test_nothing_is_changed_above_a_share(nfs):
    for path, entry in (("ann", "pc1"), ("ann/pc1", "share 1")):
        directory = nfs.walk(ROOT, path).file
        before = nfs.names(directory)
        for call, *more in [(nfs.create, "new"), (nfs.mkdir, "new"), (nfs.symlink, "new", "to"), (nfs.rmdir, entry),
                            (nfs.rename, entry, directory, "new")]:
            assert status(call, directory, *more) == 13
        assert nfs.names(directory) == before
