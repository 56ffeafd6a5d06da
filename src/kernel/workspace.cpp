// Frees what the records of a workspace own beyond their containers.
#include "kernel/workspace.h"

#include "kernel/parameters.h"

namespace photrak {

Node::~Node() {
    FreeSignals();
}

void Node::FreeSignals() {
    while (signals) FreeSigRecord(&signals);
}

Component::~Component() {
    FreeParameterList(&parameters);
}

}  // namespace photrak
