"""The whole road under load: many entries (test_faults.py has many bytes)."""

import time

from daemon import sanitized
from nfs_raw import status


def test_a_directory_of_10000(nfs, place):
    directory, folder = place
    wanted = [f"{i} and some more text" for i in range(10000)]
    for name in wanted:
        (folder / name).touch()
    began = time.monotonic()
    entries = nfs.listing(directory, 4096)
    assert time.monotonic() - began < (80 if sanitized() else 10)
    assert sorted(entry.name for entry in entries[2:]) == sorted(wanted)
    assert len({entry.fileid for entry in entries}) == len(wanted) + 2
    for name in wanted[::2]:
        (folder / name).unlink()
    nfs.create(directory, "new")
    assert status(nfs.remove, directory, wanted[0]) == 2  # others were quicker: the listing isn't up to date any more
    assert nfs.names(directory) == sorted(["new", *wanted[1::2]])
    kept = {entry.name: entry.fileid for entry in entries}
    assert nfs.lookup(directory, wanted[1]).attributes.fileid == kept[wanted[1]]
