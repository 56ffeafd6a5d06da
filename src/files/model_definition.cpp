// A model definition is a sequence of lines, each a keyword with its value: ports and texts of the
// model, and a block for each parameter. Unknown keywords are passed over, so that a
// definition may carry keywords for other readers.
#include "files/model_definition.h"

#include <algorithm>
#include <limits>

#include "files/array_values.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr std::size_t maxDefinitionBytes = std::size_t{64} << 20;
// Far above any device, and low enough that a damaged file exhausts nothing.
constexpr std::int32_t maxPorts = 1 << 16, maxParameters = 10000;

struct ParameterDeleter {
    void operator()(Parameter* parameter) const { FreeParameter(parameter); }
};
using OwnedParameter = std::unique_ptr<Parameter, ParameterDeleter>;

/// What one read carries along.
struct Definition {
    Component& prototype;
    LineReader& reader;
    Status result = Status::Success;
    std::string faults = {};  // texts behind the result
    std::int32_t parameterCount = 0;
};

template <auto Member>
void StoreWord(Definition& definition) {
    definition.prototype.*Member = definition.reader.Word();
}
template <auto Member>
void StoreText(Definition& definition) {
    definition.prototype.*Member = definition.reader.Text();
}
template <auto Member, std::int32_t least = 0>
void StorePortCount(Definition& definition) {
    definition.prototype.*Member = std::clamp(ReadInt(definition.reader.Word()), least, maxPorts);
}

void StoreEqualCounts(Definition& definition) {
    definition.prototype.NUMINEQNUMOUTNODES = definition.reader.Word() == "TRUE";
}
void StoreTestOutput(Definition& definition) {
    definition.prototype.testOutput = definition.reader.Word() == "YesTestOutput";
}

constexpr struct {
    std::string_view word;
    std::int32_t code;
    bool inputsOnly;
} portTypes[] = {
    {"OpSigType", OpSigType, false},   {"ElecSigType", ElecSigType, false},
    {"BinSigType", BinSigType, false}, {"UnknownSigType", UnknownSigType, false},
    {"NoSigType", NoSigType, false},   {"EtcSigType", EtcSigType, false},
    {"RepeatTwo", RepeatTwo, true},    {"RepeatThree", RepeatThree, true},
    {"RepeatFour", RepeatFour, true},
};

enum class Direction { In, Out };

// By design: "OpOrElecSigType", which the definition of a SuperBlock may hold, is no word
// of this list and reads as a port of unknown type.
std::int32_t PortTypeOf(std::string_view word, Direction direction) {
    for (const auto& row : portTypes) {
        if (row.word == word && (direction == Direction::In || !row.inputsOnly)) return row.code;
    }
    return UnknownSigType;
}

void ReadPortTypes(std::vector<Port>& ports, Direction direction, LineReader& reader) {
    ports.clear();
    for (std::string_view word = reader.Word(); !word.empty(); word = reader.Word()) {
        if (word == "...") continue;
        if (ports.size() == maxPorts) return;
        ports.push_back({nullptr, PortTypeOf(word, direction)});
    }
}
void StoreInputTypes(Definition& definition) {
    ReadPortTypes(definition.prototype.inputs, Direction::In, definition.reader);
}
void StoreOutputTypes(Definition& definition) {
    ReadPortTypes(definition.prototype.outputs, Direction::Out, definition.reader);
}

/// Leaves the reader on the first line of the block's body; false at the end of the text.
bool ReadDescription(Parameter& parameter, LineReader& reader) {
    if (!reader.Next()) return false;
    if (reader.Word() != "DESC") {
        reader.Rewind();
        return true;
    }
    return SetText(&parameter.DESC, reader.Rest()) && reader.Next();
}

template <class Value>
bool GiveLimits(Parameter& parameter) {
    const Value widest[] = {std::numeric_limits<Value>::lowest(),
                            std::numeric_limits<Value>::max()};
    void** const places[] = {&parameter.min, &parameter.max};
    for (int i = 0; i < 2; ++i) {
        if (*places[i]) continue;
        // Room for a pair: the limits of a complex parameter are copied in the form of its value.
        *places[i] = AllocateZeroed(1, sizeof(Complex));
        if (!*places[i]) return false;
        *static_cast<Value*>(*places[i]) = widest[i];
    }
    return true;
}

/// A block without limits gets the widest of its type, since whoever clamps relies on them.
bool CompleteLimits(Parameter& parameter) {
    const ParameterType& type = TypeOf(parameter.type);
    if (type.limits == Limits::None) return true;
    return WithForm(type.form, [&]<class T>(std::type_identity<T>) {
        if constexpr (std::is_arithmetic_v<T>)
            return GiveLimits<T>(parameter);
        else
            return GiveLimits<double>(parameter);
    });
}

Status ReadBody(Parameter& parameter, const ParameterType& word, LineReader& reader,
                std::string& faults) {
    if (!ReadDescription(parameter, reader)) {
        return TextEndedInside(parameter.name, reader, faults);
    }
    if (IsArrayType(parameter.type)) {
        if (!GiveArray(parameter)) return MemoryRanOut(parameter.name, reader, faults);
        return ReadArrayDefinition(*static_cast<ArrayRecord*>(parameter.valactual), word.form,
                                   parameter.name, reader, faults);
    }
    const Status status = ReadScalarBody(parameter, word, BlockSource::Definition, reader, faults);
    if (status == Status::Success && !CompleteLimits(parameter)) {
        return MemoryRanOut(parameter.name, reader, faults);
    }
    return status;
}

