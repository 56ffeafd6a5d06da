// All draws of a run are made before its first pass, so that their number is known and each
// repeats.
#include "kernel/statistics.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/escape.h"
#include "base/memory.h"
#include "base/text.h"
#include "kernel/eval_param.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "numeric/random.h"

namespace photrak {

namespace {

/// Draws of a whole run: more are a mistake in the topology, and would not fit in memory.
constexpr std::int64_t maxDraws = 10'000'000;

bool IsSet(const double* deviation) {
    return deviation && *deviation != 0.0;
}

/// From uniform on 0 .. 1 to mean 0 and variance 1.
double UnitVariance(double x) {
    return (x - 0.5) * std::sqrt(3.0) * 2.0;
}

double LimitedToTwoSigma(double deviate) {
    return std::clamp(deviate, -2.0, 2.0);
}

double DrawReal(const Parameter& parameter, int& seed) {
    if (!IsSet(parameter.stddev)) return 0.0;
    switch (parameter.PROBDIST) {
        case GausProbDist:
            return GaussianRandom(&seed);
        case TwoSigmaGausProbDist:
            return LimitedToTwoSigma(GaussianRandom(&seed));
        case UniformProbDist:
            return UnitVariance(UniformRandom(&seed));
        default:
            return 0.0;
    }
}

void DrawImaginary(const Parameter& parameter, int& seed, ParameterDraw& draw) {
    if (!IsSet(parameter.istddev)) return;
    switch (parameter.IPROBDIST) {
        case GausProbDist:
            draw.im = GaussianRandom(&seed);
            return;
        case TwoSigmaGausProbDist:
            draw.im = LimitedToTwoSigma(GaussianRandom(&seed));
            return;
        case UniformProbDist:
            // By design: the imaginary part stays uniform on 0 .. 1, and the step to unit
            // variance falls on the real part once more.
            draw.im = UniformRandom(&seed);
            draw.re = UnitVariance(draw.re);
            return;
        default:
            return;
    }
}

/// Puts `count` draws in front of the list; false when memory is exhausted.
bool MakeDraws(Parameter& parameter, std::int64_t count, int& seed) {
    for (; count > 0; --count) {
        auto* draw = static_cast<ParameterDraw*>(AllocateZeroed(1, sizeof(ParameterDraw)));
        if (!draw) return false;
        draw->re = DrawReal(parameter, seed);
        DrawImaginary(parameter, seed, *draw);
        draw->next = parameter.draws;
        parameter.draws = draw;
    }
    parameter.drawCursor = parameter.draws;
    return true;
}

/// Repetitions that a LoopBeginBlock will do: evaluated, limited, at least 1.
std::int64_t Repetitions(Component& loopBegin, Workspace& workspace) {
    Parameter* count = FindParameter("NumReps", loopBegin.parameters);
    if (!count) return 1;
    std::string unheard;  // the run itself evaluates and limits it again, with its messages
    static_cast<void>(EvalParam(count, &workspace, unheard));
    static_cast<void>(ClampParam(*count, unheard));
    return std::max(1, GetParamInt(loopBegin.parameters, "NumReps", 1));
}

/// Passes of the loops that are open at a place in the run order.
class OpenLoops {
  public:
    std::int64_t Product() const { return products_.back(); }
    void Begin(std::int64_t repetitions) {
        // Held just above the bound, so that deep nesting cannot overflow.
        products_.push_back(std::min(Product() * repetitions, maxDraws + 1));
    }
    void End() {
        if (products_.size() > 1) products_.pop_back();
    }

  private:
    std::vector<std::int64_t> products_{1};
};

/// The draws of one run order, in the making.
struct DrawMaker {
    Workspace& workspace;
    int seed = -1;  // a negative word makes the generator fill its table anew
    std::int64_t total = 0;
    std::string failure;  // text for FatalError, or empty

    /// Draws for one evaluation of each repetition in each run.
    std::int64_t DrawsPerParameter(const OpenLoops& loops) const {
        const std::int64_t runs = workspace.options ? workspace.options->NUMRUNSTODO : 0;
        return runs > 1 ? loops.Product() * runs : 1;
    }

    bool ForParameter(const Component& component, Parameter& parameter, const OpenLoops& loops) {
        std::string unheard;
        static_cast<void>(EvalParam(&parameter, &workspace, unheard));
        if (!IsSet(parameter.stddev) && !IsSet(parameter.istddev)) return true;
        const std::int64_t count = DrawsPerParameter(loops);
        total += count;
        const char* cause = nullptr;
        if (total > maxDraws) {
            cause = "too many draws";
        } else if (!MakeDraws(parameter, count, seed)) {
            cause = "insufficient memory for the draws";
        }
        if (cause) {
            failure = FillIn("ERROR: %s of parameter '%s' of component '%s'",
                             {cause, parameter.name, component.name});
        }
        return !cause;
    }

    bool ForComponent(const Component& component, const OpenLoops& loops) {
        for (Parameter* p = component.parameters; p; p = p->next) {
            const bool random = p->PROBDIST != NoProbDist || p->IPROBDIST != NoProbDist;
            if (random && !ForParameter(component, *p, loops)) return false;
        }
        return true;
    }
};

}  // namespace

void DrawStatistics(const RunOrder& order, Workspace& workspace) {
    FreeDraws(order);  // a run that took the escape left its own
    DrawMaker maker{.workspace = workspace, .failure = {}};
    ForgetSpareGaussian();
    static_cast<void>(UniformRandom(&maker.seed));
    OpenLoops loops;
    for (Component* component : order) {
        if (component->type == "LoopBeginBlock") {
            loops.Begin(Repetitions(*component, workspace));
        } else if (component->type == "LoopEndBlock") {
            loops.End();
        } else if (!maker.ForComponent(*component, loops)) {
            FreeDraws(order);
            FatalError(maker.failure);
            return;
        }
    }
}

void EvaluateDraws(const RunOrder& list, Workspace& workspace) {
    OpenLoops loops;
    std::string unheard;  // the process that ran the point told it
    for (Component* component : list) {
        if (component->type == "LoopBeginBlock") loops.Begin(Repetitions(*component, workspace));
        if (component->type == "LoopEndBlock") loops.End();
        bool draws = false;
        for (const Parameter& parameter : Items(component->parameters)) {
            draws = draws || parameter.draws;
        }
        if (!draws) continue;
        for (std::int64_t k = 0; k < loops.Product(); ++k) {
            static_cast<void>(EvalComponentParams(*component, &workspace, unheard));
            unheard.clear();
        }
    }
}

void FreeDraws(const RunOrder& order) {
    for (Component* component : order) {
        for (Parameter* p = component->parameters; p; p = p->next) FreeParameterDraws(*p);
    }
}

}  // namespace photrak
