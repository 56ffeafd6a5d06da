// Every model's table of parameters against its definition, both ways, and the dispatch against the
// catalogue.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

#include "base/units.h"
#include "files/catalogue.h"
#include "kernel/parameters.h"
#include "models/dispatch.h"
#include "support/catalogue_block.h"
#include "support/parameter_list.h"
#include "support/paths.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

class ParamTables : public testing::Test {
  protected:
    ParamTables() {
        EXPECT_EQ(InitializeModels(SourceDir() + "/catalogue/", catalogue_, text_), Status::Success)
            << text_;
    }
    const Component* Definition(std::string_view type) { return FindModel(catalogue_, type); }

    Catalogue catalogue_;
    std::string text_;
};

constexpr std::int32_t typeCodes[] = {DoubleType, IntType, EnumType, StringType, DoubleArrayType};

std::set<std::string> WordsOf(std::string_view list) {
    std::set<std::string> words;
    std::istringstream stream{std::string(list)};
    for (std::string word; stream >> word;) words.insert(word);
    return words;
}

double InRecordUnit(const ParamSpec& spec, double typed) {
    switch (spec.unit) {
        case ParamUnit::PowerDecibels:
            return PowerRatio(typed);
        case ParamUnit::FieldDecibels:
            return FieldRatio(typed);
        case ParamUnit::Dbm:
            return WattsFromDbm(typed);
        default:
            return typed;
    }
}

/// A definition may not let through what the model refuses: both ends of its limits are in range,
/// and so is all between but for the 0 of NotZero.
void ExpectLimitsInRange(const ParamSpec& spec, const Parameter& parameter) {
    std::string text;
    for (const void* limit : {parameter.min, parameter.max}) {
        if (!limit) continue;
        const double typed =
            parameter.type == IntType ? BlockValue<std::int32_t>(limit) : BlockValue<double>(limit);
        if (spec.range == Range::NotZero && typed == 0.0) continue;
        EXPECT_EQ(CheckRange({"block", text}, spec.name, InRecordUnit(spec, typed), spec.range),
                  Status::Success)
            << text << "but the definition lets it through";
    }
}

void ExpectSame(const ParamSpec& spec, const Parameter& parameter) {
    SCOPED_TRACE(parameter.name);
    EXPECT_EQ(parameter.type, typeCodes[static_cast<int>(spec.kind)]);
    switch (spec.kind) {
        case ParamKind::Number:
        case ParamKind::Whole:
            EXPECT_EQ(std::strtod(parameter.value, nullptr), spec.number);
            ExpectLimitsInRange(spec, parameter);
            break;
        case ParamKind::Word:
            EXPECT_EQ(WordsOf(parameter.UNITS), WordsOf(spec.words));
            EXPECT_TRUE(WordsOf(spec.words).contains(std::string(spec.text))) << spec.text;
            EXPECT_TRUE(spec.whenAbsent.empty() ||
                        WordsOf(spec.words).contains(std::string(spec.whenAbsent)))
                << spec.whenAbsent;
            [[fallthrough]];
        case ParamKind::Text:
            EXPECT_EQ(parameter.value, spec.text);
            break;
        case ParamKind::Array:
            break;
    }
}

TEST_F(ParamTables, AgreeWithTheDefinitions) {
    for (const ModelEntry& entry : BuiltInModels()) {
        SCOPED_TRACE(entry.type);
        const Component* definition = Definition(entry.type);
        if (!definition || !entry.params) continue;
        std::set<std::string, std::less<>> inTable;
        for (const ParamSpec& spec : entry.params()) {
            EXPECT_TRUE(inTable.emplace(spec.name).second) << spec.name << " stands twice";
            EXPECT_FALSE(spec.sharesMember) << spec.name << " is stored where another row is";
            const Parameter* parameter = FindParameter(spec.name, definition->parameters);
            if (parameter) {
                ExpectSame(spec, *parameter);
            } else {
                ADD_FAILURE() << "no parameter '" << spec.name << "' in the definition";
            }
        }
        for (const Parameter& parameter : Items(definition->parameters)) {
            EXPECT_TRUE(inTable.contains(parameter.name))
                << "the table has no row for '" << parameter.name << "'";
        }
    }
}

// --- The dispatch ---

/// The driver itself and the hierarchy run these.
const std::set<std::string, std::less<>> notDispatched = {"LoopBeginBlock", "LoopEndBlock",
                                                          "SuperBlock"};

/// Other names of blocks, without definitions of their own.
const std::map<std::string_view, std::string_view> aliases = {
    {"Elec_Plot", "SignalPlot"},        {"Optical_Plot", "SignalPlot"},
    {"Elec_Scope", "EyeDiagram"},       {"Optical_Scope", "EyeDiagram"},
    {"Elec_Spectrum", "SignalSpectra"}, {"Optical_Spectrum", "SignalSpectra"}};

