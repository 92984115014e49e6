"""An NFS version 2 client made of raw bytes: RFC 1057 and RFC 1094 by hand, with sockets and struct alone.

    with NfsClient(port, uid=1000, gid=100, groups=[4, 24]) as client:
        handle, attributes = client.lookup(root, "fred")
        client.create(handle, "new", mode=0o644)

A status other than NFS_OK raises NfsError; an answer that isn't a success raises RpcError; no answer within `timeout`
raises NoAnswer. Every reply is read strictly: a byte too many or too few, or padding that isn't zero, is a BadReply.
Nothing is ever sent twice: `start` and `begin` send a call and give its xid, `finish` waits for that reply while others
are kept.
"""

import collections
import contextlib
import functools
import itertools
import os
import socket
import struct
import time
from collections import namedtuple

NFS, NFS_VERSION, MOUNT = 100003, 2, 100005
UNCHANGED = 0xFFFFFFFF
SO_RCVBUFFORCE = 33
ACCEPT_STATUS = ["SUCCESS", "PROG_UNAVAIL", "PROG_MISMATCH", "PROC_UNAVAIL", "GARBAGE_ARGS"]
PROCEDURES = {name: number for number, name in enumerate(
    "null getattr setattr root lookup readlink read writecache write create remove rename link symlink mkdir rmdir "
    "readdir statfs".split())}

# What the arguments of each procedure, and its result behind the status, are made of. h: a handle, n: a name, d: data,
# w: a number, c: the number of bytes wanted, s: attributes to set, a: attributes, e: entries of a directory.
SHAPES = {
    "getattr": ("h", "a"), "setattr": ("hs", "a"), "lookup": ("hn", "ha"), "readlink": ("h", "n"), "read": ("hwcw", "ad"),
    "write": ("hwwwd", "a"), "create": ("hns", "ha"), "remove": ("hn", ""), "rename": ("hnhn", ""), "link": ("hhn", ""),
    "symlink": ("hnns", ""), "mkdir": ("hns", "ha"), "rmdir": ("hn", ""), "readdir": ("hwc", "e"), "statfs": ("h", "wwwww"),
}
Time = namedtuple("Time", "seconds useconds")
Fattr = namedtuple("Fattr", "type mode nlink uid gid size blocksize rdev blocks fsid fileid atime mtime ctime")
DirOpRes = namedtuple("DirOpRes", "file attributes")
ReadRes = namedtuple("ReadRes", "attributes data")
Entry = namedtuple("Entry", "fileid name cookie")
ReaddirRes = namedtuple("ReaddirRes", "entries eof")
StatfsRes = namedtuple("StatfsRes", "tsize bsize blocks bfree bavail")
RESULTS = {"ha": DirOpRes, "ad": ReadRes, "wwwww": StatfsRes}


class NfsError(Exception):
    """The server did what it was asked to try, and says why it couldn't."""

    def __init__(self, status):
        super().__init__(f"NFS status {status}")
        self.status = status


class RpcError(Exception):
    """The call was accepted but not served, or denied. `name` says why; numbers are versions, or why a caller is refused."""

    def __init__(self, name, *numbers):
        super().__init__(" ".join(map(str, (name, *numbers))))
        self.name = name


class NoAnswer(Exception):
    pass


class BadReply(Exception):
    pass


def status(call, *arguments, **named):
    """The NFS status of a client's call: 0, or that of its refusal."""
    try:
        call(*arguments, **named)
    except NfsError as error:
        return error.status
    return 0


def u32(*values):
    return struct.pack(f">{len(values)}I", *values)


def opaque(data):
    return u32(len(data)) + data + bytes(-len(data) % 4)


def auth_null():
    return u32(0, 0)


def auth_unix(uid, gid, groups=(), machine=b"raw"):
    body = u32(0) + opaque(machine) + u32(uid, gid, len(groups), *groups)
    return u32(1, len(body)) + body


def sattr(mode=UNCHANGED, uid=UNCHANGED, gid=UNCHANGED, size=UNCHANGED, atime=(UNCHANGED,) * 2, mtime=(UNCHANGED,) * 2):
    """Attributes to set; times are (seconds, microseconds). What isn't named stays as it is."""
    return u32(mode, uid, gid, size, *atime, *mtime)


