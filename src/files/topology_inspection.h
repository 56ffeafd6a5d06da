// A topology read with suspicion: what a load would skip, guess or take as 0 becomes a finding. The
// load itself is another reader and stays as lenient as files of every origin need; here nothing is
// built, only looked at, so that one cause gives one finding and the lines after it still count.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/line_reader.h"
#include "files/load_finding.h"
#include "kernel/workspace.h"

namespace photrak {

/// A value as it stands in a file.
struct TypedValue {
    std::string component;
    const Component* model = nullptr;       // the prototype, owned by catalogue or inspection
    const Parameter* definition = nullptr;  // its parameter
    std::string keyword, text, place;       // VALUE, STDDEV or ISTDDEV
};

struct TypedVariable {
    std::string name, text, place;
    std::int32_t type = DoubleType;  // -1: unknown
};

/// A line of the options whose words are a name or an expression.
struct TypedOption {
    std::string keyword, text, place;
};

/// A component, as far as it could be read.
struct TypedComponent {
    std::string name;
    const Component* model = nullptr;  // null: unknown
    std::string superBlock;            // stem of its file
    std::string place;                 // of the COMPONENT line
};

struct Inspection {
    LoadFindings findings;
    std::vector<TypedValue> values;
    std::vector<TypedVariable> variables;
    std::vector<TypedOption> options;
    std::vector<TypedComponent> components;
    std::vector<std::unique_ptr<Component>> definitions;  // of SuperBlocks
    std::map<std::string, const Component*> superBlocks;  // of those, by their stems
    bool isCutShort = false;  // a block is lost: what the wires look like is not known
};

/// What all readers of the inspection share.
struct InspectionContext {
    LineReader& lines;
    const Catalogue& catalogue;
    Inspection& found;
    bool lineIsUnread = false;  // the present line starts the next block

    /// Moves on; false at the end of the text.
    bool Advance();
    LoadFinding& Tell(const char* code, std::string text, std::string_view typed,
                      std::string counts = {}, std::string nearest = {});
    LoadFinding& TellAt(std::string place, const char* code, std::string text,
                        std::string_view typed, std::string counts = {}, std::string nearest = {});
};

/// The lines of a topology, `fileName` as in the messages of the load.
Inspection InspectTopologyText(std::string_view text, const std::string& fileName,
                               const Catalogue& catalogue);
/// The lines of a parameter file that is loaded into `component`; what it gives takes the place of
/// what the topology gave.
void InspectParamText(std::string_view text, const std::string& fileName,
                      const std::string& component, const Catalogue& catalogue,
                      Inspection& inspection);

/// True for a word that starts a block of a topology: what precedes has ended.
bool StartsTopologyBlock(std::string_view word);

}  // namespace photrak
