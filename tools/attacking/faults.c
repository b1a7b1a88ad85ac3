// Loaded before the C library, this lets one call on the attacked files fail, end the program, or take its time, and
// lets a file system lack what the better ones have. Calls are counted below the folders in ATTACK_ROOTS alone, so that
// the same number hits the same call again.
//   ATTACK_CALL=name of the calls that count; else all do
//   ATTACK_AT=NUMBER of the call, from 1
//   ATTACK_DO=fail ERRNO | full | short | signal NUMBER | pause MICROSECONDS; full: from that call on nothing is written
//   ATTACK_LACKS=words of: exclusive (renaming), links, leases, reflinks, near (in and out are one file system)
//   ATTACK_SPEED=NUMBER of seconds that seem to go by in one
//   ATTACK_LOG=file that gets a line about the call that was hit
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#define REAL(type, name, ...) ((type(*)(__VA_ARGS__))dlsym(RTLD_NEXT, #name))

enum Kind { Looks, Writes, Asks };

static int number;  // of the last call

static const char* setting(const char* name) {
  const char* const value = getenv(name);
  return value ? value : "";
}

static int lacks(const char* what) {
  return strstr(setting("ATTACK_LACKS"), what) != NULL;
}

static int is_ours(const char* path) {
  char roots[4096];
  snprintf(roots, sizeof roots, "%s", setting("ATTACK_ROOTS"));
  for (char *rest = roots, *root; (root = strsep(&rest, ":"));) {
    if (*root && strncmp(path, root, strlen(root)) == 0) return 1;
  }
  return 0;
}

static void tell(const char* call, const char* path) {
  char line[4200];
  const int size = snprintf(line, sizeof line, "%s at call %d, %s %s\n", setting("ATTACK_DO"), number, call, path);
  // By its number, for the descriptor must not be one that the program counts on, and our own call not be counted.
  const long file = syscall(SYS_open, setting("ATTACK_LOG"), O_WRONLY | O_CREAT | O_APPEND, 0600);
  syscall(SYS_write, file, line, size);
  syscall(SYS_close, file);
}

/// Counts the call; the errno value it is to fail with, 0 when it may go on, -1 when it is to do half of its work.
static int strike(const char* call, const char* path, enum Kind kind) {
  if (!path || !is_ours(path)) return 0;
  const char* const only = setting("ATTACK_CALL");
  if (*only && strcmp(only, call) != 0) return 0;
  const int at = atoi(setting("ATTACK_AT"));
  const int now = __atomic_add_fetch(&number, 1, __ATOMIC_SEQ_CST);
  const char* const what = setting("ATTACK_DO");
  if (at > 0 && now > at && strcmp(what, "full") == 0 && kind == Writes) return ENOSPC;
  if (now != at) return 0;
  tell(call, path);
  const char* const blank = strchr(what, ' ');
  const int value = blank ? atoi(blank) : 0;
  // A system that says of a file that it is not there is believed.
  if (strncmp(what, "fail", 4) == 0) return kind == Asks && (value == ENOENT || value == EINVAL) ? EIO : value;
  if (strncmp(what, "signal", 6) == 0) kill(getpid(), value);
  if (strncmp(what, "pause", 5) == 0) usleep(value);
  return strcmp(what, "short") == 0 ? -1 : 0;
}

static const char* path_of(int file, char* path, size_t size) {
  char link[64];
  snprintf(link, sizeof link, "/proc/self/fd/%d", file);
  const long length = syscall(SYS_readlink, link, path, size - 1);
  path[length < 0 ? 0 : length] = '\0';
  return path;
}

static int strike_file(const char* call, int file, enum Kind kind) {
  const int before = errno;
  char path[4096];
  const int error = strike(call, path_of(file, path, sizeof path), kind);
  errno = before;
  return error;
}

/// By the system, which looks at this before all else, or because we say so.
static int are_apart(const char* from, const char* to) {
  if (lacks("near") && (strstr(from, "/in/") != NULL) != (strstr(to, "/in/") != NULL)) return 1;
  char folder[4096];
  struct stat source, destination;
  snprintf(folder, sizeof folder, "%.*s", (int)(strrchr(to, '/') ? strrchr(to, '/') - to : 0), to);
  return syscall(SYS_newfstatat, AT_FDCWD, from, &source, AT_SYMLINK_NOFOLLOW) == 0 &&
         syscall(SYS_newfstatat, AT_FDCWD, folder, &destination, 0) == 0 && source.st_dev != destination.st_dev;
}

#define FAIL(error, result)    \
  do {                         \
    const int code = (error);  \
    if (code > 0) {            \
      errno = code;            \
      return result;           \
    }                          \
  } while (0)

