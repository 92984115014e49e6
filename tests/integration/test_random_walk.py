"""Random operations beside a model of what must be there, compared with the server's disk in the end.

HALDEN_SEED=N takes the steps of an earlier run again.
"""

import os
import pathlib
import random
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))
from daemon import sanitized  # noqa: E402
from gateway import Gateway  # noqa: E402
from random_walk import RandomWalk  # noqa: E402

STEPS = 2000 if sanitized() else 4000
SEED = int(os.environ.get("HALDEN_SEED", random.SystemRandom().getrandbits(32)))
RESTLESS = "[{user}/*/*/attribttl={(0)}]\n[{user}/*/*/contentsttl={(0)}]\n[{user}/*/*/openfilettl={(0)}]\n" \
           "[{user}/*/maxopenfiles={(2)}]\n[nfsserver/server/cleanupdelay={(1)}]\n"


@pytest.mark.parametrize("settings", ["", "[{user}/*/*/syncwrites={(0)}]\n", RESTLESS], ids=["default", "async", "restless"])
def test_a_random_walk(settings):
    print(f"HALDEN_SEED={SEED}")
    with Gateway(settings=settings) as gateway:
        walk = RandomWalk(gateway.nfs, gateway.share(), SEED)
        for _ in range(STEPS):
            walk.step()
        walk.check_disk(gateway.disk())
        assert gateway.errors() == ""
