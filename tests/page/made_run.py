"""Run folders with samples that a test has chosen, in the forms of the result files."""

import json


def columns(widths, rows):
    """Right-aligned fields; numbers as the profiler writes them."""
    def text(value):
        return value if isinstance(value, str) else f"{value:.2f}"
    return "".join("".join(f"{text(value):>{width}}" for value, width in zip(row, widths)) + "\n"
                   for row in rows)


class MadeRun:
    def __init__(self, results, suffix):
        self.folder = results / suffix
        self.suffix = suffix
        self.folder.mkdir(parents=True)

    def write(self, prefix, text):
        (self.folder / f"{prefix}_{self.suffix}.txt").write_text(text)

    def metadata(self, start, host, labels=(), missing=(), marks=()):
        """Marks are (second of the run, text)."""
        def at(second):
            return {"wall": start, "boot_s": 100.0 + second, "counter": round((100 + second) * 19200000)}
        about = {"schema": 1, "suffix": self.suffix, "start": at(0), "end": None, "counter_hz": 19200000.0,
                 "host": {"name": host}, "labels": dict(labels),
                 "missing": [{"source": source, "reason": reason} for source, reason in missing],
                 "marks": [{"text": text, "at": at(second)} for second, text in marks]}
        (self.folder.parent / f"{self.suffix}.run.json").write_text(json.dumps(about))

    def cpu(self, samples, cores=2):
        """Of (seconds, [load of each core])."""
        names = range(cores)
        header = ["Time(usec)", "TotalCPU", *(f"cpu{i}(%)" for i in names), "CPUStealTime(%)",
                  *(f"cpu{i}steal(%)" for i in names)]
        widths = [15] * (2 + cores) + [20] + [15] * cores
        rows = ([time * 1e6, sum(loads) / cores, *loads, 0.0, *[0.0] * cores]
                for time, loads in samples)
        self.write("cpuprofiler", columns(widths, [header, *rows]))

    def memory(self, samples):
        """Of (seconds, KB used) on a machine with 16 GB, without swap."""
        header = ["Time(usec)", "Total_Mem(KB)", "Available_Mem(KB)", "Used_Mem(KB)", "Mem_Usage(%)",
                  "Swap_Total(KB)", "Swap_Free(KB)", "Swap_Used(KB)", "Swap_Used(%)"]
        total = 1 << 24
        rows = ([f"{time * 1e6:.2f}", *map(str, (total, total - used, used)),
                 f"{100 * used / total:.3f}", "0", "0", "0", "0.000"] for time, used in samples)
        self.write("memprofiler", columns([20] * 9, [header, *rows]))

    def blocks(self, prefix, widths, header, samples, ends):
        """Of (seconds, [fields without the time]), `ends` empty lines behind each."""
        text = columns(widths, [header])
        for time, rows in samples:
            text += columns(widths, [[time * 1e6, *row] for row in rows]) + "\n" * ends
        self.write(prefix, text)

    def processes(self, samples):
        """Of (seconds, [(PID, name, total seconds, % of a core)])."""
        self.blocks("procprofiler", [20, 10, 40, 20, 20, 20, 20],
                    ["Time(usec)", "PID", "ProcessName", "UserTime", "SystemTime", "TotalTime",
                     "CPU_Usage(%)"],
                    ((time, [(str(pid), name, total, 0.0, total, usage)
                             for pid, name, total, usage in rows]) for time, rows in samples), 2)

    def process_memory(self, samples):
        """Of (seconds, [(PID, name, KB of PSS)])."""
        self.blocks("procmem-profiler", [20, 10, 10, 40, 40, 40, 40, 40],
                    ["Time(usec)", "PID", "PPID", "ProcessName", "VSS(KB)", "PSS(KB)", "RSS(KB)",
                     "USS(KB)"],
                    ((time, [(str(pid), "1", name, *map(str, (2 * pss, pss, pss, pss)))
                             for pid, name, pss in rows]) for time, rows in samples), 2)

    def disks(self, samples):
        """Of (seconds, [(device, bytes read, bytes written)])."""
        self.blocks("diskioprofiler", [20] * 6,
                    ["Time(usec)", "Device", "Bytes_read", "KB_read/s", "Bytes_write", "KB_write/s"],
                    ((time, [(name, str(read), read / 1024, str(written), written / 1024)
                             for name, read, written in rows]) for time, rows in samples), 1)

    def network(self, samples):
        """Of (seconds, [(interface, bytes sent, bytes received)])."""
        self.blocks("netprofiler", [20] * 9,
                    ["Time(usec)", "Network_Interface", "Collisions", "Tx_bw(bytes)", "Rx_bw(bytes)",
                     "Tx_packets", "Rx_packets", "Tx_packets(dropped)", "Rx_packets(dropped)"],
                    ((time, [(name, *map(str, (0, sent, received, received, 9, 0, 0)))
                             for name, sent, received in rows]) for time, rows in samples), 1)


def spike_run(results, suffix, names=("steady", "spiky", "growing"), seconds=60, spike=40, disk="sda",
              interface="eth0"):
    """A machine of two cores where the second of the processes takes a whole core in one sample, the
    third gets a megabyte more each second, and something else is read, written, sent and received."""
    times = range(1, seconds + 1)
    run = MadeRun(results, suffix)
    run.cpu([(t, [99.5 if t == spike else 10 + t % 7, 5.25]) for t in times])
    run.memory([(t, (2 << 20) + 1024 * t) for t in times])
    steady, spiky, growing = names
    run.processes([(t, [(100, steady, t * 0.1, 10.0), (200, spiky, 1.0 * (t >= spike), 98.5 * (t == spike)),
                        (300, growing, t * 0.02, 2.0)]) for t in times])
    run.process_memory([(t, [(100, steady, 5000), (200, spiky, 7000), (300, growing, 9000 + 1024 * t)])
                        for t in times])
    run.disks([(t, [(disk, (t % 5) << 20, 3 << 20), ("loop0", 0, 0)]) for t in times])
    run.network([(t, [(interface, 1 << 20, (t % 3) << 20), ("idle0", 0, 0)]) for t in times])
    return run.folder
