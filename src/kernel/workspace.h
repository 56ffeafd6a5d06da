// The records of a topology in memory: Workspace, Component, Node, ports, variables, run options. A
// Workspace owns its components, nodes, variables, options and the signals on its nodes. There is
// no edge record: two ports are wired when they stand on the same node.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/signal_summary.h"
#include "kernel/signals.h"

namespace photrak {

struct Component;
struct Node;
struct Workspace;

/// Type codes that stand in catalogue input lists only.
inline constexpr std::int32_t RepeatTwo = 7, RepeatThree = 8, RepeatFour = 9;

inline constexpr std::int32_t NoSettledType = -1;  // no type code

struct Port {
    Node* node = nullptr;  // borrowed from the workspace; null in a prototype
    std::int32_t sigType = UnknownSigType;
    std::int32_t modelType = UnknownSigType;  // as its model made it, before any wire retyped it
};

/// LINE record of a node: carried through files unchanged.
struct NodeLine {
    std::int32_t numbers[4] = {0, 0, 0, 0};
    std::string text;
};

namespace nodeFlag {
inline constexpr std::uint16_t begin = 1, end = 2, visited = 4;
}

struct Node {
    std::int32_t number = 0;
    std::list<Component*> readers;  // components with an input here, latest attached first
    std::list<Component*> drivers;  // components with an output here, latest attached first
    SigRecord* signals = nullptr;   // owned, newest first
    SignalSummaries summaries;      // of the latest signals; they outlive the runs
    std::int32_t type = UnknownSigType;
    std::int32_t SIGNALSAVEMODE = 0;  // 0 delete, 1 save in memory, 2 save on disk
    std::vector<NodeLine> lines;
    std::uint16_t flags = 0;  // nodeFlag
    // Every port here has settledType, but for those of the first fresh entries of the two lists:
    // retyping a ground node with thousands of readers then touches only what was attached since.
    std::int32_t settledType = UnknownSigType;
    std::size_t freshReaders = 0, freshDrivers = 0;

    Node() = default;
    ~Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    void FreeSignals();
};

/// Run flags of a component.
namespace runFlag {
inline constexpr std::uint16_t ordered = 0x01;      // on the run order
inline constexpr std::uint16_t outer = 0x02;        // must rerun at each outer sweep step
inline constexpr std::uint16_t inner = 0x04;        // must rerun at each inner sweep step
inline constexpr std::uint16_t draws = 0x08;        // must rerun at each statistical run
inline constexpr std::uint16_t hasRun = 0x10;       // has run in the present pass
inline constexpr std::uint16_t independent = 0x20;  // searched and found independent
inline constexpr std::uint16_t visited = 0x40;      // visited by the level search
inline constexpr std::uint16_t open = 0x80;         // its inputs are being ordered
}  // namespace runFlag

inline constexpr std::int32_t levelNotReached = -1000;

inline constexpr std::string_view superBlockType = "SuperBlock";

/// A block of the topology, or a prototype of the catalogue (name and type both the model type).
struct Component {
    std::string name, type, NOTE, ICON;
    std::string superBlockFile;  // stem of the SuperBlock's topology, for type SuperBlock
    /// Of a SuperBlock: the defaults of its definition that are no numbers, by parameter. What
    /// still has its own is evaluated inside, among the variables that it names.
    std::map<std::string, std::string, std::less<>> innerTexts;
    std::int32_t x = 0, y = 0;  // icon position
    std::int32_t NUMINPUTS = 0, NUMOUTPUTS = 0;
    std::int32_t MININPUTS = 0, MINOUTPUTS = 0, MAXINPUTS = 0, MAXOUTPUTS = 0;
    std::int16_t NUMINEQNUMOUTNODES = 0;  // non-zero: input and output counts must be equal
    std::int16_t testOutput = 0;          // prototype of a model with a parameter test
    Parameter* parameters = nullptr;      // owned list (kernel/parameters.h)
    std::vector<Port> outputs, inputs;    // position 1 is element 0
    std::uint16_t runFlags = 0;
    std::int32_t reps = 0;             // scratch of the loop preparation
    std::int32_t iteration = 0;        // times a LoopBeginBlock has begun in this pass
    std::int32_t level = 0;            // open repetition loops around it, levelNotReached
    std::size_t place = 0;             // index in the list being walked, if it stands there
    std::shared_ptr<void> modelState;  // private state between runs of a pass list
    std::shared_ptr<void> transfer;    // a signal on its way into or out of a nested run
    std::vector<std::string> plots;    // command files of the last run, in order, each once

