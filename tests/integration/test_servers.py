"""Servers as people run them: what they insist on at the logon, and files beyond 4 GiB."""

import os
import subprocess

import pytest
from gateway import Gateway

TODAY = {"ntlm auth": "ntlmv2-only", "raw NTLMv2 auth": "no", "lanman auth": "no"}  # as Debian's comes, but for NT1
SERVERS = {
    "old": ({}, ""),
    "today's": ({**TODAY, "server signing": "auto"}, ""),
    "signs always": ({**TODAY, "server signing": "mandatory"}, ""),
    "signs as it is asked to": ({**TODAY, "server signing": "auto"}, "[{user}/pc/signing={(always)}]\n"),
}


@pytest.mark.parametrize("options, settings", SERVERS.values(), ids=SERVERS)
def test_every_server_lets_the_user_in(options, settings):
    with Gateway({"pc": {"options": options}}, settings) as gateway:
        data = os.urandom(300000)
        gateway.nfs.put(gateway.share(), "f", data)
        assert (gateway.disk() / "f").read_bytes() == data == gateway.nfs.read_all(gateway.nfs.walk(gateway.share(), "f").file)
        assert gateway.errors() == ""
        client = [f"{os.environ['HALDEN_TESTS_DIR']}/test_smb_client", "--gtest_filter=RealServer.*"]
        told = subprocess.run(client, env=gateway.peers["pc"].environment(), capture_output=True, text=True)
        assert "[  PASSED  ] 1 test" in told.stdout, told.stdout
