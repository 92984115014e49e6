"""How the address of a machine is found: through DNS, a name server, broadcast, in the order that the configuration gives."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from gateway import Gateway  # noqa: E402

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
    ("pc", "[MACHINE/dnslookup={(2)}]\n", ["DNS", "NetBIOS broadcasts"]),
    ("pc", "[MACHINE/dnslookup={(0)}]\n", ["NetBIOS broadcasts"]),
])
def test_the_user_is_told_what_was_tried_in_vain(machine, more, tried):
    with Gateway(machines={machine: ANYWHERE}, settings=looked_up(machine, "NOBODY", more)) as gateway:
        gateway.nfs.listing(gateway.share())
        line = next(line for line in gateway.errors().splitlines() if "Using " in line)
        names = [machine if means == "DNS" else "NOBODY" for means in tried]
        means = "; ".join(f"Failed to find remote name({name}) Using {how}" for name, how in zip(names, tried))
        assert f": looking for the machine: {means}; give its address in the key ipaddress" in line
