// A parameter list for tests, freed at the end of the scope: built by name, type and value text.
#pragma once

#include <cstring>
#include <string_view>

#include "base/memory.h"
#include "kernel/parameters.h"

namespace photrak {

/// A block of the allocator that holds `value`, for limits and values of any type.
template <class T>
T* NewBlock(const T& value) {
    void* block = Allocate(sizeof(T));
    std::memcpy(block, &value, sizeof(T));
    return static_cast<T*>(block);
}

class ParameterList {
  public:
    ParameterList() = default;
    ~ParameterList() { FreeParameterList(&head); }
    ParameterList(const ParameterList&) = delete;
    ParameterList& operator=(const ParameterList&) = delete;

    /// Appended, in the order of the calls.
    Parameter& Add(std::string_view name, std::int32_t type, std::string_view value) {
        Parameter* parameter = NewParameter(name, type, value);
        Parameter** tail = &head;
        while (*tail) tail = &(*tail)->next;
        return *(*tail = parameter);
    }
    static Parameter* NewParameter(std::string_view name, std::int32_t type,
                                   std::string_view value) {
        Parameter* parameter = CreateParameter(name, type);
        SetText(&parameter->value, value);
        SetText(&parameter->STDDEV, "0");
        return parameter;
    }
    /// Appended with its evaluated value, as a model finds it in a run.
    ParameterList& Double(std::string_view name, double value) {
        Add(name, DoubleType, "").valactual = NewBlock(value);
        return *this;
    }
    ParameterList& Text(std::string_view name, std::string_view value,
                        std::int32_t type = StringType) {
        Add(name, type, value);
        return *this;
    }
    /// The list goes to another owner.
    Parameter* Release() {
        Parameter* list = head;
        head = nullptr;
        return list;
    }

    Parameter* head = nullptr;
};

/// A parameter by itself, with limits of its type.
template <class T>
Parameter* LimitedParameter(std::string_view name, std::int32_t type, std::string_view value,
                            T least, T greatest) {
    Parameter* parameter = ParameterList::NewParameter(name, type, value);
    parameter->min = NewBlock(least);
    parameter->max = NewBlock(greatest);
    return parameter;
}

/// The value in a record's untyped block.
template <class T>
T BlockValue(const void* block) {
    T value;
    std::memcpy(&value, block, sizeof(T));
    return value;
}

}  // namespace photrak
