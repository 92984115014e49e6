"""What goes out as a password, to servers that ask for less than they should, and what stays of it in memory."""

import contextlib
import pathlib
import re
import socket
import threading

import pytest
from gateway import SMB_PASSWORD, Gateway, free_tcp_port
from nfs_raw import status
from smb_peer import enter_private_network

NEGOTIATE, SESSION_SETUP = b"\x72", b"\x73"
CLEAR = SMB_PASSWORD.upper().encode()


class Relay:
    """Between the daemon and a server: replies go through `reply`, and `logons` keeps session setups."""

    def __init__(self, port, reply=bytes):
        self.reply, self.logons, self.server = reply, [], port
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        with contextlib.suppress(OSError):
            while True:
                client = self.listener.accept()[0]
                server = socket.create_connection(("127.0.0.1", self.server))
                for way in ((client, server, self.sent), (server, client, self.reply)):
                    threading.Thread(target=self.pump, args=way, daemon=True).start()

    def sent(self, packet):
        if packet[8:9] == SESSION_SETUP:
            self.logons.append(packet)
        return packet

    @staticmethod
    def pump(source, target, change):
        with contextlib.suppress(OSError), source.makefile("rb") as packets:
            while head := packets.read(4):
                target.sendall(change(head + packets.read(int.from_bytes(head[1:], "big"))))
        for end in (source, target):
            with contextlib.suppress(OSError):
                end.shutdown(socket.SHUT_RDWR)


def asks_for_clear_text(packet):
    """A reply to negotiate loses the bit that says that passwords are encrypted."""
    at = 4 + 35
    return packet[:at] + bytes([packet[at] & ~2]) + packet[at + 1:] if packet[8:9] == NEGOTIATE else packet


def memory(pid):
    """What a process may write to, in pieces."""
    with open(f"/proc/{pid}/mem", "rb", buffering=0) as whole:
        for line in pathlib.Path(f"/proc/{pid}/maps").read_text().splitlines():
            start, end = (int(part, 16) for part in re.match(r"(\w+)-(\w+) rw", line).groups()) if " rw" in line else (0, 0)
            if 0 < end - start <= 1 << 28:
                whole.seek(start)
                with contextlib.suppress(OSError):
                    yield whole.read(end - start)


@contextlib.contextmanager
def relayed(settings="", **changes):
    enter_private_network()
    relay = Relay(free_tcp_port(), **changes)
    with Gateway({"pc": {"port": relay.server}}, f"[{{user}}/pc/port={{({relay.port})}}]\n{settings}") as gateway:
        yield gateway, relay


WAYS = {  # the key that is to be named, settings that forbid and that allow it, and what makes it weak
    "clear text": ("cleartext", "", "[{user}/pc/cleartext={(1)}]", {"reply": asks_for_clear_text}),
    "less than ntlmv2, which is unknown": ("minauth", "[{user}/pc/minauth={(ntlmv2)}]", "", {}),
    "no signatures": ("signing", "[{user}/pc/signing={(always)}]", "[{user}/pc/signing={(never)}]", {}),
}


@pytest.mark.parametrize("key, forbidding, allowing, way", WAYS.values(), ids=WAYS)
def test_a_weak_logon_has_to_be_allowed(key, forbidding, allowing, way):
    with relayed(forbidding, **way) as (gateway, relay):
        status(gateway.nfs.lookup, gateway.share(), "f")
        assert relay.logons == []
        assert f"the key {key} " in gateway.errors()
    with relayed(allowing, **way) as (gateway, relay):
        assert gateway.nfs.create(gateway.share(), "f").attributes.type == 1
        assert len(relay.logons) == 1


@pytest.mark.parametrize("settings, way", [("", {}), ("[{user}/pc/minauth={(lm)}]", {}),
                                           ("[{user}/pc/cleartext={(1)}]", {"reply": asks_for_clear_text})],
                         ids=["nt", "lm", "clear"])
def test_nothing_of_a_logon_stays_in_memory(settings, way):
    with relayed(settings, **way) as (gateway, relay):
        assert gateway.nfs.create(gateway.share(), "f").attributes.type == 1
        data = relay.logons[0][4 + 32 + 1 + 26 + 2:]
        clear = bool(way)
        sent = [data[:len(CLEAR)]] if clear else [data[:24], data[24:48]]
        assert (sent == [CLEAR]) if clear else (len(set(sent)) == (2 if "lm" in settings else 1))
        pieces = list(memory(gateway.daemon.pid))
        assert any(SMB_PASSWORD.encode("utf-16-le") in piece for piece in pieces), "the profile's copy is found"
        for secret in sent:
            halves = [secret] if clear else [secret[:8], secret[8:16], secret[16:]]
            assert not any(half in piece for piece in pieces for half in halves)
