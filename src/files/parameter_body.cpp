// Keywords of PARAM blocks with one value, as one table of word, types, reader and writer.
#include "files/parameter_body.h"

#include <cstring>

#include "files/topology_words.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

// A field of a parameter as reader and writer see it: a text, a distribution or a limit.

bool ReadField(char*& text, const ParameterType&, LineReader& reader) {
    return SetText(&text, reader.Text());
}
std::string FieldLine(std::string_view keyword, const char* text) {
    return KeywordLine(keyword, text);
}

bool ReadField(std::int32_t& distribution, const ParameterType&, LineReader& reader) {
    distribution = CodeOf(distributionWords, reader.Word()).value_or(NoProbDist);
    return true;
}
std::string FieldLine(std::string_view keyword, std::int32_t distribution) {
    return Concat(keyword, " ", WordOf(distributionWords, distribution, "NoProbDist"), "\n");
}

/// The number or character that a word stands for.
template <class T>
T LimitOf(std::string_view word) {
    if constexpr (std::is_same_v<T, double>) return ReadDouble(word);
    if constexpr (std::is_same_v<T, std::int32_t>) return ReadInt(word);
    // A pair, so that a copy in the form of the value stays within it.
    if constexpr (std::is_same_v<T, Complex>) return {ReadDouble(word), 0.0};
    if constexpr (std::is_same_v<T, signed char>) {
        return static_cast<signed char>(word.empty() ? '\0' : word.front());
    }
    return {};
}
bool ReadField(void*& limit, const ParameterType& type, LineReader& reader) {
    return WithForm(type.form, [&]<class T>(std::type_identity<T>) {
        if constexpr (std::is_void_v<T>) {
            return true;
        } else {
            const T value = LimitOf<T>(reader.Word());
            if (!limit) limit = Allocate(sizeof(T));
            if (limit) std::memcpy(limit, &value, sizeof(T));
            return limit != nullptr;
        }
    });
}
std::string FieldLine(std::string_view, const void*) {
    return {};  // limits belong to the definition
}

/// What saved blocks do with a keyword. Units are for people who read the file.
enum class InSaved { No, Written, WrittenAndRead };

struct BodyKeyword {
    std::string_view word;
    bool (*belongsTo)(const ParameterType& type);
    InSaved saved;
    bool (*read)(Parameter& parameter, const ParameterType& type, LineReader& reader);
    std::string (*line)(std::string_view keyword, const Parameter& parameter);
};

/// A row of the table below.
template <auto Member>
constexpr BodyKeyword Keyword(std::string_view word, bool (*belongsTo)(const ParameterType&),
                              InSaved saved) {
    return {word, belongsTo, saved,
            [](Parameter& parameter, const ParameterType& type, LineReader& reader) {
                return ReadField(parameter.*Member, type, reader);
            },
            [](std::string_view keyword, const Parameter& parameter) {
                return FieldLine(keyword, parameter.*Member);
            }};
}

bool IsAny(const ParameterType&) {
    return true;
}
bool IsLimited(const ParameterType& type) {
    return type.limits == Limits::Given;
}
bool Deviates(const ParameterType& type) {
    return type.deviation != Deviation::None;
}
bool DeviatesInBothParts(const ParameterType& type) {
    return type.deviation == Deviation::OfBothParts;
}
bool HasUnits(const ParameterType& type) {
    return type.unitsKeyword == "UNITS";
}
bool HasChoices(const ParameterType& type) {
    return type.unitsKeyword == "FIELD";
}

// In the order of a written block. The list of a choice's words lives in its units text.
constexpr BodyKeyword bodyKeywords[] = {
    Keyword<&Parameter::min>("MINVALUE", IsLimited, InSaved::No),
    Keyword<&Parameter::max>("MAXVALUE", IsLimited, InSaved::No),
    Keyword<&Parameter::value>("VALUE", IsAny, InSaved::WrittenAndRead),
    Keyword<&Parameter::STDDEV>("STDDEV", Deviates, InSaved::WrittenAndRead),
    Keyword<&Parameter::PROBDIST>("PROBDIST", Deviates, InSaved::WrittenAndRead),
    Keyword<&Parameter::ISTDDEV>("ISTDDEV", DeviatesInBothParts, InSaved::WrittenAndRead),
    Keyword<&Parameter::IPROBDIST>("IPROBDIST", DeviatesInBothParts, InSaved::WrittenAndRead),
    Keyword<&Parameter::UNITS>("UNITS", HasUnits, InSaved::Written),
    Keyword<&Parameter::UNITS>("FIELD", HasChoices, InSaved::Written),
};

}  // namespace

Status ReadScalarBody(Parameter& parameter, const ParameterType& type, BlockSource source,
                      LineReader& reader, std::string& faults) {
    const auto read = [&](std::string_view word) {
        for (const BodyKeyword& row : bodyKeywords) {
            if (row.word != word || !row.belongsTo(type)) continue;
            if (source == BlockSource::Saved && row.saved != InSaved::WrittenAndRead) continue;
            if (!row.read(parameter, type, reader)) {
                return MemoryRanOut(parameter.name, reader, faults);
            }
        }
        return Status::Success;
    };
    return ForEachBodyLine(parameter.name, reader, faults, read);
}

void WriteScalarBody(const Parameter& parameter, std::string& out) {
    for (const BodyKeyword& row : bodyKeywords) {
        if (row.saved == InSaved::No || !row.belongsTo(TypeOf(parameter.type))) continue;
        out += row.line(row.word, parameter);
    }
}

std::string KeywordLine(std::string_view keyword, const char* text) {
    return Concat(keyword, " ", CleanLine(text ? text : ""), "\n");
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