void ReadParameterBlock(Definition& definition) {
    LineReader& reader = definition.reader;
    const std::string name(reader.Word());
    const std::string_view token = reader.Word();
    const ParameterType* type = FindParameterType(token);
    if (!type || definition.parameterCount == maxParameters) {
        definition.result = AddFault(definition.faults, reader,
                                     Concat("parameter '", name,
                                            type ? std::string("' is one too many")
                                                 : Concat("' has the unknown type '", token, "'")));
        static_cast<void>(reader.Next());  // the line that might have held its description
        return;
    }
    OwnedParameter parameter(CreateParameter(name, type->definitionCode));
    const Status status = parameter ? ReadBody(*parameter, *type, reader, definition.faults)
                                    : MemoryRanOut(name, reader, definition.faults);
    MergeStatus(definition.result, status);
    if (status == Status::Success && parameter->type == EnumType) {
        // By design: the fields of an enum always resolve, and their success is stored as
        // the file's, so that an enum clears the failure of a block before it.
        definition.faults.clear();
        definition.result = ResolveEnumFields(*parameter) == Status::Success
                                ? Status::Success
                                : MemoryRanOut(name, reader, definition.faults);
    }
    if (definition.result != Status::Success) return;
    InsertParameterSorted(&definition.prototype.parameters, parameter.release());
    ++definition.parameterCount;
}

// A greatest count below 0 stays so: a topology refuses every block of such a model.
constexpr struct {
    std::string_view word;
    void (*act)(Definition& definition);
} keywords[] = {
    {"ICON", StoreWord<&Component::ICON>},
    {"NOTE", StoreText<&Component::NOTE>},
    {"MININPUTS", StorePortCount<&Component::MININPUTS>},
    {"MAXINPUTS", StorePortCount<&Component::MAXINPUTS, -1>},
    {"MINOUTPUTS", StorePortCount<&Component::MINOUTPUTS>},
    {"MAXOUTPUTS", StorePortCount<&Component::MAXOUTPUTS, -1>},
    {"NUMINEQNUMOUTNODES", StoreEqualCounts},
    {"NUMINPUTNODES", StorePortCount<&Component::NUMINPUTS>},
    {"NUMINPUTS", StorePortCount<&Component::NUMINPUTS>},
    {"NUMOUTPUTNODES", StorePortCount<&Component::NUMOUTPUTS>},
    {"NUMOUTPUTS", StorePortCount<&Component::NUMOUTPUTS>},
    {"INSIGTYPES", StoreInputTypes},
    {"OUTSIGTYPES", StoreOutputTypes},
    {"TESTOUTPUTMODE", StoreTestOutput},
    {"PARAM", ReadParameterBlock},
};

void ReadFirstLine(Component& prototype, LineReader& reader) {
    const bool any = reader.Next();
    if (prototype.type != superBlockType) return;
    prototype.superBlockFile = "SuperBlock";
    if (!any) return;
    static_cast<void>(reader.Word());
    if (const std::string_view stem = reader.Word(); !stem.empty()) prototype.superBlockFile = stem;
}

/// What is no number may name variables that only the topology of the SuperBlock has.
void NoteInnerTexts(Component& prototype) {
    for (const Parameter& parameter : Items(prototype.parameters)) {
        const std::string_view text = parameter.value ? parameter.value : "";
        if (!HasValue(TypeOf(parameter.type)) || text.empty() || IsNumber(text)) continue;
        prototype.innerTexts[parameter.name] = text;
    }
}

bool StorePosition(void** place, std::int16_t value) {
    if (!*place) *place = Allocate(sizeof value);
    if (!*place) return false;
    *static_cast<std::int16_t*>(*place) = value;
    return true;
}

}  // namespace

Status ReadModelDefinition(Component& prototype, LineReader& reader, std::string& errorText) {
    ReadFirstLine(prototype, reader);
    Definition definition{prototype, reader};
    while (reader.Next() && reader.Line() != "ENDCOMPONENT") {
        const std::string_view word = reader.Word();
        for (const auto& row : keywords) {
            if (row.word == word) {
                row.act(definition);
                break;
            }
        }
    }
    if (prototype.type == superBlockType) NoteInnerTexts(prototype);
    errorText += definition.faults;
    return definition.result;
}

Status ReadModelDefinition(Component& prototype, const std::string& path, std::string& errorText) {
    std::string text, reason;
    if (!ReadWholeFile(path, text, reason, maxDefinitionBytes)) {
        errorText += Concat("ERROR: cannot read the model definition '", path, "': ", reason, "\n");
        return Status::Error;
    }
    LineReader reader(text, path);
    const Status status = ReadModelDefinition(prototype, reader, errorText);
    if (status == Status::Error || reader.Line() == "ENDCOMPONENT") return status;
    errorText += Concat("WARNING: ", reader.Where(), ": the definition of '", prototype.type,
                        "' has no line ENDCOMPONENT; its end may be missing\n");
    return Status::Warning;
}

Status ResolveEnumFields(Parameter& parameter) {
    if (parameter.type != EnumType) return Status::Success;
    const std::string_view fields = parameter.UNITS ? parameter.UNITS : "";
    const std::string_view value = parameter.value ? parameter.value : "";
    constexpr std::string_view separators = " ,:\t\n";
    std::int16_t count = 0, position = 0;
    std::size_t at = fields.find_first_not_of(separators);
    while (at < fields.size() && count < std::numeric_limits<std::int16_t>::max()) {
        const std::size_t end = std::min(fields.find_first_of(separators, at), fields.size());
        ++count;
        if (position == 0 && fields.substr(at, end - at) == value) position = count;
        at = fields.find_first_not_of(separators, end);
    }
    const bool stored = StorePosition(&parameter.min, 0) && StorePosition(&parameter.max, count) &&
                        StorePosition(&parameter.valactual, position);
    return stored ? Status::Success : Status::Error;
}

}  // namespace photrak
