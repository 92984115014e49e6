"""The daemon's conversation with real servers, every packet recorded: an independent dissector must understand both sides."""

import time

from gateway import Gateway, contents
from nfs_raw import status
from smb_peer import PORT, Capture, enter_private_network

DISSECTOR = f"tcp.port=={PORT},nbss"
# A mode is told to the server only where an attribute stands for it.
DIALECTS = {"run": "", "old": "[{user}/pc/oldsetattr={(1)}]\n[{user}/*/*/hidden={(1)}]"}
# Requests that the run has to contain, else it proves nothing about them.
COMMANDS = {
    "create directory": 0x00, "delete directory": 0x01, "close": 0x04, "flush": 0x05, "delete": 0x06, "rename": 0x07,
    "set attributes": 0x09, "set times": 0x22, "read": 0x0A, "write": 0x0B, "transaction 2": 0x32, "negotiate": 0x72,
    "session setup": 0x73, "tree connect": 0x75, "open": 0xA2,
}


def everyday_work(nfs, share):
    file = nfs.create(share, "Größe", mode=0o644).file
    nfs.write_all(file, b"x" * 30000)
    assert nfs.read_all(file) == b"x" * 30000
    nfs.setattr(file, mode=0o444, mtime=(1_000_000_000, 0))
    nfs.setattr(file, size=5, mode=0o644)
    sub = nfs.mkdir(share, "sub").file
    for i in range(50):
        nfs.create(sub, f"file {i}")
    assert len(nfs.listing(sub)) == 52
    nfs.rename(share, "Größe", sub, "moved")
    nfs.symlink(share, "link", "sub/moved")
    for name in ["moved", *(f"file {i}" for i in range(50))]:
        nfs.remove(sub, name)
    nfs.rmdir(share, "sub")


def test_every_packet_is_understood_and_every_request_answered(tmp_path):
    enter_private_network()
    seen = set()
    for name, settings in DIALECTS.items():
        with Capture(tmp_path / name, PORT) as capture, Gateway({"pc": {"port": PORT}}, settings) as gateway:
            everyday_work(gateway.nfs, gateway.share())
        # A server's list of mechanisms in its first reply is more than the dissector knows.
        ours = "_ws.malformed && !(smb.cmd == 0x72 && smb.flags.response == 1)"
        assert capture.frames(DISSECTOR, ours, "frame.number", "_ws.col.Info") == []
        requests = capture.frames(DISSECTOR, "smb.flags.response == 0", "frame.number", "smb.cmd", "smb.response_in")
        assert [row for row in requests if not row[2]] == []
        seen |= {int(row[1].split(",")[0], 16) for row in requests}
    assert {name for name, code in COMMANDS.items() if code not in seen} == set()


CALLS = 10


def test_changes_take_few_requests_and_the_tree_follows_them(tmp_path):
    """Counted by the request, in a directory that was listed before: none lists it again."""
    enter_private_network()
    began = []
    settings = "".join(f"[{{user}}/*/*/{key}={{(600)}}]\n" for key in ("attribttl", "contentsttl"))
    with Capture(tmp_path / "changes", PORT) as capture, Gateway({"pc": {"port": PORT}}, settings) as gateway:
        nfs, directory = gateway.nfs, gateway.nfs.mkdir(gateway.share(), "d").file
        names = [f"{i}" for i in range(CALLS)]
        assert nfs.names(directory) == []
        handles = []
        wanted = {
            "create, close, query": (3, lambda i: handles.append(nfs.create(directory, i, mode=0o644).file)),
            "its attributes": (0, lambda i: nfs.getattr(handles[int(i)])),
            "set times": (1, lambda i: nfs.setattr(handles[int(i)], mtime=(1_000_000_000, 0))),
            "rename": (1, lambda i: nfs.rename(directory, i, directory, f"new {i}")),
            "list": (0, lambda i: nfs.names(directory)),
            "remove": (1, lambda i: nfs.remove(directory, f"new {i}")),
            "look for what isn't there": (0, lambda i: nfs.getattr(directory) and status(nfs.lookup, directory, i)),
            "mkdir, query": (2, lambda i: nfs.mkdir(directory, i)),
            "list inside, rmdir": (2, lambda i: nfs.rmdir(directory, i)),
            "query, create, close, query, open, write, flush": (7, lambda i: nfs.symlink(directory, i, "to")),
            "close, remove": (2, lambda i: nfs.remove(directory, i)),
        }
        for _, call in wanted.values():
            began.append(time.time())
            for name in names:
                call(name)
        began.append(time.time())
        assert contents(gateway.disk()) == {"d": None}
    sent = [float(row[0]) for row in capture.frames(DISSECTOR, "smb.flags.response == 0", "frame.time_epoch")]
    count = {what: sum(start < each < end for each in sent) / CALLS
             for what, start, end in zip(wanted, began, began[1:])}
    assert count == {what: requests for what, (requests, _) in wanted.items()}
