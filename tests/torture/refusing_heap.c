/* A heap that refuses, to be loaded before a program (LD_PRELOAD): calls of the C allocation
   functions are counted from where the program's own code begins, and those that the environment
   names give null.

     REFUSE_AT=N        refuses call N, counted from 1
     REFUSE_FROM=N      refuses call N and all after it
     REFUSE_COUNT=FILE  the number of calls goes there when the program ends
     REFUSE_IN=NAME     only in the program of that name
     REFUSE_BY_NAME=1   the heap behind it is found by name, for valgrind */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
extern void* __libc_memalign(size_t, size_t);

static atomic_long calls;
static long first = 0, last = -1;

/* The heap itself; under valgrind, whose heap only a look-up by name finds, that one. */
static void* (*heapMalloc)(size_t) = __libc_malloc;
static void* (*heapCalloc)(size_t, size_t) = __libc_calloc;
static void* (*heapRealloc)(void*, size_t) = __libc_realloc;
static void* (*heapMemalign)(size_t, size_t) = __libc_memalign;
static const char* countFile;

static int Refuses(void) {
    const long call = atomic_fetch_add(&calls, 1) + 1;
    if (call < first || call > last) return 0;
    errno = ENOMEM;
    return 1;
}

void* malloc(size_t size) {
    return Refuses() ? NULL : heapMalloc(size);
}

void* calloc(size_t count, size_t size) {
    return Refuses() ? NULL : heapCalloc(count, size);
}

void* realloc(void* block, size_t size) {
    return Refuses() ? NULL : heapRealloc(block, size);
}

void* memalign(size_t alignment, size_t size) {
    return Refuses() ? NULL : heapMemalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** place, size_t alignment, size_t size) {
    void* block = memalign(alignment, size);
    if (!block) return ENOMEM;
    *place = block;
    return 0;
}

__attribute__((constructor)) static void Begin(void) {
    const char* at = getenv("REFUSE_AT");
    const char* from = getenv("REFUSE_FROM");
    const char* in = getenv("REFUSE_IN");
    countFile = getenv("REFUSE_COUNT");
    if (getenv("REFUSE_BY_NAME")) {
        heapMalloc = (void* (*)(size_t))dlsym(RTLD_NEXT, "malloc");
        heapCalloc = (void* (*)(size_t, size_t))dlsym(RTLD_NEXT, "calloc");
        heapRealloc = (void* (*)(void*, size_t))dlsym(RTLD_NEXT, "realloc");
        heapMemalign = (void* (*)(size_t, size_t))dlsym(RTLD_NEXT, "memalign");
    }
    atomic_store(&calls, 0);
    if (in && strcmp(in, program_invocation_short_name) != 0) return;
    if (at) first = last = atol(at);
    if (from) {
        first = atol(from);
        last = __LONG_MAX__;
    }
}

__attribute__((destructor)) static void End(void) {
    char text[32];
    if (!countFile) return;
    first = 0;
    last = -1;
    const int length = snprintf(text, sizeof text, "%ld\n", atomic_load(&calls));
    const int file = open(countFile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) return;
    if (write(file, text, (size_t)length) != length) unlink(countFile);
    close(file);
}
