// The built-in models in the order in which a component's type is compared. A new model is one row.
#include "models/dispatch.h"

#include "hierarchy/nested_run.h"
#include "models/detection/ber_tester.h"
#include "models/detection/crosstalk.h"
#include "models/detection/electrical_filter.h"
#include "models/detection/receiver.h"
#include "models/optical/amplifier.h"
#include "models/optical/couplers.h"
#include "models/optical/fiber.h"
#include "models/optical/multiplexers.h"
#include "models/optical/multiport.h"
#include "models/optical/optical_filter.h"
#include "models/optical/passive_blocks.h"
#include "models/optical/polarization_transformer.h"
#include "models/optical/splitter.h"
#include "models/signal_blocks.h"
#include "models/sources/analog_sine.h"
#include "models/sources/custom_signal.h"
#include "models/sources/direct_laser.h"
#include "models/sources/lasers.h"
#include "models/sources/modulator.h"
#include "models/sources/prbs.h"
#include "models/sources/signal_generator.h"
#include "results/chirp_plot.h"
#include "results/eye_plot.h"
#include "results/signal_plot.h"
#include "results/spectrum_plot.h"

namespace photrak {
namespace {

constexpr ModelEntry builtInModels[] = {
    {"PseudoRandomBinarySequenceGenerator", RunPrbs, PrbsParamSpecs},
    {"ElectricalSignalGenerator", RunSignalGenerator, SignalGeneratorParamSpecs},
    {"CustomSignalGenerator", RunCustomSignal, CustomSignalParamSpecs},
    {"NonlinearFiberModel", RunFiber, FiberParamSpecs},
    {"ElectricalFilter", ElectricalFilter, ElectricalFilterParamSpecs},
    {"ReceiverModel", ReceiverModel, ReceiverParamSpecs},
    // The aliases of a plot name one block, which tells by the signal at its port what to write.
    {"Elec_Scope", RunEyeDiagram, EyeDiagramParamSpecs},
    {"Optical_Scope", RunEyeDiagram, EyeDiagramParamSpecs},
    {"EyeDiagram", RunEyeDiagram, EyeDiagramParamSpecs},
    {"Elec_Plot", SignalPlot, SignalPlotParamSpecs},
    {"Optical_Plot", SignalPlot, SignalPlotParamSpecs},
    {"SignalPlot", SignalPlot, SignalPlotParamSpecs},
    {"ChirpPlot", ChirpPlot, ChirpPlotParamSpecs},
    {"Elec_Spectrum", RunSignalSpectra, SignalSpectraParamSpecs},
    {"Optical_Spectrum", RunSignalSpectra, SignalSpectraParamSpecs},
    {"SignalSpectra", RunSignalSpectra, SignalSpectraParamSpecs},
    {"OpticalAttenuator", RunOpticalAttenuator, OpticalAttenuatorParamSpecs},
    {"OpticalNormalizer", RunOpticalNormalizer, OpticalNormalizerParamSpecs},
    {"PhaseShift", RunPhaseShift, PhaseShiftParamSpecs},
    {"FiberDelay", RunFiberDelay, FiberDelayParamSpecs},
    {"IdealFrequencyConverter", RunIdealFrequencyConverter, IdealFrequencyConverterParamSpecs},
    {"PolarizationTransformer", RunPolarizationTransformer, PolarizationTransformerParamSpecs},
    {"CrosstalkBlock", RunCrosstalkBlock, CrosstalkParamSpecs},
    {"OpticalCoupler", RunOpticalCoupler, OpticalCouplerParamSpecs},
    {"ControlledOpticalCoupler", RunControlledOpticalCoupler, ControlledOpticalCouplerParamSpecs},
    {"IdealOpticalMUX", RunIdealOpticalMux, IdealOpticalMuxParamSpecs},
    {"OpticalAddMUX", RunOpticalAddMux, OpticalAddMuxParamSpecs},
    {"OpticalDropMUX", RunOpticalDropMux, OpticalDropMuxParamSpecs},
    {"OpticalAddDropMUX", RunOpticalAddDropMux, OpticalAddDropMuxParamSpecs},
    {"OpticalDEMUX", RunOpticalDemux, OpticalDemuxParamSpecs},
    {"IdealOpticalSplitter", RunOpticalSplitter, OpticalSplitterParamSpecs},
    {"MultiportOpticalDevice", RunMultiportOpticalDevice, MultiportParamSpecs},
    {"AnalogSineGenerator", RunAnalogSine, AnalogSineParamSpecs},
    {"DirectModulatedLaserModel", RunDirectLaser, LaserParamSpecs},
    {"ModeLockedLaserModel", RunModeLockedLaser, ModeLockedLaserParamSpecs},
    {"CWLaserModel", RunCwLaser, CwLaserParamSpecs},
    {"Modulator", RunModulator, ModulatorParamSpecs},
    {"OpticalAmplifier", RunOpticalAmplifier, EdfaParamSpecs},
    {"OpticalFilter", RunOpticalFilter, OpticalFilterParamSpecs},
    {"SaveSigBlock", SaveSigBlock, SignalBlockParamSpecs},
    {"LoadSigBlock", LoadSigBlock, SignalBlockParamSpecs},
    {"InBlock", RunInBlock, InBlockParamSpecs},
    {"OutBlock", RunOutBlock, OutBlockParamSpecs},
    {"BERTester", RunBerTester, BerParamSpecs},
};

}  // namespace

std::span<const ModelEntry> BuiltInModels() {
    return builtInModels;
}

}  // namespace photrak