TEST_F(ParamTables, DispatchAndCatalogueNameTheSameModels) {
    const auto models = BuiltInModels();
    const auto rows = [&](std::string_view type) {
        return std::ranges::count(models, type, &ModelEntry::type);
    };
    for (const auto& definition : catalogue_.models) {
        const bool dispatched = !notDispatched.contains(definition->type);
        EXPECT_EQ(rows(definition->type), dispatched)
            << definition->type << " has no row of its own";
    }
    for (const auto& [alias, type] : aliases) {
        EXPECT_EQ(rows(alias), 1) << alias << " has no row of its own";
        if (rows(alias) != 1 || rows(type) != 1) continue;
        const auto other = std::ranges::find(models, alias, &ModelEntry::type);
        const auto own = std::ranges::find(models, type, &ModelEntry::type);
        EXPECT_TRUE(other->run == own->run && other->params == own->params) << alias;
    }
    for (const ModelEntry& entry : models) {
        EXPECT_TRUE(Definition(entry.type) || aliases.contains(entry.type))
            << entry.type << " has no definition";
        EXPECT_TRUE(entry.params) << entry.type << " names no table";
    }
}

/// Signals that fit together: 16 bits of 10 Gbit/s in four samples each.
void* FittingSignal(std::int32_t sigType) {
    constexpr std::int32_t bits = 16, n = 64;
    if (sigType == BinSigType) return AlternatingBits(bits).release();
    if (sigType == OpSigType) {
        Owned<OpSignal> light;
        EXPECT_EQ(Make(light, CreateOpSignalWithSig, n), 0);
        OpSig& channel = *light->channels;
        channel.wavelength = 1.55e-6;
        channel.tStep = 25e-12;
        channel.bitRate = 1e10;
        channel.patternLength = bits;
        for (std::int32_t i = 1; i <= n; ++i) channel.Ex_samples[i].re = (i - 1) / 4 % 2 * 0.03;
        return light.release();
    }
    if (sigType != ElecSigType && sigType != UnknownSigType) return nullptr;
    Owned<ElecSig> wave = RampWaveform(n, 25e-12);
    wave->UnitType = VoltageUnit;
    wave->domain = TimeDomain;
    wave->patternLength = bits;
    for (std::int32_t i = 1; i <= n; ++i) {
        wave->elecSamples[i] = {static_cast<double>((i + 3) / 4 % 2), 0.0};
        wave->sigmaSamples[i] = {0.05, 0.0};
    }
    return wave.release();
}

Owned<Nodelist> Cells(const std::vector<Port>& ports, bool filled) {
    Owned<Nodelist> cells;
    for (auto port = ports.rbegin(); port != ports.rend(); ++port) {
        Nodelist* cell = nullptr;
        const bool any = filled && port->sigType == UnknownSigType;
        EXPECT_EQ(CreateNodelist(&cell, any ? std::int32_t{ElecSigType} : port->sigType), 0);
        cell->next = cells.release();
        cells.reset(cell);
        if (filled) cell->sig = FittingSignal(port->sigType);
    }
    return cells;
}

/// Blocks that have something to say do so; all others fill their outputs in silence.
TEST_F(ParamTables, EveryModelRunsOnItsDefaults) {
    const std::map<std::string_view, std::pair<Status, std::string_view>> exceptions = {
        {"CustomSignalGenerator", {Status::Error, "Cannot open file: ."}},
        {"DirectModulatedLaserModel", {Status::Warning, "the drive current goes below 0"}},
        {"InBlock", {Status::Warning, "nothing stands at input port 1"}},
        {"LoadSigBlock", {Status::Warning, "no filename given"}},
        {"MultiportOpticalDevice", {Status::Error, "transfer matrix"}},
        {"OpticalNormalizer", {Status::Warning, "applied a gain of"}}};
    const TempDir directory;
    RecordingHost host;
    for (const ModelEntry& entry : BuiltInModels()) {
        if (!Definition(entry.type)) continue;
        SCOPED_TRACE(entry.type);
        const std::unique_ptr<Workspace> workspace = CreateWorkspace();
        Component* block = AddComponent(*workspace, entry.type, "box", 1, 1, catalogue_);
        ASSERT_NE(block, nullptr);
        std::string text;
        ASSERT_EQ(EvalComponentParams(*block, workspace.get(), text), Status::Success) << text;
        ASSERT_EQ(CheckPorts(*block, text), Status::Success) << text;
        const Owned<Nodelist> inputs = Cells(block->inputs, /*filled=*/true);
        const Owned<Nodelist> outputs = Cells(block->outputs, /*filled=*/false);
        const Status status = entry.run({{block->name, text},
                                         *workspace,
                                         *block,
                                         *workspace->options,
                                         inputs.get(),
                                         outputs.get()});
        const auto exception = exceptions.find(entry.type);
        if (exception != exceptions.end()) {
            EXPECT_EQ(status, exception->second.first) << text;
            EXPECT_NE(text.find(exception->second.second), std::string::npos) << text;
            continue;
        }
        EXPECT_EQ(status, Status::Success) << text;
        EXPECT_EQ(text, "");
        const Nodelist* cell = outputs.get();
        for (const Port& port : block->outputs) {
            if (port.modelType != NoSigType) {
                EXPECT_EQ(cell->sigType, port.modelType);
                EXPECT_NE(cell->sig, nullptr);
            }
            cell = cell->next;
        }
    }
}

}  // namespace
}  // namespace photrak
