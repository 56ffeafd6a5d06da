// The body of a PARAM block that holds one value, as its two readers and its writer know it: a
// model definition sets value, limits and units, a saved block the value alone. Used only by these
// three.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/line_reader.h"
#include "base/status.h"
#include "base/text.h"
#include "kernel/parameter_types.h"
#include "kernel/workspace.h"

namespace photrak {

enum class BlockSource { Definition, Saved };

/// Reads the lines up to "ENDPARAM"; the reader stands on the first of them. `type` chooses the
/// keywords; the others are ignored.
Status ReadScalarBody(Parameter& parameter, const ParameterType& type, BlockSource source,
                      LineReader& reader, std::string& faults);
/// Appends the lines of a saved block between "PARAM" and "ENDPARAM".
void WriteScalarBody(const Parameter& parameter, std::string& out);
/// "KEYWORD TEXT" as a line; a null text is an empty one.
std::string KeywordLine(std::string_view keyword, const char* text);

/// Appends "ERROR: ", file, line and the text to the faults, unless a broken file has filled them.
/// Gives Status::Error.
Status AddFault(std::string& faults, const LineReader& reader, std::string_view text);
/// The faults that every block shares.
Status TextEndedInside(std::string_view block, const LineReader& reader, std::string& faults);
Status MemoryRanOut(std::string_view block, const LineReader& reader, std::string& faults);

/// Hands the first word of each line up to "ENDPARAM" to `act`; an error of it ends the block. The
/// reader stands on the first line.
template <class Act>
Status ForEachBodyLine(std::string_view block, LineReader& reader, std::string& faults,
                       const Act& act) {
    do {
        const std::string_view word = reader.Word();
        if (word == "ENDPARAM") return Status::Success;
        if (act(word) == Status::Error) return Status::Error;
    } while (reader.Next());
    return TextEndedInside(block, reader, faults);
}

}  // namespace photrak
