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

// The factors of a vector of neighbors in a stage of radix R, from one table or the product of two.
template <int R, bool Coarse>
struct Factors {
    const double *fine, *coarse;

    Factors(const FFTStage& stage, long k)
        : fine(stage.factors + (Coarse ? 0 : k / 8 * (fftRow * (R - 1))) + (W < 8 ? k % 8 : 0)),
          coarse(Coarse ? stage.coarse + k / 8 * (2 * (R - 1)) : nullptr) {}

    PHOTRAK_INLINE Cv operator[](int t) const {
        const Cv w = Load(fine + fftRow * (t - 1), fine + fftRow * (t - 1) + 8);
        if constexpr (Coarse)
            return w * Cv{Broadcast(coarse[2 * t - 2]), Broadcast(coarse[2 * t - 1])};
        return w;
    }
};

// Butterfly and factors of a forward stage; factors and butterfly of an inverse one.
template <int R, class Table>
PHOTRAK_INLINE void Down(Cv* x, const Table& w) {
    Butterfly<R, +1>(x);
#pragma GCC unroll 8
    for (int t = 1; t < R; ++t) x[t] = x[t] * w[t];
}

template <int R, class Table>
PHOTRAK_INLINE void Up(Cv* x, const Table& w) {
#pragma GCC unroll 8
    for (int t = 1; t < R; ++t) x[t] = TimesConjugate(x[t], w[t]);
    Butterfly<R, -1>(x);
}

// Calls use.operator()<R, Coarse>() for the kind of a stage.
template <class Use>
PHOTRAK_INLINE void ByKind(const FFTStage& stage, Use use) {
    if (stage.coarse) return use.template operator()<8, true>();
    if (stage.radix == 8) return use.template operator()<8, false>();
    if (stage.radix == 4) return use.template operator()<4, false>();
    return use.template operator()<2, false>();
}

template <int R, bool Coarse>
void DownStage(const FFTStage& stage, FieldView field) {
    const long distance = stage.length / R;
    for (long k = 0; k < distance; k += W) {
        Several<Cv, R> x;
        LoadStreams<R>(x, field.re + k, field.im + k, distance);
        Down<R>(x, Factors<R, Coarse>(stage, k));
        StoreStreams<R>(x, field.re + k, field.im + k, distance);
    }
}

template <int R, bool Coarse>
void UpStage(const FFTStage& stage, FieldView field) {
    const long distance = stage.length / R;
    for (long k = 0; k < distance; k += W) {
        Several<Cv, R> x;
        LoadStreams<R>(x, field.re + k, field.im + k, distance);
        Up<R>(x, Factors<R, Coarse>(stage, k));
        StoreStreams<R>(x, field.re + k, field.im + k, distance);
    }
}

PHOTRAK_INLINE void DownStage(const FFTStage& stage, FieldView field) {
    ByKind(stage, [&]<int R, bool Coarse>() { DownStage<R, Coarse>(stage, field); });
}
PHOTRAK_INLINE void UpStage(const FFTStage& stage, FieldView field) {
    ByKind(stage, [&]<int R, bool Coarse>() { UpStage<R, Coarse>(stage, field); });
}

// The last 64 points: both stages down, product, both stages up. The bins stand turned: place
// 8 * b + a holds what the two stages leave at 8 * a + b.
PHOTRAK_INLINE void FilterLeaf(const FFTStage& leaf, FieldView field, ConstFieldView h) {
    V r[8][Parts], i[8][Parts];
    for (int part = 0; part < Parts; ++part) {
        Cv x[8];
        LoadStreams<8>(x, field.re + W * part, field.im + W * part, 8);
        Down<8>(x, Factors<8, false>(leaf, W * part));
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
            x[k] = x[k] * Load(h.re + 8 * k + W * part, h.im + 8 * k + W * part);
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
        Up<8>(x, Factors<8, false>(leaf, W * part));
        StoreStreams<8>(x, field.re + W * part, field.im + W * part, 8);
    }
}

PHOTRAK_INLINE FieldView From(FieldView field, long at) {
    return {field.re + at, field.im + at};
}
PHOTRAK_INLINE ConstFieldView From(ConstFieldView field, long at) {
    return {field.re + at, field.im + at};
}

void FilterBlock(const SplitPlanView& plan, long stageAt, FieldView field, ConstFieldView h) {
    if (stageAt == plan.stageCount) return FilterLeaf(plan.leaf, field, h);
    const FFTStage& stage = plan.stages[stageAt];
    DownStage(stage, field);
    for (long at = 0; at < stage.length; at += stage.length / stage.radix)
        FilterBlock(plan, stageAt + 1, From(field, at), From(h, at));
    UpStage(stage, field);
}

void Filter(const SplitPlanView& plan, FieldView field, ConstFieldView h) {
    FilterBlock(plan, 0, field, h);
}

void FilterInside(const SplitPlanView& plan, FieldView field, ConstFieldView h) {
    const long distance = plan.stages[0].length / plan.stages[0].radix;
    for (long at = 0; at < plan.n; at += distance)
        FilterBlock(plan, 1, From(field, at), From(h, at));
}

// First stage down from interleaved numbers, last stage up to them.
template <int R, bool Coarse, bool Conjugate>
void EnterSplit(const FFTStage& stage, const double* data, FieldView field) {
    const long distance = stage.length / R;
    for (long k = 0; k < distance; k += W) {
        Several<Cv, R> x;
#pragma GCC unroll 8
        for (int j = 0; j < R; ++j)
            x[j] = LoadInterleaved<Conjugate>(data + 2 * (k + distance * j));
        Down<R>(x, Factors<R, Coarse>(stage, k));
        StoreStreams<R>(x, field.re + k, field.im + k, distance);
    }
}

template <int R, bool Coarse, bool Conjugate>
void LeaveSplit(const FFTStage& stage, FieldView field, double* data) {
    const long distance = stage.length / R;
    for (long k = 0; k < distance; k += W) {
        Several<Cv, R> x;
        LoadStreams<R>(x, field.re + k, field.im + k, distance);
        Up<R>(x, Factors<R, Coarse>(stage, k));
#pragma GCC unroll 8
        for (int j = 0; j < R; ++j)
            StoreInterleaved<Conjugate>(data + 2 * (k + distance * j), x[j]);
    }
}

void FilterInterleaved(const SplitPlanView& plan, double* data, FieldView scratch, ConstFieldView h,
                       bool conjugate) {
    if (plan.stageCount == 0) {
        const FieldView field = conjugate ? FieldView{scratch.im, scratch.re} : scratch;
        Split(plan.n, data, field);
        Filter(plan, scratch, h);
        return Join(plan.n, {field.re, field.im}, data);
    }
    const FFTStage& stage = plan.stages[0];
    ByKind(stage, [&]<int R, bool Coarse>() {
        if (conjugate)
            EnterSplit<R, Coarse, true>(stage, data, scratch);
        else
            EnterSplit<R, Coarse, false>(stage, data, scratch);
    });
    FilterInside(plan, scratch, h);
    ByKind(stage, [&]<int R, bool Coarse>() {
        if (conjugate)
            LeaveSplit<R, Coarse, true>(stage, scratch, data);
        else
            LeaveSplit<R, Coarse, false>(stage, scratch, data);
    });
}
