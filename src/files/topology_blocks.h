// The readers of a topology file's blocks and what they share. Each starts with its keyword already
// read, reads through its end line, and gives its own status; texts go to the workspace's error
// text. Bounds keep a hostile file from asking for memory out of proportion to its size.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

#include "base/line_reader.h"
#include "base/status.h"
#include "files/topology_component.h"
#include "kernel/workspace.h"

namespace photrak {

inline constexpr std::size_t maxTopologyBytes = std::size_t{1} << 26;
inline constexpr std::size_t maxSuperBlockBytes = std::size_t{1} << 22;
inline constexpr std::size_t maxTopologyComponents = std::size_t{1} << 18;
// Far above what the symbol table takes, and low enough for a list kept in order.
inline constexpr std::size_t maxTopologyVariables = std::size_t{1} << 14;
inline constexpr std::size_t maxTopologyNodes = std::size_t{1} << 20;
inline constexpr std::size_t maxNodeTokens = 254;  // on an INPUTFROM or OUTPUTTO line

/// One of the two lists of a topology while it is read.
struct NodeListCells {
    std::deque<Node*> cells;
    std::unordered_set<std::int32_t> numbers;  // of the cells
};

/// SuperBlock prototypes by file name, so that each definition is read once per load. Copies of
/// large definitions count against one budget.
struct SuperBlockPrototypes {
    struct Entry {
        std::unique_ptr<Component> prototype;  // null: not readable
        std::string reason;
        std::size_t bytes = 0;
    };
    std::map<std::string, Entry> byFile;
    std::size_t bytesLeft = std::size_t{1} << 28;
};

enum class AfterFault { Stop, GoOn };

struct TopologyContext {
    LineReader& lines;
    Workspace& workspace;
    const Catalogue& catalogue;
    AfterFault afterFault;
    NodeListCells beginNodes, endNodes;
    SuperBlockPrototypes superBlocks;
    bool lineIsUnread = false;  // the present line starts the next block
    bool isFullOfVariables = false;
    int unknownKeywords = 0;
};

/// Appends a text to the error text, and the place it is about: "  at FILE:LINE\n".
void AppendLocated(std::string& errorText, std::string_view text, std::string_view where);
/// An error, or a warning, at the present line.
Status Fault(TopologyContext& context, std::string_view text);
Status Caution(TopologyContext& context, std::string_view text);
/// The error of a file that ends before the block does.
Status EndsInside(TopologyContext& context, std::string_view block);

Status ReadNoteLine(TopologyContext& context);
Status ReadLockedLine(TopologyContext& context);
Status ReadVariables(TopologyContext& context);
Status ReadOptions(TopologyContext& context);
Status ReadBeginNodes(TopologyContext& context);
Status ReadEndNodes(TopologyContext& context);
Status ReadNodeBlock(TopologyContext& context);

}  // namespace photrak
