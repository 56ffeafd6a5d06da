// The parameter types, a row each: what a type is called in files and in listings, how its value
// lies in memory and what stands beside it. Whatever differs from type to type is read from here,
// so that a new type is a code in the public header and a row.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <type_traits>

#include "photrak/user_model.h"

namespace photrak {

/// How one value, one limit or one element of an array lies in memory; a pair is a complex number.
/// None: the text is the value.
enum class ValueForm { None, Double, Int32, Int16, Char, Pair };
enum class Shape { One, Array };
enum class Limits { None, Given };  // MINVALUE and MAXVALUE in a definition
enum class Deviation { None, Real, OfBothParts };

struct ParameterType {
    std::int32_t code;  // enum PhotrakParameterType
    std::string_view word;
    std::int32_t definitionCode;  // what the word means in a model definition
    std::string_view listing;     // the type in plain words
    ValueForm form;
    Shape shape;
    Limits limits;
    Deviation deviation;
    std::string_view unitsKeyword;  // fills UNITS: "FIELD" with the words of a choice; or none
    std::string_view widestLimit;   // of a SuperBlock's parameter: never bites; or none
};

// By design: a definition reads "IntArrayType" as the code of a binary array, which the definitions
// of a catalog rely on; a saved block expects the code of the word and calls the other a fault.
// clang-format off
inline constexpr ParameterType parameterTypes[] = {
    {DoubleType, "DoubleType", DoubleType, "number",
     ValueForm::Double, Shape::One, Limits::Given, Deviation::Real, "UNITS", "1e32"},
    {IntType, "IntType", IntType, "whole number",
     ValueForm::Int32, Shape::One, Limits::Given, Deviation::None, "UNITS", "1000000"},
    {ComplexType, "ComplexType", ComplexType, "complex",
     ValueForm::Pair, Shape::One, Limits::Given, Deviation::OfBothParts, "UNITS", "1e32"},
    {CharType, "CharType", CharType, "character",
     ValueForm::Char, Shape::One, Limits::Given, Deviation::None, "", ""},
    {StringType, "StringType", StringType, "text",
     ValueForm::None, Shape::One, Limits::None, Deviation::None, "", ""},
    {EnumType, "EnumType", EnumType, "choice",
     ValueForm::Int16, Shape::One, Limits::None, Deviation::None, "FIELD", ""},
    {DoubleArrayType, "DoubleArrayType", DoubleArrayType, "array",
     ValueForm::Double, Shape::Array, Limits::None, Deviation::None, "", ""},
    {IntArrayType, "IntArrayType", BinaryArrayType, "array",
     ValueForm::Int32, Shape::Array, Limits::None, Deviation::None, "", ""},
    {BinaryArrayType, "BinaryArrayType", BinaryArrayType, "array",
     ValueForm::Int16, Shape::Array, Limits::None, Deviation::None, "", ""},
    {ComplexArrayType, "ComplexArrayType", ComplexArrayType, "array",
     ValueForm::Pair, Shape::Array, Limits::None, Deviation::None, "", ""},
};
// clang-format on

/// The form of an element by ArrayRecord::kind; a library's kind that is none counts as the
/// nearest.
inline constexpr ValueForm arrayKinds[] = {ValueForm::Double, ValueForm::Int32, ValueForm::Int16,
                                           ValueForm::Pair};
constexpr ValueForm FormOfKind(std::int32_t kind) {
    constexpr auto last = static_cast<std::int32_t>(std::size(arrayKinds)) - 1;
    return arrayKinds[std::clamp(kind, 0, last)];
}

/// Null for a word that is no parameter type.
constexpr const ParameterType* FindParameterType(std::string_view word) {
    for (const ParameterType& row : parameterTypes) {
        if (row.word == word) return &row;
    }
    return nullptr;
}

/// A code without a row has a type without a word, a value or anything beside it.
inline constexpr ParameterType unknownParameterType = {
    -1, "", -1, "unknown", ValueForm::None, Shape::One, Limits::None, Deviation::None, "", ""};
constexpr const ParameterType& TypeOf(std::int32_t code) {
    for (const ParameterType& row : parameterTypes) {
        if (row.code == code) return row;
    }
    return unknownParameterType;
}

/// Calls `act` with std::type_identity of the C++ type of a form; void for None. Characters are
/// signed, since their limits compare so on every machine.
template <class Act>
constexpr auto WithForm(ValueForm form, const Act& act) {
    switch (form) {
        case ValueForm::Double:
            return act(std::type_identity<double>());
        case ValueForm::Int32:
            return act(std::type_identity<std::int32_t>());
        case ValueForm::Int16:
            return act(std::type_identity<std::int16_t>());
        case ValueForm::Char:
            return act(std::type_identity<signed char>());
        case ValueForm::Pair:
            return act(std::type_identity<Complex>());
        case ValueForm::None:
            break;
    }
    return act(std::type_identity<void>());
}

constexpr std::size_t FormBytes(ValueForm form) {
    return WithForm(form, []<class T>(std::type_identity<T>) -> std::size_t {
        if constexpr (std::is_void_v<T>)
            return 0;
        else
            return sizeof(T);
    });
}

constexpr bool IsArray(const ParameterType& type) {
    return type.shape == Shape::Array;
}
/// A type that evaluates to one value, with or without limits.
constexpr bool HasValue(const ParameterType& type) {
    return !IsArray(type) && type.form != ValueForm::None;
}
/// Bytes of valactual, and of each limit, for the types that hold one value; 0 for texts, arrays
/// and unknown codes.
constexpr std::size_t ValueBytes(std::int32_t code) {
    return IsArray(TypeOf(code)) ? 0 : FormBytes(TypeOf(code).form);
}
/// Bytes of one element of an array type, 0 for all other codes.
constexpr std::size_t ElementBytes(std::int32_t code) {
    return IsArray(TypeOf(code)) ? FormBytes(TypeOf(code).form) : 0;
}
constexpr bool IsArrayType(std::int32_t code) {
    return IsArray(TypeOf(code));
}
/// ArrayRecord::kind of an array type; the number of kinds for a form that no kind has.
constexpr std::int32_t ArrayKind(std::int32_t code) {
    std::int32_t kind = 0;
    for (const ValueForm form : arrayKinds) {
        if (form == TypeOf(code).form) break;
        ++kind;
    }
    return kind;
}

/// Whether `code` and each code listed after it has a row of its own. Every case falls into the
/// next; there is no default, so that the compiler names a code of the public header that is
/// missing.
constexpr bool HaveRowsFrom(PhotrakParameterType code) {
    bool all = true;
    const auto demand = [&all](std::int32_t wanted) { all = all && TypeOf(wanted).code == wanted; };
    // clang-format off
    switch (code) {
        case DoubleType:       demand(DoubleType);       [[fallthrough]];
        case IntType:          demand(IntType);          [[fallthrough]];
        case ComplexType:      demand(ComplexType);      [[fallthrough]];
        case CharType:         demand(CharType);         [[fallthrough]];
        case StringType:       demand(StringType);       [[fallthrough]];
        case EnumType:         demand(EnumType);         [[fallthrough]];
        case DoubleArrayType:  demand(DoubleArrayType);  [[fallthrough]];
        case IntArrayType:     demand(IntArrayType);     [[fallthrough]];
        case BinaryArrayType:  demand(BinaryArrayType);  [[fallthrough]];
        case ComplexArrayType: demand(ComplexArrayType);
    }
    // clang-format on
    return all;
}
static_assert(HaveRowsFrom(DoubleType), "a parameter type of the public header has no row");
static_assert(
    [] {
        for (const ParameterType& row : parameterTypes) {
            const bool found = &TypeOf(row.code) == &row && FindParameterType(row.word) == &row;
            if (!found || (IsArray(row) && ArrayKind(row.code) == std::ssize(arrayKinds)))
                return false;
        }
        return true;
    }(),
    "two rows share a code or a word, or an array's elements are of no kind");

}  // namespace photrak
