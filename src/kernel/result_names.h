// Names of result files, and the one way by which result files are written: inside the working
// directory, recorded so that the command line can list them.
#pragma once

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// The prefix in use: OUTPUTPREFIX without any scan bit in the mode, otherwise SCANPREFIX.
const std::string& PrefixInUse(const SimOptions& options);
/// Outer tag, inner tag, run tag, loop suffix, each if its loop has more than one pass.
std::string ResultTags(const SimOptions& options);
/// Prefix, root, tags: what every result writer's name starts with.
std::string ResultStem(const SimOptions& options, std::string_view root);

/// True if a result may be written under this name: not empty, not absolute, no "..",
/// no control characters.
bool IsAllowedResultName(std::string_view name);
/// Writes a result file and records its name. False if the name is not allowed, which appends an
/// error to `errorText`, or the file cannot be written.
bool WriteResultFile(const std::string& name, std::string_view content, std::string& errorText);
/// The same behind what the file already holds.
bool AppendResultFile(const std::string& name, std::string_view content, std::string& errorText);

/// Names of the files written since the last ResetResultFiles, each once, in order of first
/// writing.
const std::vector<std::string>& ResultFiles();
/// Names of those that could not be written, likewise: no writer tells of a failing disk.
const std::vector<std::string>& FailedResultFiles();
void ResetResultFiles();

}  // namespace photrak
