/* A user model as a user writes it: passes electrical signals on with `gain` times the waveform and
   its noise, inverts the bits of binary ones. */
#include <stdlib.h>
#include <string.h>

#include "photrak/user_model.h"

const int32_t photrak_support_version = PHOTRAK_SUPPORT_VERSION;

static char refusal[] = "ERROR: the gain model takes electrical and binary signals, 100% of them\n";
static char silence[] = "WARNING: nothing came in\n";
static char badGain[] = "gain must not be 0\n";

static double Gain(const Parameter* list) {
    for (; list; list = list->next) {
        if (strcmp(list->name, "gain") == 0 && list->valactual) return *(double*)list->valactual;
    }
    return 1.0;
}

static int16_t Amplify(const PhotrakSupport* api, double gain, const ElecSig* in, Nodelist* out) {
    ElecSig* sig = NULL;
    int32_t i;
    if (api->CopyElecSig(&sig, in)) return 1;
    for (i = 1; i <= sig->noPoints; ++i) {
        sig->elecSamples[i].re *= gain;
        sig->elecSamples[i].im *= gain;
        sig->sigmaSamples[i].re *= gain;
    }
    out->sig = sig;
    out->sigType = ElecSigType;
    return 0;
}

static int16_t Invert(const PhotrakSupport* api, const BinSig* in, Nodelist* out) {
    BinSig* sig = NULL;
    int32_t i;
    if (api->CreateBinSig(&sig, in->noPoints)) return 1;
    sig->bitRate = in->bitRate;
    sig->startTime = in->startTime;
    for (i = 1; i <= in->noPoints; ++i) sig->bitSequence[i] = (int16_t)(1 - in->bitSequence[i]);
    out->sig = sig;
    out->sigType = BinSigType;
    return 0;
}

int16_t RunGain(const PhotrakSupport* api, Parameter* parameters, Nodelist* inputs,
                Nodelist* outputs, char** message) {
    const double gain = Gain(parameters);
    for (; inputs && outputs; inputs = inputs->next, outputs = outputs->next) {
        int16_t status;
        if (!inputs->sig) {
            *message = silence;
            return 2;
        }
        if (inputs->sigType == ElecSigType) {
            status = Amplify(api, gain, (const ElecSig*)inputs->sig, outputs);
        } else if (inputs->sigType == BinSigType) {
            status = Invert(api, (const BinSig*)inputs->sig, outputs);
        } else {
            *message = refusal;
            return 1;
        }
        if (status) return status;
    }
    return 0;
}

int16_t TestGain(const PhotrakSupport* api, Parameter* parameters, char** message) {
    void* scratch = NULL;
    if (api->Allocate(&scratch, 64)) return 1;
    free(scratch);
    if (Gain(parameters) != 0.0) {
        *message = NULL;
        return 0;
    }
    *message = badGain;
    return 1;
}

/* Takes no notice of a transform that cannot be done. */
int16_t RunBadTransform(const PhotrakSupport* api, Parameter* parameters, Nodelist* inputs,
                        Nodelist* outputs, char** message) {
    Complex samples[4];
    (void)parameters, (void)inputs, (void)outputs, (void)message;
    memset(samples, 0, sizeof samples);
    api->DoFFTFlagged(samples, 3, 1, 0);
    return 0;
}