def call_bytes(xid, program, version, procedure, args=b"", credentials=auth_null(), verifier=auth_null(), rpc_version=2,
               message_type=0):
    """A whole call, as malformed as the caller wants it."""
    return u32(xid, message_type, rpc_version, program, version, procedure) + credentials + verifier + args


class Reader:
    """Takes a reply apart, strictly."""

    def __init__(self, data, encoding="utf-8"):
        self.data, self.encoding, self.position = data, encoding, 0

    def raw(self, count):
        if count > len(self.data) - self.position:
            raise BadReply(f"{count} bytes wanted at {self.position} of {len(self.data)}")
        self.position += count
        return self.data[self.position - count:self.position]

    def u32(self):
        return int.from_bytes(self.raw(4), "big")

    def opaque(self):
        data = self.raw(self.u32())
        if any(self.raw(-len(data) % 4)):
            raise BadReply("padding isn't zero")
        return data

    def choice(self, count):
        """A number below `count`."""
        if (value := self.u32()) >= count:
            raise BadReply(f"{value} instead of one of {count}")
        return value

    def fattr(self):
        return Fattr(*(self.u32() for _ in range(11)), *(Time(self.u32(), self.u32()) for _ in range(3)))

    def entries(self):
        entries = []
        while self.choice(2):
            entries.append(Entry(self.u32(), self.opaque().decode(self.encoding), self.u32()))
        return ReaddirRes(entries, bool(self.choice(2)))

    def result(self, shape):
        """All of a result: what its one letter stands for, a named tuple for several, None for none."""
        parts = {"h": lambda: self.raw(32), "n": lambda: self.opaque().decode(self.encoding), "d": self.opaque, "w": self.u32,
                 "a": self.fattr, "e": self.entries}
        values = [parts[letter]() for letter in shape]
        return self.end(RESULTS[shape](*values) if shape in RESULTS else next(iter(values), None))

    def end(self, result=None):
        """`result`, if nothing is left."""
        if self.position != len(self.data):
            raise BadReply(f"{len(self.data) - self.position} bytes too many")
        return result


