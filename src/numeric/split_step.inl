// Point by point between the transforms of a split-step scheme, fused with the last stage of the
// inverse before and the first stage of the forward transform after. Part of the files compiled
// once per width.

// Elements at.. of a circular array of n; only a vector across its end goes lane by lane.
__attribute__((noinline)) V LoadAcrossEnd(const double* array, long at, long n) {
    V v{};
    for (int lane = 0; lane < W; ++lane) v[lane] = array[(at + lane) % n];
    return v;
}
template <bool First>
__attribute__((noinline)) void AddAcrossEnd(double* array, long at, long n, V v) {
    for (int lane = 0; lane < W; ++lane) {
        double& element = array[(at + lane) % n];
        element = First ? v[lane] : element + v[lane];
    }
}

PHOTRAK_INLINE V LoadTurned(const double* array, long at, long n) {
    if (at >= n) at -= n;
    if (__builtin_expect(at + W <= n, 1)) return LoadLoose(array + at);
    return LoadAcrossEnd(array, at, n);
}

template <bool First>
PHOTRAK_INLINE void AddTurned(double* array, long at, long n, V v) {
    if (at >= n) at -= n;
    if (__builtin_expect(at + W <= n, 1))
        StoreLoose(array + at, First ? v : LoadLoose(array + at) + v);
    else
        AddAcrossEnd<First>(array, at, n, v);
}

// Phase of a field by its own power p, the power q of the other polarization, and the totals.
PHOTRAK_INLINE V KerrPhase(double gamma, V p, V q) {
    return gamma * (p + q * (2.0 / 3));
}

// Count streams of a channel, of both polarizations where Dual.
template <int Count, bool Dual>
PHOTRAK_INLINE void KerrRotate(const KerrView& kerr, long n, long k, long distance, Cv* x, Cv* y) {
    Several<V, Count> p, q, phase;
#pragma GCC unroll 8
    for (int j = 0; j < Count; ++j) {
        p[j] = SquaredMagnitude(x[j]);
        if constexpr (Dual) q[j] = SquaredMagnitude(y[j]);
    }
    if (kerr.totalX) {
        const long at = k + kerr.shift;
#pragma GCC unroll 8
        for (int j = 0; j < Count; ++j) {
            p[j] = 2 * LoadTurned(kerr.totalX, at + distance * j, n) - p[j];
            if constexpr (Dual) q[j] = 2 * LoadTurned(kerr.totalY, at + distance * j, n) - q[j];
        }
    }
#pragma GCC unroll 8
    for (int j = 0; j < Count; ++j)
        phase[j] = Dual ? KerrPhase(kerr.gamma, p[j], q[j]) : kerr.gamma * p[j];
    Rotate<Count>(x, phase);
    if constexpr (Dual) {
#pragma GCC unroll 8
        for (int j = 0; j < Count; ++j) phase[j] = KerrPhase(kerr.gamma, q[j], p[j]);
        Rotate<Count>(y, phase);
    }
}

// All R streams, a few at a time.
template <int R, bool Dual>
PHOTRAK_INLINE void KerrStreams(const KerrView& kerr, long n, long k, long distance, Cv* x, Cv* y) {
#pragma GCC unroll 8
    for (int j = 0; j < R; j += Beside)
        KerrRotate<Beside, Dual>(kerr, n, k + distance * j, distance, x + j,
                                 Dual ? y + j : nullptr);
}

// The larger of `peak` and the power of each stream that lies in the window.
template <int R, bool Dual>
PHOTRAK_INLINE V PeakOfStreams(V peak, int first, int end, const Cv* x, const Cv* y) {
#pragma GCC unroll 8
    for (int j = 0; j < R; ++j) {
        V p = SquaredMagnitude(x[j]);
        if constexpr (Dual) p += SquaredMagnitude(y[j]);
        if (j >= first && j < end) peak = p > peak ? p : peak;
    }
    return peak;
}

