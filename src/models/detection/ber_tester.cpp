// Parameters, slots, and the order of the files.
#include "models/detection/ber_tester.h"

#include <algorithm>
#include <memory>

#include "base/text.h"
#include "kernel/expression.h"
#include "kernel/result_names.h"
#include "kernel/run_record.h"

namespace photrak {
namespace {

constexpr BerSlot noResult = {1.0, 0.0};

struct StatisticWord {
    std::string_view word;
    StatisticalPlot statistic;
};
constexpr StatisticWord statisticWords[] = {{"Average", StatisticalPlot::Average},
                                            {"Minimum", StatisticalPlot::Minimum},
                                            {"Maximum", StatisticalPlot::Maximum},
                                            {"Latest", StatisticalPlot::Latest}};

void StoreStatistic(BerParams& params, std::string_view word) {
    for (const StatisticWord& row : statisticWords) {
        if (row.word == word) params.statistic = row.statistic;
    }
}
template <bool BerParams::*flag>
void StoreFlag(BerParams& params, std::string_view word) {
    params.*flag = word == "YES";
}

constexpr ParamRow<BerParams> rows[] = {
    {"timingJitter", &BerParams::timingJitter, 0.0},
    {"decisionLevelJitter", &BerParams::decisionLevelJitter, 0.0},
    {"decisionPointShift", &BerParams::decisionPointShift, 0.0},
    {"decisionLevelSelection",
     [](BerParams& params, std::string_view word) {
         params.decisionLevelDefined = word == "Defined";
     },
     "Computed", Words{"Computed Defined"}},
    {"decisionLevel", &BerParams::decisionLevel, 0.0},
    {"FilenameRoot", &BerParams::root, ""},
    {"bitsPerLine", &BerParams::bitsPerLine, 0},
    {"StatisticalPlotMode", StoreStatistic, "Average", Words{"Average Minimum Maximum Latest"}},
    {"PlotCurves", StoreFlag<&BerParams::plotCurves>, "YES", Words{"YES NO"}},
    {"SaveAllData", StoreFlag<&BerParams::saveAllData>, "YES", Words{"YES NO"}},
    {"PlotEyeLids", StoreFlag<&BerParams::plotEyeLids>, "NO", Words{"YES NO"}},
    {"PlotSignals", StoreFlag<&BerParams::plotSignals>, "NO", Words{"YES NO"}},
    {"SaveOrDisplayPlots",
     [](BerParams& params, std::string_view word) {
         params.saveOrDisplay = word == "Save" ? 1 : 2;
     },
     "Save", Words{"Save Display"}}};

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
                       const ModelReport& report) {
    const std::size_t slot = SelectedSlot(params, results, PlaceOf(options, results).run);
    const auto inners = static_cast<std::size_t>(results.innerPoints);
    const auto outers = static_cast<std::size_t>(results.outerPoints);
    for (std::size_t outer = 0; outer < outers; ++outer) {
        for (std::size_t inner = 0; inner < inners; ++inner) {
            results.curve.Set(inner, outer,
                              results.slots[PointSlot(results, inner, outer) + slot].BER);
        }
    }
    // The viewer starts with the first curve and follows the file from then on.
    const PlotMode mode =
        results.firstCurve ? ViewerMode(options, params.saveOrDisplay) : PlotMode::Files;
    results.firstCurve = false;
    return WriteBerCurve(params.root, results.curve, mode, report.errorText);
}

/// Rows of the present pass: its run, and the statistics after the last run of a point.
std::string TableText(const SimOptions& options, const BERResults& results) {
    const Place place = PlaceOf(options, results);
    const std::size_t point = PointSlot(results, place.inner, place.outer);
    BerTableRow row;
    row.inner = results.innerValues[place.inner];
    row.outer = results.outerValues[place.outer];
    const auto line = [&](std::string_view run, std::size_t slot) {
        row.run = run;
        row.BER = results.slots[point + slot].BER;
        row.Q = results.slots[point + slot].Q;
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
                   const ModelReport& report) {
    std::string text = IsFirstPass(options) ? BerTableHeader(results.table) : std::string();
    text += TableText(options, results);
    const std::string name = params.root + ".bdt";
    // A disk that fails is not reported, by no result file.
    AppendResultFile(name, text, report.errorText);
    return IsAllowedResultName(name) ? Status::Success : Status::Error;
}

Status WriteFiles(const SimOptions& options, const BerParams& params, BERResults& results,
                  const ModelReport& report) {
    if (params.plotCurves) {
        const Status status = WriteCurveFiles(options, params, results, report);
        if (status != Status::Success) return status;
    }
    if (!params.saveAllData) return Status::Success;
    return AppendTable(options, params, results, report);
}

/// The component's results; made on the first pass, or later where a pass list left that out.
Status TakeResults(const ModelCall& call, BERResults*& results) {
    std::shared_ptr<void>& state = call.component.modelState;
    if (IsFirstPass(call.options) || !state) {
        auto made = std::make_shared<BERResults>();
        const Status status = MakeBerResults(call.options, call.workspace.symbols, *made, call);
        state.reset();
        if (status != Status::Success) return status;
        state = std::move(made);
    }
    results = static_cast<BERResults*>(state.get());
    return Status::Success;
}

/// The reading of a pass that another process ran.
Status TakePass(const ModelCall& call, const BerParams& params, const BerReading& taken,
                BERResults& results) {
    const bool isFirst = results.firstCurve;
    StoreBerResult(call.options,
                   taken.found ? std::optional<BerSlot>({taken.BER, taken.Q}) : std::nullopt,
                   results);
    CurrentRun().TakeReading(taken);
    BerParams now = params;
    now.plotCurves = params.plotCurves && isFirst;  // then once, at the end
    return WriteFiles(call.options, now, results, call);
}

/// One pass of a tester whose parameters are sound.
Status RunPass(const ModelCall& call, const BerParams& params) {
    BERResults* results = nullptr;
    const bool isOutermost = call.path.empty();
    const RunRecord& record = CurrentRun();
    if (isOutermost && record.testers == TesterWork::Finish) {
        results = static_cast<BERResults*>(call.component.modelState.get());
        return params.plotCurves ? WriteCurveFiles(call.options, params, *results, call)
                                 : Status::Success;
    }
    if (TakeResults(call, results) != Status::Success) return Status::Error;
    if (isOutermost && record.testers == TesterWork::Take && record.taken) {
        return TakePass(call, params, *record.taken, *results);
    }
    EyeResult eye;
    eye.decisionLevel = params.decisionLevel;
    std::string message;
    const Status status =
        ComputeBER(call.options, call.inputs, params, eye, {call.owner, message, call.path});
    if (status != Status::Success) call.errorText += message + "\n";
    if (status == Status::Error || eye.stopped) return status;

    std::optional<BerSlot> found;
    if (status == Status::Success) found = BerSlot{eye.BER, eye.Q};
    StoreBerResult(call.options, found, *results);
    const BerSlot result = found.value_or(noResult);
    CurrentRun().TakeReading({Concat(call.path, call.owner), result.BER, result.Q,
                              DecisionLevel(params, eye), eye.decisionTime, call.options.loopIndex,
                              found.has_value(), status});
    Status written = status;
    if (!isOutermost || record.testers != TesterWork::Leave) {
        MergeStatus(written, WriteFiles(call.options, params, *results, call));
    }
    if (IsLastPass(call.options, *results)) call.component.modelState.reset();
    return written;
}

}  // namespace

std::vector<ParamSpec> BerParamSpecs() {
    return SpecsOf(rows);
}

Status MakeBerResults(const SimOptions& options, const SymbolTable& symbols, BERResults& results,
                      const ModelReport& report) {
    results.innerPoints = std::max(options.innerCount, 1);
    results.outerPoints = std::max(options.outerCount, 1);
    results.runs = RunCount(options);
    const double slots = static_cast<double>(results.innerPoints) * results.outerPoints *
                         static_cast<double>(results.SlotsPerPoint());
    if (slots > static_cast<double>(maxBerSlots)) {
        return report.Refuse("a scan with more than ", maxBerSlots, " results is not kept");
    }
    results.slots.assign(static_cast<std::size_t>(slots), BerSlot{});
    const SweepTexts inner = InnerSweep(options), outer = OuterSweep(options);
    results.innerValues = SweepValues(inner, symbols);
    results.outerValues = SweepValues(outer, symbols);
    results.table.innerName = inner.IsSwept() ? inner.variable : "";
    results.table.outerName = outer.IsSwept() ? outer.variable : "";
    results.table.statistical = results.runs > 1;
    results.curve = BerCurve(results.table.innerName, results.innerValues, results.table.outerName,
                             results.outerValues);
    results.firstCurve = true;
    return Status::Success;
}

void StoreBerResult(const SimOptions& options, const std::optional<BerSlot>& found,
                    BERResults& results) {
    const Place place = PlaceOf(options, results);
    BerSlot* slots = &results.slots[PointSlot(results, place.inner, place.outer)];
    const BerSlot result = found.value_or(noResult);
    if (results.runs < 2) {
        slots[0] = result;
        return;
    }
    slots[berSlot::beforeRuns + place.run + 1] = result;
    BerSlot &average = slots[berSlot::average], &least = slots[berSlot::minimum],
            &greatest = slots[berSlot::maximum];
    if (!found || place.run == 0) {
        // By design: a run without a result takes all statistics of its point with it.
        average = least = greatest = result;
        return;
    }
    const auto before = static_cast<double>(place.run), runs = before + 1.0;
    average = {(before * average.BER + result.BER) / runs, (before * average.Q + result.Q) / runs};
    // Q of the run that set the rate, be it extreme or not.
    if (result.BER < least.BER) least = result;
    if (result.BER > greatest.BER) greatest = result;
}

Status RunBerTester(const ModelCall& call) {
    BerParams params;
    ReadParams(rows, call.component.parameters, params);
    if (params.root.empty()) params.root = call.owner;
    // Inside a SuperBlock the prefix tells testers of one name apart.
    if (!call.path.empty()) params.root = call.options.OUTPUTPREFIX + params.root;
    if (!params.plotCurves && !params.saveAllData) return Status::Success;
    Status status = CheckParams(rows, params, call);
    if (status == Status::Success) status = RunPass(call, params);
    if (status == Status::Error) call.component.modelState.reset();
    return status;
}

}  // namespace photrak
