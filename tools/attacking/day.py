"""A day of watching a folder, in minutes: the program's clock runs faster. Files come in pieces, folders come and go, the
service goes away and comes back, calls fail, and the program is killed. See tools/attack."""

import argparse
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from files import SHOWS, digest
from service import HostileService

DAY = 24 * 60  # minutes
LONGEST = 180  # seconds for what is left at the end


class Day:
    def __init__(self, options):
        self.options, self.rng = options, random.Random(options.seed)
        self.folder = tempfile.mkdtemp(prefix="attack-day-")
        self.top_in, self.top_out, self.away = (os.path.join(self.folder, name) for name in ["in", "out", "away"])
        self.work = os.path.join(self.folder, "work")
        for folder in [self.top_in, self.top_out, self.away, self.work]:
            os.mkdir(folder)
        with open(self.work + "/filters.dat", "wb") as file:
            file.write(f"2\tTrue\t\t*\t{self.top_out}/[show]/\t[s]x[ee] [old]\t\t0\t1\r\n".encode())
        self.stand_in = subprocess.Popen([options.stand_in], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.service = HostileService(self.stand_in.stdout.readline().decode().strip(), options.seed)
        self.service.kinds = ["right"]
        self.expected, self.writing, self.gone, self.program = {}, [], [], None
        self.starts = self.kills = self.outages = 0
        self.seconds = 0.0  # of the processor
        self.memory = []

    # --- the program

    def start(self, **faults):
        self.starts += 1
        environment = {"HOME": self.folder, "PATH": "/usr/bin:/bin", "QUORVEL_API_BASE": self.service.address,
                       "LD_PRELOAD": self.options.faults, "ATTACK_ROOTS": f"{self.top_in}:{self.top_out}",
                       "ATTACK_LOG": self.folder + "/faults.log",
                       "ATTACK_SPEED": str(int(DAY / self.options.minutes)), **faults}
        with open(self.folder + "/output", "ab") as output:
            self.program = subprocess.Popen([self.options.program, "--watch", "--set", "nocache=1", "-w", self.work,
                                             self.top_in], env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=output)

    def measure(self):
        with open(f"/proc/{self.program.pid}/status", encoding="ascii") as file:
            lines = dict(line.split(":", 1) for line in file)
        if "VmRSS" in lines:
            self.memory.append(int(lines["VmRSS"].split()[0]))

    def end(self, how):
        self.program.send_signal(how)
        _, status, usage = os.wait4(self.program.pid, 0)
        self.program.returncode = 0
        self.seconds += usage.ru_utime + usage.ru_stime
        if how == signal.SIGTERM and status != 0:
            raise AssertionError(f"ended with status {status}")

    def kill(self):
        self.kills += 1
        self.end(signal.SIGKILL)
        faults = {}
        if self.rng.random() < 0.5:
            faults = {"ATTACK_AT": str(self.rng.randint(1, 400)), "ATTACK_DO": f"fail {self.rng.choice([5, 13, 28])}"}
        self.start(**faults)

    # --- the user

    def begin_file(self):
        words = self.rng.choice(sorted(SHOWS))
        show, titles = SHOWS[words]
        episode = self.rng.randint(1, len(titles))
        stem = f"{words}.s01e{episode:02}.{len(self.expected)}"
        folder = os.path.join(self.top_in, self.rng.choice(["", "a", "b/c"]))
        data = self.rng.randbytes(self.rng.choice([20, 5000, 70000]))
        self.expected[digest(data)] = os.path.join(self.top_out, show, f"1x{episode:02} {stem}.mkv")
        path = os.path.join(folder, stem + ".mkv")
        try:
            os.makedirs(folder, exist_ok=True)
            part = self.rng.choice(["", ".part"])
            self.writing.append((open(path + part, "xb"), data, path + part, path))
        except OSError:
            del self.expected[digest(data)]

    def go_on_with_file(self):
        file, data, part, path = self.writing.pop(self.rng.randrange(len(self.writing)))
        piece = data[:self.rng.randint(1, len(data))]
        file.write(piece)
        file.flush()
        if len(piece) < len(data):
            self.writing.append((file, data[len(piece):], part, path))
            return
        file.close()
        if part != path:
            # Its folder may be away by now.
            for top in [self.top_in, self.away]:
                if os.path.exists(part.replace(self.top_in, top)):
                    os.rename(part.replace(self.top_in, top), path.replace(self.top_in, top))
                    break

    def move_folder(self):
        for name in ["a", "b"]:
            inside, outside = os.path.join(self.top_in, name), os.path.join(self.away, name)
            if os.path.exists(outside):
                if not os.path.exists(inside):
                    os.rename(outside, inside)
            elif os.path.exists(inside) and self.rng.random() < 0.5:
                os.rename(inside, outside)

    def switch_service(self):
        is_away = self.service.kinds != ["right"]
        self.outages += not is_away
        self.service.kinds = ["right"] if is_away else self.rng.choice([["reset"], ["error"], ["empty", "cut", "noise"]])

    def run(self):
        self.start()
        until = time.monotonic() + self.options.minutes * 60
        while time.monotonic() < until:
            act = self.rng.choices([self.begin_file, self.go_on_with_file, self.move_folder, self.switch_service,
                                    self.kill, self.measure], [40, 80, 3, 0.7, 0.3, 2])[0]
            if act != self.go_on_with_file or self.writing:
                act()
            time.sleep(self.rng.random() * 0.02)
            if self.program.poll() is not None:
                raise AssertionError(f"the program has ended with status {self.program.returncode}")
        self.service.kinds = ["right"]
        while self.writing:
            self.go_on_with_file()
        for name in ["a", "b"]:
            if os.path.exists(os.path.join(self.away, name)):
                shutil.copytree(os.path.join(self.away, name), os.path.join(self.top_in, name), dirs_exist_ok=True)
                shutil.rmtree(os.path.join(self.away, name))
        self.wait_for_all()
        self.measure()
        self.end(signal.SIGTERM)

    def wait_for_all(self):
        until = time.monotonic() + LONGEST
        while time.monotonic() < until:
            left = [path for path in self.expected.values() if not os.path.exists(path)]
            if not left:
                return
            time.sleep(0.5)
        raise AssertionError(f"{len(left)} of {len(self.expected)} files were not taken, such as {left[0]}")

    def check(self):
        found = {}
        for top in [self.top_in, self.top_out, self.away]:
            for folder, _, names in os.walk(top):
                for name in names:
                    with open(os.path.join(folder, name), "rb") as file:
                        found.setdefault(digest(file.read()), []).append(os.path.join(folder, name))
        wrong = [(path, found.get(what)) for what, path in self.expected.items() if found.get(what) != [path]]
        if wrong or len(found) != len(self.expected):
            raise AssertionError(f"{len(wrong)} files are not where they should be, such as {wrong[:1]}")

    def close(self):
        if self.program is not None and self.program.poll() is None:
            self.program.kill()
            self.program.wait()
        self.service.close()
        self.stand_in.stdin.close()
        self.stand_in.wait()


def main(arguments):
    parser = argparse.ArgumentParser(prog="tools/attack --day")
    parser.add_argument("minutes", type=float, help="that the day takes")
    parser.add_argument("seed", type=int, nargs="?", default=int(time.time()))
    for name in ["program", "window", "stand-in", "faults", "kept"]:
        parser.add_argument("--" + name, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    print(f"A day in {options.minutes:g} minutes with seed {options.seed}", flush=True)
    day = Day(options)
    try:
        day.run()
        day.check()
    except AssertionError as failure:
        print(f"{failure}; kept in {day.folder}")
        return 1
    finally:
        day.close()
    shutil.rmtree(day.folder)
    memory = day.memory
    print(f"{len(day.expected)} files, each at its place; {day.starts} starts, {day.kills} kills, {day.outages} outages; "
          f"{day.seconds:.1f} s of the processor; memory in KiB: {memory[0]} at first, {max(memory)} at most, "
          f"{memory[-1]} at last")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
