"""What the comparisons share: a run of the program, its result files, and a table with a verdict."""

import argparse
import collections
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

SUFFIX = "compared"

Cost = collections.namedtuple("Cost", "seconds peak_kb")  # of processor time, of memory


def arguments(description, seconds=10):
    """The command line of a comparison; add options to what this returns before parsing."""
    parser = argparse.ArgumentParser(description=description)
    built = pathlib.Path(__file__).resolve().parent.parent / "build" / "release" / "profiler_app"
    parser.add_argument("--program", type=pathlib.Path, default=built, help="default: %(default)s")
    parser.add_argument("--seconds", type=int, default=seconds, help="default: %(default)s")
    return parser


def add_rounds(parser):
    parser.add_argument("--rounds", type=int, default=3,
                        help="of which the cheapest counts; default: %(default)s")


def add_crowds(parser):
    parser.add_argument("--crowds", type=int, nargs="+", default=[300, 1500],
                        help="processes beside which it is measured; default: %(default)s")


def spending(program, command, **popen_options):
    """A command started under the `spent` that was built with the program."""
    return subprocess.Popen(
        [program.resolve().parent / "bench" / "spent", *map(str, command)],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, **popen_options)


def cost_of(process):
    """What a command under `spent` has used, at its end; one that failed ends the comparison."""
    used, peak_kb = process.communicate()[0].split()
    if process.returncode != 0:
        sys.exit(f"{' '.join(process.args[1:])} ended with status {process.returncode}")
    return Cost(int(used) / 1e6, int(peak_kb))


class Run:
    """The program, started in a folder of its own; its files are gone with the object."""

    def __init__(self, program, *options, under_spent=False, **popen_options):
        self._folder = tempfile.TemporaryDirectory(prefix="corvane-")
        command = [str(program.resolve()), *map(str, options), "--file", SUFFIX]
        if under_spent:
            self.process = spending(program, command, cwd=self._folder.name, **popen_options)
        else:
            self.process = subprocess.Popen(
                command, cwd=self._folder.name, stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL, **popen_options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait()
        self._folder.cleanup()

    def wait(self):
        """Waits for the end of the run; a run that failed ends the comparison."""
        status = self.process.wait()
        if status != 0:
            sys.exit(f"the program ended with status {status}")

    def path(self, prefix):
        folder = pathlib.Path(self._folder.name) / "Results_corvane" / SUFFIX
        return folder / f"{prefix}_{SUFFIX}.txt"

    def blocks(self, prefix):
        return read_blocks(self.path(prefix))

    def rows(self, prefix):
        return [row for block in self.blocks(prefix) for row in block]


def read_blocks(path):
    """Samples of a result file: lists of rows, each a dictionary from header to text.

    The fields are right-aligned in columns of fixed width, so the header's words end where the
    columns end, and names may hold blanks. (Not so in the GPU's file, whose header has widths of
    its own.) One empty line or two end a sample of several rows; elsewhere each
    line is a sample.
    """
    header, *lines = path.read_text(errors="replace").splitlines()
    columns = [(word.group(), word.end()) for word in re.finditer(r"\S+", header)]
    blocks, block = [], []
    for line in lines:
        if line:
            block.append(_row(columns, line))
        if not line or "" not in lines:
            blocks.append(block)
            block = []
    if lines[-2:] == ["", ""]:
        blocks = [block for block in blocks if block]
    return blocks


def _row(columns, line):
    row, start = {}, 0
    for name, end in columns:
        row[name] = line[start:end].strip()
        start = end
    return row


def seconds_of(rows):
    """The seconds from the run's start to its last sample."""
    return float(rows[-1]["Time(usec)"]) / 1e6


def mean(values):
    values = [float(value) for value in values]
    return sum(values) / len(values)


class Table:
    """Rows of ours against theirs, judged one by one; `verdict` is the exit status."""

    def __init__(self, title, theirs):
        self.failures = 0
        print(f"\n{title}")
        print(f"{'':34}{'ours':>14}{theirs:>14}{'difference':>13}  ")

    def add(self, what, ours, theirs, *, points=None, percent=None):
        """Within so many points, or percent of theirs (and never worse than one unit)."""
        difference = ours - theirs
        if points is not None:
            good, shown = abs(difference) <= points, f"{difference:+.2f} pts"
        else:
            good = abs(difference) <= max(1, abs(theirs) * percent / 100)
            shown = f"{100 * difference / theirs:+.2f} %" if theirs else f"{difference:+.0f}"
        self.failures += not good
        print(f"{what:34}{ours:14.2f}{theirs:14.2f}{shown:>13}  {'ok' if good else 'NOT OK'}")

    def verdict(self):
        return 1 if self.failures else 0


class Limits:
    """Ratios judged against what they may be at most (or at least), and what is aimed at."""

    def __init__(self, title):
        self.failures = 0
        print(f"\n{title}")
        print(f"{'':50}{'measured':>10}{'limit':>9}{'aim':>9}")

    def add(self, what, value, limit, aim=None, *, at_least=False):
        good = value >= limit if at_least else value <= limit
        self.failures += not good
        aimed = "" if aim is None else f"{aim:.3f}"
        print(f"{what:50}{value:10.3f}{limit:9.3f}{aimed:>9}  {'ok' if good else 'NOT OK'}")

    def verdict(self):
        return 1 if self.failures else 0


class Load:
    """Processes that are started with the object, and ended with it and all that they started."""

    def __init__(self, *commands, **popen_options):
        self.processes = [
            subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL, start_new_session=True,
                             **popen_options) for command in commands]
        time.sleep(0.3)  # let it get into its stride before anything is compared

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in self.processes:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


class Crowd:
    """So many processes, a tenth of which run now and then; ended with the object."""

    def __init__(self, program, size):
        self._members = subprocess.Popen([program.resolve().parent / "bench" / "crowd", str(size)],
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        if self._members.stdout.readline() != b"ready\n":
            sys.exit("the crowd did not come together")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._members.communicate()


class ProcessClock:
    """Processor time that a process, all its threads together, has used since this was made."""

    def __init__(self, pid):
        self._clock = ~pid << 3 | 2  # the kernel's number of the process's own clock
        self._start = time.clock_gettime(self._clock)

    def passed(self):
        return time.clock_gettime(self._clock) - self._start
