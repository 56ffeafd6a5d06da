// Signal files (.sgd): signals as text, one group for each. Two writers, one for the signals that
// pass a block and one for the records kept on nodes, and the reader of a group. Numbers have 15
// significant digits. docs/formats/signal-files.md tells the lines.
#pragma once

#include <string>

#include "base/line_reader.h"
#include "base/status.h"
#include "files/signal_file_reader.h"
#include "kernel/workspace.h"

namespace photrak {

/// Appends a group with the run's present coordinates. A signal without an origin is written as it
/// is; a null or a type code that no signal has gives nothing.
void SigFileWriter(std::string& text, std::int32_t sigType, const void* sig,
                   const SimOptions& options);
/// Appends a group with the record's own coordinates, its name and the number of its node.
void SigRecordWriter(std::string& text, const SigRecord& record, std::int32_t nodeNumber);
/// Writes every record of every node, nodes in ascending order, each node's newest first.
Status SaveAllSignals(const Workspace* workspace, const std::string& fileName,
                      std::string& errorText);

}  // namespace photrak
