// What belongs to a block by itself.
#include "workbench/block_copy.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "kernel/parameters.h"

namespace photrak {
namespace {

void CopyPorts(const std::vector<Port>& source, std::vector<Port>& ports) {
    ports = source;
    for (Port& port : ports) {
        port.node = nullptr;
        port.sigType = port.modelType;
    }
}

bool SameText(const char* a, const char* b) {
    return std::strcmp(a ? a : "", b ? b : "") == 0;
}

bool SameArray(const Parameter& a, const Parameter& b) {
    const auto* first = static_cast<const ArrayRecord*>(a.valactual);
    const auto* second = static_cast<const ArrayRecord*>(b.valactual);
    if (!first || !second) return first == second;
    const std::size_t bytes = static_cast<std::size_t>(std::max(first->rows, 0)) *
                              static_cast<std::size_t>(std::max(first->cols, 0)) *
                              ElementBytes(a.type);
    if (first->rows != second->rows || first->cols != second->cols ||
        first->rowStep != second->rowStep || first->colStep != second->colStep) {
        return false;
    }
    if (!first->data || !second->data) return first->data == second->data;
    return std::memcmp(first->data, second->data, bytes) == 0;
}

bool SameParameter(const Parameter& a, const Parameter& b) {
    return a.type == b.type && SameText(a.name, b.name) && SameText(a.value, b.value) &&
           SameText(a.UNITS, b.UNITS) && SameText(a.STDDEV, b.STDDEV) &&
           SameText(a.ISTDDEV, b.ISTDDEV) && a.PROBDIST == b.PROBDIST &&
           a.IPROBDIST == b.IPROBDIST && (!IsArrayType(a.type) || SameArray(a, b));
}

ComponentList::iterator PlaceOf(std::string_view name, ComponentList& list) {
    return std::lower_bound(list.begin(), list.end(), name,
                            [](const std::unique_ptr<Component>& component,
                               std::string_view wanted) { return component->name < wanted; });
}

}  // namespace

Status CopyComponent(const Component* source, std::unique_ptr<Component>& result,
                     std::string& errorText) {
    if (!source || result) {
        errorText += "Error in calling Copy Component\n";
        return Status::Error;
    }
    try {
        auto copy = std::make_unique<Component>();
        copy->name = source->name;
        copy->type = source->type;
        copy->NOTE = source->NOTE;
        copy->ICON = source->ICON;
        copy->superBlockFile = source->superBlockFile;
        copy->innerTexts = source->innerTexts;
        copy->x = source->x;
        copy->y = source->y;
        copy->NUMINPUTS = source->NUMINPUTS;
        copy->NUMOUTPUTS = source->NUMOUTPUTS;
        copy->MININPUTS = source->MININPUTS;
        copy->MINOUTPUTS = source->MINOUTPUTS;
        copy->MAXINPUTS = source->MAXINPUTS;
        copy->MAXOUTPUTS = source->MAXOUTPUTS;
        copy->NUMINEQNUMOUTNODES = source->NUMINEQNUMOUTNODES;
        copy->testOutput = source->testOutput;
        CopyPorts(source->inputs, copy->inputs);
        CopyPorts(source->outputs, copy->outputs);
        if (CopyParameterList(&copy->parameters, source->parameters) != 0) {
            errorText += "Error copying parameters\n";
            return Status::Error;
        }
        result = std::move(copy);
        return Status::Success;
    } catch (const std::bad_alloc&) {
        errorText += "Error in allocating memory to Copy Component\n";
        return Status::Error;
    }
}

Component* InsertByName(std::unique_ptr<Component> component, ComponentList& list) {
    const auto place = PlaceOf(component->name, list);
    return list.insert(place, std::move(component))->get();
}

std::unique_ptr<Component> TakeOut(const Component& component, ComponentList& list) {
    auto place = PlaceOf(component.name, list);
    while (place != list.end() && place->get() != &component) ++place;
    if (place == list.end()) return nullptr;
    std::unique_ptr<Component> taken = std::move(*place);
    list.erase(place);
    return taken;
}

void SwapSettings(Component& a, Component& b) {
    a.name.swap(b.name);
    a.type.swap(b.type);
    a.NOTE.swap(b.NOTE);
    a.ICON.swap(b.ICON);
    a.superBlockFile.swap(b.superBlockFile);
    a.inputs.swap(b.inputs);
    a.outputs.swap(b.outputs);
    std::swap(a.parameters, b.parameters);
    for (const auto field :
         {&Component::NUMINPUTS, &Component::NUMOUTPUTS, &Component::MININPUTS,
          &Component::MINOUTPUTS, &Component::MAXINPUTS, &Component::MAXOUTPUTS}) {
        std::swap(a.*field, b.*field);
    }
    std::swap(a.NUMINEQNUMOUTNODES, b.NUMINEQNUMOUTNODES);
    std::swap(a.testOutput, b.testOutput);
}

bool SameSettings(const Component& a, const Component& b) {
    if (a.name != b.name || a.type != b.type || a.NOTE != b.NOTE || a.ICON != b.ICON ||
        a.superBlockFile != b.superBlockFile || a.NUMINPUTS != b.NUMINPUTS ||
        a.NUMOUTPUTS != b.NUMOUTPUTS) {
        return false;
    }
    const Parameter *first = a.parameters, *second = b.parameters;
    for (; first && second; first = first->next, second = second->next) {
        if (!SameParameter(*first, *second)) return false;
    }
    return !first && !second;
}

}  // namespace photrak
