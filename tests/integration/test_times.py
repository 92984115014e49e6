"""Times are true, whatever the time zones of server and gateway: tested on files that are open in the session and not."""

import contextlib
import os
import pathlib
import time

import pytest
from gateway import EAGER, Gateway, wait_until

# The server's zone, the gateway's, and whether times are set by the requests of older servers.
PLACES = [("UTC", "UTC", 0), ("America/New_York", "Asia/Kolkata", 0), ("Asia/Kolkata", "America/New_York", 0),
          ("America/New_York", "UTC", 1), ("Asia/Kolkata", "America/New_York", 1)]
LONG_AGO = 1_000_000_000  # summer
# Odd seconds of a winter, before the first date of the old forms, the beginning of all dates, the last one of 31 bits.
MOMENTS = [(LONG_AGO + 4, 0), (1_262_304_001, 123456), (100_000_001, 7), (0, 0), (2**31 - 1, 999999)]
OLD_MOMENTS = [(LONG_AGO + 4, 0), (1_262_304_001, 0)]  # of servers that count in steps of two seconds
FUTURE = 2_000_000_000
SETTINGS = EAGER + """[{user}/*/oldsetattr={(%d)}]
[{user}/*/*/openfilettl={(1)}]
[nfsserver/server/cleanupdelay={(1)}]
"""


@pytest.fixture(scope="module", params=PLACES, ids=lambda place: "-".join(map(str, place)).replace("/", "."))
def gateway(request):
    server, daemon, old = request.param
    with Gateway(machines={"pc": {"tz": server}}, settings=SETTINGS % old, environment={"TZ": daemon}) as running:
        running.old = old
        yield running


def aged_file(gateway, name, make=pathlib.Path.touch):
    path = gateway.disk() / name
    make(path)
    os.utime(path, (LONG_AGO, LONG_AGO))
    return path, gateway.nfs.lookup(gateway.share(), name).file


def modified(path):
    return int(path.stat().st_mtime)


def exactly(nanoseconds):
    """As NFS tells it."""
    return divmod(nanoseconds // 1000, 1_000_000)


def is_open(folder):
    """Whether the server has any file of the folder open."""
    for link in pathlib.Path("/proc").glob("[0-9]*/fd/*"):
        with contextlib.suppress(OSError):  # it has closed the file or ended meanwhile
            if os.readlink(link).startswith(f"{folder}/"):
                return True
    return False


def wait_until_closed(gateway):
    assert wait_until(lambda: not is_open(gateway.disk()), 20)


def test_writing_counts_from_the_write(gateway):
    path, file = aged_file(gateway, "written")
    set_path, set_file = aged_file(gateway, "set, then written")
    gateway.nfs.setattr(set_file, size=3, mtime=(LONG_AGO + 2, 0))
    written = time.time()
    for each in (file, set_file):
        gateway.nfs.write(each, 0, b"new")
    time.sleep(2.5)  # so that a time of the close would show
    wait_until_closed(gateway)
    for each_path, each in ((path, file), (set_path, set_file)):
        assert abs(modified(each_path) - written) <= 2
        assert abs(gateway.nfs.getattr(each).mtime.seconds - written) <= 2


def test_a_time_that_is_set_stays(gateway):
    paths = {}
    for opened in ("closed", "read", "written") if gateway.old else ("closed", "read", "written", "directory"):
        for when in OLD_MOMENTS if gateway.old else MOMENTS:
            name = f"set {opened} {when}"
            path, file = aged_file(gateway, name, pathlib.Path.mkdir if opened == "directory" else pathlib.Path.touch)
            if opened == "read":
                gateway.nfs.read(file)
            if opened == "written":
                gateway.nfs.write(file, 0, b"new")
            shown = gateway.nfs.setattr(file, mtime=when, atime=when)
            disk = path.stat()
            for told in (shown.mtime, shown.atime) if gateway.old else ():
                assert 0 <= when[0] - told.seconds <= 1, name
            assert gateway.old or exactly(disk.st_mtime_ns) == exactly(disk.st_atime_ns) == when, name
            assert shown.mtime == exactly(disk.st_mtime_ns), name
            paths[path] = disk.st_mtime_ns
    wait_until_closed(gateway)
    assert {path: path.stat().st_mtime_ns for path in paths} == paths


def test_what_else_is_set_of_an_open_file_leaves_its_time(gateway):
    for name, change in (("mode", {"mode": 0o400}), ("access", {"atime": (LONG_AGO + 2, 0)}),
                         ("both", {"mode": 0o600, "atime": (LONG_AGO + 2, 0)})):
        path, file = aged_file(gateway, f"else {name}")
        gateway.nfs.write(file, 0, b"new")
        written = path.stat().st_mtime_ns
        time.sleep(0.1)
        gateway.nfs.setattr(file, **change)
        wait_until_closed(gateway)
        assert path.stat().st_mtime_ns == written, name
        assert "atime" not in change or int(path.stat().st_atime) == LONG_AGO + 2


def test_unflushed_writes_count_from_the_write():
    """On a server that dates writes as servers do by default: at a flush, else late, and once more at the close."""
    settings = SETTINGS % 0 + "[{user}/*/*/syncwrites={(0)}]\n[{user}/*/*/openfilettl={(4)}]\n"
    with Gateway(machines={"pc": {"shares": {"SHARE": {"smbd:writetimeupdatedelay": "2000000"}}}},
                 settings=settings) as gateway:
        path, file = aged_file(gateway, "f")
        kept_path, kept = aged_file(gateway, "kept")
        for each in (file, kept):
            gateway.nfs.write(each, 0, b"new")
        written = time.time()
        gateway.nfs.setattr(kept, atime=(LONG_AGO, 0))
        wait_until_closed(gateway)
        assert time.time() - written > 3
        assert written - 1 < path.stat().st_mtime < written + 1.8
        assert written - 1 < kept_path.stat().st_mtime < written + 1.8
        assert int(kept_path.stat().st_atime) == LONG_AGO


def test_our_close_doesn_t_age_what_others_wrote(gateway):
    paths = []
    for opened in ("read", "written", "set", "read and set", "set and written"):
        path, file = aged_file(gateway, f"shared {opened}")
        if "read" in opened:
            gateway.nfs.read(file)
        else:
            gateway.nfs.write(file, 0, b"ours")
        if "set" in opened:
            gateway.nfs.setattr(file, mtime=(LONG_AGO, 0))
        if opened == "set and written":
            gateway.nfs.write(file, 0, b"ours again")
        os.utime(path, (FUTURE, FUTURE))  # as if written later than all we know
        paths.append(path)
    assert is_open(gateway.disk())
    wait_until_closed(gateway)
    assert {modified(path) for path in paths} == {FUTURE}
