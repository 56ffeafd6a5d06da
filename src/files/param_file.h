// Parameter files (.prm): the parameter values of one component, saved to be loaded into another
// one of the same model. The text of PARAM blocks is that of a topology (param_save.h,
// param_values.h).
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

// What these functions append to `text` is shown by the caller: in an error box or as an error if
// the status is Error, in an information box or as a warning if it is Warning.

/// Evaluates the parameters of a component over the variables of its workspace, as is done before
/// they are saved; the symbol table is freed again. Saving goes on whatever this gives.
Status EvaluateForParamFile(Component& component, Workspace& workspace, std::string& text);

/// The name of the file that a user who chose `chosen` means: ".prm" is appended if its last path
/// element has no dot. A path that ends with a separator is no name: `former` stays.
std::string ParamFileName(const std::string& chosen, const std::string& former);

/// Appends the text of a parameter file. Error if a parameter has no form in a file (an array
/// without its record, an unknown type); all others are written.
Status ParamFileText(const Component& component, std::string& out);
/// Writes the file, replacing it whole or not at all.
Status SaveParamFile(const Component& component, const std::string& fileName, std::string& text);

/// Reads all blocks of the file into the component, evaluates it after each and limits the values;
/// the texts of the parameters stay as read. What a file does not mention keeps its value. By
/// design: what was set before a fault stays set.
Status LoadParamFile(Component& component, Workspace& workspace, const std::string& fileName,
                     std::string& text);
/// The same from a text in memory; `name` is for messages.
Status LoadParamText(Component& component, Workspace& workspace, std::string_view fileText,
                     const std::string& name, std::string& text);

}  // namespace photrak
