// One row per model that has a page.
#include "workbench/help_topics.h"

#include <algorithm>
#include <iterator>

#include "platform/host.h"
#include "workbench/property_form.h"

namespace photrak {
namespace {

struct HelpTopic {
    std::string_view type;
    std::int32_t topic;
};
constexpr HelpTopic topics[] = {
    {"PseudoRandomBinarySequenceGenerator", 13},
    {"ElectricalSignalGenerator", 14},
    {"CustomSignalGenerator", 15},
    {"DirectModulatedLaserModel", 16},
    {"ModeLockedLaserModel", 17},
    {"CWLaserModel", 18},
    {"NonlinearFiberModel", 20},
    {"OpticalAmplifier", 21},
    {"IdealOpticalSplitter", 22},
    {"IdealOpticalMUX", 23},
    {"MultiportOpticalDevice", 24},
    {"OpticalFilter", 25},
    {"OpticalAttenuator", 26},
    {"OpticalNormalizer", 27},
    {"ReceiverModel", 28},
    {"CrosstalkBlock", 29},
    {"BERTester", 30},
    {"LoopBeginBlock", 31},
    {"LoopEndBlock", 31},
    {"LoadSigBlock", 32},
    {"SaveSigBlock", 32},
    {"SignalPlot", 33},
    {"EyeDiagram", 34},
    {"SignalSpectra", 35},
    {"AnalogSineGenerator", 46},
    {"ElectricalFilter", 47},
    {"Modulator", 48},
    {"OpticalCoupler", 49},
    {"OpticalDEMUX", 50},
    {"OpticalAddMUX", 51},
    {"OpticalDropMUX", 52},
    {"OpticalAddDropMUX", 53},
    {"InBlock", 59},
    {"OutBlock", 60},
    {"SuperBlock", 61},
    {"ChirpPlot", 74},
    {"FiberDelay", 75},
    {"ControlledOpticalCoupler", 76},
    {"PhaseShift", 77},
    {"PolarizationTransformer", 78},
    {"IdealFrequencyConverter", 79},
};

struct PageRow {
    std::int32_t topic;
    HelpPlace place;
};
constexpr PageRow pageRows[] = {
    {0, {"guide/index", ""}},
    {13, {"models/bit-patterns", ""}},
    {14, {"models/electrical-generators", "ElectricalSignalGenerator"}},
    {15, {"models/electrical-generators", "CustomSignalGenerator"}},
    {16, {"models/direct-laser", ""}},
    {17, {"models/lasers", "ModeLockedLaserModel"}},
    {18, {"models/lasers", "CWLaserModel"}},
    {20, {"models/fiber", ""}},
    {21, {"models/amplifier", ""}},
    {22, {"models/multiplexers", ""}},
    {23, {"models/multiplexers", ""}},
    {24, {"models/multiport", ""}},
    {25, {"models/optical-filters", ""}},
    {26, {"models/passive-blocks", "OpticalAttenuator"}},
    {27, {"models/passive-blocks", "OpticalNormalizer"}},
    {28, {"models/receiver", ""}},
    {29, {"models/couplers", "CrosstalkBlock"}},
    {30, {"models/ber-tester", ""}},
    {31, {"models/loops-and-files", "LoopBeginBlock, LoopEndBlock"}},
    {32, {"models/loops-and-files", "SaveSigBlock, LoadSigBlock"}},
    {33, {"models/plots-of-signals", "SignalPlot"}},
    {34, {"models/eye-diagram", ""}},
    {35, {"models/spectrum", ""}},
    {46, {"models/electrical-generators", "AnalogSineGenerator"}},
    {47, {"models/electrical-filter", ""}},
    {48, {"models/modulator", ""}},
    {49, {"models/couplers", "OpticalCoupler, ControlledOpticalCoupler"}},
    {50, {"models/multiplexers", ""}},
    {51, {"models/multiplexers", ""}},
    {52, {"models/multiplexers", ""}},
    {53, {"models/multiplexers", ""}},
    {59, {"guide/superblocks", ""}},
    {60, {"guide/superblocks", ""}},
    {61, {"guide/superblocks", ""}},
    {74, {"models/plots-of-signals", "ChirpPlot"}},
    {75, {"models/passive-blocks", "PhaseShift and FiberDelay"}},
    {76, {"models/couplers", "OpticalCoupler, ControlledOpticalCoupler"}},
    {77, {"models/passive-blocks", "PhaseShift and FiberDelay"}},
    {78, {"models/passive-blocks", "PolarizationTransformer"}},
    {79, {"models/passive-blocks", "IdealFrequencyConverter"}},
};

}  // namespace

HelpPlace HelpPlaceOf(std::int32_t topic) {
    const auto row = std::ranges::find(pageRows, topic, &PageRow::topic);
    return row == std::end(pageRows) ? pageRows[0].place : row->place;
}

std::int32_t HelpTopicOf(std::string_view type) {
    // By design: names count as far as a symbol table holds them.
    constexpr std::size_t length = symbolNameCapacity - 1;
    const auto row = std::ranges::find_if(topics, [&](const HelpTopic& topic) {
        return topic.type.substr(0, length) == type.substr(0, length);
    });
    return row == std::end(topics) ? 0 : row->topic;
}

void ShowHelp(Workbench& workbench, std::int32_t topic) {
    constexpr std::string_view question = "No help for this model.  Display general help?";
    if (topic == 0 && workbench.desktop.Query(queryTitle, question) != Answer::Yes) return;
    workbench.desktop.ShowHelp(topic);
}

}  // namespace photrak
