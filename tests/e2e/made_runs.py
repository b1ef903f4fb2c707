"""Run folders whose contents are known, and what is true of them, held in memory and worked out plainly."""

import math
import random
from dataclasses import dataclass, field

KEPT = 50
PROC = ("Time(usec)", "PID", "ProcessName", "UserTime", "SystemTime", "TotalTime", "CPU_Usage(%)")
PROCMEM = ("Time(usec)", "PID", "PPID", "ProcessName", "VSS(KB)", "PSS(KB)", "RSS(KB)", "USS(KB)")
DISK = ("Time(usec)", "Device", "Bytes_read", "KB_read/s", "Bytes_write", "KB_write/s")
NET = ("Time(usec)", "Network_Interface", "Collisions", "Tx_bw(bytes)", "Rx_bw(bytes)", "Tx_packets",
       "Rx_packets", "Tx_packets(dropped)", "Rx_packets(dropped)")
MEM = ("Time(usec)", "Total_Mem(KB)", "Available_Mem(KB)", "Used_Mem(KB)", "Mem_Usage(%)",
       "Swap_Total(KB)", "Swap_Free(KB)", "Swap_Used(KB)", "Swap_Used(%)")


def line(*values):
    return "".join("%20s" % (f"{v:.2f}" if isinstance(v, float) else v) for v in values) + "\n"


def text_of(header, samples):
    """A file of (time, rows) with what follows a block."""
    return line(*header) + "".join(
        "".join(line(float(time), *row) for row in rows) + "\n" for time, rows in samples)


def write_run(folder, **files):
    """A run folder from texts by the files' prefixes, '_' for '-'."""
    folder.mkdir(parents=True, exist_ok=True)
    for prefix, text in files.items():
        name = f"{prefix.replace('_', '-')}profiler_{folder.name}.txt"
        (folder / name).write_bytes(text if isinstance(text, bytes) else text.encode())
    return folder


@dataclass
class Life:
    """A process as it was, and the samples that it is in."""

    pid: int
    name: str
    total: float
    cpu: list = field(default_factory=list)  # (s, total, usage)
    pss: list = field(default_factory=list)  # (s, KB)
    alive: bool = True

    def figures(self, proc_start):
        born_within = self.cpu[0][0] != proc_start
        usage = [u for _, _, u in self.cpu]
        times = [t for t, *_ in self.cpu + self.pss]
        (t0, first), (t1, last) = self.pss[0], self.pss[-1]
        return {
            "pid": self.pid, "name": self.name, "first": min(times), "last": max(times),
            "cpu_seconds": self.cpu[-1][1] - (0 if born_within else self.cpu[0][1]),
            "cpu_mean": sum(usage) / len(usage), "cpu_peak": max(usage),
            "pss_first_kb": first, "pss_last_kb": last, "pss_peak_kb": max(p for _, p in self.pss),
            "pss_growth_kb_per_min": (last - first) / (t1 - t0) * 60 if t1 > t0 else 0,
        }


def processes(seed, seconds=400, living=30):
    """The texts of both process files and the lives in them: births, deaths, PIDs that come back at
    once or later, names that many share."""
    chance = random.Random(seed)
    alive, dead, proc, procmem = {}, [], [], []
    for second in range(1, seconds):
        for pid in [p for p, life in alive.items() if chance.random() < 0.05]:
            dead.append(alive.pop(pid))
            dead[-1].alive = False
            # A PID that comes back at once is known by its smaller time.
            if chance.random() < 0.2 and dead[-1].total > 1.05:
                alive[pid] = Life(pid, chance.choice(["sh", "cc1"]), 0.0)
        while len(alive) < living:
            pid = chance.randrange(1, 300)
            used_now = {life.pid for life in dead if life.cpu[-1][0] >= second - 1}
            if pid not in alive and pid not in used_now:
                start = chance.random() * 50 if second == 1 else 0.0
                alive[pid] = Life(pid, f"worker_{chance.randrange(40)}", start)
        rows, memory = [], []
        for pid, life in sorted(alive.items()):
            usage = chance.choice([0.0, chance.randrange(10000) / 100])
            life.total = round(life.total + usage / 100, 2) + 0.0
            # The kernel may list one twice where others end meanwhile.
            rows += [(pid, life.name, 0.0, life.total, life.total, usage)] * chance.choice([1, 1, 1, 2])
            life.cpu.append((second + 0.0, life.total, usage))
            size = max(0, chance.randrange(-99999, 1 << 20))  # of those that may not be read it is 0
            memory.append((pid, 1, life.name, 2 * size, size, size, size))
            life.pss.append(((second * 1000000 + 512) / 1e6, float(size)))
        proc.append((second * 1000000, rows))
        procmem.append((second * 1000000 + 512, memory))
    return text_of(PROC, proc), text_of(PROCMEM, procmem), dead + list(alive.values())


def kept(lives):
    """The figures of those that have to be shown, with most processor time first."""
    all_ = [(life, life.figures(lives_start(lives))) for life in lives]
    ended = [figures for life, figures in all_ if not life.alive]
    chosen = {id(figures): figures for life, figures in all_ if life.alive}
    for rank in (lambda f: f["cpu_seconds"], lambda f: f["pss_peak_kb"],
                 lambda f: f["pss_last_kb"] - f["pss_first_kb"]):
        top = sorted(ended, key=lambda f: (-rank(f), f["first"], f["pid"]))[:KEPT]
        chosen |= {id(figures): figures for figures in top}
    return sorted(chosen.values(), key=lambda f: (-f["cpu_seconds"], -f["pss_peak_kb"], f["first"], f["pid"]))


def lives_start(lives):
    return min(life.cpu[0][0] for life in lives)


def by_name(lives):
    """Of each name: processes, processor time, and the peaks of the sums of a sample."""
    names = {}
    for life in lives:
        entry = names.setdefault(life.name, {"processes": 0, "cpu_seconds": 0.0, "cpu": {}, "pss": {}, "times": []})
        figures = life.figures(lives_start(lives))
        entry["processes"] += 1
        entry["cpu_seconds"] += figures["cpu_seconds"]
        entry["times"] += figures["first"], figures["last"]
        for key, samples in (("cpu", [(t, u) for t, _, u in life.cpu]), ("pss", life.pss)):
            for time, value in samples:
                entry[key][time] = entry[key].get(time, 0) + value
    return names


def figures_of(values):
    """As the metrics of show --json have them, percentiles exact."""
    ordered = sorted(values)
    rank = lambda p: ordered[max(1, math.ceil(p * len(ordered))) - 1]
    total = 0.0
    for value in values:
        total += value
    return {"count": len(values), "min": ordered[0], "mean": total / len(values), "max": ordered[-1],
            "p50": rank(0.5), "p95": rank(0.95), "p99": rank(0.99)}
