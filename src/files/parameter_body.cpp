// Keywords of scalar PARAM blocks, as one table of word, types and action.
#include "files/parameter_body.h"

#include "kernel/parameters.h"

namespace photrak {
namespace {

// By design: a definition reads "IntArrayType" as the code of a binary array, since the
// catalogues in use were made so; a saved block expects the true code and calls the other a fault.
constexpr ParameterTypeWord typeWords[] = {
    {"DoubleType", DoubleType, DoubleType, {}},
    {"IntType", IntType, IntType, {}},
    {"ComplexType", ComplexType, ComplexType, {}},
    {"CharType", CharType, CharType, {}},
    {"StringType", StringType, StringType, {}},
    {"EnumType", EnumType, EnumType, {}},
    {"DoubleArrayType", DoubleArrayType, DoubleArrayType, ElementForm::Double},
    {"IntArrayType", BinaryArrayType, IntArrayType, ElementForm::Int32},
    {"BinaryArrayType", BinaryArrayType, BinaryArrayType, ElementForm::Int16},
    {"ComplexArrayType", ComplexArrayType, ComplexArrayType, ElementForm::ComplexLines},
};

constexpr struct {
    std::string_view word;
    std::int32_t code;
} distributions[] = {
    {"GausProbDist", GausProbDist},
    {"TwoSigmaGausProbDist", TwoSigmaGausProbDist},
    {"UniformProbDist", UniformProbDist},
};

template <auto Member>
bool StoreText(Parameter& parameter, std::int32_t, LineReader& reader) {
    return SetText(&(parameter.*Member), reader.Text());
}

template <auto Member>
bool StoreDistribution(Parameter& parameter, std::int32_t, LineReader& reader) {
    const std::string_view word = reader.Word();
    parameter.*Member = NoProbDist;
    for (const auto& row : distributions) {
        if (row.word == word) parameter.*Member = row.code;
    }
    return true;
}

template <class Value>
bool StoreValue(void** place, Value value) {
    if (!*place) *place = Allocate(sizeof(Value));
    if (!*place) return false;
    *static_cast<Value*>(*place) = value;
    return true;
}

template <auto Member>
bool StoreLimit(Parameter& parameter, std::int32_t type, LineReader& reader) {
    const std::string_view word = reader.Word();
    void** place = &(parameter.*Member);
    switch (type) {
        case DoubleType:
            return StoreValue(place, ReadDouble(word));
        case IntType:
            return StoreValue(place, ReadInt(word));
        // A pair, so that a copy in the form of the value stays within it.
        case ComplexType:
            return StoreValue(place, Complex{ReadDouble(word), 0.0});
        default:
            return StoreValue(place, word.empty() ? '\0' : word.front());
    }
}

constexpr unsigned Bit(std::int32_t type) {
    return 1u << type;
}
constexpr unsigned measured = Bit(DoubleType) | Bit(IntType) | Bit(ComplexType);
constexpr unsigned limited = measured | Bit(CharType);
constexpr unsigned randomized = Bit(DoubleType) | Bit(ComplexType);
constexpr unsigned scalars = limited | Bit(StringType) | Bit(EnumType);

struct BodyKeyword {
    std::string_view word;
    unsigned types;
    bool inSavedBlocks;
    bool (*store)(Parameter& parameter, std::int32_t type, LineReader& reader);
};

// The list of an EnumType's words lives in its units text.
constexpr BodyKeyword bodyKeywords[] = {
    {"MINVALUE", limited, false, StoreLimit<&Parameter::min>},
    {"MAXVALUE", limited, false, StoreLimit<&Parameter::max>},
    {"VALUE", scalars, true, StoreText<&Parameter::value>},
    {"STDDEV", randomized, true, StoreText<&Parameter::STDDEV>},
    {"PROBDIST", randomized, true, StoreDistribution<&Parameter::PROBDIST>},
    {"ISTDDEV", Bit(ComplexType), true, StoreText<&Parameter::ISTDDEV>},
    {"IPROBDIST", Bit(ComplexType), true, StoreDistribution<&Parameter::IPROBDIST>},
    {"UNITS", measured, false, StoreText<&Parameter::UNITS>},
    {"FIELD", Bit(EnumType), false, StoreText<&Parameter::UNITS>},
};

}  // namespace

const ParameterTypeWord* FindParameterType(std::string_view word) {
    for (const ParameterTypeWord& row : typeWords) {
        if (row.word == word) return &row;
    }
    return nullptr;
}

Status ReadScalarBody(Parameter& parameter, std::int32_t type, BlockSource source,
                      LineReader& reader, std::string& faults) {
    const auto store = [&](std::string_view word) {
        for (const BodyKeyword& row : bodyKeywords) {
            const bool known = row.word == word && (row.types & Bit(type));
            if (!known || (source == BlockSource::Saved && !row.inSavedBlocks)) continue;
            if (!row.store(parameter, type, reader)) {
                return MemoryRanOut(parameter.name, reader, faults);
            }
        }
        return Status::Success;
    };
    return ForEachBodyLine(parameter.name, reader, faults, store);
}

Status AddFault(std::string& faults, const LineReader& reader, std::string_view text) {
    constexpr std::size_t enough = 8192;
    if (faults.size() < enough) faults += Concat("ERROR: ", reader.Where(), ": ", text, "\n");
    return Status::Error;
}

Status TextEndedInside(std::string_view block, const LineReader& reader, std::string& faults) {
    return AddFault(faults, reader, Concat("the text ends inside '", block, "'"));
}

Status MemoryRanOut(std::string_view block, const LineReader& reader, std::string& faults) {
    return AddFault(faults, reader, Concat("no memory left to read '", block, "'"));
}

}  // namespace photrak
