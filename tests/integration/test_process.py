"""The daemon as a process: arguments, failures of the start, fork, files left behind, signals, exit codes."""

import ctypes
import os
import pathlib
import re
import resource
import select
import signal
import socket
import stat
import subprocess
import time

import pytest
from daemon import PROGRAM, Daemon, free_udp_port, sanitized
from waiting import wait_until

PR_SET_CHILD_SUBREAPER = 36
STAMP = r"\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3}"


@pytest.fixture(scope="module", autouse=True)
def orphans_come_to_us():
    """A daemon's parent is gone; as their subreaper we learn its exit code."""
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


@pytest.fixture
def profile(tmp_path):
    path = tmp_path / "profile"
    path.write_text(f"[nfsserver/mount/port={{({free_udp_port()})}}]\n")
    return path


@pytest.fixture
def logs(tmp_path):
    (tmp_path / "logs").mkdir()
    return tmp_path / "logs"


def failure(*arguments):
    """What a start says that must fail, and that leaves no log of a process."""
    result = subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)
    assert (result.returncode, result.stdout) == (1, "")
    assert len(arguments) != 2 or not any(path.is_file() for path in arguments[1].glob("cl[0-9]*.log"))
    return result.stderr


def exit_code_after(pid, number):
    ended = os.pidfd_open(pid)
    os.kill(pid, number)
    if not select.select([ended], [], [], 20)[0]:
        os.kill(pid, signal.SIGKILL)
    os.close(ended)
    return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])


def youngest_child():
    return int(pathlib.Path(f"/proc/self/task/{os.getpid()}/children").read_text().split()[-1])


def test_wrong_number_of_arguments():
    assert failure("profile") == f"{PROGRAM}: Wrong number of arguments provided\nUsage: haldenmapd <profile> <log dir>\n"


def test_daemon_leads_its_own_session_and_ignores_some_signals():
    with Daemon() as daemon:
        pid, log = daemon.pid, daemon.log
        assert os.getsid(pid) == pid
        assert "/dev/null" not in [os.readlink(fd) for fd in pathlib.Path(f"/proc/{pid}/fd").iterdir()]
        assert re.fullmatch(rf"{STAMP}\tcl{pid}\tHalden\(5\.60\.514\) nfssmb/process/start\n", log.read_text())
        assert stat.S_IMODE(log.stat().st_mode) == 0o600
        assert (daemon.logs / "clerr.log").read_text() == ""
        for number in (signal.SIGPIPE, signal.SIGTTOU, signal.SIGTTIN, signal.SIGTSTP, signal.SIGXFSZ):
            os.kill(pid, number)
        time.sleep(0.2)
        assert os.waitpid(pid, os.WNOHANG) == (0, 0)
        assert exit_code_after(pid, signal.SIGTERM) == 0
        assert log.read_text().split(f"cl{pid}\t")[-1] == "Halden(5.60.514) nfssmb/process/stop\n"


def test_a_fatal_signal():
    number = signal.SIGSEGV
    with Daemon() as daemon:
        assert exit_code_after(daemon.pid, number) == number
        last = daemon.log.read_text().split(f"cl{daemon.pid}\t")[-1]
    assert last.startswith("\nHalden(5.60.514) FATAL ERROR: \n")
    assert last.endswith(f" nfssmb/process/exit\nCaught a fatal signal: {number}\n")


def test_an_edited_profile_counts_without_a_restart():
    """When a user lists the mount point, and on SIGHUP; one with a mistake, or none, changes nothing and is told."""
    user = "[nfsserver/shares/smb/{}/unixname={{(root)}}]\n".format
    root, start = bytes(32), user("ann")
    machine = "[nfsserver/shares/smb/cyd/machinename={(pc)}]\n"
    with Daemon(start) as daemon, daemon.client() as client:
        client.getattr(root)
        ann = client.lookup(root, "ann").file
        for edited, by_signal, users, said in [
                (start + user("bob"), False, ["ann", "bob"], "profile/read"),
                (start + user("cyd") + "[oops\n", False, ["ann", "bob"],
                 'Error: found "(EOF)" at character 1 in line 6 whilst looking for "="'),
                (start + user("cyd") + machine, True, ["ann", "cyd"],
                 "the nearest known one is nfsserver/shares/smb/cyd/machinenames"),
                (None, False, ["ann", "cyd"], "Failed to stat() configuration file: ")]:
            before = len(daemon.log.read_text())
            daemon.write_profile(edited) if edited else daemon.profile_file.unlink()
            if by_signal:
                os.kill(daemon.pid, signal.SIGHUP)
            else:
                client.readdir(root)
            assert wait_until(lambda: said in daemon.log.read_text()[before:]), daemon.log.read_text()
            assert client.names(root) == users
            assert client.lookup(root, "ann").file == ann
            assert daemon.log.read_text()[before:].count(said) == 1


def test_signal_sent_as_soon_as_the_parent_has_gone_is_not_lost(profile, logs):
    """The daemon's loop needs not have begun by then."""
    for _ in range(30):
        assert subprocess.call([PROGRAM, profile, logs], stdin=subprocess.DEVNULL) == 0  # a time-out would look late
        assert exit_code_after(youngest_child(), signal.SIGTERM) == 0


@pytest.mark.parametrize("asked", [False, True])
def test_core_dumps_are_off_unless_asked_for(profile, logs, tmp_path, asked):
    """The memory of the daemon holds passwords."""
    limit = resource.getrlimit(resource.RLIMIT_CORE)[1]
    if asked and (pathlib.Path("/proc/sys/kernel/core_pattern").read_text()[0] in "|/" or limit == 0 or sanitized()):
        pytest.skip("core files are kept elsewhere, or not at all")
    with profile.open("a") as file:
        file.write(f"[nfsserver/server/coredumps={{({int(asked)})}}]\n")

    assert subprocess.call([PROGRAM, profile, logs], stdin=subprocess.DEVNULL, cwd=tmp_path,
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CORE, (limit, limit))) == 0
    pid = youngest_child()
    os.kill(pid, signal.SIGABRT)
    assert os.WCOREDUMP(os.waitpid(pid, 0)[1]) == asked


@pytest.mark.parametrize("name, text, reason", [
    ("absent", None, "Failed to initialise the server: Failed to stat() configuration file"),
    ("broken", "[broken\n", "Failed to parse contents of config file: "),
    ("rootless", "[nfsserver/mount/roothandle={(12)}]\n", "Change the nfsserver/mount/roothandle key"),
    ("useless", "[nfsserver/network/addresses={}]\n", "No addresses to accept calls from were specified."),
])
def test_unusable_profile(tmp_path, logs, name, text, reason):
    if text is not None:
        (tmp_path / name).write_text(text)
    said = failure(tmp_path / name, logs)
    assert "\nHalden(5.60.514) ERROR:\n nfssmb/init/failure\nFailed to initialise the server: " in said
    assert reason in said
    assert (logs / "clerr.log").read_text() == said


def test_port_in_use(profile, logs):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as taken:
        taken.bind(("0.0.0.0", int(re.search(r"\d+", profile.read_text()).group())))
        said = failure(profile, logs)
    assert "\nHalden(5.60.514) ERROR:\n nfssmb/start/failure\nFailed to start server: " in said
    assert (logs / "clerr.log").read_text() in said


def test_unusable_log_directory(profile, logs):
    logs.rmdir()
    said = failure(profile, logs)
    assert f'Failed to open file "{logs}/clerr.log" for error/log output.\n' in said
    assert said.endswith("no log: No such file or directory\n")
