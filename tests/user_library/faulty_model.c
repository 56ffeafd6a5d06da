/* What can go wrong in a library: each entry does one thing that no model should. */
#include <fenv.h>
#include <locale.h>
#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "photrak/user_model.h"

const int32_t photrak_support_version = PHOTRAK_SUPPORT_VERSION;

#define ENTRY(name)                                                                  \
    int16_t name(const PhotrakSupport* api, Parameter* parameters, Nodelist* inputs, \
                 Nodelist* outputs, char** message)
#define UNUSED (void)api, (void)parameters, (void)inputs, (void)outputs, (void)message

static int16_t CopyOn(const PhotrakSupport* api, const Nodelist* inputs, Nodelist* outputs) {
    BinSig* sig = NULL;
    if (api->CopyBinSig(&sig, (const BinSig*)inputs->sig)) return 1;
    outputs->sig = sig;
    outputs->sigType = BinSigType;
    return 0;
}

/* A sanitizer would end the program in its own way. */
#if defined(__GNUC__)
__attribute__((no_sanitize("undefined", "address")))
#endif
ENTRY(RunCrash) {
    volatile int* nowhere = NULL;
    UNUSED;
    if (chdir("/") != 0) return 1; /* the words about it go into the log all the same */
    *nowhere = 1;
    return 0;
}

ENTRY(RunExit) {
    UNUSED;
    exit(0);
}

ENTRY(RunLoop) {
    volatile int goes = 1;
    UNUSED;
    while (goes) continue;
    return 0;
}

/* Changes what belongs to the process, and else does its work. */
ENTRY(RunUpset) {
    UNUSED;
    if (chdir("/") != 0) return 1;
    setlocale(LC_ALL, "C.UTF-8");
    fesetround(FE_UPWARD);
    signal(SIGINT, SIG_IGN);
    return CopyOn(api, inputs, outputs);
}

ENTRY(RunReturnsInput) {
    UNUSED;
    outputs->sig = inputs->sig;
    outputs->sigType = BinSigType;
    return 0;
}

ENTRY(RunReturnsFreed) {
    BinSig* sig;
    UNUSED;
    if (CopyOn(api, inputs, outputs)) return 1;
    sig = (BinSig*)outputs->sig;
    api->FreeBinSig(&sig);
    return 0;
}

ENTRY(RunReturnsOther) {
    UNUSED;
    if (CopyOn(api, inputs, outputs)) return 1;
    outputs->sigType = ElecSigType;
    return 0;
}

/* Asks for more memory than there can be, and lives with it. */
ENTRY(RunHuge) {
    void* place = NULL;
    UNUSED;
    if (api->Allocate(&place, SIZE_MAX / 8) == 0) free(place);
    return CopyOn(api, inputs, outputs);
}

/* Counts its calls in the parameters' place for a message. */
ENTRY(RunCounts) {
    static char text[] = "WARNING: call 0\n";
    UNUSED;
    ++text[14];
    *message = text;
    return (int16_t)(CopyOn(api, inputs, outputs) ? 1 : 2);
}
