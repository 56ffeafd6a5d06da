// Split order: forward, product with a transfer array, inverse, on separate real and imaginary
// parts, one depth-first recursion. A block that fits a cache goes all the way down and up before
// the next is touched. Part of the files compiled once per width.

template <int R>
PHOTRAK_INLINE void LoadStreams(Cv* x, const double* re, const double* im, long distance) {
#pragma GCC unroll 8
    for (int j = 0; j < R; ++j) x[j] = Load(re + distance * j, im + distance * j);
}

template <int R>
PHOTRAK_INLINE void StoreStreams(const Cv* x, double* re, double* im, long distance) {
#pragma GCC unroll 8
    for (int j = 0; j < R; ++j) Store(re + distance * j, im + distance * j, x[j]);
}

// Butterfly and factors of a forward stage; factors and butterfly of an inverse one.
template <int R>
PHOTRAK_INLINE void Down(Cv* x, const double* w) {
    Butterfly<R, +1>(x);
#pragma GCC unroll 8
    for (int t = 1; t < R; ++t) x[t] = x[t] * Load(w + fftRow * (t - 1), w + fftRow * (t - 1) + 8);
}

template <int R>
PHOTRAK_INLINE void Up(Cv* x, const double* w) {
#pragma GCC unroll 8
    for (int t = 1; t < R; ++t)
        x[t] = TimesConjugate(x[t], Load(w + fftRow * (t - 1), w + fftRow * (t - 1) + 8));
    Butterfly<R, -1>(x);
}

// Calls use(k, factors) for each vector of neighbors in one block of a stage.
template <int R, class Use>
PHOTRAK_INLINE void OverStage(const FFTStage& stage, Use use) {
    const long distance = stage.length / R;
    const double* w = stage.factors;
    for (long k = 0; k < distance; k += 8, w += fftRow * (R - 1))
#pragma GCC unroll 1
        for (int part = 0; part < Parts; ++part) use(k + W * part, w + W * part);
}

template <int R>
void DownStage(const FFTStage& stage, double* re, double* im) {
    const long distance = stage.length / R;
    OverStage<R>(stage, [&](long k, const double* w) {
        Cv x[R];
        LoadStreams<R>(x, re + k, im + k, distance);
        Down<R>(x, w);
        StoreStreams<R>(x, re + k, im + k, distance);
    });
}

template <int R>
void UpStage(const FFTStage& stage, double* re, double* im) {
    const long distance = stage.length / R;
    OverStage<R>(stage, [&](long k, const double* w) {
        Cv x[R];
        LoadStreams<R>(x, re + k, im + k, distance);
        Up<R>(x, w);
        StoreStreams<R>(x, re + k, im + k, distance);
    });
}

// The last 64 points: both stages down, product, both stages up. The bins stand turned: place
// 8 * b + a holds what the two stages leave at 8 * a + b.
PHOTRAK_INLINE void FilterLeaf(const double* factors, double* re, double* im, const double* hRe,
                               const double* hIm) {
    V r[8][Parts], i[8][Parts];
    for (int part = 0; part < Parts; ++part) {
        Cv x[8];
        LoadStreams<8>(x, re + W * part, im + W * part, 8);
        Down<8>(x, factors + W * part);
#pragma GCC unroll 8
        for (int k = 0; k < 8; ++k) r[k][part] = x[k].r, i[k][part] = x[k].i;
    }
    TransposeBlock(r);
    TransposeBlock(i);
    for (int part = 0; part < Parts; ++part) {
        Cv x[8];
#pragma GCC unroll 8
        for (int k = 0; k < 8; ++k) x[k] = {r[k][part], i[k][part]};
        Butterfly<8, +1>(x);
#pragma GCC unroll 8
        for (int k = 0; k < 8; ++k)
            x[k] = x[k] * Load(hRe + 8 * k + W * part, hIm + 8 * k + W * part);
        Butterfly<8, -1>(x);
#pragma GCC unroll 8
        for (int k = 0; k < 8; ++k) r[k][part] = x[k].r, i[k][part] = x[k].i;
    }
    TransposeBlock(r);
    TransposeBlock(i);
    for (int part = 0; part < Parts; ++part) {
        Cv x[8];
#pragma GCC unroll 8
        for (int k = 0; k < 8; ++k) x[k] = {r[k][part], i[k][part]};
        Up<8>(x, factors + W * part);
        StoreStreams<8>(x, re + W * part, im + W * part, 8);
    }
}

void FilterBlock(const SplitPlanView& plan, long stageAt, double* re, double* im, const double* hRe,
                 const double* hIm) {
    if (stageAt == plan.stageCount) return FilterLeaf(plan.leafFactors, re, im, hRe, hIm);
    const FFTStage& stage = plan.stages[stageAt];
    const long distance = stage.length / stage.radix;
    if (stage.radix == 8)
        DownStage<8>(stage, re, im);
    else if (stage.radix == 4)
        DownStage<4>(stage, re, im);
    else
        DownStage<2>(stage, re, im);
    for (long at = 0; at < stage.length; at += distance)
        FilterBlock(plan, stageAt + 1, re + at, im + at, hRe + at, hIm + at);
    if (stage.radix == 8)
        UpStage<8>(stage, re, im);
    else if (stage.radix == 4)
        UpStage<4>(stage, re, im);
    else
        UpStage<2>(stage, re, im);
}

void Filter(const SplitPlanView& plan, double* re, double* im, const double* hRe,
            const double* hIm) {
    FilterBlock(plan, 0, re, im, hRe, hIm);
}
