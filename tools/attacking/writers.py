"""Somebody else who works on the files meanwhile. Each has a file, and records what it must hold when he is done."""

import errno
import fcntl
import mmap
import os
import threading
import time

from files import Tracked, digest


class Writer(threading.Thread):
    def __init__(self, round_, tracked, rng):
        super().__init__(daemon=True)
        self.round, self.tracked, self.rng = round_, tracked, rng
        self.delay = rng.choice([0, rng.random() * 0.05])
        self.steps = [rng.randbytes(rng.randint(16, 5000)) for _ in range(rng.randint(1, 4))]
        self.pause = rng.random() * 0.006
        self.opened = threading.Event()  # the program may start
        self.done = []

    def run(self):
        if self.delay:
            self.opened.set()
            time.sleep(self.delay)
        try:
            self.work()
        except FileNotFoundError:
            self.done.append("the file was gone")
        self.opened.set()

    def __str__(self):
        return f"{type(self).__name__} after {self.delay * 1000:.1f} ms on {self.tracked.path}: {'; '.join(self.done)}"


class Appender(Writer):
    def work(self):
        file = os.open(self.tracked.path, os.O_RDWR | os.O_APPEND)
        self.opened.set()
        try:
            data = os.pread(file, os.fstat(file).st_size, 0)
            for step in self.steps:
                time.sleep(self.pause)
                data += step
                # Before the writing, so that nobody can have read what is not recorded.
                self.tracked.states.append(digest(data))
                os.write(file, step)
                self.done.append(f"appended {len(step)} bytes")
        finally:
            os.close(file)


class Mapper(Writer):
    def work(self):
        file = os.open(self.tracked.path, os.O_RDWR)
        try:
            view = mmap.mmap(file, 0)
        finally:
            os.close(file)
        self.opened.set()
        data = bytearray(view[:])
        for step in self.steps:
            time.sleep(self.pause)
            step = step[:len(data)]
            data[:len(step)] = step
            self.tracked.states.append(digest(data))
            view[:len(step)] = step
            self.done.append(f"wrote {len(step)} bytes through memory")
        view.close()


class Replacer(Writer):
    def work(self):
        self.opened.set()
        time.sleep(self.pause)
        data = self.steps[0]
        new = self.tracked.path + "~"
        with open(new, "xb") as file:
            file.write(data)
        self.round.tracked.append(Tracked(self.tracked.path, data, self.tracked.new_path, "the replacement",
                                          self.tracked.family))
        self.tracked.may_be_gone = True
        os.rename(new, self.tracked.path)
        self.done.append(f"put a new file of {len(data)} bytes in its place")


class Rival(Writer):
    """Takes the new name for a file of his own, where that folder is there."""

    def work(self):
        self.opened.set()
        data = self.steps[0]
        try:
            with open(self.tracked.new_path, "xb") as file:
                file.write(data)
        except FileExistsError:
            self.done.append("the name was taken")
            return
        self.round.tracked.append(Tracked(self.tracked.new_path, data, what="the rival's file"))
        self.done.append("took the new name")


ALL = [Appender, Mapper, Replacer, Rival]


def that_are_seen(folder):
    """Where the system does not tell that a file is open for writing, or mapped so, such writers may lose what they
    write; that is known, and they are left out."""
    path = os.path.join(folder, "seen")
    with open(path, "wb") as file:
        file.write(b"x")
        appended = is_seen(path, file)
    with open(path, "r+b") as file:
        view = mmap.mmap(file.fileno(), 0)
    mapped = is_seen(path, view)
    view.close()
    os.unlink(path)
    return [Appender] * appended + [Mapper] * mapped + [Replacer, Rival]


def is_seen(path, _writer):
    with open(path, "rb") as reader:
        try:
            fcntl.fcntl(reader, fcntl.F_SETLEASE, fcntl.F_RDLCK)
        except OSError as error:
            return error.errno == errno.EAGAIN
    return False
