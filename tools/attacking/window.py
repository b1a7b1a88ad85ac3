"""The desktop program on a display of its own, worked by its keys."""

import os
import shutil
import subprocess
import time

CAPTION = "Quorvel 3.4"


class Display:
    """A server and a window manager, where they are installed."""

    def __init__(self, home):
        self._server = self._manager = None
        self._name = ":"
        if all(map(shutil.which, ["Xvfb", "openbox", "xdotool"])):
            self._start(home)
        self.is_there = self._name != ":"

    def environment(self):
        return {"DISPLAY": self._name, "GDK_BACKEND": "x11", "NO_AT_BRIDGE": "1", "GSETTINGS_BACKEND": "memory"}

    def _start(self, home):
        reading, writing = os.pipe()
        self._server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
            pass_fds=[writing], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as number:
            self._name = ":" + number.readline().strip()
        self._manager = subprocess.Popen(["openbox", "--sm-disable"], env={"DISPLAY": self._name, "HOME": home},
                                         stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL)

    def press(self, *keys):
        """To the window that has the keyboard. What comes of it shows in the files alone."""
        subprocess.run(["xdotool", "key", *keys], env={"DISPLAY": self._name}, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, timeout=60, check=False)

    def focus(self):
        subprocess.run(["xdotool", "search", "--onlyvisible", "--name", CAPTION, "windowfocus"],
                       env={"DISPLAY": self._name}, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60,
                       check=False)

    def close(self):
        for process in filter(None, [self._manager, self._server]):
            process.terminate()
            process.wait()


def wait_until(holds, seconds):
    until = time.monotonic() + seconds
    while not holds() and time.monotonic() < until:
        time.sleep(0.05)
