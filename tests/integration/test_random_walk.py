"""Random operations beside a model of what must be there, compared with the server's disk in the end: of callers who
don't wait for each other, each in a directory of its own.

HALDEN_SEED=N takes the steps of an earlier run again.
"""

import os
import random
from concurrent.futures import ThreadPoolExecutor

import pytest
from daemon import sanitized
from gateway import EAGER, Gateway
from random_walk import RandomWalk

CALLERS = 6
STEPS = 500 if sanitized() else 1000  # of each
SEED = int(os.environ.get("HALDEN_SEED", random.SystemRandom().getrandbits(32)))
RESTLESS = EAGER + """[{user}/*/*/openfilettl={(0)}]
[{user}/*/maxopenfiles={(2)}]
[nfsserver/server/cleanupdelay={(1)}]
"""


@pytest.mark.parametrize("settings", ["", "[{user}/*/*/syncwrites={(0)}]\n", RESTLESS], ids=["default", "async", "restless"])
def test_a_random_walk(settings):
    print(f"HALDEN_SEED={SEED}")

    def walk(number):
        with gateway.client() as nfs:
            steps = RandomWalk(nfs, nfs.mkdir(share, str(number)).file, SEED + number)
            for _ in range(STEPS):
                steps.step()
        return steps

    with Gateway(settings=settings) as gateway, ThreadPoolExecutor(CALLERS) as callers:
        share = gateway.share()
        for number, steps in enumerate(callers.map(walk, range(CALLERS))):
            steps.check_disk(gateway.disk() / str(number))
        assert gateway.errors() == ""