// One that takes a path, and one that takes a descriptor.
#define BY_PATH(type, failed, name, kind, path, parameters, ...)       \
  type name parameters {                                               \
    FAIL(strike(#name, path, kind), failed);                           \
    return ((type(*) parameters)dlsym(RTLD_NEXT, #name))(__VA_ARGS__); \
  }
#define BY_FILE(type, name, kind, file, parameters, ...)               \
  type name parameters {                                               \
    FAIL(strike_file(#name, file, kind), -1);                          \
    return ((type(*) parameters)dlsym(RTLD_NEXT, #name))(__VA_ARGS__); \
  }

#define OPEN(name)                                                                        \
  int name(const char* path, int flags, ...) {                                            \
    va_list rest;                                                                         \
    va_start(rest, flags);                                                                \
    const int mode = va_arg(rest, int);                                                   \
    va_end(rest);                                                                         \
    FAIL(strike(#name, path, flags & O_CREAT ? Writes : Looks), -1);                      \
    return REAL(int, name, const char*, int, ...)(path, flags, mode);                     \
  }
OPEN(open)
OPEN(open64)
BY_PATH(int, -1, __open_2, Looks, path, (const char* path, int flags), path, flags)
BY_PATH(int, -1, __open64_2, Looks, path, (const char* path, int flags), path, flags)
BY_PATH(DIR*, NULL, opendir, Looks, path, (const char* path), path)
BY_PATH(int, -1, stat, Asks, path, (const char* path, struct stat* to), path, to)
BY_PATH(int, -1, stat64, Asks, path, (const char* path, struct stat64* to), path, to)
BY_PATH(int, -1, lstat, Asks, path, (const char* path, struct stat* to), path, to)
BY_PATH(int, -1, lstat64, Asks, path, (const char* path, struct stat64* to), path, to)
BY_PATH(int, -1, fstatat, Asks, path, (int at, const char* path, struct stat* to, int flags), at, path, to, flags)
BY_PATH(int, -1, faccessat, Looks, path, (int at, const char* path, int mode, int flags), at, path, mode, flags)
BY_PATH(ssize_t, -1, readlink, Looks, path, (const char* path, char* to, size_t size), path, to, size)
BY_PATH(int, -1, mkdir, Writes, path, (const char* path, mode_t mode), path, mode)
BY_PATH(int, -1, symlink, Writes, path, (const char* target, const char* path), target, path)
BY_PATH(int, -1, chmod, Looks, path, (const char* path, mode_t mode), path, mode)
BY_PATH(int, -1, unlink, Looks, path, (const char* path), path)
BY_FILE(ssize_t, read, Looks, file, (int file, void* to, size_t size), file, to, size)
BY_FILE(int, fstat, Looks, file, (int file, struct stat* to), file, to)
BY_FILE(int, fstat64, Looks, file, (int file, struct stat64* to), file, to)
BY_FILE(int, fsync, Writes, file, (int file), file)
BY_FILE(int, ftruncate64, Writes, file, (int file, off64_t size), file, size)
BY_FILE(int, fchmod, Looks, file, (int file, mode_t mode), file, mode)
BY_FILE(ssize_t, pwrite64, Writes, file, (int file, const void* from, size_t size, off64_t at), file, from, size, at)
BY_FILE(ssize_t, splice, Writes, to, (int from, off64_t* at, int to, off64_t* there, size_t size, unsigned flags), from,
        at, to, there, size, flags)

ssize_t write(int file, const void* from, size_t size) {
  const int error = strike_file("write", file, Writes);
  FAIL(error, -1);
  return REAL(ssize_t, write, int, const void*, size_t)(file, from, error < 0 && size > 1 ? size / 2 : size);
}

int rename(const char* from, const char* to) {
  FAIL(strike("rename", from, Looks), -1);
  if (is_ours(from) && are_apart(from, to)) FAIL(EXDEV, -1);
  return REAL(int, rename, const char*, const char*)(from, to);
}

int renameat2(int from_at, const char* from, int to_at, const char* to, unsigned flags) {
  FAIL(strike("renameat2", from, Looks), -1);
  if (is_ours(from) && are_apart(from, to)) FAIL(EXDEV, -1);
  if (is_ours(from) && lacks("exclusive")) FAIL(EINVAL, -1);
  return REAL(int, renameat2, int, const char*, int, const char*, unsigned)(from_at, from, to_at, to, flags);
}

int linkat(int from_at, const char* from, int to_at, const char* to, int flags) {
  FAIL(strike("linkat", from, Writes), -1);
  if (is_ours(from) && are_apart(from, to)) FAIL(EXDEV, -1);
  if (is_ours(from) && lacks("links")) FAIL(EPERM, -1);
  return REAL(int, linkat, int, const char*, int, const char*, int)(from_at, from, to_at, to, flags);
}

int fcntl(int file, int command, ...) {
  va_list rest;
  va_start(rest, command);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  if (command == F_SETLEASE && lacks("leases")) FAIL(EINVAL, -1);
  return REAL(int, fcntl, int, int, ...)(file, command, argument);
}

int ioctl(int file, unsigned long request, ...) {
  va_list rest;
  va_start(rest, request);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  if (request == FICLONE && lacks("reflinks")) FAIL(EOPNOTSUPP, -1);
  return REAL(int, ioctl, int, unsigned long, ...)(file, request, argument);
}

/// Only the time that is measured goes by faster; the day stays what it is.
int clock_gettime(clockid_t which, struct timespec* now) {
  static struct timespec began;
  const int speed = atoi(setting("ATTACK_SPEED"));
  const int status = (int)syscall(SYS_clock_gettime, which, now);
  if (status != 0 || speed < 1 || which != CLOCK_MONOTONIC) return status;
  if (began.tv_sec == 0) began = *now;
  const long long passed = (now->tv_sec - began.tv_sec) * 1000000000LL + now->tv_nsec - began.tv_nsec;
  now->tv_sec = began.tv_sec + passed * speed / 1000000000;
  now->tv_nsec = passed * speed % 1000000000;
  return 0;
}
