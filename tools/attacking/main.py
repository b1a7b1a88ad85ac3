"""See tools/attack."""

import argparse
import collections
import multiprocessing
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import traceback

import writers
from attack_round import Round
from files import Loss
from places import Places
from window import Display


class Bench:
    """What one worker's rounds share."""

    def __init__(self, options, folder):
        self.places = Places(folder)
        self.program, self.faults = options.program, options.faults
        self.display = Display(folder)
        self.window = options.window if self.display.is_there and os.path.exists(options.window) else None
        self.writers = {name: writers.that_are_seen(folder) for name, folder in self.places.folders.items()}
        self._stand_in = subprocess.Popen([options.stand_in], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.service = self._stand_in.stdout.readline().decode().strip()

    def left_out(self):
        unseen = [f"{kind.__name__} on {name}" for name, seen in self.writers.items()
                  for kind in writers.ALL if kind not in seen]
        return self.places.left_out + unseen + ([] if self.window else ["the window"])

    def close(self):
        self._stand_in.stdin.close()
        self._stand_in.wait()
        self.display.close()
        self.places.close()


def attack(bench, options, number):
    """The round's counts, and its story if something was lost."""
    one = Round(bench, options.seed, number)
    try:
        one.run()
        one.clear()
        if options.replay:
            print("\n".join(one.story))
        return one.counts, None
    except Loss as loss:
        one.tell(f"=> {loss}")
    except Exception:  # a fault of ours, and to be mended as well
        one.tell(traceback.format_exc())
    folder = os.path.join(options.kept, f"{options.seed}-{number}")
    shutil.rmtree(folder, ignore_errors=True)
    one.clear(folder)
    with open(os.path.join(folder, "story"), "w", encoding="utf-8") as file:
        file.write("\n".join(one.story) + "\n")
    return one.counts, one.story + [f"kept in {folder}; again with tools/attack --replay {options.seed}:{number}"]


def work(options, first, step, until, results, stop):
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    folder = tempfile.mkdtemp(prefix="attack-")
    bench = Bench(options, folder)
    try:
        number = first
        while time.monotonic() < until and not stop.is_set():
            results.put((number, *attack(bench, options, number)))
            number += step
    finally:
        results.put((None, bench.left_out(), None))
        bench.close()


def parse(arguments):
    parser = argparse.ArgumentParser(prog="tools/attack")
    parser.add_argument("minutes", type=float, nargs="?", help="how long")
    parser.add_argument("seed", type=int, nargs="?", help="of the random numbers; else the time of day")
    parser.add_argument("--replay", metavar="SEED:ROUND", help="this round alone")
    for name in ["program", "window", "stand-in", "faults", "kept"]:
        parser.add_argument("--" + name, required=True, help=argparse.SUPPRESS)
    options = parser.parse_args(arguments)
    if (options.minutes is None) == (options.replay is None):
        parser.error("MINUTES, or --replay SEED:ROUND")
    return options


def replay(options):
    seed, number = options.replay.split(":")
    options.seed = int(seed)
    bench = Bench(options, tempfile.mkdtemp(prefix="attack-"))
    try:
        one, story = attack(bench, options, int(number))
    finally:
        bench.close()
    print("\n".join(story) if story else f"Nothing was lost: {one}")
    return 1 if story else 0


def main(arguments):
    options = parse(arguments)
    if options.replay:
        return replay(options)
    options.seed = options.seed if options.seed is not None else int(time.time())
    print(f"Attacking for {options.minutes:g} minutes with seed {options.seed}", flush=True)
    until = time.monotonic() + options.minutes * 60
    results, stop = multiprocessing.Queue(), multiprocessing.Event()
    signal.signal(signal.SIGINT, lambda *_: stop.set())
    count = 2 * (os.cpu_count() or 1)  # many of them wait
    workers = [multiprocessing.Process(target=work, args=(options, i, count, until, results, stop))
               for i in range(count)]
    for worker in workers:
        worker.start()
    total, rounds, findings, left_out = collections.Counter(), 0, 0, set()
    running = count
    while running:
        number, counts, story = results.get()
        if number is None:
            running -= 1
            left_out |= set(counts)
            continue
        rounds += 1
        total.update(counts)
        if story:
            findings += 1
            print(f"\nFINDING in round {options.seed}:{number}\n" + "\n".join(story), flush=True)
    for worker in workers:
        worker.join()
    if any(worker.exitcode for worker in workers):
        print("A worker has failed", file=sys.stderr)
        return 1
    print(f"{rounds} rounds, {findings} findings")
    for what, times in sorted(total.items()):
        print(f"{times:8}  {what}")
    if left_out:
        print("Not to be had here: " + ", ".join(sorted(left_out)))
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
