"""What goes out as a password, to servers that ask for less than they should, and what stays of it in memory."""

import contextlib
import pathlib
import re
import socket
import struct
import threading

import pytest
from gateway import SMB_PASSWORD, Gateway, free_tcp_port
from nfs_raw import status
from smb_peer import enter_private_network

NEGOTIATE, SESSION_SETUP = b"\x72", b"\x73"
CLEAR = SMB_PASSWORD.upper().encode()


class Relay:
    """Between the daemon and a server: requests go through `request`, replies through `reply`; `logons` keeps setups."""

    def __init__(self, port, request=bytes, reply=bytes):
        self.request, self.reply, self.logons, self.server = request, reply, [], port
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
        return self.request(packet)

    @staticmethod
    def pump(source, target, change):
        with contextlib.suppress(OSError), source.makefile("rb") as packets:
            while head := packets.read(4):
                target.sendall(change(head + packets.read(int.from_bytes(head[1:], "big"))))
        for end in (source, target):
            with contextlib.suppress(OSError):
                end.shutdown(socket.SHUT_RDWR)


def on_negotiate(at, mask):
    """A change that clears the bits of `mask` in a byte of a negotiate message, counted from the SMB header."""
    def change(packet):
        at_ = at + 4
        return packet[:at_] + bytes([packet[at_] & ~mask]) + packet[at_ + 1:] if packet[8:9] == NEGOTIATE else packet
    return change


ASKS_FOR_CLEAR_TEXT = on_negotiate(35, 0x02)
OFFERS_NO_SIGNATURES = on_negotiate(35, 0x0C)
NO_TOKENS = on_negotiate(11, 0x08)


def answers(setup):
    """The secrets in a session setup: in an NTLMSSP token, or in the fields for passwords."""
    if b"NTLMSSP" in setup:
        token = setup.find(b"NTLMSSP\0\3")
        if token < 0:
            return []
        fields = [struct.unpack_from("<HHI", setup, token + at) for at in (12, 20)]
        return [setup[token + start:token + start + length] for length, _, start in fields]
    lm, nt = struct.unpack_from("<HH", setup, 4 + 32 + 1 + 14)
    data = setup[4 + 32 + 1 + 26 + 2:]
    return [data[:lm], data[lm:lm + nt]]


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
    "clear text": ("cleartext", "", "[{user}/pc/cleartext={(1)}]",
                   {"request": NO_TOKENS, "reply": ASKS_FOR_CLEAR_TEXT}),
    "no signatures": ("signing", "[{user}/pc/signing={(always)}]", "", {"reply": OFFERS_NO_SIGNATURES}),
}


@pytest.mark.parametrize("key, forbidding, allowing, way", WAYS.values(), ids=WAYS)
def test_a_weak_logon_has_to_be_allowed(key, forbidding, allowing, way):
    with relayed(forbidding, **way) as (gateway, relay):
        status(gateway.nfs.lookup, gateway.share(), "f")
        assert relay.logons == []
        assert f"the key {key} " in gateway.errors()
    with relayed(allowing, **way) as (gateway, relay):
        assert gateway.nfs.create(gateway.share(), "f").attributes.type == 1
        assert relay.logons


@pytest.mark.parametrize("settings, way", [
    ("", {}), ("", {"request": NO_TOKENS}),
    ("[{user}/pc/cleartext={(1)}]", {"request": NO_TOKENS, "reply": ASKS_FOR_CLEAR_TEXT}),
], ids=["tokens", "answers", "clear"])
def test_nothing_of_a_logon_stays_in_memory(settings, way):
    with relayed(settings, **way) as (gateway, relay):
        assert gateway.nfs.create(gateway.share(), "f").attributes.type == 1
        clear = bool(settings)
        sent = [answer for setup in relay.logons for answer in answers(setup)]
        assert sent[0].startswith(CLEAR) if clear else len(sent[1]) > 24
        pieces = list(memory(gateway.daemon.pid))
        assert any(SMB_PASSWORD.encode("utf-16-le") in piece for piece in pieces), "the profile's copy is found"
        for secret in [CLEAR] if clear else [answer[at:at + 8] for answer in sent for at in (0, 8)]:
            assert not secret.strip(b"\0") or not any(secret in piece for piece in pieces)
