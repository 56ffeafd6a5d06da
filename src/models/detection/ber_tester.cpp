// Parameters, slots, and the order of the files.
#include "models/detection/ber_tester.h"

#include <algorithm>
#include <memory>

#include "base/text.h"
#include "kernel/expression.h"
#include "kernel/parameters.h"
#include "kernel/result_names.h"
#include "kernel/run_record.h"
#include "models/common/parameter_limits.h"
#include "models/common/refusals.h"

namespace photrak {
namespace {

constexpr double noResultBER = 1.0, noResultQ = 0.0, notComputed = -1.0;

struct StatisticWord {
    std::string_view word;
    StatisticalPlot statistic;
};
constexpr StatisticWord statisticWords[] = {{"Average", StatisticalPlot::Average},
                                            {"Minimum", StatisticalPlot::Minimum},
                                            {"Maximum", StatisticalPlot::Maximum},
                                            {"Latest", StatisticalPlot::Latest}};

constexpr ParameterLimit<BerParams> limits[] = {
    {"timingJitter", &BerParams::timingJitter, Range::Finite},
    {"decisionLevelJitter", &BerParams::decisionLevelJitter, Range::Finite},
    {"decisionPointShift", &BerParams::decisionPointShift, Range::Finite},
    {"decisionLevel", &BerParams::decisionLevel, Range::Finite}};

std::int32_t RunCount(const SimOptions& options) {
    const bool statistical = (options.mode & simMode::statistical) != 0;
    return statistical ? std::max(options.NUMRUNSTODO, 1) : 1;
}

/// Where the run stands, counted from 0.
struct Place {
    std::size_t inner, outer, run;
};
std::size_t Index(std::int32_t index, std::int32_t count) {
    return static_cast<std::size_t>(std::clamp(index, 1, count) - 1);
}
Place PlaceOf(const SimOptions& options, const BERResults& results) {
    return {Index(options.innerIndex, results.innerPoints),
            Index(options.outerIndex, results.outerPoints), Index(options.runIndex, results.runs)};
}

/// First slot of a sweep point.
std::size_t PointSlot(const BERResults& results, std::size_t inner, std::size_t outer) {
    return (outer * static_cast<std::size_t>(results.innerPoints) + inner) *
           results.SlotsPerPoint();
}

bool IsFirstPass(const SimOptions& options) {
    // A repetition loop around the tester calls it again within the pass.
    return options.outerIndex <= 1 && options.innerIndex <= 1 && options.runIndex <= 1 &&
           options.loopIndex <= 1;
}

bool IsLastPass(const SimOptions& options, const BERResults& results) {
    return options.outerIndex >= results.outerPoints && options.innerIndex >= results.innerPoints &&
           options.runIndex >= results.runs && options.loopReps == 0;
}

struct SweepTexts {
    const std::string &variable, &start, &step, &stop;
    std::int32_t count;
    bool IsSwept() const { return count > 0 && !variable.empty(); }
};

/// Start, start + step, ... with what overshoots the stop put on it; 0 without a sweep.
std::vector<double> SweepValues(const SweepTexts& sweep, const SymbolTable& symbols) {
    std::vector<double> values(static_cast<std::size_t>(std::max(sweep.count, 1)), 0.0);
    if (!sweep.IsSwept()) return values;
    ExprError ignored = ExprError::None;  // the run refused what does not evaluate
    const double start = EvalNumberText(symbols, sweep.start, ignored);
    const double step = EvalNumberText(symbols, sweep.step, ignored);
    const double stop = EvalNumberText(symbols, sweep.stop, ignored);
    double k = 0.0;
    for (double& value : values) {
        value = k * step + start;
        if (stop < start ? value < stop : value > stop) value = stop;
        k += 1.0;
    }
    return values;
}

SweepTexts InnerSweep(const SimOptions& options) {
    return {options.INNERSWEEPVARIABLE, options.INNERSWEEPSTARTVAL, options.INNERSWEEPSTEPVAL,
            options.INNERSWEEPSTOPVAL, options.innerCount};
}
SweepTexts OuterSweep(const SimOptions& options) {
    return {options.OUTERSWEEPVARIABLE, options.OUTERSWEEPSTARTVAL, options.OUTERSWEEPSTEPVAL,
            options.OUTERSWEEPSTOPVAL, options.outerCount};
}

std::size_t SelectedSlot(const BerParams& params, const BERResults& results, std::size_t run) {
    if (results.runs < 2) return 0;
    switch (params.statistic) {
        case StatisticalPlot::Minimum:
            return berSlot::minimum;
        case StatisticalPlot::Maximum:
            return berSlot::maximum;
        case StatisticalPlot::Latest:
            return berSlot::beforeRuns + run + 1;
        default:
            return berSlot::average;
    }
}

Status WriteCurveFiles(const SimOptions& options, const BerParams& params, BERResults& results,
                       std::string& errorText) {
    const std::size_t slot = SelectedSlot(params, results, PlaceOf(options, results).run);
    const auto inners = static_cast<std::size_t>(results.innerPoints);
    const auto outers = static_cast<std::size_t>(results.outerPoints);
    for (std::size_t outer = 0; outer < outers; ++outer) {
        for (std::size_t inner = 0; inner < inners; ++inner) {
            results.curve.Set(inner, outer, results.BER[PointSlot(results, inner, outer) + slot]);
        }
    }
    // The viewer starts with the first curve and follows the file from then on.
    const PlotMode mode =
        results.firstCurve ? ViewerMode(options, params.saveOrDisplay) : PlotMode::Files;
    results.firstCurve = false;
    return WriteBerCurve(params.root, results.curve, mode, errorText);
}

/// Rows of the present pass: its run, and the statistics behind the last run of a point.
std::string TableText(const SimOptions& options, const BERResults& results) {
    const Place place = PlaceOf(options, results);
    const std::size_t point = PointSlot(results, place.inner, place.outer);
    BerTableRow row;
    row.inner = results.sweep[place.inner];
    row.outer = results.sweep[static_cast<std::size_t>(results.innerPoints) + place.outer];
    const auto line = [&](std::string_view run, std::size_t slot) {
        row.run = run;
        row.BER = results.BER[point + slot];
        row.Q = results.Q[point + slot];
        return BerTableLine(results.table, row);
    };
    const std::string number = Concat(place.run + 1);
    if (results.runs < 2) return line(number, 0);
    std::string text = line(number, berSlot::beforeRuns + place.run + 1);
    if (place.run + 1 < static_cast<std::size_t>(results.runs)) return text;
    return text + line("MIN", berSlot::minimum) + line("AVE", berSlot::average) +
           line("MAX", berSlot::maximum);
}

Status AppendTable(const SimOptions& options, const BerParams& params, const BERResults& results,
                   std::string& errorText) {
    std::string text = IsFirstPass(options) ? BerTableHeader(results.table) : std::string();
    text += TableText(options, results);
    const std::string name = params.root + ".bdt";
    // A disk that fails is not reported, by no result file.
    AppendResultFile(name, text, errorText);
    return IsAllowedResultName(name) ? Status::Success : Status::Error;
}

Status WriteFiles(const SimOptions& options, const BerParams& params, BERResults& results,
                  std::string& errorText) {
    if (params.plotCurves) {
        const Status status = WriteCurveFiles(options, params, results, errorText);
        if (status != Status::Success) return status;
    }
    if (!params.saveAllData) return Status::Success;
    return AppendTable(options, params, results, errorText);
}

/// The component's results; made on the first pass, or later where a pass list left that out.
Status TakeResults(const ModelCall& call, BERResults*& results) {
    std::shared_ptr<void>& state = call.component.modelState;
    if (IsFirstPass(call.options) || !state) {
        auto made = std::make_shared<BERResults>();
        const Status status = MakeBerResults(call.options, call.workspace.symbols,
                                             call.component.name, *made, call.errorText);
        state.reset();
        if (status != Status::Success) return status;
        state = std::move(made);
    }
    results = static_cast<BERResults*>(state.get());
    return Status::Success;
}

/// One pass of a tester whose parameters are sound.
Status RunPass(const ModelCall& call, const BerParams& params) {
    BERResults* results = nullptr;
    if (TakeResults(call, results) != Status::Success) return Status::Error;
    EyeResult eye;
    eye.decisionLevel = params.decisionLevel;
    std::string message;
    const Status status = ComputeBER(call.options, call.inputs, params, eye, message);
    if (status != Status::Success) call.errorText += message + "\n";
    if (status == Status::Error || eye.stopped) return status;

    StoreBerResult(call.options, status, eye.BER, eye.Q, *results);
    const bool found = status == Status::Success;
    CurrentRun().TakeReading(params.owner, found ? eye.BER : noResultBER,
                             found ? eye.Q : noResultQ);
    Status written = status;
    MergeStatus(written, WriteFiles(call.options, params, *results, call.errorText));
    if (IsLastPass(call.options, *results)) call.component.modelState.reset();
    return written;
}

}  // namespace

BerParams ReadBerParams(const Component& component) {
    Parameter* list = component.parameters;
    const auto says = [list](std::string_view name, std::string_view word,
                             std::string_view fallback = "") {
        return GetParamText(list, name, fallback) == word;
    };
    BerParams params;
    params.owner = component.name;
    params.timingJitter = GetParamDouble(list, "timingJitter", 0.0);
    params.decisionLevelJitter = GetParamDouble(list, "decisionLevelJitter", 0.0);
    params.decisionPointShift = GetParamDouble(list, "decisionPointShift", 0.0);
    params.decisionLevel = GetParamDouble(list, "decisionLevel", 0.0);
    params.decisionLevelDefined = says("decisionLevelSelection", "Defined");
    params.root = GetParamText(list, "FilenameRoot", "");
    if (params.root.empty()) params.root = component.name;
    params.bitsPerLine = GetParamInt(list, "bitsPerLine", 0);
    const std::string_view statistic = GetParamText(list, "StatisticalPlotMode", "Average");
    for (const StatisticWord& row : statisticWords) {
        if (row.word == statistic) params.statistic = row.statistic;
    }
    params.plotCurves = says("PlotCurves", "YES", "YES");
    params.saveAllData = says("SaveAllData", "YES", "YES");
    params.plotEyeLids = says("PlotEyeLids", "YES");
    params.plotSignals = says("PlotSignals", "YES");
    const std::string_view plots = GetParamText(list, "SaveOrDisplayPlots", "");
    if (!plots.empty()) params.saveOrDisplay = plots == "Save" ? 1 : 2;
    return params;
}

Status MakeBerResults(const SimOptions& options, const SymbolTable& symbols, std::string_view owner,
                      BERResults& results, std::string& errorText) {
    results.innerPoints = std::max(options.innerCount, 1);
    results.outerPoints = std::max(options.outerCount, 1);
    results.runs = RunCount(options);
    const double slots = static_cast<double>(results.innerPoints) * results.outerPoints *
                         static_cast<double>(results.SlotsPerPoint());
    if (slots > static_cast<double>(maxBerSlots)) {
        return RefuseComponent(
            owner, Concat("a scan with more than ", maxBerSlots, " results is not kept"),
            errorText);
    }
    results.BER.assign(static_cast<std::size_t>(slots), notComputed);
    results.Q.assign(static_cast<std::size_t>(slots), 0.0);
    const SweepTexts inner = InnerSweep(options), outer = OuterSweep(options);
    std::vector<double> innerValues = SweepValues(inner, symbols);
    std::vector<double> outerValues = SweepValues(outer, symbols);
    results.sweep = innerValues;
    results.sweep.insert(results.sweep.end(), outerValues.begin(), outerValues.end());
    results.table.innerName = inner.IsSwept() ? inner.variable : "";
    results.table.outerName = outer.IsSwept() ? outer.variable : "";
    results.table.statistical = results.runs > 1;
    results.curve = BerCurve(results.table.innerName, std::move(innerValues),
                             results.table.outerName, std::move(outerValues));
    results.firstCurve = true;
    return Status::Success;
}

void StoreBerResult(const SimOptions& options, Status status, double BER, double Q,
                    BERResults& results) {
    const Place place = PlaceOf(options, results);
    const std::size_t point = PointSlot(results, place.inner, place.outer);
    double *rates = &results.BER[point], *qs = &results.Q[point];
    const auto store = [=](std::size_t slot, double rate, double q) {
        rates[slot] = rate;
        qs[slot] = q;
    };
    const bool failed = status == Status::Warning;
    const double rate = failed ? noResultBER : BER, q = failed ? noResultQ : Q;
    if (results.runs < 2) {
        store(0, rate, q);
        return;
    }
    store(berSlot::beforeRuns + place.run + 1, rate, q);
    if (failed || place.run == 0) {
        // By design: a run without a result takes all statistics of its point with it.
        store(berSlot::average, rate, q);
        store(berSlot::minimum, rate, q);
        store(berSlot::maximum, rate, q);
        return;
    }
    const auto before = static_cast<double>(place.run), runs = before + 1.0;
    store(berSlot::average, (before * rates[berSlot::average] + rate) / runs,
          (before * qs[berSlot::average] + q) / runs);
    // Q of the run that set the rate, be it extreme or not.
    if (rate < rates[berSlot::minimum]) store(berSlot::minimum, rate, q);
    if (rate > rates[berSlot::maximum]) store(berSlot::maximum, rate, q);
}

Status RunBerTester(const ModelCall& call) {
    const BerParams params = ReadBerParams(call.component);
    if (!params.plotCurves && !params.saveAllData) return Status::Success;
    Status status = CheckLimits<BerParams>(params, limits, call.errorText);
    if (status == Status::Success) status = RunPass(call, params);
    if (status == Status::Error) call.component.modelState.reset();
    return status;
}

}  // namespace photrak
