#!/usr/bin/python3
"""Measures from outside how long a window lets its events wait.

    pings.py DISPLAY

Reads lines from its standard input: "WINDOW PROCESS..." begins, an empty line
ends a measurement. In between it sends the window manager's question "are you
there?" (_NET_WM_PING) again and again, as a window manager does before it offers
to end a program. The toolkit answers it from the thread that handles clicks, so
the answer comes as late as a click would be handled. At the end of each
measurement it prints what it saw as a line of JSON: [sent, waited, own] in
seconds, `own` being the part of the wait that is not the machine's fault. The
first of the processes is the launcher.
"""

from __future__ import annotations

import contextlib
import json
import os
import select
import subprocess
import sys
import time
from typing import NamedTuple

from Xlib import X, display
from Xlib.protocol import event

# Between two questions.
PAUSE = 0.02


# Seconds that a thread has run, and that it was ready to run and had no processor.
Times = dict[str, tuple[float, float]]


class Sample(NamedTuple):
    """One question, in seconds."""

    sent: float
    waited: float
    # The part of the wait that is not the machine's fault.
    own: float


def times(process: int) -> Times:
    """Of each thread of a process, so far."""
    found: Times = {}
    with contextlib.suppress(OSError):
        for thread in os.listdir(f"/proc/{process}/task"):
            with contextlib.suppress(OSError, IndexError):
                with open(f"/proc/{process}/task/{thread}/schedstat", encoding="ascii") as told:
                    ran, queued = told.read().split()[:2]
                    found[thread] = int(ran) / 1e9, int(queued) / 1e9
    return found


def own_part(waited: float, before: list[Times], processes: list[int]) -> float:
    """How much of a wait was the launcher's own, on a machine that is busy otherwise as well.

    The first of the processes is the launcher. What its main thread ran counts. What it was ready
    and had no processor does not. While it slept it may have waited for another thread of its own,
    for the display or for this program, which may have been without a processor in turn.
    """
    spent = [
        {
            thread: (ran - old.get(thread, (0, 0))[0], queued - old.get(thread, (0, 0))[1])
            for thread, (ran, queued) in times(process).items()
        }
        for process, old in zip(processes, before)
    ]
    ran, queued = spent[0].pop(str(processes[0]), (0, 0))
    slept = waited - ran - queued
    others = sum(max((queued for _, queued in threads.values()), default=0) for threads in spent)
    return ran + max(0, slept - others)


class Pinger:
    """Asks from a process of its own, so that nothing else delays the questions."""

    def __init__(self, display_name: str):
        self.process = subprocess.Popen(
            [sys.executable, os.path.abspath(__file__), display_name],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        self.busy = False
        self.hear()  # it is ready

    def start(self, window: str, processes: list[int]) -> None:
        self.tell(f"{window} {' '.join(map(str, processes))}")
        self.busy = True

    def stop(self) -> list[Sample]:
        """All questions since the start; the last may have been open still."""
        if not self.busy:
            return []
        self.tell("")
        self.busy = False
        return [Sample(*told) for told in json.loads(self.hear())]

    def tell(self, line: str) -> None:
        assert self.process.stdin is not None
        self.process.stdin.write(f"{line}\n")
        self.process.stdin.flush()

    def hear(self) -> str:
        assert self.process.stdout is not None
        return self.process.stdout.readline()

    def close(self) -> None:
        self.process.communicate(timeout=30)


class Questions:
    def __init__(self, name: str):
        self.screen = display.Display(name)
        # A window that is gone by now is no error here.
        self.screen.set_error_handler(lambda *_: None)
        self.root = self.screen.screen().root
        self.protocols = self.screen.intern_atom("WM_PROTOCOLS")
        self.ping = self.screen.intern_atom("_NET_WM_PING")
        # The answer goes to the root window, by the one mask or the other.
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask | X.StructureNotifyMask)
        self.screen.sync()
        self.number = 0

    def ask(self, window_number: int) -> None:
        self.number += 1
        question = (32, [self.ping, self.number, window_number, 0, 0])
        window = self.screen.create_resource_object("window", window_number)
        window.send_event(event.ClientMessage(window=window, client_type=self.protocols, data=question))
        self.screen.flush()

    def answered(self) -> bool:
        while self.screen.pending_events():
            seen = self.screen.next_event()
            if seen.type == X.ClientMessage and seen.client_type == self.protocols and seen.window == self.root:
                if list(seen.data[1][:2]) == [self.ping, self.number]:
                    return True
        return False

    def measure(self, window: int, processes: list[int]) -> list[Sample]:
        samples = []
        while True:
            before = [times(process) for process in processes]
            sent = time.monotonic()
            self.ask(window)
            ended = False
            while not self.answered() and not ended:
                ready, _, _ = select.select([self.screen, sys.stdin], [], [], 0.5)
                ended = sys.stdin in ready
            waited = time.monotonic() - sent
            samples.append(Sample(sent, waited, own_part(waited, before, processes)))
            if ended or select.select([sys.stdin], [], [], PAUSE)[0]:
                return samples


def main() -> int:
    questions = Questions(sys.argv[1])
    print("ready", flush=True)
    for line in iter(sys.stdin.readline, ""):
        window, *processes = (int(word) for word in line.split())
        samples = questions.measure(window, [*processes, os.getpid()])
        sys.stdin.readline()
        print(json.dumps(samples), flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
