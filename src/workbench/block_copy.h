// Copies of single blocks, without their wires, and whether two blocks are alike.
#pragma once

#include <memory>
#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// A deep copy: description, counts, limits, parameters, ports of the model's own types on no node.
/// Run flags and counters are cleared. Error with a text: no source, a result that is set already,
/// exhausted memory.
Status CopyComponent(const Component* source, std::unique_ptr<Component>& result,
                     std::string& errorText);

/// Inserts into a list ascending by name, before its equals.
Component* InsertByName(std::unique_ptr<Component> component, ComponentList& list);
/// The owner of the component, taken out of the list; null if it is not there.
std::unique_ptr<Component> TakeOut(const Component& component, ComponentList& list);

/// Exchanges what belongs to the blocks by themselves, ports included; positions, run flags and
/// results stay. Never fails.
void SwapSettings(Component& a, Component& b);

/// Everything that a user can set is equal; position, ports and values of a run aside.
bool SameSettings(const Component& a, const Component& b);

}  // namespace photrak
