/* A library built against another version of the support table than the program's. */
#include "photrak/user_model.h"

const int32_t photrak_support_version = PHOTRAK_SUPPORT_VERSION + 1;

int16_t RunOther(const PhotrakSupport* api, Parameter* parameters, Nodelist* inputs,
                 Nodelist* outputs, char** message) {
    (void)api, (void)parameters, (void)inputs, (void)outputs, (void)message;
    return 0;
}
