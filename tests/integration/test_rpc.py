"""The RPC port of the running daemon: what it denies, what it doesn't know, and what it doesn't answer at all."""

import random

import pytest
from daemon import Daemon, sanitized
from flood import arguments_of_procedures, flood
from nfs_raw import MOUNT, NFS, PROCEDURES, Reader, RpcError, auth_null, auth_unix, call_bytes, opaque, u32

HANDLE = b"the root of the test".ljust(32, b"\0")
ARGUMENTS = arguments_of_procedures(HANDLE, opaque(b"name"), b"data!")

# Program, version, procedure, arguments, and what is answered, with the versions from low to high where there are any.
ANSWERS = [
    (NFS, 2, 0, b"", "SUCCESS"), (NFS, 2, 3, b"", "SUCCESS"), (NFS, 2, 7, b"", "SUCCESS"), (MOUNT, 1, 0, b"", "SUCCESS"),
    (NFS, 3, 0, b"", f"PROG_MISMATCH {NFS} {NFS}"), (NFS, 1, 1, b"", f"PROG_MISMATCH {NFS} {NFS}"),
    (MOUNT, 3, 0, b"", f"PROG_MISMATCH {MOUNT} {MOUNT}"), (100000, 2, 0, b"", "PROG_UNAVAIL"),
    (MOUNT, 1, 6, b"", "PROG_UNAVAIL"), (MOUNT, 1, 2, b"", "PROC_UNAVAIL"), (NFS, 2, 18, b"", "PROC_UNAVAIL"),
    # MOUNT takes its arguments apart before it refuses.
    (MOUNT, 1, 1, opaque(b"/export"), "PROC_UNAVAIL"), (MOUNT, 1, 1, u32(8) + b"/export", "GARBAGE_ARGS"),
    *((NFS, 2, PROCEDURES[procedure], whole[:length], "GARBAGE_ARGS")
      for procedure, whole in ARGUMENTS.items() for length in range(0, len(whole), 3)),
]


@pytest.fixture(scope="module")
def daemon():
    with Daemon() as running:
        yield running


@pytest.fixture
def client(daemon):
    with daemon.client(uid=1000, gid=100, groups=range(16)) as made:
        yield made


def answer(client, *call, **parts):
    try:
        client.call(*call, **parts).end()
        return "SUCCESS"
    except RpcError as error:
        return str(error)


def test_calls_that_reach_no_file(client):
    for *call, expected in ANSWERS:
        assert answer(client, *call) == expected, call
    for rpc_version in (0, 1, 3, 0xFFFFFFFF):
        assert answer(client, NFS, 2, 0, rpc_version=rpc_version) == "RPC_MISMATCH 2 2"
    client.credentials = auth_null()
    client.null()


def test_the_largest_call_arrives_whole_and_a_longer_one_is_cut(client):
    client.credentials = auth_unix(1000, 100, range(16), machine=b"m" * 255)
    for size, expected in ((8192, "AUTH_ERROR 2"), (9300, "GARBAGE_ARGS")):  # arguments are read before callers are judged
        assert answer(client, NFS, 2, PROCEDURES["write"], HANDLE + u32(0, 0, size) + opaque(bytes(size))) == expected


def unanswered_calls():
    whole = call_bytes(1, NFS, 2, 0, credentials=auth_unix(0, 0, range(3)))
    yield from (whole[:length] for length in range(len(whole)))
    yield call_bytes(1, NFS, 2, 0, message_type=1)
    yield call_bytes(1, NFS, 2, 0, message_type=2)
    yield call_bytes(1, NFS, 2, 0, verifier=u32(2, 0))
    for credentials in (
            u32(0, 4, 0),  # AUTH_NULL with a body
            u32(3, 0),  # AUTH_DES
            u32(1, 20, 0, 0xFFFFFFFF, 0, 0, 0),  # a name without an end
            u32(1, 20, 0, 0, 0, 0, 0x40000000)):  # more groups than bytes
        yield call_bytes(1, NFS, 2, 0, credentials=credentials)


def test_what_is_no_call_gets_no_answer(client):
    for datagram in unanswered_calls():
        client.send(datagram)
        xid = client.start(NFS, 2, 0)
        assert Reader(client.receive()).u32() == xid, datagram.hex()


def test_a_flood_leaves_the_daemon_running_and_its_memory_flat():
    seed = random.SystemRandom().getrandbits(32)
    print("seed", seed)
    # Freed blocks are kept for a while by the sanitizer, and it notes each place that allocates.
    with Daemon(environment={"ASAN_OPTIONS": "quarantine_size_mb=1:thread_local_quarantine_size_kb=64"}) as daemon:
        flood(daemon, 5000, seed + 1)
        before = daemon.resident()
        answers = flood(daemon, 20000, seed)
        assert daemon.alive()
        assert daemon.resident() - before < (8192 if sanitized() else 1024), "KiB grown"
        assert {"SUCCESS", "GARBAGE_ARGS", "PROG_MISMATCH", "PROG_UNAVAIL", "RPC_MISMATCH"} <= set(answers)
