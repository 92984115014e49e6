"""Times are true, whatever the time zones of server and gateway: tested on files that are open in the session and not."""

import os
import pathlib
import sys
import time

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from gateway import Gateway, wait_until  # noqa: E402

# The server's zone, the gateway's, and whether times are set by the requests of older servers.
PLACES = [("UTC", "UTC", 0), ("America/New_York", "Asia/Kolkata", 0), ("Asia/Kolkata", "America/New_York", 0),
          ("America/New_York", "UTC", 1), ("Asia/Kolkata", "America/New_York", 1)]
LONG_AGO = 1_000_000_000  # summer
WINTER = 1_262_304_001  # odd: forms of two seconds' steps show one less
FUTURE = 2_000_000_000
SETTINGS = """
[{user}/*/oldsetattr={(%d)}]
[{user}/*/*/attribttl={(0)}]
[{user}/*/*/contentsttl={(0)}]
[{user}/*/*/openfilettl={(1)}]
[nfsserver/server/cleanupdelay={(1)}]
"""


@pytest.fixture(scope="module", params=PLACES, ids=lambda place: "-".join(map(str, place)).replace("/", "."))
def gateway(request):
    server, daemon, old = request.param
    with Gateway(machines={"pc": {"tz": server}}, settings=SETTINGS % old, environment={"TZ": daemon}) as running:
        yield running


def aged_file(gateway, name):
    path = gateway.disk() / name
    path.write_bytes(b"some data")
    os.utime(path, (LONG_AGO, LONG_AGO))
    return path, gateway.nfs.lookup(gateway.share(), name).file


def modified(path):
    return int(path.stat().st_mtime)


def is_open(folder):
    """Whether the server has any file of the folder open."""
    for link in pathlib.Path("/proc").glob("[0-9]*/fd/*"):
        try:
            target = os.readlink(link)
        except OSError:
            continue
        if target.startswith(f"{folder}/"):
            return True
    return False


def wait_until_closed(gateway):
    assert wait_until(lambda: not is_open(gateway.disk()), 20)


def test_reading_changes_nothing(gateway):
    path, file = aged_file(gateway, "read")
    assert gateway.nfs.getattr(file).mtime.seconds == LONG_AGO
    gateway.nfs.read(file)
    assert is_open(gateway.disk())
    wait_until_closed(gateway)
    assert modified(path) == LONG_AGO == gateway.nfs.getattr(file).mtime.seconds


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
    for opened in ("closed", "read", "written"):
        for when in (LONG_AGO + 4, WINTER):
            path, file = aged_file(gateway, f"set {opened} {when}")
            if opened == "read":
                gateway.nfs.read(file)
            if opened == "written":
                gateway.nfs.write(file, 0, b"new")
            gateway.nfs.setattr(file, mtime=(when, 0), atime=(when, 0))
            at_once = modified(path)
            assert 0 <= when - at_once <= 1, opened
            assert 0 <= when - int(path.stat().st_atime) <= 1, opened
            assert gateway.nfs.getattr(file).mtime.seconds == at_once
            paths[path] = at_once
    wait_until_closed(gateway)
    assert {path: modified(path) for path in paths} == paths


def test_our_close_doesn_t_age_what_others_wrote(gateway):
    paths = {}
    for opened in ("read", "written", "set", "set and written"):
        path, file = aged_file(gateway, f"shared {opened}")
        if opened == "read":
            gateway.nfs.read(file)
        else:
            gateway.nfs.write(file, 0, b"ours")
        if "set" in opened:
            gateway.nfs.setattr(file, mtime=(LONG_AGO, 0))
        if opened == "set and written":
            gateway.nfs.write(file, 0, b"ours again")
        os.utime(path, (FUTURE, FUTURE))  # as if written later than all we know
        paths[path] = FUTURE
    wait_until_closed(gateway)
    assert {path: modified(path) for path in paths} == paths
