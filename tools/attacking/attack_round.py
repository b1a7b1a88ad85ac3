"""One round: files, a rule, one to three disturbances, each followed by a check, and an undisturbed run at the end."""

import os
import random
import shutil
import signal
import subprocess
import time

import writers
from files import SHOWS, Loss, Tracked, check, digest, everything_below
from service import HostileService
from window import wait_until

RENAME, MOVE, COPY, HARD_LINK, SYMBOLIC_LINK = 1, 2, 3, 4, 5
ACTIONS = {RENAME: "rename", MOVE: "move", COPY: "copy", HARD_LINK: "hard link", SYMBOLIC_LINK: "symbolic link"}
LEAVE_SOURCE = {COPY, HARD_LINK, SYMBOLIC_LINK}
LONGEST = 120  # seconds; a program that runs on has hung
ERRNOS = {"EPERM": 1, "ENOENT": 2, "EINTR": 4, "EIO": 5, "ENOMEM": 12, "EACCES": 13, "EBUSY": 16, "EEXIST": 17,
          "EXDEV": 18, "EINVAL": 22, "ENOSPC": 28, "EROFS": 30, "EMLINK": 31, "ENOTSUP": 95, "ESTALE": 116}
CHANGES = ["renameat2", "linkat", "rename", "unlink", "fsync", "mkdir", "open", "open64", "write", "splice"]
# Nothing of these is to be waited for.
QUIET = ["kill", "fault", "fault", "pause", "signal", "descriptors", "limits", "two copies", "writer", "writer", "full",
         "read-only", "dry run", "hostile service", "take back", "take back", "plan"]
IN_WINDOW = ["window", "undo", "review", "review"]


