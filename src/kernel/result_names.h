// Names of result files, and the one way by which result files are written: inside the working
// directory, noted in the run's record.
#pragma once

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// The prefix in use: OUTPUTPREFIX without any scan bit in the mode, otherwise SCANPREFIX.
const std::string& PrefixInUse(const SimOptions& options);
/// Outer tag, inner tag, run tag, loop suffix, each if its loop has more than one pass.
std::string ResultTags(const SimOptions& options);
/// A loop of several passes without a tag: its passes would overwrite each other's files.
bool SomeLoopLacksItsTag(const SimOptions& options);
/// Prefix, root, tags: what every result writer's name starts with.
std::string ResultStem(const SimOptions& options, std::string_view root);

/// True if a result may be written under this name: not empty, not absolute, no "..",
/// no control characters.
bool IsAllowedResultName(std::string_view name);
/// Writes a result file and records its name. False if the name is not allowed, which appends an
/// error to `errorText`, or the file cannot be written.
bool WriteResultFile(const std::string& name, std::string_view content, std::string& errorText);
/// The same after what the file already holds.
bool AppendResultFile(const std::string& name, std::string_view content, std::string& errorText);

}  // namespace photrak