// Bits of Pass as in FFTPass. A pass that takes stages along works on their R far streams; alone it
// takes R neighbors at a time.
template <int R, bool Coarse, bool Dual, int Pass>
void KerrSamples(const FFTStage& stage, FieldView x, FieldView y, const KerrView& kerr) {
    constexpr bool alone = Pass == fftPassAlone;
    const long n = stage.length, distance = alone ? W : n / R, step = alone ? R * W : W;
    const long end = alone ? n : distance;
    V peak{};
    for (long k = 0; k < end; k += step) {
        Several<Cv, R> a, b;
        LoadStreams<R>(a, x.re + k, x.im + k, distance);
        if constexpr (Dual) LoadStreams<R>(b, y.re + k, y.im + k, distance);
        if constexpr (Pass & fftPassCloses) {
            const Factors<R, Coarse> w(stage, k);
            Up<R>(a, w);
            if constexpr (Dual) Up<R>(b, w);
        }
        if constexpr (!(Pass & fftPassStill)) KerrStreams<R, Dual>(kerr, n, k, distance, a, b);
        if constexpr (Pass & fftPassPeaks)
            peak = PeakOfStreams<R, Dual>(peak, static_cast<int>(kerr.from / distance),
                                          static_cast<int>(kerr.to / distance), a, b);
        if constexpr (Pass & fftPassOpens) {
            const Factors<R, Coarse> w(stage, k);
            Down<R>(a, w);
            if constexpr (Dual) Down<R>(b, w);
        }
        StoreStreams<R>(a, x.re + k, x.im + k, distance);
        if constexpr (Dual) StoreStreams<R>(b, y.re + k, y.im + k, distance);
    }
    if constexpr (Pass & fftPassPeaks) *kerr.peak = Largest(peak);
}

template <int R, bool Coarse, int Pass>
PHOTRAK_INLINE void KerrFields(const FFTStage& stage, FieldView x, FieldView y,
                               const KerrView& kerr) {
    if (y.re)
        KerrSamples<R, Coarse, true, Pass>(stage, x, y, kerr);
    else
        KerrSamples<R, Coarse, false, Pass>(stage, x, y, kerr);
}

void KerrPass(const SplitPlanView& plan, int pass, FieldView x, FieldView y, const KerrView& kerr) {
    if (pass == fftPassAlone) {
        const FFTStage none = {plan.n, 8, nullptr, nullptr};
        return KerrFields<8, false, fftPassAlone>(none, x, y, kerr);
    }
    const FFTStage& stage = plan.stages[0];
    constexpr int through = fftPassCloses + fftPassOpens;
    ByKind(stage, [&]<int R, bool Coarse>() {
        if constexpr (R >= 4) {
            if (pass & fftPassStill)
                KerrFields<R, Coarse, through + fftPassPeaks + fftPassStill>(stage, x, y, kerr);
            else if (pass & fftPassPeaks)
                pass & fftPassCloses
                    ? KerrFields<R, Coarse, through + fftPassPeaks>(stage, x, y, kerr)
                    : KerrFields<R, Coarse, fftPassOpens + fftPassPeaks>(stage, x, y, kerr);
            else if (pass & fftPassCloses)
                KerrFields<R, Coarse, through>(stage, x, y, kerr);
            else
                KerrFields<R, Coarse, fftPassOpens>(stage, x, y, kerr);
        }
    });
}

void Open(const SplitPlanView& plan, FieldView field) {
    DownStage(plan.stages[0], field);
}

void Close(const SplitPlanView& plan, FieldView field) {
    UpStage(plan.stages[0], field);
}

template <bool First>
void AddPowers(long n, ConstFieldView field, double* total, long shift) {
    for (long k = 0; k < n; k += W)
        AddTurned<First>(total, k + shift, n, SquaredMagnitude(Load(field.re + k, field.im + k)));
}

void AddPower(long n, ConstFieldView field, double* total, long shift, bool first) {
    if (first) return AddPowers<true>(n, field, total, shift);
    AddPowers<false>(n, field, total, shift);
}