    Component() = default;
    ~Component();
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;
};

/// Components in ascending byte order of name; equal names stand newest first.
using ComponentList = std::vector<std::unique_ptr<Component>>;

/// The saved form of a symbol.
struct Variable {
    std::string name, value;
    std::int32_t type = DoubleType;
    void* actual = nullptr;  // borrowed place that EvalParam refreshes; may be null
    /// What counts in the symbol table in place of the text: a nested run gets the exact number of
    /// what stands on its block.
    std::optional<double> exact;
};

inline constexpr std::size_t symbolNameCapacity = 32, symbolTextCapacity = 80;
inline constexpr std::int32_t symbolTableCapacity = 512;
inline constexpr std::int64_t symbolTableSteps = 5'000'000;

/// Entry of a symbol table; an empty text means that the value is final.
struct Symbol {
    char name[symbolNameCapacity] = {};
    double value = 0.0;
    char text[symbolTextCapacity] = {};
};

/// Ascending byte order of name, at most symbolTableCapacity entries; the array is allocated whole.
struct SymbolTable {
    std::int32_t count = 0;
    std::unique_ptr<Symbol[]> entries;  // null outside a run or load
    /// What the unusually long evaluations over this table may still cost together, in steps of the
    /// evaluator: a load or a run with many exploding expressions ends in seconds.
    mutable std::int64_t stepsLeft = symbolTableSteps;
};

/// Bits of SimOptions::mode.
namespace simMode {
inline constexpr std::int16_t savedStatistical = 0x01;  // what the topology writer looks at
inline constexpr std::int16_t outerSweep = 0x20, innerSweep = 0x40, statistical = 0x80;
inline constexpr std::int16_t anyScan = outerSweep | innerSweep | statistical;
}  // namespace simMode

/// PLOTTING codes.
inline constexpr std::int16_t DoNotPlot = 0, PlotToFilesOnly = 1, DisplayAllPlots = 2,
                              UsePlotIconSettings = 3;

/// The saved run settings and the run's live coordinates.
struct RunSettings {
    std::int16_t mode = 0;  // simMode
    std::int16_t SAVEPARAMS = 0;
    std::int16_t PLOTTING = UsePlotIconSettings;
    std::int32_t SIGSAVEMODE = 3;
    std::string OUTPUTPREFIX, SCANPREFIX, SCANMETA1, SCANMETA2, RUNMETA, BINMETA;
    std::string loopSuffix;
    std::string INNERSWEEPVARIABLE, INNERSWEEPSTARTVAL, INNERSWEEPSTEPVAL, INNERSWEEPSTOPVAL;
    std::string OUTERSWEEPVARIABLE, OUTERSWEEPSTARTVAL, OUTERSWEEPSTEPVAL, OUTERSWEEPSTOPVAL;
    std::int32_t NUMRUNSTODO = 0;
    std::int32_t loopReps = 0;                    // of the innermost open loop, else 0
    std::int32_t innerCount = 0, outerCount = 0;  // points of the sweeps, 0 without
    std::int32_t set = 0;                         // runs of this workspace so far
    std::int32_t innerIndex = 0, outerIndex = 0, runIndex = 0;  // from 1
    std::int32_t binIndex = 0;                                  // never changes from 0
    std::int32_t loopIndex = 0;  // iteration of the innermost open loop

    friend bool operator==(const RunSettings&, const RunSettings&) = default;
};

struct SimOptions : RunSettings {
    std::atomic<std::int16_t> stop{0};  // non-zero asks the run to end; set from outside
};

struct Workspace {
    std::int32_t id = 0;  // running number, from 1
    std::unique_ptr<SimOptions> options;
    std::string NOTE;
    std::map<std::int32_t, std::unique_ptr<Node>>
        nodes;                                // ascending by number; node 0 always there
    std::vector<Node*> BEGINNODES, ENDNODES;  // borrowed from nodes, node 0 first
    std::int16_t LOCKED = 0;
    std::vector<Variable> variables;  // ascending by name
    SymbolTable symbols;
    ComponentList components;
    std::string errorText;  // load and run messages
    std::int16_t dirty = 0;
    std::string name;      // hierarchy prefix of status lines, empty at the top level
    std::string fileName;  // topology file, for the workbench
};

/// The models known to the program: prototypes, ascending by type name.
struct Catalogue {
    ComponentList models;
    std::vector<const Component*> transmitters, channels, controls,
        receivers;                                    // borrowed, ascending
    std::string modelDirectory, superBlockDirectory;  // with the last separator
};

}  // namespace photrak
