// Making, copying and freeing parameter records. All blocks come from the common allocator, since
// user libraries see these records.
#include "kernel/parameter_records.h"

#include <cstring>
#include <new>

#include "base/memory.h"
#include "kernel/parameters.h"

namespace photrak {

namespace {

constexpr char* Parameter::*ownedTexts[] = {&Parameter::name,   &Parameter::value,
                                            &Parameter::DESC,   &Parameter::UNITS,
                                            &Parameter::STDDEV, &Parameter::ISTDDEV};
constexpr char* ArrayRecord::*arrayTexts[] = {
    &ArrayRecord::rowStepTitle, &ArrayRecord::colStepTitle, &ArrayRecord::rowStepUnits,
    &ArrayRecord::colStepUnits, &ArrayRecord::xUnits,       &ArrayRecord::yUnits};

struct ArrayDeleter {
    void operator()(ArrayRecord* array) const {
        for (const auto text : arrayTexts) Release(array->*text);
        Release(array->data);
        Release(array);
    }
};
struct ParameterDeleter {
    void operator()(Parameter* parameter) const { FreeParameter(parameter); }
};
using OwnedArray = std::unique_ptr<ArrayRecord, ArrayDeleter>;
using OwnedParameter = std::unique_ptr<Parameter, ParameterDeleter>;

/// Copies a block of `bytes`; a null source gives a null copy. False when memory is exhausted.
template <class T>
bool CopyBlock(T** place, const T* source, std::size_t bytes) {
    if (!source || bytes == 0) return true;
    void* block = Allocate(bytes);
    if (!block) return false;
    std::memcpy(block, source, bytes);
    *place = static_cast<T*>(block);
    return true;
}

bool CopyOptionalText(char** place, const char* source) {
    return !source || SetText(place, source);
}

/// Elements of the array, 0 when its counts make no sense.
std::size_t ElementCount(const ArrayRecord& array) {
    if (array.rows < 1 || array.cols < 1) return 0;
    return static_cast<std::size_t>(array.rows) * static_cast<std::size_t>(array.cols);
}

OwnedArray CopyArray(const ArrayRecord& source, std::int32_t type) {
    OwnedArray copy(static_cast<ArrayRecord*>(AllocateZeroed(1, sizeof(ArrayRecord))));
    if (!copy) return nullptr;
    copy->rows = source.rows;
    copy->cols = source.cols;
    copy->rowStep = source.rowStep;
    copy->colStep = source.colStep;
    copy->kind = ArrayKind(type);
    for (const auto text : arrayTexts) {
        if (!CopyOptionalText(&(copy.get()->*text), source.*text)) return nullptr;
    }
    // 32-bit counts and 16-byte elements stay within 64 bits.
    const std::size_t bytes = ElementCount(source) * ElementBytes(type);
    return CopyBlock(&copy->data, source.data, bytes) ? std::move(copy) : nullptr;
}

/// valactual, limits and evaluated deviations.
bool CopyValues(Parameter& copy, const Parameter& source) {
    if (IsArrayType(source.type) && source.valactual) {
        copy.valactual =
            CopyArray(*static_cast<const ArrayRecord*>(source.valactual), source.type).release();
        if (!copy.valactual) return false;
    }
    const std::size_t bytes = ValueBytes(source.type);
    return CopyBlock(&copy.valactual, source.valactual, bytes) &&
           CopyBlock(&copy.min, source.min, bytes) && CopyBlock(&copy.max, source.max, bytes) &&
           CopyBlock(&copy.stddev, source.stddev, sizeof(double)) &&
           CopyBlock(&copy.istddev, source.istddev, sizeof(double));
}

OwnedParameter CopyParameter(const Parameter& source) {
    OwnedParameter copy(static_cast<Parameter*>(AllocateZeroed(1, sizeof(Parameter))));
    if (!copy) return nullptr;
    copy->type = source.type;
    copy->PROBDIST = source.PROBDIST;
    copy->IPROBDIST = source.IPROBDIST;
    for (const auto text : ownedTexts) {
        const char* original = source.*text;
        if (!SetText(&(copy.get()->*text), original ? original : "")) return nullptr;
    }
    return CopyValues(*copy, source) ? std::move(copy) : nullptr;
}

}  // namespace

Parameter* CreateParameter(std::string_view name, std::int32_t type) {
    OwnedParameter parameter(static_cast<Parameter*>(AllocateZeroed(1, sizeof(Parameter))));
    if (!parameter) return nullptr;
    parameter->type = type;
    for (const auto text : ownedTexts) {
        if (!SetText(&(parameter.get()->*text), "")) return nullptr;
    }
    return SetText(&parameter->name, name) ? parameter.release() : nullptr;
}

void FreeParameter(Parameter* parameter) {
    if (!parameter) return;
    ForgetParamCursor();
    FreeParameterDraws(*parameter);
    if (parameter->valactual && IsArrayType(parameter->type)) {
        ArrayDeleter()(static_cast<ArrayRecord*>(parameter->valactual));
        parameter->valactual = nullptr;
    }
    for (const auto text : ownedTexts) Release(parameter->*text);
    for (void* block : {parameter->valactual, parameter->min, parameter->max,
                        static_cast<void*>(parameter->stddev),
                        static_cast<void*>(parameter->istddev), static_cast<void*>(parameter)}) {
        Release(block);
    }
}

void FreeParameterList(Parameter** list) {
    while (Parameter* head = *list) {
        *list = head->next;
        FreeParameter(head);
    }
}

std::int32_t CopyParameterList(Parameter** place, const Parameter* source) {
    *place = nullptr;
    Parameter** tail = place;
    for (; source; source = source->next) {
        *tail = CopyParameter(*source).release();
        if (!*tail) {
            FreeParameterList(place);
            return 1;
        }
        tail = &(*tail)->next;
    }
    return 0;
}

void InsertParameterSorted(Parameter** list, Parameter* parameter) {
    const std::string_view name = parameter->name;
    while (*list && (*list)->name < name) list = &(*list)->next;
    if (Parameter* present = *list; present && present->name == name) {
        *list = present->next;
        FreeParameter(present);
    }
    parameter->next = *list;
    *list = parameter;
}

bool SetText(char** place, std::string_view text) {
    char* copy = CopyText(text);
    if (!copy) return false;
    Release(*place);
    *place = copy;
    return true;
}

void FreeParameterDraws(Parameter& parameter) {
    while (ParameterDraw* head = parameter.draws) {
        parameter.draws = head->next;
        Release(head);
    }
    parameter.drawCursor = nullptr;
}

}  // namespace photrak
