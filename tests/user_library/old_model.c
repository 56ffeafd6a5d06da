/* A library built against a support table that is no longer the program's. */
#include "photrak/user_model.h"

const int32_t photrak_support_version = PHOTRAK_SUPPORT_VERSION + 1;

int16_t RunOld(const PhotrakSupport* api, Parameter* parameters, Nodelist* inputs,
               Nodelist* outputs, char** message) {
    (void)api, (void)parameters, (void)inputs, (void)outputs, (void)message;
    return 0;
}
