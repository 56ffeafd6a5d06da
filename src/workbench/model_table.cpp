// The built-in rows in the order of the palette, and the names of what user models bring.
#include "workbench/model_table.h"

#include <algorithm>

#include "base/text.h"

namespace photrak {
namespace {

struct BuiltInRow {
    std::string_view name, tip, bitmap, tooltip;
};
constexpr BuiltInRow builtInRows[] = {
    {"UnknownModel", "UnknownModel", "unknownu.bmp", ""},
    {"PseudoRandomBinarySequenceGenerator", "PRBS Generator", "prbsu.bmp", "PRBS Generator"},
    {"ElectricalSignalGenerator", "Signal Generator", "esiggenu.bmp", "Signal Generator"},
    {"CustomSignalGenerator", "Custom Signal Generator", "csiggenu.bmp", "Custom Signal Generator"},
    {"AnalogSineGenerator", "Analog Sine Generator", "sinegenu.bmp", "Analog Sine Generator"},
    {"DirectModulatedLaserModel", "Direct Modulated Laser", "laseru.bmp", "Direct Modulated Laser"},
    {"ModeLockedLaserModel", "Mode Locked Laser", "mllaseru.bmp", "Mode Locked Laser"},
    {"CWLaserModel", "CW Laser", "cwlaseru.bmp", "CW Laser"},
    {"Modulator", "Modulator", "modu.bmp", "Modulator"},
    {"NonlinearFiberModel", "Fiber", "fiberu.bmp", "Fiber"},
    {"FiberDelay", "Fiber Delay", "fibdelayu.bmp", "Fiber Delay"},
    {"OpticalAmplifier", "Optical Amplifier", "edfau.bmp", "Optical Amplifier"},
    {"IdealOpticalSplitter", "Optical Splitter", "splitu.bmp", "Optical Splitter"},
    {"OpticalCoupler", "Optical Coupler", "opcplu.bmp", "Optical Coupler"},
    {"ControlledOpticalCoupler", "Controlled Optical Coupler", "cntopcplu.bmp",
     "Controlled Optical Coupler"},
    {"OpticalAttenuator", "Optical Attenuator", "attenu.bmp", "Optical Attenuator"},
    {"OpticalNormalizer", "Optical Power Normalizer", "normu.bmp", "Optical Power Normalizer"},
    {"PhaseShift", "Phase Shift", "phashftu.bmp", "Optical Phase Shift"},
    {"PolarizationTransformer", "Polarization Transformer", "poltranu.bmp",
     "Polarization Transformer"},
    {"IdealFrequencyConverter", "Ideal Frequency Converter", "freqconvu.bmp",
     "Ideal Frequency Converter"},
    {"UnknownModel", "Blank", "blanku.bmp", ""},
    {"OpticalFilter", "Optical Filter", "fpfiltu.bmp", "Optical Filter"},
    {"IdealOpticalMUX", "Optical Multiplexer", "idealmxu.bmp", "Optical Multiplexer"},
    {"OpticalDEMUX", "Optical DeMultiplexer", "opdemuxu.bmp", "Optical DeMultiplexer"},
    {"MultiportOpticalDevice", "Multiport Optical Device", "multporu.bmp",
     "Multiport Optical Device"},
    {"OpticalAddMUX", "Optical Add Multiplexer", "opaddu.bmp", "Optical Add Multiplexer"},
    {"OpticalDropMUX", "Optical Drop Multiplexer", "opdropu.bmp", "Optical Drop Multiplexer"},
    {"OpticalAddDropMUX", "Optical Add/Drop Multiplexer", "opaddrpu.bmp",
     "Optical Add/Drop Multiplexer"},
    {"UnknownModel", "Blank", "blanku.bmp", ""},
    {"ReceiverModel", "Receiver", "recu.bmp", "Receiver"},
    {"ElectricalFilter", "Electrical Filter", "efiltu.bmp", "Electrical Filter"},
    {"CrosstalkBlock", "Crosstalk Block", "xtlku.bmp", "Crosstalk Block"},
    {"BERTester", "BER Tester", "beru.bmp", "BER Tester"},
    {"LoopBeginBlock", "Repetition Loop Begin", "loopbgnu.bmp", "Repetition Loop Begin"},
    {"LoopEndBlock", "Repetition Loop End", "loopendu.bmp", "Repetition Loop End"},
    {"SaveSigBlock", "Save Signal To File", "savesigu.bmp", "Save Signal To File"},
    {"LoadSigBlock", "Load Signal From File", "loadsigu.bmp", "Load Signal From File"},
    {"InBlock", "Hierarchical Input Signal Port", "inblku.bmp", "Hierarchical Input Signal Port"},
    {"OutBlock", "Hierarchical Output Signal Port", "outblku.bmp",
     "Hierarchical Output Signal Port"},
    {"SuperBlock", "Hierarchical SuperBlock", "sprblku.bmp", "Hierarchical SuperBlock"},
    {"UnknownModel", "Blank", "blanku.bmp", ""},
    {"SignalPlot", "Plot Signal", "plotsigu.bmp", "Plot Signal"},
    {"EyeDiagram", "Plot Eye Diagram", "ploteyeu.bmp", "Plot Eye Diagram"},
    {"SignalSpectra", "Plot Spectrum", "plotspcu.bmp", "Plot Spectrum"},
    {"ChirpPlot", "Plot Chirp", "plotchpu.bmp", "Plot Chirp"},
};
static_assert(std::size(builtInRows) == lastBuiltInModel + 1);

/// The canvas picture of a user model: the part from the first full stop on gives way to "u.bmp".
std::string CanvasBitmap(std::string_view file) {
    return Concat(file.substr(0, file.find('.')), "u.bmp");
}

}  // namespace

PaletteModels::PaletteModels() {
    for (const BuiltInRow& row : builtInRows) {
        rows_.push_back({std::string(row.name), std::string(row.tip), std::string(row.bitmap),
                         std::string(row.tooltip)});
    }
}

bool PaletteModels::AddUserModel(std::string_view type, std::string_view bitmap) {
    if (rows_.size() >= modelCapacity) return false;
    const std::string tooltip = Concat("User Model ", rows_.size() - lastBuiltInModel);
    rows_.push_back(
        {std::string(type), std::string(type), type.empty() ? "" : CanvasBitmap(bitmap), tooltip});
    return true;
}

std::int32_t PaletteModels::IndexOf(std::string_view type) const {
    const auto row = std::find_if(rows_.begin() + 1, rows_.end(),
                                  [&](const ModelRow& r) { return r.name == type; });
    if (row == rows_.end() || row->tip == blankTip) return 0;
    return static_cast<std::int32_t>(row - rows_.begin());
}

bool PaletteModels::HasButton(std::int32_t index) const {
    return index > 0 && index <= Last() && !Row(index).name.empty() && Row(index).tip != blankTip;
}

}  // namespace photrak
