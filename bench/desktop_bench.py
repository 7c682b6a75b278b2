"""Measures the program on virtual desktops: desktop_bench.py BUILD_FOLDER [FIGURE…]"""
import math
import os
import statistics
import subprocess
import sys
import time
from pathlib import Path

TREE = Path(__file__).resolve().parents[1]
BUILD = Path(sys.argv[1]).absolute()
sys.path.insert(0, str(TREE / "tests/e2e"))
os.environ["VANTLE"] = str(BUILD / "bin/vantle")

import desktop as virtual  # noqa: E402
import peers  # noqa: E402
from program import Program  # noqa: E402

virtual.FIRST_DISPLAY = 90  # Tests may run beside.
ICON = BUILD / "share/vantle/icons/tray-full.svg"
BARE = [BUILD / "bin/bench_bare_tray", ICON]
COPYQ = ["copyq"]
STARTS = 15
DRAGS = 100
MOTION = 10, 1000  # Seconds, movements a second.
IDLE = 60


def bench(desktop, name, *arguments):
    """What one of the bench programs printed, as rows of numbers."""
    output = subprocess.run([str(a) for a in (BUILD / f"bin/bench_{name}", *arguments)], env=desktop.environment,
                            check=True, stdout=subprocess.PIPE, text=True).stdout
    return [[float(number) for number in line.split()] for line in output.splitlines()]


def rank(values, share):
    """The smallest value that this share of all values does not exceed."""
    return sorted(values)[math.ceil(len(values) * share) - 1]


class Usage:
    """Processor time and wake-ups of all threads of a process from now on."""

    def __init__(self, pid):
        self.pid = pid
        self.start = self._read()

    def _read(self):
        nanoseconds = sleeps = 0
        for task in Path(f"/proc/{self.pid}/task").iterdir():
            nanoseconds += int((task / "schedstat").read_text().split()[0])
            sleeps += int((task / "status").read_text().partition("\nvoluntary_ctxt_switches:")[2].split()[0])
        return nanoseconds, sleeps, time.monotonic()

    def stop(self):
        now = self._read()
        self.seconds, self.wakeups, elapsed = (b - a for a, b in zip(self.start, now))
        self.seconds /= 1e9
        self.percent = 100 * self.seconds / elapsed
        return self


def panel_window(desktop, pid):
    """The panel's window, which exists before it is first shown."""
    waiting = [desktop.root]
    while waiting:
        window = waiting.pop()
        if (desktop.cardinal(window, "_NET_WM_PID") == pid
                and desktop.property(window, "WM_WINDOW_ROLE") == b"panel"):
            return window
        waiting += window.query_tree().children
    raise AssertionError("no panel window")


def file_source(desktop, name="report.pdf"):
    file = desktop.write(desktop.home / name, b"x" * 1000)
    return peers.source(desktop, {"text/uri-list": peers.uri_list(file)}, actions=["copy"])


def verdict(met):
    return "met" if met else "**missed**"


# Figures: each returns rows of figure, value, peer, ratio, aim, verdict.

def start():
    """Start to the tray's getting the icon, and memory after three idle seconds; starts take turns."""
    with virtual.Desktop() as desktop:
        commands = [os.environ["VANTLE"]], BARE, COPYQ
        rows = bench(desktop, "tray_start", STARTS, 3, *(a for command in commands for a in ("--", *command)))
    times, memories, sessions = ([statistics.median(row[column] for row in rows if row[0] == program)
                                  for program in range(len(commands))] for column in (1, 2, 3))
    spread = [row[1] for row in rows if row[0] == 0]
    yield ("Start to tray-ready, median (ms)", f"{times[0]:.1f} ({min(spread):.1f} to {max(spread):.1f})",
           f"bare Qt tray {times[1]:.1f}", times[0] / times[1], "≤ 1.3", times[0] <= 1.3 * times[1])
    yield ("", "", f"CopyQ {times[2]:.1f}", times[0] / times[2], "< 1", times[0] < times[2])
    yield ("Proportional memory, median (MB)", f"{sessions[0] / 1024:.1f}", f"bare Qt tray {sessions[1] / 1024:.1f}",
           sessions[0] / sessions[1], "≤ 1.3", sessions[0] <= 1.3 * sessions[1])
    yield ("", "", f"CopyQ, main process {memories[2] / 1024:.1f}", sessions[0] / memories[2], "< 1",
           sessions[0] < memories[2])
    yield ("", "", f"CopyQ, all processes {sessions[2] / 1024:.1f}", sessions[0] / sessions[2], "< 1",
           sessions[0] < sessions[2])