class NfsClient:
    """One socket. Credentials are AUTH_UNIX when a uid is given (they may be changed at any time), else AUTH_NULL.
    Names are str, sent in `encoding`, or bytes, sent as they are; names come back as str.

    Each procedure is a method that takes the arguments of its shape; attributes to set are named, as in sattr."""

    def __init__(self, port, uid=None, gid=0, groups=(), timeout=5.0, encoding="iso-8859-1"):
        self.timeout, self.encoding = timeout, encoding
        self.credentials = auth_null() if uid is None else auth_unix(uid, gid, groups)
        self.xid = int.from_bytes(os.urandom(4), "big")
        self.replies = {}
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        with contextlib.suppress(PermissionError):  # room for the replies to many calls at once takes a privilege
            self.socket.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, 1 << 21)
        self.socket.connect(("127.0.0.1", port))
        self.send = self.socket.send

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def receive(self, timeout=None):
        """The next datagram, or None when none comes in time."""
        self.socket.settimeout(self.timeout if timeout is None else timeout)
        try:
            return self.socket.recv(65536)
        except (socket.timeout, BlockingIOError):
            return None

    def start(self, program, version, procedure, args=b"", **parts):
        """Sends a call and gives its xid. `parts` are those of call_bytes."""
        self.xid = (self.xid + 1) & 0xFFFFFFFF
        self.send(call_bytes(self.xid, program, version, procedure, args, **{"credentials": self.credentials, **parts}))
        return self.xid

    def begin(self, procedure, *values, **attributes):
        """Sends a call of NFS and gives its xid."""
        parts = {"h": bytes, "n": self._name, "d": opaque, "w": u32, "c": u32, "s": lambda named: sattr(**named)}
        shape = SHAPES[procedure][0]
        values += (attributes,) * shape.endswith("s")
        args = b"".join(parts[letter](value) for letter, value in zip(shape, values, strict=True))
        return self.start(NFS, NFS_VERSION, PROCEDURES[procedure], args)

    def finish(self, xid):
        """The results of the call, as a Reader behind the RPC header."""
        deadline = time.monotonic() + self.timeout
        while xid not in self.replies:
            datagram = self.receive(max(deadline - time.monotonic(), 0))
            if datagram is None:
                raise NoAnswer(f"xid {xid:#x}")
            self.replies[Reader(datagram).u32()] = datagram
        return self.results(self.replies.pop(xid))

    def call(self, program, version, procedure, args=b"", **parts):
        return self.finish(self.start(program, version, procedure, args, **parts))

    def results(self, datagram):
        """A reply's results, or what it says instead, as an exception."""
        reply = Reader(datagram, self.encoding)
        reply.u32()
        if reply.u32() != 1:
            raise BadReply("not a reply")
        if reply.choice(2):
            raise reply.end(RpcError("AUTH_ERROR", reply.u32()) if reply.choice(2) else
                            RpcError("RPC_MISMATCH", reply.u32(), reply.u32()))
        if reply.u32() or reply.u32():
            raise BadReply("a verifier")
        accepted = ACCEPT_STATUS[reply.choice(len(ACCEPT_STATUS))]
        if accepted == "SUCCESS":
            return reply
        versions = (reply.u32(), reply.u32()) if accepted == "PROG_MISMATCH" else ()
        raise reply.end(RpcError(accepted, *versions))

    def result(self, procedure, *values, **attributes):
        """Makes a call of NFS and gives its result."""
        reply = self.finish(self.begin(procedure, *values, **attributes))
        if code := reply.u32():
            raise reply.end(NfsError(code))
        return reply.result(SHAPES[procedure][1])

    def __getattr__(self, procedure):
        if procedure not in SHAPES:
            raise AttributeError(procedure)
        return functools.partial(self.result, procedure)

    def null(self):
        self.call(NFS, NFS_VERSION, 0).end()

    def read(self, file, offset=0, count=8192):
        return self.result("read", file, offset, count, count)

    def write(self, file, offset, data):
        return self.result("write", file, offset, offset, len(data), data)

    def readdir(self, directory, cookie=0, count=8192):
        """One page. Cookies are numbers."""
        return self.result("readdir", directory, cookie, count)

    # Made of procedures.

    def listing(self, directory, count=8192):
        """All entries of a directory, page by page."""
        entries, page = [], self.readdir(directory, 0, count)
        while not page.eof:
            entries += page.entries
            page = self.readdir(directory, page.entries[-1].cookie, count)
        return entries + page.entries

    def names(self, directory, count=8192):
        """Of all entries but the directory itself and the one above it."""
        return sorted(entry.name for entry in self.listing(directory, count) if entry.name not in (".", ".."))

    def walk(self, directory, path):
        """LOOKUP along a path of names separated by "/"; a DirOpRes."""
        return functools.reduce(lambda found, name: self.lookup(found.file, name), path.split("/"), DirOpRes(directory, None))

    def read_all(self, file, count=8192):
        data = bytearray()
        while piece := self.read(file, len(data), count).data:
            data += piece
        return bytes(data)

    def write_all(self, file, data, count=8192):
        for offset in range(0, len(data), count):
            self.write(file, offset, data[offset:offset + count])

    def put(self, directory, name, data):
        """A new file with its contents; its handle."""
        file = self.create(directory, name, mode=0o644).file
        self.write_all(file, data)
        return file

    def pipelined(self, calls, window=16):
        """Makes calls, (procedure, *arguments), with up to `window` of them on their way. Gives of each, in order, its
        NFS status and the Reader behind it."""
        waiting = collections.deque()
        for call in itertools.chain(calls, [None] * window):
            if waiting and (not call or len(waiting) == window):
                reply = self.finish(waiting.popleft())
                yield reply.u32(), reply
            if call:
                waiting.append(self.begin(*call))

    def _name(self, name):
        return opaque(name.encode(self.encoding) if isinstance(name, str) else name)
