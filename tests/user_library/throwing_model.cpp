// A library in C++ that lets its exceptions out.
#include <stdexcept>

#include "photrak/user_model.h"

extern "C" int16_t RunThrow(const PhotrakSupport*, Parameter*, Nodelist*, Nodelist*, char**) {
    throw std::runtime_error("out of ideas");
}

extern "C" int16_t TestThrow(const PhotrakSupport*, Parameter*, char**) {
    throw 7;
}
