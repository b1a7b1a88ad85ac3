"""The files of a round: what was there, where it may be afterwards, and what is there."""

import hashlib
import os
import stat

TEMPORARY = ".quorvel-"
SHOWS = {  # what the stand-in service knows; the titles hold nothing that a file name may not
    "the.harbour.lights": ("The Harbour Lights", ["Slack Water", "The Pilot Boat", "A Lantern for Maud", "Salt and Tar"]),
    "tomorrow.street": ("Tomorrow Street", ["Moving In", "Last Night's Paper", "The Clock Mender"]),
}


class Loss(Exception):
    """What must not be."""


def digest(data):
    return hashlib.sha256(data).hexdigest()


class Tracked:
    """One file that was there before, or that somebody has put there since."""

    def __init__(self, path, data, new_path=None, what="file", family=None):
        self.path, self.new_path, self.what = path, new_path, what
        self.family = family or path  # the path of the file that it goes along with, or its own
        self.states = [digest(data)]  # the last is what it holds now
        self.may_be_gone = False  # somebody else has replaced it
        self.may_be_twice = False  # the program was killed between the end of a copy and the removal of its source

    def __str__(self):
        return f"{self.what} {self.path}"

    def is_in_the_way(self):
        """Somebody has its new name."""
        return bool(self.new_path) and os.path.exists(self.path) and os.path.exists(self.new_path)


class Found:
    def __init__(self, path):
        self.path = path
        # What a link leads to counts as its contents; one that leads nowhere has none.
        status = os.stat(path) if os.path.exists(path) else os.lstat(path)
        self.size, self.is_file = status.st_size, stat.S_ISREG(status.st_mode)
        self.number = (status.st_dev, status.st_ino)
        self.leads_nowhere = stat.S_ISLNK(status.st_mode)  # a link whose file somebody has taken away
        self.digest = ""
        if self.is_file:
            with open(path, "rb") as file:
                self.digest = digest(file.read())

    @property
    def is_temporary(self):
        return os.path.basename(self.path).startswith(TEMPORARY)


def everything_below(folders):
    return [Found(os.path.join(folder, name))
            for top in folders for folder, _, names in os.walk(top) for name in names]


def check(tracked, found, copies, killed, weak):
    """Raises Loss unless each tracked file is there exactly once, or with copies its source and at most one copy, and
    nothing else but temporary files is."""
    final = [each for each in found if not each.is_temporary]
    known = set()
    for one in tracked:
        holders = [each for each in final if each.digest == one.states[-1]]
        known.update(each.path for each in holders)
        places = {each.path for each in holders}
        # Of an earlier state, too, where somebody has written to the source since.
        copy = {each.path for each in final if each.path == one.new_path and each.digest in one.states}
        if copies or ((killed or one.may_be_twice) and copy and one.path in places):
            known |= copy
            one.may_be_twice |= not copies
            allowed = [{one.path}, {one.path, one.new_path}]
        else:
            allowed = [{one.path}, {one.new_path or one.path}]
        if one.may_be_gone:
            allowed += [set(), {one.new_path}]
        if places not in allowed:
            raise Loss(f"{one} is at {sorted(places) or 'no place'}, expected one of {[sorted(a) for a in allowed]}")
    for each in final:
        if each.path in known or (each.leads_nowhere and each.path in {one.new_path for one in tracked}):
            continue
        if weak and killed and each.size == 0 and each.path in {one.new_path for one in tracked}:
            continue  # an empty file that held the name until the renaming
        raise Loss(f"{each.path} holds {each.size} bytes that are no file's")
