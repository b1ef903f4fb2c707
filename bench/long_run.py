"""Runs of any length with many processes that come and go, for the programs that read run folders."""

import random

HEADER = ("Time(usec)", "PID", "ProcessName", "UserTime", "SystemTime", "TotalTime", "CPU_Usage(%)")
MEMORY_HEADER = ("Time(usec)", "PID", "PPID", "ProcessName", "VSS(KB)", "PSS(KB)", "RSS(KB)", "USS(KB)")
NAMES = "cc1plus as ld.lld sh make ninja surfaceflinger system_server kworker/0:1 python3".split()


class Process:
    def __init__(self, random_, pid):
        self.pid, self.name = pid, random_.choice(NAMES)
        self.user, self.system = 0.0, 0.0
        self.kilobytes = random_.randrange(1000, 200000)
        self.busy = random_.random() < 0.25
        self.set_usage(0.0)

    def run(self, random_, period):
        if self.busy:
            usage = random_.random() * 100
            self.user += usage / 200 * period
            self.system += usage / 200 * period
            self.kilobytes += int(random_.random() * 50)
            self.set_usage(usage)

    def set_usage(self, usage):
        self.rest = "%10d%40s%20.2f%20.2f%20.2f%20.2f\n" % (
            self.pid, self.name, self.user, self.system, self.user + self.system, usage)

    def memory(self):
        return "%10d%10d%40s%40d%40d%40d%40d\n" % (
            self.pid, 1, self.name, 3 * self.kilobytes, self.kilobytes, self.kilobytes,
            self.kilobytes // 2)


def samples(living, births, period):
    """The processes of each sample; the eldest of the short-lived ones make room."""
    random_ = random.Random(1)
    there = [Process(random_, 2 + 3 * i) for i in range(living)]
    pid = there[-1].pid
    while True:
        for _ in range(births):
            pid += random_.randrange(1, 9)
            del there[living // 2]
            there.append(Process(random_, pid))
        for process in there:
            process.run(random_, period)
        yield there


def make_run(folder, size, *, living=1000, births=3, period=1.0, memory_every=0):
    """A run folder with `size` bytes of processes, and their memory in every so many samples, unless
    it is there. Returns its length in samples."""
    path = folder / f"procprofiler_{folder.name}.txt"
    length = folder / "length"
    if not length.exists():
        folder.mkdir(parents=True, exist_ok=True)
        with open(path, "w") as file, open(folder / f"procmem-profiler_{folder.name}.txt", "w") as memory:
            file.write("%20s%10s%40s%20s%20s%20s%20s\n" % HEADER)
            memory.write("%20s%10s%10s%40s%40s%40s%40s%40s\n" % MEMORY_HEADER)
            for number, processes in enumerate(samples(living, births, period), 1):
                time = "%20.2f" % (number * period * 1e6)
                file.write("".join([time + process.rest for process in processes]) + "\n\n")
                if memory_every and number % memory_every == 0:
                    memory.write("".join([time + process.memory() for process in processes]) + "\n\n")
                if file.tell() >= size:
                    break
        if not memory_every:
            (folder / f"procmem-profiler_{folder.name}.txt").unlink()
        length.write_text(str(number))
    return int(length.read_text())


def add_machine(folder, length, period, cores):
    """The other sources of a machine with so many cores, two disks and two interfaces."""
    random_ = random.Random(2)
    files = {
        "cpu": ["Time(usec)", "TotalCPU", *(f"cpu{i}(%)" for i in range(cores)), "CPUStealTime(%)",
                *(f"cpu{i}steal(%)" for i in range(cores))],
        "mem": ["Time(usec)", "Total_Mem(KB)", "Available_Mem(KB)", "Used_Mem(KB)", "Mem_Usage(%)",
                "Swap_Total(KB)", "Swap_Free(KB)", "Swap_Used(KB)", "Swap_Used(%)"],
        "diskio": ["Time(usec)", "Device", "Bytes_read", "KB_read/s", "Bytes_write", "KB_write/s"],
        "net": ["Time(usec)", "Network_Interface", "Collisions", "Tx_bw(bytes)", "Rx_bw(bytes)",
                "Tx_packets", "Rx_packets", "Tx_packets(dropped)", "Rx_packets(dropped)"],
    }

    def rows(kind):
        amount = lambda: random_.randrange(1 << 27)
        if kind == "cpu":
            loads = [random_.random() * 100 for _ in range(cores)]
            yield [sum(loads) / cores, *loads, 0.0, *[0.0] * cores]
        elif kind == "mem":
            used = 4000000 + random_.randrange(2000000)
            yield [16 << 20, (16 << 20) - used, used, 100.0 * used / (16 << 20), 1 << 20, 1 << 19, 1 << 19, 50.0]
        else:
            for name in ("sda", "loop0") if kind == "diskio" else ("eth0", "lo"):
                yield [name, amount(), 1.0, amount(), 1.0] if kind == "diskio" else [
                    name, 0, amount(), amount(), 1, 1, 0, 0]

    text = lambda values: "".join("%20s" % (f"{v:.2f}" if isinstance(v, float) else v) for v in values) + "\n"
    for kind, header in files.items():
        path = folder / f"{kind}profiler_{folder.name}.txt"
        if path.exists():
            continue
        with open(path, "w") as file:
            file.write(text(header))
            for number in range(1, length + 1):
                file.write("".join(text([number * period * 1e6, *row]) for row in rows(kind)))
                if kind in ("diskio", "net"):
                    file.write("\n")