def drag():
    """From the notice that the source owns the drag's selection, which the bench gets as the program does."""
    with virtual.Desktop() as desktop:
        program = Program(desktop).start()
        source = file_source(desktop)
        panel = panel_window(desktop, program.process.pid)
        rows = bench(desktop, "drag_latency", panel.id, *source.centre, 700, 600, DRAGS)
    mapped, painted, server, complete = zip(*rows)
    for name, values in (("panel mapped", mapped), ("first painted", painted), ("first painted, X server's clock", server)):
        cells = [f"{statistics.median(values):.1f}", *(f"{rank(values, share):.1f}" for share in (0.95, 0.99, 1))]
        aim = ("99 of 100 < 30", rank(values, 0.99) < 30) if values is not mapped else ("", None)
        yield (f"Drag announced to {name} (ms)", "median {}, 95th {}, 99th {}, largest {}".format(*cells), "", None, *aim)
    yield ("First painting was the final picture", f"{int(sum(complete))} of {len(complete)}", "", None, "", None)


def pointer():
    """1,000 movements a second: first with no button down, then during a drag over others' windows."""
    with virtual.Desktop() as desktop:
        program = Program(desktop).start()
        source = file_source(desktop)
        peers.target(desktop)
        time.sleep(3)
        area = 20, 20, 500, 740
        free = Usage(program.process.pid)
        rate = bench(desktop, "pointer_motion", *MOTION, *area)[0][0]
        free.stop()
        yield (f"Pointer moves {rate:.0f} times a second, no button: processor time", f"{free.percent:.3f} % of a core",
               "", None, "0", free.seconds == 0 or free.wakeups <= 1)
        yield ("… wake-ups in 10 s", f"{free.wakeups}", "", None, "0, or 1 of the cleanup timer", free.wakeups <= 1)

        desktop.begin_drag(*source.centre)
        virtual.wait_for(program.panel_is_up, 3, "the panel to come up")
        time.sleep(1)
        usages = {name: Usage(pid) for name, pid in (
            ("program", program.process.pid), ("source", source.process.pid),
            ("server", next(p.pid for p in desktop.processes.values() if p.args[0] == "Xvfb")))}
        rate = bench(desktop, "pointer_motion", *MOTION, *area)[0][0]
        held = {name: usage.stop() for name, usage in usages.items()}
        assert program.panel_is_up(), "the panel went during the drag"
        desktop.release()
        ours = held["program"].percent
        for name, peer in (("source", "the drag's source"), ("server", "the X server")):
            yield (f"… {rate:.0f} times a second during a drag" if name == "source" else "",
                   f"{ours:.2f} % of a core" if name == "source" else "", f"{peer} {held[name].percent:.1f} %",
                   ours / held[name].percent, "< 3 %", ours < 3)


def idle():
    """Hidden after it was shown once, beside the peers in one tray."""
    with virtual.Desktop() as desktop:
        desktop.start("trayer", "trayer", "--edge", "bottom", "--height", "24")
        time.sleep(1)
        program = Program(desktop).start()
        others = {"bare Qt tray": desktop.start("bare", *BARE), "CopyQ": desktop.start("copyq", *COPYQ)}
        source = file_source(desktop)
        desktop.begin_drag(*source.centre)
        virtual.wait_for(program.panel_is_up, 3, "the panel to come up")
        desktop.glide(700, 600)
        desktop.release()
        program.wait_until_hidden()
        time.sleep(5)
        ours, *theirs = [Usage(pid) for pid in (program.process.pid, *(p.pid for p in others.values()))]
        time.sleep(IDLE)
        for usage in (ours, *theirs):
            usage.stop()
    peer = ", ".join(f"{name} {usage.wakeups}" for name, usage in zip(others, theirs))
    yield (f"Wake-ups in {IDLE} s, idle and hidden", f"{ours.wakeups} ({ours.seconds * 1000:.2f} ms)", peer, None,
           "1 or 2, of the cleanup timer", ours.wakeups <= 2)


def table(figure):
    yield "| Figure | Vantle | Peer | Ratio | Aim | |"
    yield "|---|---|---|---|---|---|"
    for name, value, peer, ratio, aim, met in figure():
        cells = name, value, peer, "" if ratio is None else f"{ratio:.2f}", aim, "" if met is None else verdict(met)
        yield "| " + " | ".join(cells) + " |"


def machine():
    model = Path("/proc/cpuinfo").read_text().partition("model name")[2].partition(":")[2].splitlines()[0].strip()
    return f"{os.cpu_count()} cores of {model}; Xvfb, openbox, Qt from Debian 12. Written by bench/run."


def main():
    figures = start, drag, pointer, idle
    chosen = [f for f in figures if not sys.argv[2:] or f.__name__ in sys.argv[2:]]
    report = ["# Measured", "", machine()]
    print(report[-1])
    for figure in chosen:
        report += ["", figure.__doc__, ""]
        print(*report[-3:], sep="\n")
        for line in table(figure):
            report.append(line)
            print(line, flush=True)
    if chosen == list(figures):
        (TREE / "bench/RESULTS.md").write_text("\n".join(report) + "\n")


main()
