"""The daemon's conversation with real servers, every packet recorded: an independent dissector must understand both sides."""

from gateway import Gateway
from smb_peer import PORT, Capture, enter_private_network

DISSECTOR = f"tcp.port=={PORT},nbss"
# A mode is told to the server only where an attribute stands for it.
DIALECTS = {"run": "", "old": "[{user}/pc/oldsetattr={(1)}]\n[{user}/*/*/hidden={(1)}]"}
# Requests that the run has to contain, else it proves nothing about them.
COMMANDS = {
    "create directory": 0x00, "delete directory": 0x01, "close": 0x04, "flush": 0x05, "delete": 0x06, "rename": 0x07,
    "set attributes": 0x09, "read": 0x0A, "write": 0x0B, "set times": 0x22, "open": 0x2D, "transaction 2": 0x32,
    "negotiate": 0x72, "session setup": 0x73, "tree connect": 0x75,
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
        assert capture.frames(DISSECTOR, "_ws.malformed", "frame.number", "_ws.col.Info") == []
        requests = capture.frames(DISSECTOR, "smb.flags.response == 0", "frame.number", "smb.cmd", "smb.response_in")
        assert [row for row in requests if not row[2]] == []
        seen |= {int(row[1].split(",")[0], 16) for row in requests}
    assert {name for name, code in COMMANDS.items() if code not in seen} == set()
