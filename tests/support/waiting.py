"""Waiting for what happens elsewhere."""

import time


def wait_until(condition, seconds=10):
    """Whether the condition came true in time."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.01)
    return True
