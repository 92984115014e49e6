"""How the address of a machine is found: through DNS, a name server, broadcast, in the order that the configuration gives."""

import socket
import subprocess
import threading
import time

import pytest
from gateway import Gateway
from nfs_raw import status, u32
from smb_peer import enter_private_network

ANYWHERE = {"nmbd": True, "options": {"bind interfaces only": "no"}}
WINS = "[nfsserver/server/winsservers={(127.0.0.2)}]\n"


def looked_up(machine, nbtname, more=""):
    user = "[{user}/%s/" % machine
    return f"{user}ipaddress={{(*)}}]\n{user}nbtname={{({nbtname})}}]\n{more.replace('MACHINE/', user[1:])}"


def test_a_name_server_knows_the_machine():
    with Gateway(machines={"pc": ANYWHERE}, settings=looked_up("pc", "PEER", WINS)) as gateway:
        (gateway.disk() / "found").touch()
        assert gateway.nfs.lookup(gateway.share(), "found").attributes.type == 1
        assert gateway.errors() == ""


@pytest.mark.parametrize("machine, more, tried", [
    ("pc", WINS, ["WINS", "NetBIOS broadcasts", "DNS"]),
    ("pc.nowhere", WINS, ["DNS", "WINS", "NetBIOS broadcasts"]),
    ("pc", "[MACHINE/dnslookup={(0)}]\n", ["NetBIOS broadcasts"]),
])
def test_the_user_is_told_what_was_tried_in_vain(machine, more, tried):
    with Gateway(machines={machine: ANYWHERE}, settings=looked_up(machine, "NOBODY", more)) as gateway:
        assert status(gateway.nfs.listing, gateway.share()) == 5
        line = next(line for line in gateway.errors().splitlines() if "Using " in line)
        names = [machine if means == "DNS" else "NOBODY" for means in tried]
        means = "; ".join(f"Failed to find remote name({name}) Using {how}" for name, how in zip(names, tried))
        assert f": looking for the machine: {means}; give its address in the key ipaddress" in line


def name_server(folder):
    """The host's only one, on 127.0.0.1. Gives the names it was asked for and an event: until that is set, it answers
    for pc.test alone."""
    enter_private_network()
    (folder / "resolv.conf").write_text("nameserver 127.0.0.1\n")
    subprocess.run(["mount", "--bind", folder / "resolv.conf", "/etc/resolv.conf"], check=True)
    asked, awake = [], threading.Event()
    server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    server.bind(("127.0.0.1", 53))

    def serve():
        while True:
            question, caller = server.recvfrom(512)
            end = question.index(b"\0", 12)
            asked.append(question[13:end].replace(b"\x04", b".").decode())
            if asked[-1] == "pc.test" or awake.is_set():
                record = b"\xc0\x0c\0\1\0\1" + u32(60) + b"\0\4\x7f\0\0\1"
                server.sendto(question[:2] + b"\x81\x80\0\1\0\1\0\0\0\0" + question[12:end + 5] + record, caller)

    threading.Thread(target=serve, daemon=True).start()
    return asked, awake


def test_a_slow_name_server_holds_only_its_own_machine_up(tmp_path):
    """The last one here, for the name server stays until the process ends."""
    settings = "".join(f"[{{user}}/{machine}/ipaddress={{({machine}.test)}}]\n" for machine in ("pc", "slow"))
    asked, awake = name_server(tmp_path)
    with Gateway({"pc": {}, "slow": {}}, settings) as gateway, gateway.client() as second:
        waiting = second.begin("readdir", gateway.share("slow"), 0, 4096)
        file = gateway.nfs.create(gateway.share("pc"), "f", mode=0o644).file
        end = time.monotonic() + 3  # longer than the resolver waits before it asks again
        while time.monotonic() < end:
            began = time.monotonic()
            gateway.nfs.getattr(file)
            assert time.monotonic() - began < 0.5
        awake.set()
        assert second.finish(waiting).u32() == 0
    assert set(asked) == {"pc.test", "slow.test"} and asked.count("pc.test") == 1 and asked.count("slow.test") >= 2
