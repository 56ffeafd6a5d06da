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

}  // namespace

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
