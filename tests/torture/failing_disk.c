/* A disk that fails, to be loaded before a program (LD_PRELOAD): its file calls on paths below the
   folder DISK_BELOW, and on what was opened there, are counted from 1, and the one that the
   environment names fails.

     DISK_AT=N         the call that fails
     DISK_FROM=N       it and all after it
     DISK_FULL=N       a write that is call N writes half of its bytes, and all after it fail
     DISK_ERROR=E      with this error number; 0: a write that writes half of its bytes
     DISK_KILL=N       the process is killed (SIGKILL) before call N
     DISK_COUNT=FILE   the number of calls goes there when the program ends */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define MOST_FILES 1024

static atomic_long calls;
static long first = 0, last = -1, killed = -1, filling = -1;
static int number;
static const char *below, *countFile;
static atomic_char counted[MOST_FILES];

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

/* The number of this call. */
static long Count(void) {
    const long call = atomic_fetch_add(&calls, 1) + 1;
    if (call == killed) kill(getpid(), SIGKILL);
    return call;
}

/* Whether this call fails; half a write is none. */
static int FailsAt(long call) {
    if (call < first || call > last) return 0;
    errno = number;
    return 1;
}

/* On a disk that is full only writes fail. */
static int Fails(void) {
    const long call = Count();
    return filling < 0 && FailsAt(call);
}

static int IsBelow(const char* path) {
    char folder[PATH_MAX];
    if (!below) return 0;
    if (path[0] != '/')
        return getcwd(folder, sizeof folder) && strncmp(folder, below, strlen(below)) == 0;
    return strncmp(path, below, strlen(below)) == 0;
}

static int IsCounted(int file) {
    return file >= 0 && file < MOST_FILES && counted[file];
}

static int Opened(int file, int isOurs) {
    if (file >= 0 && file < MOST_FILES) counted[file] = (char)isOurs;
    return file;
}

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const int isOurs = IsBelow(path);
    if (isOurs && number && Fails()) return -1;
    return Opened(REAL(open)(path, flags, mode), isOurs);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return open(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const int isOurs = folder == AT_FDCWD || path[0] == '/' ? IsBelow(path) : IsCounted(folder);
    if (isOurs && number && Fails()) return -1;
    return Opened(REAL(openat)(folder, path, flags, mode), isOurs);
}

ssize_t write(int file, const void* bytes, size_t size) {
    if (!IsCounted(file)) return REAL(write)(file, bytes, size);
    const long call = Count();
    const int isHalf = call == filling || (number == 0 && FailsAt(call));
    if (!isHalf && FailsAt(call)) return -1;
    return REAL(write)(file, bytes, isHalf && size > 1 ? size / 2 : size);
}

ssize_t read(int file, void* bytes, size_t size) {
    return IsCounted(file) && number && Fails() ? -1 : REAL(read)(file, bytes, size);
}

ssize_t pread(int file, void* bytes, size_t size, off_t place) {
    return IsCounted(file) && number && Fails() ? -1 : REAL(pread)(file, bytes, size, place);
}

int close(int file) {
    const int isOurs = IsCounted(file);
    if (isOurs) counted[file] = 0;
    const int result = REAL(close)(file);
    /* The file is closed in any case; what was buffered may be lost. */
    return isOurs && number && number != EINTR && Fails() ? -1 : result;
}

int fsync(int file) {
    return IsCounted(file) && number && Fails() ? -1 : REAL(fsync)(file);
}

/* The calls from here on are not interrupted. */
static int FailsFor(int isOurs) {
    return isOurs && number && number != EINTR && Fails();
}

int ftruncate(int file, off_t size) {
    return FailsFor(IsCounted(file)) ? -1 : REAL(ftruncate)(file, size);
}

off_t lseek(int file, off_t place, int from) {
    return FailsFor(IsCounted(file)) ? -1 : REAL(lseek)(file, place, from);
}

int fchmod(int file, mode_t mode) {
    return FailsFor(IsCounted(file)) ? -1 : REAL(fchmod)(file, mode);
}

int flock(int file, int what) {
    return FailsFor(IsCounted(file)) ? -1 : REAL(flock)(file, what);
}

int fstat(int file, struct stat* info) {
    return FailsFor(IsCounted(file)) ? -1 : REAL(fstat)(file, info);
}

int stat(const char* path, struct stat* info) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(stat)(path, info);
}

int lstat(const char* path, struct stat* info) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(lstat)(path, info);
}

ssize_t readlink(const char* path, char* target, size_t size) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(readlink)(path, target, size);
}

int access(const char* path, int mode) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(access)(path, mode);
}

int rename(const char* from, const char* to) {
    return FailsFor(IsBelow(to)) ? -1 : REAL(rename)(from, to);
}

int unlink(const char* path) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(unlink)(path);
}

int mkdir(const char* path, mode_t mode) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(mkdir)(path, mode);
}

int chdir(const char* path) {
    return FailsFor(IsBelow(path)) ? -1 : REAL(chdir)(path);
}

DIR* opendir(const char* path) {
    return FailsFor(IsBelow(path)) ? NULL : REAL(opendir)(path);
}

struct dirent* readdir(DIR* folder) {
    return FailsFor(IsBelow(".")) ? NULL : REAL(readdir)(folder);
}

__attribute__((constructor)) static void Begin(void) {
    const char *at = getenv("DISK_AT"), *from = getenv("DISK_FROM"), *kills = getenv("DISK_KILL"),
               *full = getenv("DISK_FULL"), *error = getenv("DISK_ERROR");
    below = getenv("DISK_BELOW");
    countFile = getenv("DISK_COUNT");
    number = error ? atoi(error) : EIO;
    if (at) first = last = atol(at);
    if (full) filling = atol(full);
    if (from || full) {
        first = from ? atol(from) : filling + 1;
        last = LONG_MAX;
    }
    if (kills) killed = atol(kills);
}

__attribute__((destructor)) static void End(void) {
    char text[32];
    if (!countFile) return;
    const int length = snprintf(text, sizeof text, "%ld\n", atomic_load(&calls));
    const int file = REAL(open)(countFile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) return;
    if (REAL(write)(file, text, (size_t)length) != length) unlink(countFile);
    REAL(close)(file);
}
