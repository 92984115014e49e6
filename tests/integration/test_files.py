"""Files of a real SMB server over NFS, compared with the server's disk. test_random_walk.py has the everyday work."""

import os

from gateway import EAGER, contents
from nfs_raw import status

GATEWAY = {
    "machines": {"pc": {"shares": {"SHARE": {}, "FIXED": {"read only": "yes"}}}, "laptop": {}},
    "settings": EAGER + "[{user}/laptop/*/nosetreadonly={(0)}]\n[{user}/laptop/oldsetattr={(1)}]\n",
}


def test_special_files_are_refused_and_nothing_is_made(nfs, place):
    directory, folder = place
    (folder / "there").write_bytes(b"kept")
    for mode in (0o010644, 0o020644, 0o060644, 0o140644, 0o120777):  # a FIFO comes as a character device, too
        for name in ("special", "there"):
            assert status(nfs.create, directory, name, mode=mode, size=0) == 1, oct(mode)
    assert nfs.create(directory, "plain", mode=0o100644).attributes.mode == 0o100700
    assert contents(folder) == {"plain": b"", "there": b"kept"}


def test_modes_without_effect_and_the_size_of_disks(gateway, nfs):
    """What the server doesn't hold is neither an error nor shown; the disk is the server's."""
    (gateway.disk(share="FIXED") / "f").touch()
    shares = gateway.share(), gateway.share(share="FIXED")
    file, fixed = nfs.create(shares[0], "f").file, nfs.lookup(shares[1], "f").file
    for handle in (file, fixed, *shares):
        shown = nfs.getattr(handle)
        for mode in (0o777, 0):
            kept = nfs.setattr(handle, mode=mode, uid=4711, gid=4711)
            assert (kept.mode, kept.uid, kept.gid) == (shown.mode, shown.uid, shown.gid)
    assert nfs.statfs(gateway.root)[1:] == (512, 2097152, 1048576, 1048576)
    disk = os.statvfs(gateway.disk())
    for handle in (file, *shares):
        told = nfs.statfs(handle)
        assert abs(told.blocks * told.bsize - disk.f_blocks * disk.f_frsize) <= told.bsize
        assert abs(told.bavail * told.bsize - disk.f_bavail * disk.f_frsize) < 1 << 30  # others write, too


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
    assert nfs.create(directory, "f", size=0).attributes.size == 0 == (folder / "f").stat().st_size
    assert nfs.lookup(directory, "huge").attributes.size == 0xFFFFFFFF


def test_links(nfs, place):
    """They are files that other machines see."""
    directory, folder = place
    targets = {"short": "x", "way": "../some/where else", "日本": "für/ünï", "long": "t" * 1000,
               "wide": "日本/😀", "look-alike": "Ã©"}
    for name, target in targets.items():
        nfs.symlink(directory, name, target)
    assert contents(folder) == {f"-){name}": target.encode("utf-8" if name in ("wide", "look-alike") else "iso-8859-1")
                                for name, target in targets.items()}
    for name, target in targets.items():
        link = nfs.lookup(directory, name)
        assert (link.attributes.type, link.attributes.size) == (5, (folder / f"-){name}").stat().st_size)
        assert nfs.readlink(link.file) == target
    assert status(nfs.symlink, directory, "short", "again") == 17
    assert status(nfs.symlink, directory, "bad", b"a\xff") == status(nfs.symlink, directory, "bad", b"a\0b") == 13
    (folder / "-)no path").write_bytes(b"a\0b")
    for name in ("", ".", ".."):
        assert status(nfs.symlink, directory, name, "to") == status(nfs.create, directory, f"-){name}") == 13
    assert status(nfs.create, directory, "-)new") == 13  # would be a link
    (folder / "-)").touch()  # would look like the directory itself
    assert nfs.names(directory) == sorted(["no path", *targets])
    assert status(nfs.readlink, nfs.lookup(directory, "no path").file) == 5
    assert status(nfs.link, directory, directory, "hard") == 13
