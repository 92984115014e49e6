"""The SMB client against a real server, every packet recorded: an independent dissector must understand both sides."""

import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).parents[2]
CLIENT_TEST = pathlib.Path(os.environ["HALDEN_TESTS_DIR"]) / "test_smb_client"
PORT = 1139

# Requests that the run has to contain, else it proves nothing about them.
COMMANDS = {
    "create directory": 0x00, "delete directory": 0x01, "close": 0x04, "flush": 0x05, "delete": 0x06, "rename": 0x07,
    "set attributes": 0x09, "read": 0x0A, "write": 0x0B, "set times": 0x22, "transaction": 0x25, "move": 0x2A,
    "open": 0x2D, "transaction 2": 0x32, "negotiate": 0x72, "session setup": 0x73, "tree connect": 0x75,
}

# A refusal of a remote call has no counts, but the dissector wants them.
SERVER_QUIRK = "smb.flags.response == 1 && lanman.status != 0"


@pytest.fixture(scope="module")
def run(tmp_path_factory):
    capture = tmp_path_factory.mktemp("smb") / "run.pcapng"
    done = subprocess.run(
        [ROOT / "tests/support/with_smb_peer", "--port", str(PORT), "--capture", capture, "--",
         CLIENT_TEST, "--gtest_filter=RealPeer.*"],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=240)
    return done, capture


def frames(capture, wanted, *fields):
    done = subprocess.run(
        ["tshark", "-2", "-r", capture, "-d", f"tcp.port=={PORT},nbss", "-Y", wanted, "-T", "fields", "-e", "frame.number",
         *(argument for field in fields for argument in ("-e", field))],
        capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return [line.split("\t") for line in done.stdout.splitlines()]


def test_every_operation_succeeds(run):
    done, _ = run
    assert done.returncode == 0, done.stdout
    assert "[  PASSED  ]" in done.stdout and "SKIPPED" not in done.stdout, done.stdout


def test_no_packet_is_malformed(run):
    _, capture = run
    assert frames(capture, f"_ws.malformed && !({SERVER_QUIRK})", "_ws.col.Info") == []


def test_every_request_is_answered_and_none_is_missing(run):
    _, capture = run
    requests = frames(capture, "smb.flags.response == 0", "smb.cmd", "smb.response_in")
    unanswered = [row for row in requests if not row[2]]
    assert unanswered == []
    seen = {int(row[1].split(",")[0], 16) for row in requests}
    assert {name for name, code in COMMANDS.items() if code not in seen} == set()
