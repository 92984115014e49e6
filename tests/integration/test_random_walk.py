"""Random operations beside a model of what must be there, compared with the server's disk in the end.

HALDEN_SEED=N takes the steps of an earlier run again.
"""

import os
import random

import pytest
from daemon import sanitized
from gateway import EAGER, Gateway
from random_walk import RandomWalk

STEPS = 2000 if sanitized() else 4000
SEED = int(os.environ.get("HALDEN_SEED", random.SystemRandom().getrandbits(32)))
RESTLESS = EAGER + """[{user}/*/*/openfilettl={(0)}]
[{user}/*/maxopenfiles={(2)}]
[nfsserver/server/cleanupdelay={(1)}]
"""


@pytest.mark.parametrize("settings", ["", "[{user}/*/*/syncwrites={(0)}]\n", RESTLESS], ids=["default", "async", "restless"])
def test_a_random_walk(settings):
    print(f"HALDEN_SEED={SEED}")
    with Gateway(settings=settings) as gateway:
        walk = RandomWalk(gateway.nfs, gateway.share(), SEED)
        for _ in range(STEPS):
            walk.step()
        walk.check_disk(gateway.disk())
        assert gateway.errors() == ""
