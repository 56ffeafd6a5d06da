// Signals that a user library has made by the support table since its call began: an output must be
// one of them, whole and of the kind that it is said to be.
#pragma once

#include <cstdint>
#include <string>

#include "photrak/user_model.h"

namespace photrak {

/// Forgets all records; a call begins.
void BeginLibraryRecords();
/// `kind` is a signal type code, or UnknownSigType for bare memory, which can become any.
void NoteLibraryRecord(const void* record, std::int32_t kind);
void ForgetLibraryRecord(const void* record);

/// Looks at the outputs of a call by pointers alone and empties the cells that hold what nobody may
/// free: an input, a record twice, one that was freed or never made, one of another kind. An error
/// for each, with the port, in `text`; false if there is one.
bool CheckLibraryOutputs(const Nodelist* inputs, Nodelist* outputs, std::string& text);

}  // namespace photrak
