/* Arithmetic that stops at once, to be loaded before a program (LD_PRELOAD): what gives no number,
   an infinity out of finite ones, or an overflow ends it with SIGFPE. Threads begin as their
   parent. */
#define _GNU_SOURCE
#include <fenv.h>

__attribute__((constructor)) static void Begin(void) {
    feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
}
