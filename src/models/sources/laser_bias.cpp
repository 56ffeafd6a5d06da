// Trials settle from the dark, so that the result does not depend on the order of the search.
#include "models/sources/laser_bias.h"

#include <cmath>
#include <limits>

#include "base/text.h"

namespace photrak {
namespace {

constexpr int mostWidenings = 50, mostBisections = 40;
constexpr double accuracy = 0.0001;  // A
constexpr std::string_view endingWord = " iterations\n";

/// One trial current after another, each from the dark.
class Search {
  public:
    Search(const LaserParams& params, const std::atomic<std::int16_t>& stop, bool& lifted,
           const ModelReport& report)
        : params_(params), stop_(stop), lifted_(lifted), report_(report) {}

    /// f = power - Po; false when the integrator gave up or the run is to stop.
    bool Try(double current, double& f) {
        if (stop_.load(std::memory_order_relaxed) != 0) {
            status = Status::Warning;
            return false;
        }
        state = {};
        std::string text;
        status = Settle(params_, current, state, lifted_, text);
        // A current beyond what the equations bear is a trial that is not finite.
        if (status == Status::Error && text.empty()) {
            status = Status::Success;
            state.S = std::numeric_limits<double>::quiet_NaN();
        }
        report_.errorText += text;
        // Carriers that come to rest below the gain's offset give no light.
        const double S = state.N < -params_.Ns ? 0.0 : state.S;
        f = S * params_.conv - params_.Po;
        return status == Status::Success;
    }

    LaserState state;
    Status status = Status::Success;

  private:
    const LaserParams& params_;
    const std::atomic<std::int16_t>& stop_;
    bool& lifted_;
    const ModelReport& report_;
};

struct Bracket {
    double x1 = 0.0001, x2 = 0.1, f1 = 0.0, f2 = 0.0;  // A, W
};

Status Widen(Search& search, Bracket& b, const ModelReport& report) {
    if (!search.Try(b.x1, b.f1) || !search.Try(b.x2, b.f2)) return search.status;
    for (int round = 0; round < mostWidenings; ++round) {
        if (!std::isfinite(b.f1) || !std::isfinite(b.f2)) break;
        if (b.f1 * b.f2 < 0.0) return Status::Success;
        const bool upper = std::fabs(b.f2) <= std::fabs(b.f1);
        if (upper) b.x2 += 1.6 * (b.x2 - b.x1);
        if (!upper) b.x1 += 1.6 * (b.x1 - b.x2);
        if (!search.Try(upper ? b.x2 : b.x1, upper ? b.f2 : b.f1)) return search.status;
    }
    return report.Fail("Laser bias point cannot be Bracketted in ", mostWidenings, endingWord);
}

/// The last midpoint, whose trial is the state.
Status Bisect(Search& search, const Bracket& b, double& current, const ModelReport& report) {
    double low = b.f1 < 0.0 ? b.x1 : b.x2;
    double half = b.f1 < 0.0 ? b.x2 - b.x1 : b.x1 - b.x2;
    for (int round = 0; round < mostBisections; ++round) {
        half *= 0.5;
        current = low + half;
        double f = 0.0;
        if (!search.Try(current, f)) return search.status;
        if (f <= 0.0) low = current;
        if (std::fabs(half) < accuracy || f == 0.0) return Status::Success;
    }
    return report.Fail("Laser bias point did not Converge after ", mostBisections, endingWord);
}

}  // namespace

Status Settle(const LaserParams& params, double current, LaserState& state, bool& lifted,
              std::string& errorText) {
    LaserRates rates(params);
    rates.SetDrive(current, 0.0);
    if (state.S == 0.0) state = DarkState(params);
    OdeLimits limits;
    limits.isTrial = true;
    return Integrate(rates, params, state, 0.0, 3.0 * params.To, lifted, errorText, limits);
}

Status FindBias(LaserParams& params, const std::atomic<std::int16_t>& stop, LaserState& state,
                bool& lifted, const ModelReport& report) {
    Search search(params, stop, lifted, report);
    double current = params.Io, f = 0.0;
    if (params.Io != 0.0) {
        if (!search.Try(params.Io, f)) return search.status;
    } else {
        Bracket bracket;
        Status status = Widen(search, bracket, report);
        if (status == Status::Success) status = Bisect(search, bracket, current, report);
        if (status != Status::Success) return status;
    }
    state = search.state;
    if (!std::isfinite(state.N) || !std::isfinite(state.S)) {
        return report.Refuse("the bias point is not a finite number");
    }
    params.Io = current;
    params.Po = state.S * params.conv;
    params.tn = 1.0 / ((params.C * state.N + params.B) * state.N + params.A);
    return Status::Success;
}

}  // namespace photrak
