"""A random walk over a share through NFS, beside a model of what must be there. The same seed takes the same steps.

    walk = RandomWalk(gateway.nfs, gateway.share(), seed)
    for _ in range(1000):
        walk.step()
    walk.check_disk(gateway.disk())

A step that finds something else than the model says raises Mismatch, which names the seed and the step.
"""

import posixpath
import random

from gateway import contents
from nfs_raw import NfsError, status

DATA_BYTES = 30000  # files grow to about twice that
MOST_ENTRIES = 60
NAMES = ["a", "B.TXT", "a longer name.tar.gz", "grün", "日本", "x" * 100, "with;semicolon", "~tilde", "dots..here"]


class Mismatch(AssertionError):
    pass


class RandomWalk:
    """model: path -> bytes of a file, None for a directory; "" is the share. handles: path -> what is known. calls: of NFS."""

    def __init__(self, nfs, share, seed):
        self.nfs, self.seed = nfs, seed
        self.random = random.Random(seed)
        self.model = {"": None}
        self.handles = {"": share}
        self.steps = self.calls = 0

    def step(self):
        self.steps += 1
        action = self.random.choice([
            self.read, self.read, self.read, self.write, self.write, self.write, self.attributes, self.attributes,
            self.missing, self.list, self.truncate, self.create, self.create, self.make_directory, self.rename,
            self.remove])
        try:
            action()
        except (NfsError, Mismatch) as error:
            raise Mismatch(f"seed {self.seed}, step {self.steps}, {action.__name__}: {error}") from error

    # The steps.

    def read(self):
        if path := self.pick(self.files()):
            offset = self.random.randrange(len(self.model[path]) + 10)
            count = self.random.randrange(1, 8193)
            got = self.call(self.nfs.read, self.handle(path), offset, count)
            self.same(got.data, self.model[path][offset:offset + count], path)
            self.same(got.attributes.size, len(self.model[path]), path)

    def write(self):
        if path := self.pick(self.files()):
            old = self.model[path]
            offset = self.random.choice([0, min(len(old), DATA_BYTES), self.random.randrange(DATA_BYTES)])
            data = self.random.randbytes(self.random.choice([1, 100, 4096, 8192]))
            new = old.ljust(offset, b"\0")
            self.model[path] = new[:offset] + data + new[offset + len(data):]
            self.same(self.call(self.nfs.write, self.handle(path), offset, data).size, len(self.model[path]), path)

    def truncate(self):
        if path := self.pick(self.files()):
            size = self.random.randrange(DATA_BYTES)
            self.model[path] = self.model[path][:size].ljust(size, b"\0")
            self.same(self.call(self.nfs.setattr, self.handle(path), size=size).size, size, path)

    def attributes(self):
        path = self.pick(self.model)
        attributes = self.call(self.nfs.getattr, self.handle(path))
        size = attributes.size if self.model[path] is None else len(self.model[path])
        self.same((attributes.type, attributes.size), (2 if self.model[path] is None else 1, size), path)

    def missing(self):
        directory = self.pick(self.directories())
        if name := self.free_name(directory):
            self.refused(2, self.nfs.lookup, self.handle(directory), name)

    def list(self):
        directory = self.pick(self.directories())
        entries = [entry.name for entry in self.call(self.nfs.listing, self.handle(directory))]
        self.same(sorted(entries), sorted([".", "..", *self.children(directory)]), directory)

    def create(self):
        self.make(self.nfs.create, b"", mode=0o644)

    def make_directory(self):
        self.make(self.nfs.mkdir, None, mode=0o755)

    def rename(self):
        path = self.pick([path for path in self.model if path])
        directory = self.pick(self.directories())
        name = self.free_name(directory)
        if path and self.model[path] is not None and self.random.random() < 0.3:  # a file takes the place of another
            name = self.pick(each for each in self.children(directory)
                             if self.model[posixpath.join(directory, each)] is not None)
        if not path or not name or (directory + "/").startswith(path + "/"):
            return
        self.call(self.nfs.rename, self.handle(posixpath.dirname(path)), posixpath.basename(path),
                  self.handle(directory), name)
        to = posixpath.join(directory, name)
        if to == path:
            return
        self.handles.pop(to, None)
        for known in (self.model, self.handles):
            for old in [old for old in known if old == path or old.startswith(path + "/")]:
                known[to + old[len(path):]] = known.pop(old)

    def remove(self):
        if not (path := self.pick([path for path in self.model if path])):
            return
        where = self.handle(posixpath.dirname(path)), posixpath.basename(path)
        if self.children(path):
            return self.refused(66, self.nfs.rmdir, *where)
        self.call(self.nfs.rmdir if self.model[path] is None else self.nfs.remove, *where)
        del self.model[path]
        self.handles.pop(path, None)

    # The server's disk against the model.

    def check_disk(self, folder):
        """Every file of the model is on the disk with its bytes, and nothing else is."""
        found = contents(folder)
        expected = {path.replace(";", ";;"): data for path, data in self.model.items() if path}
        if wrong := [path for path in {**found, **expected} if found.get(path, 0) != expected.get(path, 0)]:
            raise Mismatch(f"seed {self.seed}: the disk differs in {sorted(wrong)}")

    # How steps are built.

    def make(self, call, content, **attributes):
        directory = self.pick(self.directories())
        name = self.free_name(directory)
        if name and len(self.model) < MOST_ENTRIES:
            path = posixpath.join(directory, name)
            self.handles[path] = self.call(call, self.handle(directory), name, **attributes).file
            self.model[path] = content

    def pick(self, paths):
        paths = sorted(paths)
        return self.random.choice(paths) if paths else None

    def files(self):
        return [path for path, data in self.model.items() if data is not None]

    def directories(self):
        return [path for path, data in self.model.items() if data is None and path.count("/") < 3]

    def children(self, directory):
        return [posixpath.basename(path) for path in self.model if path and posixpath.dirname(path) == directory]

    def free_name(self, directory):
        taken = {name.lower() for name in self.children(directory)}
        return self.pick(name for name in NAMES if name.lower() not in taken)

    def handle(self, path):
        if path not in self.handles:
            parent = self.handle(posixpath.dirname(path))
            self.handles[path] = self.call(self.nfs.lookup, parent, posixpath.basename(path)).file
        return self.handles[path]

    def call(self, call, *arguments, **named):
        self.calls += 1
        return call(*arguments, **named)

    def refused(self, code, call, *arguments):
        self.same(self.call(status, call, *arguments), code, arguments[-1])

    @staticmethod
    def same(found, expected, path):
        if found != expected:
            raise Mismatch(f"{path!r}: {found!r:.200}, not {expected!r:.200}")
