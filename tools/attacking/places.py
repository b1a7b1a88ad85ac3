"""The file systems that rounds work on: what this machine has, and what may be mounted."""

import ctypes
import os
import shutil
import subprocess
import tempfile

LOOP_SYSTEMS = {  # kind: the command that makes it
    "ext4": ["mkfs.ext4", "-q", "-F"],
    "ext2": ["mkfs.ext2", "-q", "-F"],
    "xfs": ["mkfs.xfs", "-q", "-f"],
    "btrfs": ["mkfs.btrfs", "-q", "-f"],
    "vfat": ["mkfs.vfat"],
    "exfat": ["mkfs.exfat", "-q"],
    "ntfs3": ["mkfs.ntfs", "-q", "-F", "-f"],
    "ntfs-3g": ["mkfs.ntfs", "-q", "-F", "-f"],
}
LOOP_MEGABYTES = {"xfs": 300, "btrfs": 128}


def mount(*arguments):
    return subprocess.run(["mount", *arguments], stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL).returncode == 0


def in_own_namespace():
    """Whether mounts made from now on are this process's and its children's alone."""
    clone_new_namespace = 0x20000
    if os.geteuid() != 0 or ctypes.CDLL(None, use_errno=True).unshare(clone_new_namespace) != 0:
        return False
    return mount("--make-rprivate", "/")


class Places:
    """Folders by name: "disk" is always there, the others where they can be had."""

    def __init__(self, base):
        self.base, self.left_out, self.is_mounted = base, [], {}
        self.folders = {"disk": self._folder(base, "disk")}
        if os.access("/dev/shm", os.W_OK) and os.stat("/dev/shm").st_dev != os.stat(base).st_dev:
            self._memory = tempfile.mkdtemp(prefix="attack-", dir="/dev/shm")
            self.folders["memory"] = self._memory
        else:
            self._memory = None
        if not in_own_namespace():
            self.left_out.append("mounts")
            return
        self._add("full", lambda path: mount("-t", "tmpfs", "-o", "size=1m", "tmpfs", path))
        for kind, command in LOOP_SYSTEMS.items():
            self._add(kind, lambda path, kind=kind, command=command: self._loop(kind, command, path))

    @staticmethod
    def _folder(base, name):
        path = os.path.join(base, name)
        os.makedirs(path)
        return path

    def _add(self, name, mount_at):
        path = self._folder(self.base, name)
        if mount_at(path):
            self.folders[name] = path
            self.is_mounted[name] = True
        else:
            self.left_out.append(name)

    def _loop(self, kind, command, path):
        image = path + ".image"
        if not shutil.which(command[0]):
            return False
        with open(image, "wb") as file:
            file.truncate(LOOP_MEGABYTES.get(kind, 24) << 20)
        made = subprocess.run([*command, image], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return made.returncode == 0 and mount("-o", "loop", "-t", kind, image, path)

    def set_writable(self, name, writable):
        if not mount("-o", "remount," + ("rw" if writable else "ro"), self.folders[name]):
            raise OSError(f"{name} cannot be mounted again")

    def close(self):
        for name in self.is_mounted:
            subprocess.run(["umount", "--lazy", self.folders[name]], check=False)
        for folder in filter(None, [self.base, self._memory]):
            shutil.rmtree(folder, ignore_errors=True)
