"""What the tests of this folder have in common. HALDEN_BIN_DIR says where the built programs are."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from gateway import Gateway  # noqa: E402


@pytest.fixture(scope="module")
def gateway(request):
    """One for all the tests of a file: GATEWAY there holds the arguments."""
    with Gateway(**getattr(request.module, "GATEWAY", {})) as running:
        yield running


@pytest.fixture
def nfs(gateway):
    return gateway.nfs


@pytest.fixture
def place(gateway, request):
    """A directory of the test's own: its handle and its folder on the server's disk."""
    name = f"{len(list(gateway.disk().iterdir()))} {request.node.originalname}"
    return gateway.nfs.mkdir(gateway.share(), name).file, gateway.disk() / name
