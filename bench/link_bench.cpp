// Whole links from the loaded topology to the last result, by number of threads: where the time
// goes by type of block, how long the transforms of fibers and filters would take by themselves in
// the same run, and the peak of memory. Run one at a time with --benchmark_filter.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "../tests/support/recording_host.h"
#include "../tests/support/temp_dir.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "files/topology.h"
#include "kernel/driver.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "models/dispatch.h"
#include "numeric/split_step.h"
#include "platform/file_system.h"
#include "platform/progress.h"

namespace photrak {
namespace {

double Now() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

/// Takes the time between the status texts, each of which announces a block, and the steps of
/// fibers.
class Stopwatch : public RecordingHost, public ProgressSink {
  public:
    explicit Stopwatch(int threads) {
        environment["PHOTRAK_THREADS"] = Concat(threads);
        CurrentProgress() = this;
    }
    ~Stopwatch() override { CurrentProgress() = nullptr; }

    void ShowStatusText(std::string_view text) override {
        Stop();
        type_ = text.substr(0, text.rfind('\''));
        type_ = type_.substr(type_.rfind('\'') + 1);
    }
    void ShowFraction(double) override { ++calls_[type_]; }
    /// Ends the time of the block announced last.
    void Stop() {
        const double now = Now();
        if (!type_.empty()) seconds[type_] += now - since_;
        type_.clear();
        since_ = now;
    }
    double FiberSteps() { return calls_["NonlinearFiberModel"]; }

    std::map<std::string, double> seconds;  // by type of block

  private:
    std::map<std::string, double> calls_;
    std::string type_;
    double since_ = 0;
};

/// Processor time of all threads: what other programs take does not count.
double Worked() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// From the kernel's own count; writing 5 there starts it anew.
void ResetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << 5;
}
double PeakMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return kilobytes / 1024;
    }
    return 0;
}

/// One transform there and one back with the product between them, as a step of a fiber does it.
double SecondsOfTransfer(long n) {
    SplitField field(n);
    TransferArray transfer(n, +1);
    transfer.Fill([](long) { return 1.0; });
    double best = HUGE_VAL;
    for (int round = 0; round < 20; ++round) {
        constexpr int times = 20;
        const double start = Now();
        for (int k = 0; k < times; ++k) ApplyTransferOpen(field, transfer);
        best = std::min(best, (Now() - start) / times);
    }
    return best;
}

struct Link {
    std::unique_ptr<Workspace> workspace;
    double channels = 0;          // in the fiber
    long fiberSamples = 0;        // of the window there
    double transfersPerStep = 1;  // two with adaptive steps
    double filters = 0;           // transfers elsewhere
    long filterSamples = 0;
};

std::unique_ptr<Workspace> LoadExample(const std::string& name, const Catalogue& catalogue) {
    std::filesystem::copy(PHOTRAK_SOURCE_DIR "/examples/" + name, ".",
                          std::filesystem::copy_options::overwrite_existing);
    std::unique_ptr<Workspace> workspace;
    if (TopologyLoad(name, workspace, catalogue) == Status::Error) return nullptr;
    return workspace;
}

void SetValue(Component& block, std::string_view name, std::string_view value) {
    Parameter* parameter = FindParamCursor(block.parameters, name);
    if (!parameter || !SetText(&parameter->value, value)) std::abort();
}

/// Eight channels, five spans, demultiplexer, receivers, testers; 2^(bits + 5) samples.
Link EightChannels(long bits, const Catalogue& catalogue) {
    Link link{LoadExample("wdm8.top", catalogue)};
    FindVariable("bits", *link.workspace)->value = Concat(bits);
    link.channels = 8;
    link.fiberSamples = 32L << bits;
    link.filters = 64;
    link.filterSamples = 2 * link.fiberSamples;
    return link;
}

/// One channel through a fiber with adaptive steps in a doubled window.
Link Adaptive(long bits, const Catalogue& catalogue) {
    Link link{LoadExample("nrz-link.top", catalogue)};
    const ComponentList& blocks = link.workspace->components;
    SetValue(*FindComponent("Bits", blocks), "patternLength", Concat(bits));
    SetValue(*FindComponent("Fiber", blocks), "zStepFac", "0.002");
    link.channels = 1;
    link.fiberSamples = 64L << bits;
    link.transfersPerStep = 2;
    return link;
}

Link DirectLaser(long bits, const Catalogue& catalogue) {
    Link link{LoadExample("direct-laser.top", catalogue)};
    SetValue(*FindComponent("Bits", link.workspace->components), "patternLength", Concat(bits));
    return link;
}

/// As many channels as wanted through two amplified spans, one of them received; 2^12 samples.
class LineMaker {
  public:
    LineMaker(Workspace& workspace, const Catalogue& catalogue)
        : workspace_(workspace), catalogue_(catalogue) {}

