"""Names between NFS and the server: each comes back as it was given, and two different names are two different files."""

import pytest
from gateway import EAGER, contents, wait_until
from nfs_raw import status

GATEWAY = {
    "machines": {"pc": {"shares": {"SHARE": {}, "EXACT": {}, "SIMILAR": {}}},
                 "old": {"options": {"unicode": "no", "dos charset": "CP850"}}},
    "settings": EAGER + "[{user}/pc/SIMILAR/matchlong={(1)}]\n[{user}/old/encoding={(CP850)}]\n",
}
# As they are given and as the server's disk has them.
STORED = {
    "plain": "plain", ".dot": ".dot", "-": "-", "UPPER": "UPPER", "a;3Fb": "a;;3Fb", ";": ";;", "a;b": "a;;b", "a;41": "a;;41",
    'q?"<>*|:': "q;3F;22;3C;3E;2A;7C;3A", "日" * 85: "日" * 85, "Ünïcode ☺": "Ünïcode ☺", "é": "é", " lead": " lead",
    "😀 beyond": "😀 beyond", "a+b=[c],": "a+b=[c],", "~": "~", "x" * 255: "x" * 255,
}


def test_every_name_comes_back_as_it_was_given(nfs, place):
    """What Windows can't hold is escaped on the server, and what looks like an escape is the name of another file."""
    directory, folder = place
    wanted = {*STORED, *(f"{chr(code)}{code}" for code in range(1, 128) if chr(code) not in "/\\"),
              "end.", "end ", "end. ", " end", "...", "CON", "nul.txt", "Com7", "LPT1 .x", "con.x.y", "LOCK$",
              ";3F", ";;3F", "?", ";;", "a;;b", "a;3Bb", ";43ON", "y" * 251 + "~1.c"}
    for name in wanted:
        nfs.put(directory, name, name.encode())
    nfs.mkdir(directory, "-)d")
    assert nfs.names(directory, 1024) == sorted([*wanted, "-)d"])
    assert contents(folder).items() >= {(stored, name.encode()) for name, stored in STORED.items()}
    assert nfs.lookup(directory, "pLAIN").file == nfs.lookup(directory, "plain").file
    for name in wanted:
        nfs.rename(directory, name, directory, "other")
        nfs.rename(directory, "other", directory, name)
        assert nfs.read_all(nfs.lookup(directory, name).file) == name.encode()
        nfs.remove(directory, name)
        nfs.mkdir(directory, name)
        nfs.rmdir(directory, name)
    assert contents(folder) == {"-)d": None}


def test_names_that_others_made(nfs, place):
    directory, folder = place
    others = {"Smith; Jones": "Smith; Jones", "a;41": "a;41", "a;;;b": "a;;b;;", "a;41b": "a;41b"}
    nfs.create(directory, "a;;b")  # so the third one has to be shown in another way
    for stored in others:
        (folder / stored).write_text(stored)
    (folder / "dir; others").mkdir()
    assert wait_until(lambda: nfs.names(directory) == sorted(["a;;b", *others.values(), "dir; others"]))
    for stored, name in others.items():
        assert nfs.read_all(nfs.lookup(directory, name).file).decode() == stored
    inside = nfs.lookup(directory, "dir; others").file
    nfs.create(inside, "new")
    nfs.rename(directory, "Smith; Jones", inside, "x;y")
    assert contents(folder / "dir; others") == {"new": b"", "x;;y": b"Smith; Jones"}
    nfs.rename(directory, "dir; others", directory, "dir")
    for name in nfs.names(directory):
        assert status(nfs.remove, directory, name) == (21 if name == "dir" else 0)


def status_of_changes(nfs, directory, name):
    """Of all calls that would make an entry of this name; `old` is one that may be there."""
    calls = [(nfs.create, name), (nfs.mkdir, name), (nfs.symlink, name, "to"), (nfs.rename, "old", directory, name)]
    return {status(call, directory, *more) for call, *more in calls}


def test_a_name_that_is_no_utf_8_is_refused(nfs, place):
    directory, folder = place
    for name in (b"a\xff", b"\xc0\xae\xc0\xae", b"\xed\xa0\x80", b"cut\xe2\x82", b"\xf8\x88\x80\x80\x80"):
        calls = [(nfs.lookup, name), (nfs.remove, name), (nfs.rmdir, name), (nfs.rename, name, directory, "new")]
        assert {status(call, directory, *more) for call, *more in calls} == {13} == status_of_changes(nfs, directory, name)
    assert list(folder.iterdir()) == []


def test_names_that_lead_away_are_refused(gateway, nfs, place):
    directory, folder = place
    nfs.create(directory, "old")
    before = sorted(gateway.disk().rglob("*"))
    for name, code in [("../up", 13), ("a/b", 13), ("..\\up", 13), ("a\\b", 13), (b"a\0b", 13), ("", 13), ("x" * 256, 63),
                       ("日" * 86, 63)]:
        assert status_of_changes(nfs, directory, name) == {code}, name
        assert status(nfs.lookup, directory, name) in (2, 63)
    assert sorted(gateway.disk().rglob("*")) == before


def test_names_that_an_8_bit_server_cannot_hold_are_refused(gateway, nfs):
    """Nothing is shortened: the server hears of no such name, and the user reads which character it is."""
    share, folder = gateway.share("old"), gateway.disk("old")
    nfs.put(share, "doc1", b"keep")
    for name in ("old", "Grüße"):
        nfs.create(share, name)
    for name in ("doc–1", "–.", "日", "日.–.", "😀"):
        assert status_of_changes(nfs, share, name) == {13}, name
    assert contents(folder) == {"doc1": b"keep", "old": b"", "Grüße": b""}
    assert 'names are in IBM850, which has no "–" (2013)' in gateway.errors()


@pytest.mark.parametrize("place, found", [("EXACT", 2), ("SIMILAR", 0)])
def test_a_similar_name_is_never_changed(gateway, nfs, place, found):
    """What a look-up finds by its long form is at most looked at: calls that change something mean the very name."""
    share = gateway.share(share=place)
    nfs.put(share, "a?b", b"keep")
    assert status(nfs.lookup, share, "a:b") == found
    assert [status(call, share, "a:b") for call in (nfs.remove, nfs.rmdir)] == [2, 2]
    assert status(nfs.rename, share, "a:b", share, "c") == 2
    nfs.create(share, "ab", size=0)
    nfs.mkdir(share, "a*b")
    nfs.symlink(share, "a|b", "somewhere")
    nfs.create(share, "plain")
    nfs.rename(share, "plain", share, 'a"b')
    assert nfs.names(share) == ['a"b', "a*b", "a?b", "ab", "a|b"]
    assert nfs.read_all(nfs.lookup(share, "a?b").file) == b"keep"
    assert (gateway.disk(share=place) / "a;3Fb").read_bytes() == b"keep"
