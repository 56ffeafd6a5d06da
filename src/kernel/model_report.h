// How a model says that it failed: the one form of message for all blocks, which names the block.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "base/text.h"

namespace photrak {

/// The name of a component and the error text of its run. A ModelCall is one; what a model calls
/// below gets it as such.
struct ModelReport {
    std::string_view owner;  // the component's name
    std::string& errorText;
    std::string_view path = {};  // of the SuperBlocks around it: "Link:Span:", empty outside of any

    /// Appends "ERROR: component 'OWNER': REASON\n", the reason joined from the pieces.
    template <class... Pieces>
    Status Refuse(const Pieces&... reason) const {
        errorText += Concat("ERROR: component '", path, owner, "': ", reason..., "\n");
        return Status::Error;
    }
    /// Refuses the value of a parameter; `rule` tells what it must be.
    template <class Value>
    Status RefuseValue(std::string_view name, const Value& value, std::string_view rule) const {
        return Refuse("parameter '", name, "' is ", value, "; it must be ", rule);
    }
    /// Appends a documented text, joined from the pieces, as it stands.
    template <class... Pieces>
    Status Fail(const Pieces&... text) const {
        errorText += Concat(text...);
        return Status::Error;
    }
    /// The same for a run that goes on.
    template <class... Pieces>
    Status Warn(const Pieces&... text) const {
        errorText += Concat(text...);
        return Status::Warning;
    }
};

}  // namespace photrak
