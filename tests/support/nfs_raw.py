"""An NFS version 2 client made of raw bytes: RFC 1057 and RFC 1094 by hand, with sockets and struct alone.

    with NfsClient(port, uid=1000, gid=100, groups=[4, 24]) as client:
        root = b"any 32 bytes".ljust(32, b"\\0")
        client.getattr(root).mode
        handle, attributes = client.lookup(root, "fred")
        client.read(handle, 0, 8192).data

A status other than NFS_OK raises NfsError; an answer that isn't a success raises RpcError; no answer within `timeout`
raises NoAnswer. Every reply is read strictly: a byte too many or too few, or padding that isn't zero, is a BadReply.
Nothing is ever sent twice: `start` sends a call and gives its xid, `finish` waits for that reply while others are kept.
"""

import collections
import contextlib
import itertools
import os
import socket
import struct
import time
from collections import namedtuple

NFS, NFS_VERSION = 100003, 2
MOUNT = 100005
UNCHANGED = 0xFFFFFFFF
SO_RCVBUFFORCE = 33

PROCEDURES = {name: number for number, name in enumerate(
    "null getattr setattr root lookup readlink read writecache write create remove rename link symlink mkdir rmdir "
    "readdir statfs".split())}
STATUS = {
    0: "NFS_OK", 1: "NFSERR_PERM", 2: "NFSERR_NOENT", 5: "NFSERR_IO", 6: "NFSERR_NXIO", 13: "NFSERR_ACCES",
    17: "NFSERR_EXIST", 18: "NFSERR_XDEV", 19: "NFSERR_NODEV", 20: "NFSERR_NOTDIR", 21: "NFSERR_ISDIR", 27: "NFSERR_FBIG",
    28: "NFSERR_NOSPC", 30: "NFSERR_ROFS", 63: "NFSERR_NAMETOOLONG", 66: "NFSERR_NOTEMPTY", 69: "NFSERR_DQUOT",
    70: "NFSERR_STALE", 99: "NFSERR_WFLUSH",
}
ACCEPT_STATUS = ["SUCCESS", "PROG_UNAVAIL", "PROG_MISMATCH", "PROC_UNAVAIL", "GARBAGE_ARGS"]

Time = namedtuple("Time", "seconds useconds")
Fattr = namedtuple("Fattr", "type mode nlink uid gid size blocksize rdev blocks fsid fileid atime mtime ctime")
DirOpRes = namedtuple("DirOpRes", "file attributes")
ReadRes = namedtuple("ReadRes", "attributes data")
Entry = namedtuple("Entry", "fileid name cookie")
ReaddirRes = namedtuple("ReaddirRes", "entries eof")
StatfsRes = namedtuple("StatfsRes", "tsize bsize blocks bfree bavail")


class NfsError(Exception):
    """The server did what it was asked to try, and says why it couldn't."""

    def __init__(self, status):
        super().__init__(STATUS.get(status, str(status)))
        self.status = status
        self.name = STATUS.get(status)


class RpcError(Exception):
    """The call was accepted but not served, or denied. `name` says why; `low` and `high` are set for PROG_MISMATCH and
    RPC_MISMATCH, `auth_status` for AUTH_ERROR."""

    def __init__(self, name, low=None, high=None, auth_status=None):
        super().__init__(name if low is None else f"{name} {low} {high}")
        self.name, self.low, self.high, self.auth_status = name, low, high, auth_status


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


def sattr(mode=UNCHANGED, uid=UNCHANGED, gid=UNCHANGED, size=UNCHANGED, atime=None, mtime=None):
    """Attributes to set; times are (seconds, microseconds). What isn't named stays as it is."""
    unchanged = (UNCHANGED, UNCHANGED)
    return u32(mode, uid, gid, size, *(atime or unchanged), *(mtime or unchanged))


def call_bytes(xid, program, version, procedure, args=b"", credentials=auth_null(), verifier=auth_null(), rpc_version=2,
               message_type=0):
    """A whole call, as malformed as the caller wants it."""
    return u32(xid, message_type, rpc_version, program, version, procedure) + credentials + verifier + args


class Reader:
    """Takes a reply apart, strictly."""

    def __init__(self, data):
        self.data, self.position = data, 0

    def raw(self, count):
        if count > len(self.data) - self.position:
            raise BadReply(f"{count} bytes wanted at {self.position} of {len(self.data)}")
        self.position += count
        return self.data[self.position - count:self.position]

    def u32(self):
        return struct.unpack(">I", self.raw(4))[0]

    def opaque(self):
        data = self.raw(self.u32())
        if any(self.raw(-len(data) % 4)):
            raise BadReply("padding isn't zero")
        return data

    def choice(self, count):
        """A number below `count`."""
        value = self.u32()
        if value >= count:
            raise BadReply(f"{value} instead of one of {count}")
        return value

    def fattr(self):
        return Fattr(*(self.u32() for _ in range(11)), *(Time(self.u32(), self.u32()) for _ in range(3)))

    def end(self, result=None):
        """`result`, if nothing is left."""
        if self.position != len(self.data):
            raise BadReply(f"{len(self.data) - self.position} bytes too many")
        return result