class Round:
    def __init__(self, bench, seed, number):
        self.bench, self.name = bench, f"{seed}:{number}"
        self.rng = random.Random(self.name)
        self.story, self.counts, self.tracked = [], {}, []
        self.killed = False
        self.folder = os.path.join(bench.places.folders["disk"], self.name.replace(":", "-"))
        self.set_up()

    def tell(self, line):
        self.story.append(line)

    def count(self, what, times=1):
        self.counts[what] = self.counts.get(what, 0) + times

    # --- what there is

    def set_up(self):
        rng, folders = self.rng, self.bench.places.folders
        self.action = rng.choice([RENAME, MOVE, MOVE, MOVE, COPY, COPY, HARD_LINK, SYMBOLIC_LINK])
        names = sorted(folders)
        inside = rng.choice(names + ["disk", "memory" if "memory" in names else "disk"])
        inside = "disk" if inside == "full" else inside
        outside = rng.choice([inside, *names])
        self.lacks = [word for word in ["exclusive", "links", "reflinks", "near"] if rng.random() < 0.2]
        if self.action == HARD_LINK:
            outside, self.lacks = inside, []  # elsewhere there is none
        self.top_in, self.top_out = (os.path.join(folders[name], self.name.replace(":", "-"), end)
                                     for name, end in [(inside, "in"), (outside, "out")])
        self.places = (inside, outside)
        self.settings = rng.choice([[], [], [], ["--set", "verify=1"], ["--set", "nocache=1"]])
        self.companions = rng.random() < 0.3
        if self.companions:
            self.settings = [*self.settings, "--set", "companions=srt"]
        self.home = os.path.join(self.folder, "home")
        self.work = os.path.join(self.home, ".local/share/Quorvel")
        for folder in [self.top_in, self.top_out, self.work]:
            os.makedirs(folder)
        below = rng.choice(["", "Shows/[show]/", "[show]/Season [ss]/"])
        self.rule_path = os.path.join(self.top_out, below)
        with open(os.path.join(self.work, "filters.dat"), "wb") as file:
            path = "" if self.action == RENAME else self.rule_path
            self.rules = f"{self.action}\tTrue\t\t*\t{path}\t[show] - [s]x[ee] - [title]\t\t0\t1\r\n".encode("cp1252")
            file.write(self.rules)
        self.make_files()
        self.tell(f"{ACTIONS[self.action]}{', with companions,' * self.companions} from {inside} to {outside}; files {len(self.tracked)}; folders "
                  f"{below or 'none'}; file system lacks {self.lacks or 'nothing'}")

    def make_files(self):
        rng = self.rng
        for number in range(rng.randint(1, 5)):
            words = rng.choice(sorted(SHOWS))
            show, titles = SHOWS[words]
            episode = rng.randint(1, len(titles))
            folder = os.path.join(self.top_in, rng.choice(["", "", "a", "b/c"]))
            end = rng.choice([".mkv", ".avi"])
            name = f"{words}.s01e{episode:02}.{number}{end}"
            new_name = f"{show} - 1x{episode:02} - {titles[episode - 1]}{end}"
            target = folder if self.action == RENAME else self.rule_path.replace("[show]", show).replace(
                "[ss]", "01")
            data = rng.randbytes(rng.choice([20, 5000, 70000, 70000, 400000]))
            self.put(os.path.join(folder, name), data, os.path.join(target, new_name))
            if self.companions and rng.random() < 0.7:
                beside, new_beside = (os.path.splitext(each)[0] + ".en.srt" for each in [name, new_name])
                self.put(os.path.join(folder, beside), rng.randbytes(rng.choice([30, 9000])),
                         os.path.join(target, new_beside), self.tracked[-1].path)
        if rng.random() < 0.2:
            self.put(os.path.join(self.top_in, "notes.txt"), rng.randbytes(100))
        if rng.random() < 0.2:
            self.put(rng.choice(self.tracked).new_path or self.top_in + "/x", rng.randbytes(100))

    def put(self, path, data, new_path=None, family=None):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "xb") as file:
            file.write(data)
        self.tracked.append(Tracked(path, data, new_path, family=family))

    # --- running the program

    def environment(self, base=None, **faults):
        return {"HOME": self.home, "PATH": "/usr/bin:/bin", "LANG": "C.UTF-8", "TMPDIR": self.folder,
                "XDG_RUNTIME_DIR": self.home, "GIO_USE_VFS": "local",
                "QUORVEL_API_BASE": base or self.bench.service, "LD_PRELOAD": self.bench.faults,
                "ATTACK_ROOTS": f"{self.top_in}:{self.top_out}:{self.work}", "ATTACK_LOG": self.folder + "/faults.log",
                "ATTACK_LACKS": ",".join(self.lacks), **faults}

    def start(self, *options, operands=None, prefix="", base=None, program=None, **faults):
        """`prefix`: what a shell does before it becomes the program."""
        if operands is None:
            operands = [self.top_in]
        command = [program or self.bench.program, *([] if program else self.settings), *options, *operands]
        if prefix:
            command = ["/bin/sh", "-c", f'{prefix} exec "$0" "$@" {self.redirections}', *command]
        self.tell(" ".join([f"{name}={value!r}" for name, value in faults.items()] + command))
        self.count("runs")
        with open(self.folder + "/output", "ab") as output:
            return subprocess.Popen(command, env=self.environment(base, **faults), stdin=subprocess.DEVNULL,
                                    stdout=output, stderr=output, cwd="/")

    redirections = ""

    def end(self, process, may_be_killed=False):
        """The status; raises Loss for one that no program should end with."""
        try:
            status = process.wait(LONGEST)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            raise Loss(f"the program has not ended after {LONGEST} seconds") from None
        self.tell(f"  status {status}")
        self.count("calls hit", self.tell_file("faults.log"))
        self.tell_file("output")
        if status < 0 and may_be_killed:
            self.killed = True
            self.count("runs killed")
        elif status not in (0, 1, 2):
            raise Loss(f"the program ended with status {status}")
        return status

    def tell_file(self, name):
        """What the file says; the number of its lines. It begins anew."""
        try:
            with open(os.path.join(self.folder, name), encoding="utf-8", errors="replace") as file:
                lines = ["  " + line.rstrip() for line in file]
            os.unlink(os.path.join(self.folder, name))
        except FileNotFoundError:
            return 0
        self.story += lines
        return len(lines)

    # --- the disturbances

    def kill(self):
        if self.rng.random() < 0.7:
            self.end(self.start(**self.strike("signal 9")), True)
        else:
            self.signalled([signal.SIGKILL])

    def strike(self, what):
        """At any call, or at one of those that change something."""
        if self.rng.random() < 0.5:
            return {"ATTACK_AT": str(int(2 ** (self.rng.random() * 8))), "ATTACK_DO": what}
        return {"ATTACK_CALL": self.rng.choice(CHANGES), "ATTACK_AT": str(self.rng.randint(1, 5)), "ATTACK_DO": what}

    def fault(self):
        name = self.rng.choice(sorted(ERRNOS))
        what = self.rng.choice([f"fail {ERRNOS[name]}"] * 3 + ["full", "short"])
        self.end(self.start(**self.strike(what)))

    def pause(self):
        """Somebody works on a file while the program is held up within one call."""
        self.with_writer(**self.strike("pause 30000"))

    def signal(self):
        self.signalled(self.rng.choices([signal.SIGHUP, signal.SIGINT, signal.SIGTERM], k=self.rng.choice([1, 1, 2])))

    def signalled(self, signals):
        process = self.start()
        for each in signals:
            after = self.rng.random() * 0.03
            time.sleep(after)
            self.tell(f"  {signal.Signals(each).name} after {after * 1000:.1f} ms")
            process.send_signal(each)
        self.end(process, True)

    def descriptors(self):
        closed = [f"{number}{way}&-" for number, way in [(0, "<"), (1, ">"), (2, ">")] if self.rng.random() < 0.6]
        self.redirections = " ".join(closed + ["1>/dev/full"] * (self.rng.random() < 0.2))
        options = self.rng.choice([[], ["-v"]])
        self.end(self.start(*options, prefix=" "))
        self.redirections = ""

    def limits(self):
        limit = self.rng.choice([f"ulimit -n {self.rng.randint(4, 24)};", f"ulimit -f {self.rng.randint(1, 300)};"])
        process = self.start(prefix=limit)
        # Too few descriptors for its libraries, and it does not start; too long a file, and the system ends it.
        try:
            self.end(process, True)
        except Loss:
            if process.returncode != 127:
                raise

    def two_copies(self):
        for process in [self.start() for _ in range(self.rng.choice([2, 2, 3]))]:
            self.end(process)

    def writer(self):
        self.with_writer()

    def with_writer(self, **faults):
        movable = [each for each in self.tracked
                   if each.new_path and not each.may_be_gone and os.path.exists(each.path)]
        at_work = [self.rng.choice(self.bench.writers[self.places[0]])(self, each, self.rng)
                   for each in self.rng.sample(movable, min(len(movable), self.rng.choice([1, 1, 2])))]
        for each in at_work:
            each.start()
            each.opened.wait()
        process = self.start(**faults)
        try:
            self.end(process)
        finally:
            for each in at_work:
                each.join()
                self.tell(f"  {each}")

    def full(self):
        if "full" not in self.places:
            return self.fault()
        filler = os.path.join(self.bench.places.folders["full"], "filler")
        with open(filler, "wb") as file:
            room = os.statvfs(filler)
            file.write(bytes(max(0, room.f_bavail * room.f_bsize - self.rng.randint(0, 200000))))
        self.end(self.start())
        os.unlink(filler)

    def read_only(self):
        """For real where the place is mounted."""
        place = self.rng.choice(self.places)
        if place not in self.bench.places.is_mounted or place.startswith("ntfs"):
            return self.end(self.start(**self.strike("fail 30")))
        self.tell(f"{place} is read-only")
        self.bench.places.set_writable(place, False)
        try:
            return self.end(self.start())
        finally:
            self.bench.places.set_writable(place, True)

    def dry_run(self):
        def listing():
            return sorted((each.path, each.number, each.digest) for each in self.found())
        before = listing()
        self.end(self.start("--dry-run"))
        if listing() != before:
            raise Loss("a dry run changed something")

    def take_back(self):
        """The last pass, hit while that is done or not; and then the history is told, which changes nothing."""
        self.end(self.start("--undo", operands=[], **self.perhaps_struck()), True)
        self.end(self.start("--history", operands=[]))

    def plan(self):
        """What a dry run has told is carried out, perhaps by two at once, perhaps with a line that does not fit."""
        plan = os.path.join(self.home, "plan.jsonl")
        with open(plan, "wb") as file:
            subprocess.run([self.bench.program, *self.settings, "--dry-run", "--json", self.top_in], check=False,
                           env=self.environment(), stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.DEVNULL,
                           timeout=LONGEST)
        with open(plan, "ab") as file:
            file.write(b'{"state":"planned","path":"/nowhere","new_path":"/nothing","action":"rename"}\n')
        for process in [self.start("--apply", operands=[plan], **self.perhaps_struck())
                        for _ in range(self.rng.choice([1, 1, 2]))]:
            self.end(process, True)

    def perhaps_struck(self):
        return self.strike(self.rng.choice(["signal 9", "fail 5", "full"])) if self.rng.random() < 0.6 else {}

    def hostile_service(self):
        service = HostileService(self.bench.service, self.rng.random())
        try:
            self.end(self.start(base=service.address))
        finally:
            service.close()
            self.story += [f"  the service: {each}" for each in service.told]

    def window(self):
        """The desktop program, which ends when it is done, beside the other one or not."""
        window = self.start_window(True)
        beside = self.start() if self.rng.random() < 0.5 else None
        self.end_window(window, 3)
        if beside:
            self.end(beside)

    def undo(self):
        """In the window, where an undo may be hit as well."""
        window = self.start_window(False)
        moved = [each for each in self.tracked if each.new_path]
        wait_until(lambda: any(os.path.exists(each.new_path) for each in moved), 3)
        time.sleep(0.5)
        before = sum(os.path.exists(each.new_path) for each in moved)
        self.bench.display.focus()
        for row in range(self.rng.randint(1, 3)):
            self.bench.display.press("Home", *["Down"] * row, "Menu")
            time.sleep(0.1)
            self.bench.display.press("u")
            time.sleep(0.2)
        self.count("files undone", max(0, before - sum(os.path.exists(each.new_path) for each in moved)))
        self.end_window(window, 0)

    def review(self):
        """What is planned is applied as soon as it can be, and taken back or not."""
        def done():
            return sum(bool(each.new_path) and os.path.exists(each.new_path) for each in self.tracked)
        before = done()
        window = self.start_window(True, True)
        for _ in range(12):
            wait_until(lambda: window.poll() is not None, 0.3)
            if window.poll() is not None:
                break
            self.bench.display.focus()
            self.bench.display.press("ctrl+Return")
        self.count("files applied", max(0, done() - before))
        if self.rng.random() < 0.5:
            self.bench.display.press("ctrl+z")
            wait_until(lambda: window.poll() is not None, 0.3)
            self.bench.display.press("alt+u")
        self.end_window(window, 1)

    def start_window(self, closes, reviews=False):
        settings = os.path.join(self.home, ".config/Quorvel")
        os.makedirs(settings, exist_ok=True)
        with open(settings + "/settings.ini", "w", encoding="utf-8") as file:
            file.write(f"[Settings]\nautoclose={int(closes)}\nreview={int(reviews)}\n" +
                       "companions=srt\n" * self.companions)
        faults = self.strike(self.rng.choice(["signal 9", "fail 5", "fail 28", "full", "pause 30000"]))
        return self.start(program=self.bench.window, **(faults if self.rng.random() < 0.5 else {}),
                          **self.bench.display.environment())

    def end_window(self, window, seconds):
        """Where something failed it stays open, and where it asks something."""
        wait_until(lambda: window.poll() is not None, seconds)
        if window.poll() is None:
            self.bench.display.press("Escape", "ctrl+q")
            wait_until(lambda: window.poll() is not None, 3)
        if window.poll() is None:
            self.tell("  ended by force")
            window.terminate()
        self.end(window, True)

    # --- the checks

    def found(self):
        return everything_below([self.top_in, self.top_out])

    def check(self):
        """The temporary files that are there."""
        found = self.found()
        check(self.tracked, found, self.action in LEAVE_SOURCE, self.killed, bool(self.lacks))
        with open(os.path.join(self.work, "filters.dat"), "rb") as file:
            if file.read() != self.rules:
                raise Loss("the rules have changed")
        stray = [each for each in everything_below([self.folder]) if not each.path.startswith(
            (self.home, self.top_in, self.top_out)) and each.digest != digest(b"")]
        if stray:
            raise Loss(f"{stray[0].path} is where nothing should be")
        return [each for each in [*found, *everything_below([self.home])] if each.is_temporary]

    def run(self):
        """Raises Loss; the files are then as they were found."""
        for _ in range(self.rng.randint(1, 3)):
            act = self.rng.choice(IN_WINDOW if self.bench.window and self.rng.random() < 0.04 else QUIET)
            self.tell(f"* {act}")
            self.count(act)
            getattr(self, act.replace(" ", "_").replace("-", "_"))()
            left = self.check()
            if left and not self.killed:
                raise Loss(f"{left[0].path} is left, though nothing killed the program")
        self.count("temporary files left by a kill", len(left))
        self.count("files left in both places by a kill", sum(each.may_be_twice for each in self.tracked))
        self.tell("* undisturbed")
        self.age_temporaries()
        status = self.end(self.start())
        left = self.check()
        if left:
            raise Loss(f"{left[0].path} is left after an undisturbed run")
        self.check_done(status)
        self.count("files", len(self.tracked))

    def age_temporaries(self):
        """Of rules, caches and settings: those that are older than a day are taken for left over."""
        for each in everything_below([self.home]):
            if each.is_temporary:
                os.utime(each.path, (time.time() - 100000,) * 2)

    def check_done(self, status):
        """What nothing stood in the way of is done."""
        if "full" in self.places:
            return
        for one in self.tracked:
            if not one.new_path or not os.path.exists(one.path) or os.path.exists(one.new_path):
                continue
            # All that belongs together goes or stays. What was put back alone stays as well.
            is_held_up = any(each.is_in_the_way() for each in self.tracked if each.family == one.family)
            if not is_held_up and os.path.exists(one.family):
                raise Loss(f"{one} has not been taken care of (status {status})")

    def clear(self, keep=None):
        """Removes the round's files, into the folder `keep` if one is given."""
        tops = {os.path.dirname(top) for top in [self.top_in, self.top_out]} | {self.folder}
        for top in tops:
            if keep:
                # A folder of a file system that goes away when the program ends, perhaps.
                # Sockets cannot be copied.
                shutil.copytree(top, os.path.join(keep, os.path.basename(os.path.dirname(top))), symlinks=True,
                                ignore=shutil.ignore_patterns("*.socket"))
            shutil.rmtree(top)
