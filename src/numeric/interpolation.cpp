// Hunt search with bisection, and Neville's tableaus.
#include "numeric/interpolation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/arrays.h"
#include "base/escape.h"

namespace photrak {
namespace {

/// A tableau of Neville's algorithm, 1..n. Short ones, by far the most frequent, need no heap.
class Tableau {
  public:
    explicit Tableau(int n)
        : data_(n < static_cast<int>(small_.size()) ? small_.data() : vector(1, n)) {}
    ~Tableau() {
        if (data_ != small_.data()) free_vector(data_, 1);
    }
    Tableau(const Tableau&) = delete;
    Tableau& operator=(const Tableau&) = delete;
    double& operator[](int i) { return data_[i]; }

  private:
    std::array<double, 9> small_;
    double* data_;
};

/// `ordinate(i)` is the value at xa[i].
template <class Ordinate>
void Neville(const double* xa, Ordinate ordinate, int n, double x, double* y, double* dy,
             const char* failure) {
    *y = *dy = 0.0;
    if (n < 1) return;
    Tableau c(n), d(n);  // corrections when the next point joins below or above
    int nearest = 1;
    for (int i = 1; i <= n; ++i) {
        if (std::fabs(x - xa[i]) < std::fabs(x - xa[nearest])) nearest = i;
        c[i] = d[i] = ordinate(i);
    }
    int ns = nearest;
    *y = ordinate(ns--);
    for (int m = 1; m < n; ++m) {
        for (int i = 1; i <= n - m; ++i) {
            const double ho = xa[i] - x, hp = xa[i + m] - x;
            if (ho - hp == 0.0) NumericFailure(failure);
            const double w = (c[i + 1] - d[i]) / (ho - hp);
            d[i] = hp * w;
            c[i] = ho * w;
        }
        *dy = 2 * ns < n - m ? c[ns + 1] : d[ns--];
        *y += *dy;
    }
}

}  // namespace

void HuntTable(const double* xx, int n, double x, int* j) {
    if (n < 1) {
        *j = 0;
        return;
    }
    const bool ascending = xx[n] > xx[1];
    const auto reached = [&](long i) { return (x >= xx[i]) == ascending; };
    long lower = *j, upper = long{n} + 1;
    if (lower < 1 || lower > n) {
        lower = 0;
    } else if (reached(lower)) {
        for (long step = 1; lower + step <= n; step *= 2) {
            if (!reached(lower + step)) {
                upper = lower + step;
                break;
            }
            lower += step;
        }
    } else {
        upper = lower;
        lower = 0;
        for (long step = 1; upper - step >= 1; step *= 2) {
            if (reached(upper - step)) {
                lower = upper - step;
                break;
            }
            upper -= step;
        }
    }
    while (upper - lower > 1) {
        const long middle = (lower + upper) / 2;
        (reached(middle) ? lower : upper) = middle;
    }
    *j = static_cast<int>(lower);
}

void PolyIntTwoRealArray(const double* xa, const double* ya, int n, double x, double* y,
                         double* dy) {
    const auto ordinate = [ya](int i) { return ya[i]; };
    Neville(xa, ordinate, n, x, y, dy, "Error in routine PolyIntTwoRealArray");
}

void PolyIntOneRealArray(const double* xa, int n, double x, double* y, double* dy) {
    const auto ordinate = [](int i) { return static_cast<double>(i); };
    Neville(xa, ordinate, n, x, y, dy, "Error in routine PolyIntOneRealArray");
}

int WindowOfFour(const double* xa, int n, double x) {
    int j = 0;
    HuntTable(xa, n, x, &j);
    const int start = j - 1 < 2 ? 1 : j - 1;
    return std::min(start, n - 3);
}

void PolyInt4(double x, const double* xa, const double* ya, int n, double* y, double* dy) {
    if (n < 4) {
        PolyIntTwoRealArray(xa, ya, n, x, y, dy);
        return;
    }
    const int before = WindowOfFour(xa, n, x) - 1;
    PolyIntTwoRealArray(xa + before, ya + before, 4, x, y, dy);
}

}  // namespace photrak
