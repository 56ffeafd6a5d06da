// Summary files (.sum): what passed on a node, a section for each record that it keeps.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Names with the prefix in use: of a component's port (from 1; 0 names no port) and of a node.
std::string SummaryFileName(const SimOptions& options, std::string_view component,
                            std::int32_t port);
std::string SummaryFileName(const SimOptions& options, const Node& node);

/// The text of a summary file.
std::string SummaryText(const SignalSummaries& summaries);
/// Writes the file; an error with a text if that fails.
Status WriteSummaryFile(const std::string& name, const SignalSummaries& summaries,
                        std::string& errorText);

}  // namespace photrak
