// The reader of a signal file's groups.
#pragma once

#include <string>

#include "base/line_reader.h"
#include "base/status.h"

namespace photrak {

/// Reads one group and moves the stream past it.
/// \param stream  null stands for a file that could not be opened.
/// \param type    OpSigType, ElecSigType or BinSigType; left alone when no group is left.
/// \param data    OpSignal, ElecSig or BinSig, handed over to the caller; null when no group is
///                left. After an error it is what was read up to there, if anything.
/// Counts are bounded by what the text after them can hold. An error names the file and the line.
Status ReadSignalGroup(LineReader* stream, std::int32_t* type, void** data, std::string& errorText);

}  // namespace photrak