    Component& Add(std::string_view type, std::string_view name,
                   std::initializer_list<std::pair<const char*, std::string>> values,
                   std::int32_t inputs = 0) {
        Component* block = AddComponent(workspace_, type, name, inputs, 0, catalogue_);
        if (!block) std::abort();
        for (const auto& [parameter, value] : values) SetValue(*block, parameter, value);
        return *block;
    }
    void Wire(Component& from, Component& to, std::int32_t input = 1) {
        std::string text;
        if (ConnectComponents(workspace_, from, 1, to, input, text) != Status::Success)
            std::abort();
    }
    Component& Transmitter(long channel) {
        Component& bits = Add("PseudoRandomBinarySequenceGenerator", Concat("Bits", channel),
                              {{"bitRate", "10e9"}, {"patternLength", "7"}});
        Component& drive = Add(
            "ElectricalSignalGenerator", Concat("Drive", channel),
            {{"driveType", "on_off_ramp"}, {"pointsPerBit", "5"}, {"Vmax", "2"}, {"Vmin", "0"}});
        Component& laser = Add("CWLaserModel", Concat("Laser", channel),
                               {{"peakPower", "1e-3"},
                                {"wavelength", Concat("c / (193.1e12 + ", channel, " * 50e9)")}});
        Component& modulator = Add("Modulator", Concat("Modulator", channel), {});
        Wire(bits, drive);
        Wire(laser, modulator);
        Wire(drive, modulator, 2);
        return modulator;
    }

  private:
    Workspace& workspace_;
    const Catalogue& catalogue_;
};

Link Line(long channels, const Catalogue& catalogue) {
    constexpr int spans = 2;
    Link link{CreateWorkspace()};
    LineMaker make(*link.workspace, catalogue);
    Component* end = &make.Add("IdealOpticalMUX", "Mux", {}, static_cast<std::int32_t>(channels));
    for (long k = 0; k < channels; ++k) {
        make.Wire(make.Transmitter(k), *end, static_cast<std::int32_t>(k + 1));
    }
    for (int span = 1; span <= spans; ++span) {
        Component& fiber = make.Add("NonlinearFiberModel", Concat("Fiber", span),
                                    {{"distance", "80e3"},
                                     {"zStepSize", "1e3"},
                                     {"beta2", "-2.17e-26"},
                                     {"optimizationlevel", "3"}});
        Component& amplifier = make.Add("OpticalAmplifier", Concat("Amplifier", span), {});
        make.Wire(*end, fiber);
        make.Wire(fiber, amplifier);
        end = &amplifier;
    }
    Component& filter = make.Add("OpticalFilter", "Filter", {{"wavelength", "c / 193.1e12"}});
    Component& receiver = make.Add("ReceiverModel", "Receiver", {});
    make.Wire(*end, filter);
    Component& tester = make.Add("BERTester", "Tester", {}, 2);
    make.Wire(filter, receiver);
    make.Wire(receiver, tester);
    make.Wire(*FindComponent("Bits0", link.workspace->components), tester, 2);
    link.channels = static_cast<double>(channels);
    link.fiberSamples = 1L << 12;
    link.filters = link.channels;
    link.filterSamples = 2 * link.fiberSamples;
    return link;
}

using MakeLink = Link (*)(long size, const Catalogue& catalogue);

double RunOnce(Link& link, Stopwatch& watch, benchmark::State& state) {
    if (!link.workspace) {
        state.SkipWithError("the topology did not load");
        return 0;
    }
    link.workspace->options->PLOTTING = DoNotPlot;
    const double start = Now();
    const Status status = RunSimulation(link.workspace.get(), {BuiltInModels(), nullptr});
    const double seconds = Now() - start;
    watch.Stop();
    if (status == Status::Error) state.SkipWithError(link.workspace->errorText.c_str());
    return seconds;
}

void Report(benchmark::State& state, const Link& link, Stopwatch& watch, double total,
            double worked) {
    const auto runs = static_cast<double>(state.iterations());
    double transforms = 0;
    if (link.fiberSamples > 0)
        transforms += watch.FiberSteps() / runs * link.channels * link.transfersPerStep *
                      SecondsOfTransfer(link.fiberSamples);
    if (link.filterSamples > 0) transforms += link.filters * SecondsOfTransfer(link.filterSamples);
    for (const auto& [type, seconds] : watch.seconds)
        if (seconds > 0.01 * total) state.counters[type] = seconds / total;
    if (transforms > 0) state.counters["over_transforms"] = worked / runs / transforms;
    state.counters["peak_MB"] = PeakMegabytes();
}

/// Arguments: size of the link, threads.
void BM_Link(benchmark::State& state, MakeLink make) {
    const TempDir scratch;
    Stopwatch watch(static_cast<int>(state.range(1)));
    Catalogue catalogue;
    std::string text;
    if (InitializeModels(ExecutableDirectory(), catalogue, text) == Status::Error) {
        state.SkipWithError(text.c_str());
        return;
    }
    double total = 0, worked = 0;
    Link link;
    ResetPeakMemory();
    for (auto _ : state) {
        link = make(state.range(0), catalogue);
        const double before = Worked();
        const double seconds = RunOnce(link, watch, state);
        worked += Worked() - before;
        state.SetIterationTime(seconds);
        total += seconds;
        DestroyWorkspace(link.workspace);
    }
    if (total > 0) Report(state, link, watch, total, worked);
    ReleaseModels(catalogue);
}
BENCHMARK_CAPTURE(BM_Link, wdm8, EightChannels)
    ->ArgNames({"bits", "threads"})
    ->ArgsProduct({{7, 9, 11}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_Link, adaptive, Adaptive)
    ->ArgNames({"bits", "threads"})
    ->ArgsProduct({{8}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_Link, direct_laser, DirectLaser)
    ->ArgNames({"bits", "threads"})
    ->ArgsProduct({{7}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_Link, line, Line)
    ->ArgNames({"channels", "threads"})
    ->ArgsProduct({{8, 64}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

}  // namespace
}  // namespace photrak
