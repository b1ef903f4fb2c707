"""Root's runs where an unprivileged user may write, too."""

import os
import shutil
import signal
import tempfile
from pathlib import Path

import pytest
from conftest import RUNNER, Profiler

SOMEBODY = 65534
SECRET = "Time root:$secret$:19000 a\n1 2 3\n2 3 4\n"
VICTIM = "victim\n" * 99

pytestmark = pytest.mark.skipif(os.geteuid() != 0, reason="only root can be attacked")


@pytest.fixture
def shared():
    """A profiler in a sticky folder where all may write."""
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o1777)
        profiler = Profiler(Path(folder))
        yield profiler
        for process in profiler.processes:
            process.kill()


def as_somebody(action, *arguments):
    """Starts it in a process of an unprivileged user's; the process's id."""
    child = os.fork()
    if child == 0:
        try:
            os.setgroups([])
            os.setgid(SOMEBODY)
            os.setuid(SOMEBODY)
            action(*arguments)
        finally:
            os._exit(0)
    return child


def make_trap(folder, victim, secret):
    """A run folder whose every name that the run may open leads out of it."""
    folder.mkdir()
    for name in ("ProfilerOutput.json", "cpuprofiler_x.csv", "a.csv", "memprofiler_x.txt"):
        (folder / name).symlink_to(victim)
    for name in ("a.txt", "cpuprofiler_x.txt"):
        (folder / name).symlink_to(secret)


def swap(base, number):
    (base / "x").rename(base / f"root-{number}")
    (base / "trap").rename(base / "x")


def swap_without_end(base):
    while True:
        for source, target in (("x", "y"), ("trap", "x"), ("x", "trap"), ("y", "x")):
            try:
                os.rename(base / source, base / target)
            except OSError:
                pass


def test_run_folder_is_swapped_for_a_trap(shared, tmp_path):
    """50 rounds: in every other one while samples are taken, in the others at any moment."""
    victim, secret = tmp_path / "victim", tmp_path / "secret"
    victim.write_text(VICTIM)
    secret.write_text(SECRET)
    base = shared.folder / "Results_corvane"
    os.waitpid(as_somebody(base.mkdir), 0)
    for number in range(50):
        shutil.rmtree(base / "x", ignore_errors=True)
        shutil.rmtree(base / "trap", ignore_errors=True)
        os.waitpid(as_somebody(make_trap, base / "trap", victim, secret), 0)
        if number % 2:
            attacker = as_somebody(swap_without_end, base)
            run = shared.run("-c -A 1 --json --csv -f x", "cpu 1\n" * 9 + "cpu signal=2\n")
            os.kill(attacker, signal.SIGKILL)
            os.waitpid(attacker, 0)
        else:
            process = shared.start("-c -A 1 --json --csv -t 0 -f x", "cpu repeat=99999 1\n")
            while b"Started all threads" not in process.stdout.readline():
                pass
            while not (base / "x/cpuprofiler_x.txt").exists():
                pass
            os.waitpid(as_somebody(swap, base, number), 0)
            process.send_signal(signal.SIGINT)
            run = shared.finish(process)
            mine = {path.name for path in (base / f"root-{number}").iterdir()}
            assert mine == {"ProfilerOutput.json", "cpuprofiler_x.txt", "cpuprofiler_x.csv"}
            assert run.err == (f"corvane: Results_corvane belongs to user {SOMEBODY}, "
                               "who can remove or replace what is written there\n")  # fmt: skip
        assert run.status == 0
        assert (victim.read_text(), secret.read_text()) == (VICTIM, SECRET)
        for path in [path for path in base.rglob("*") if path.is_file() and not path.is_symlink()]:
            assert "secret" not in path.read_text(), path


@pytest.mark.parametrize("owner, followed", [(0, True), (SOMEBODY, False)])
def test_base_folder_that_is_a_link(shared, tmp_path, owner, followed):
    link = shared.folder / "Results_corvane"
    link.symlink_to(tmp_path)
    os.chown(link, owner, owner, follow_symlinks=False)
    run = shared.run("-c -A 1 --csv -f x", "cpu 1\ncpu signal=2\n")
    assert "Results_corvane exists.\nCreating the log folder now.\nDirectory creation " + (
        "successful" if followed else "failed with error = 13") in run.out  # fmt: skip
    refusal = f"corvane: Results_corvane is a link of user {SOMEBODY}, which is not followed\n"
    assert run.err == ("" if followed else refusal)
    assert {path.name for path in tmp_path.rglob("*.*")} == (
        {"cpuprofiler_x.txt", "cpuprofiler_x.csv"} if followed else set()
    )
    assert run.status == 0


@pytest.mark.skipif(bool(RUNNER), reason="the emulator may lie where only root goes")
def test_own_link_of_an_ordinary_user(shared, somebody_else):
    (shared.folder / "there").mkdir()
    for path in (shared.folder / "there", shared.folder / "Results_corvane"):
        if not path.exists():
            path.symlink_to("there")
        os.chown(path, SOMEBODY, SOMEBODY, follow_symlinks=False)
    run = shared.run("-o -s 100 -t 1 -f x", scripted=False, **somebody_else)
    assert (shared.folder / "there/x/memprofiler_x.txt").exists()
    assert (run.status, run.err) == (0, "")


@pytest.mark.parametrize(
    "suffix, warning",
    [
        ("run1.txt", "everything in Results_corvane/run1.txt is taken for a result file"),
        ("gpuprofiler", "each result file in Results_corvane/gpuprofiler is taken for one of that"),
        ("../y", "the results lie in Results_corvane/../y"),
    ],
)
def test_unusual_suffix(profiler, suffix, warning):
    run = profiler.run("-c -A 1 --csv -f", "cpu signal=2\n", args_after=[suffix])
    assert warning in run.err and run.err.count("\n") == 1
    assert f"The logFolder is Results_corvane/{suffix}\n" in run.out
    if suffix == "run1.txt":  # its files' names lose four characters, however short they are
        assert (profiler.folder / "Results_corvane/run1.t.csv").read_text() == ""
