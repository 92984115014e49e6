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
AS_NOBODY = {"user": "nobody", "group": "nogroup", "extra_groups": []} if os.geteuid() == 0 else {}
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
    path = tmp_path / "logs"
    path.mkdir()
    return path


def failure(*arguments, **options):
    """What a start says that must fail, and that leaves no log of a process."""
    result = subprocess.run([PROGRAM, *arguments], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                            timeout=60, **options)
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


@pytest.mark.parametrize("arguments", [[], ["profile"], ["profile", "logs", "more"]])
def test_wrong_number_of_arguments(arguments):
    assert failure(*arguments) == (f"{PROGRAM}: Wrong number of arguments provided\n"
                                   "Usage: haldenmapd <profile> <log dir>\n")


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


@pytest.mark.parametrize("number", [signal.SIGBUS, signal.SIGSEGV])
def test_fatal_signals(number):
    with Daemon() as daemon:
        assert exit_code_after(daemon.pid, number) == number
        last = daemon.log.read_text().split(f"cl{daemon.pid}\t")[-1]
    assert last.startswith("\nHalden(5.60.514) FATAL ERROR: \n")
    assert last.endswith(f" nfssmb/process/exit\nCaught a fatal signal: {number}\n")


def test_an_edited_profile_counts_without_a_restart():
    """When a user lists the mount point, and on SIGHUP; one with a mistake, or none, changes nothing and is told."""
    user = "[nfsserver/shares/smb/{}/unixname={{(root)}}]\n".format
    root, start, port = bytes(32), user("ann"), "[nfsserver/mount/port={(0)}]\n"
    machine = "[nfsserver/shares/smb/cyd/machinename={(pc)}]\n"
    with Daemon(start) as daemon, daemon.client() as client:
        client.getattr(root)
        ann = client.lookup(root, "ann").file
        for edited, by_signal, users, said in [
                (start, False, ["ann"], "profile/read"),
                (start + user("bob"), False, ["ann", "bob"], "profile/read"),
                (start + user("cyd") + "[oops\n", False, ["ann", "bob"],
                 'Error: found "(EOF)" at character 1 in line 6 whilst looking for "="'),
                (start + user("cyd") + machine, True, ["ann", "cyd"],
                 "the nearest known one is nfsserver/shares/smb/cyd/machinenames"),
                (port + start, True, ["ann", "cyd"],
                 "the value of nfsserver/mount/port at character 1 in line 2 must be one number from 1 to 65535"),
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
    ("logs", None, "Failed to read from config file: "),
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


def open_the_way(logs, mode):
    for folder in list(logs.parents)[:3]:
        folder.chmod(0o755)
    logs.chmod(mode)


@pytest.mark.parametrize("reason", ["No such file or directory", "Permission denied"])
def test_unusable_log_directory(profile, logs, reason):
    absent = reason.startswith("No")
    logs.rmdir() if absent else open_the_way(logs, 0o555)
    said = failure(profile, logs, **({} if absent else AS_NOBODY))
    assert f'Failed to open file "{logs}/clerr.log" for error/log output.\n' in said
    assert said.endswith(f"no log: {reason}\n")


def test_log_of_the_child_cant_be_opened(profile, logs):
    """The failure comes after the fork, and still the command fails and says why."""
    with subprocess.Popen(["true"]) as newest:
        for pid in range(newest.pid, newest.pid + 3000):
            (logs / f"cl{pid}.log").mkdir()
    assert re.search(r'Failed to open file ".*/cl\d+\.log" for error/log output\.\n.*: no log: Is a directory\n$',
                     failure(profile, logs))


@pytest.mark.skipif(os.geteuid() != 0, reason="only root can become a user that may not fork")
def test_daemon_that_cant_fork_stays_in_the_foreground(profile, logs):
    open_the_way(logs, 0o777)
    # The sanitizer's search for leaks would have to fork, too.
    environment = {**os.environ, "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
    confined = {**AS_NOBODY, "preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_NPROC, (0, 0))}
    with subprocess.Popen([PROGRAM, profile, logs], env=environment, **confined) as process:
        log = logs / f"cl{process.pid}.log"
        wait_until(lambda: log.exists() and log.read_text())
        assert exit_code_after(process.pid, signal.SIGTERM) == 0
    assert log.read_text().endswith("nfssmb/process/stop\n")