class NfsClient:
    """One socket. Credentials are AUTH_UNIX when a uid is given (they may be changed at any time), else AUTH_NULL.
    Names are str, sent in `encoding`, or bytes, sent as they are; names come back as str."""

    def __init__(self, port, uid=None, gid=0, groups=(), timeout=5.0, encoding="iso-8859-1"):
        self.timeout, self.encoding = timeout, encoding
        self.credentials = auth_null() if uid is None else auth_unix(uid, gid, groups)
        self.xid = int.from_bytes(os.urandom(4), "big")
        self.replies = {}
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        with contextlib.suppress(PermissionError):  # room for the replies to many calls at once takes a privilege
            self.socket.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, 1 << 21)
        self.socket.connect(("127.0.0.1", port))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    # Datagrams and calls.

    def send(self, datagram):
        self.socket.send(datagram)

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
        parts.setdefault("credentials", self.credentials)
        self.send(call_bytes(self.xid, program, version, procedure, args, **parts))
        return self.xid

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

    @staticmethod
    def results(datagram):
        """A reply's results, or what it says instead, as an exception."""
        reply = Reader(datagram)
        reply.u32()
        if reply.u32() != 1:
            raise BadReply("not a reply")
        if reply.choice(2):
            raise reply.end(RpcError("AUTH_ERROR", auth_status=reply.u32()) if reply.choice(2) else
                            RpcError("RPC_MISMATCH", reply.u32(), reply.u32()))
        if reply.u32() or reply.u32():
            raise BadReply("a verifier")
        status = ACCEPT_STATUS[reply.choice(len(ACCEPT_STATUS))]
        if status == "SUCCESS":
            return reply
        raise reply.end(RpcError(status, reply.u32(), reply.u32()) if status == "PROG_MISMATCH" else RpcError(status))

    # NFS procedures.

    def null(self):
        self.call(NFS, NFS_VERSION, 0).end()

    def getattr(self, file):
        return self._attrstat("getattr", file)

    def setattr(self, file, **attributes):
        """Attributes as sattr takes them."""
        return self._attrstat("setattr", file + sattr(**attributes))

    def lookup(self, directory, name):
        return self._diropres("lookup", directory + self._name(name))

    def readlink(self, file):
        reply = self._ok("readlink", file)
        return reply.end(reply.opaque().decode(self.encoding))

    def read(self, file, offset=0, count=8192):
        reply = self._ok("read", file + u32(offset, count, count))
        return reply.end(ReadRes(reply.fattr(), reply.opaque()))

    def write(self, file, offset, data):
        return self._attrstat("write", file + u32(offset, offset, len(data)) + opaque(data))

    def create(self, directory, name, **attributes):
        return self._diropres("create", directory + self._name(name) + sattr(**attributes))

    def remove(self, directory, name):
        self._ok("remove", directory + self._name(name)).end()

    def rename(self, from_directory, from_name, to_directory, to_name):
        self._ok("rename", from_directory + self._name(from_name) + to_directory + self._name(to_name)).end()

    def link(self, file, to_directory, to_name):
        self._ok("link", file + to_directory + self._name(to_name)).end()

    def symlink(self, directory, name, target, **attributes):
        self._ok("symlink", directory + self._name(name) + self._name(target) + sattr(**attributes)).end()

    def mkdir(self, directory, name, **attributes):
        return self._diropres("mkdir", directory + self._name(name) + sattr(**attributes))

    def rmdir(self, directory, name):
        self._ok("rmdir", directory + self._name(name)).end()

    def readdir(self, directory, cookie=0, count=8192):
        """One page. Cookies are numbers."""
        reply = self._ok("readdir", directory + u32(cookie, count))
        entries = []
        while reply.choice(2):
            entries.append(Entry(reply.u32(), reply.opaque().decode(self.encoding), reply.u32()))
        return reply.end(ReaddirRes(entries, bool(reply.choice(2))))

    def statfs(self, file):
        reply = self._ok("statfs", file)
        return reply.end(StatfsRes(*(reply.u32() for _ in range(5))))

    # Made of procedures.

    def listing(self, directory, count=8192):
        """All entries of a directory, page by page."""
        entries, cookie = [], 0
        while True:
            page = self.readdir(directory, cookie, count)
            entries += page.entries
            if page.eof:
                return entries
            if not page.entries:
                raise BadReply("an empty page that isn't the last")
            cookie = page.entries[-1].cookie

    def walk(self, directory, path):
        """LOOKUP along a path of names separated by "/"; a DirOpRes."""
        found = DirOpRes(directory, None)
        for name in path.split("/"):
            found = self.lookup(found.file, name)
        return found

    def read_all(self, file, count=8192):
        data = b""
        while True:
            attributes, piece = self.read(file, len(data), count)
            data += piece
            if not piece or len(data) >= attributes.size:
                return data

    def write_all(self, file, data, count=8192):
        for offset in range(0, len(data), count):
            self.write(file, offset, data[offset:offset + count])

    def pipelined(self, calls, window=16):
        """Makes calls, (procedure, arguments), with up to `window` of them on their way. Gives of each, in order, its
        NFS status and the Reader behind it; None for both when no answer came."""
        waiting = collections.deque()
        for call in itertools.chain(calls, [None] * window):
            if waiting and (not call or len(waiting) == window):
                try:
                    reply = self.finish(waiting.popleft())
                    yield reply.u32(), reply
                except NoAnswer:
                    yield None, None
            if call:
                waiting.append(self.start(NFS, NFS_VERSION, PROCEDURES[call[0]], call[1]))

    # How results are built.

    def _name(self, name):
        return opaque(name.encode(self.encoding) if isinstance(name, str) else name)

    def _ok(self, procedure, args):
        reply = self.call(NFS, NFS_VERSION, PROCEDURES[procedure], args)
        status = reply.u32()
        if status:
            reply.end()
            raise NfsError(status)
        return reply

    def _attrstat(self, procedure, args):
        reply = self._ok(procedure, args)
        return reply.end(reply.fattr())

    def _diropres(self, procedure, args):
        reply = self._ok(procedure, args)
        return reply.end(DirOpRes(reply.raw(32), reply.fattr()))
