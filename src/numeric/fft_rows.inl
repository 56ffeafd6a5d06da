// Natural order in and out, by rows of eight complex numbers (see fft_kernels.h). Part of the files
// compiled once per width.

// Radix 8 over the points p + j * n / 8 for eight neighbors p, their factors, and the turn that
// makes row p of the bins 0..7. Rows go `stride` doubles apart.
template <bool Conjugate, bool Coarse>
PHOTRAK_INLINE void EnterRows(const FFTStage& entry, const double* data, long p, double* rows,
                              long stride) {
    V re[8][Parts], im[8][Parts];
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        Cv x[8];
#pragma GCC unroll 8
        for (int j = 0; j < 8; ++j)
            x[j] = LoadInterleaved<Conjugate>(data + 2 * (p + entry.length / 8 * j + W * part));
        Down<8>(x, Factors<8, Coarse>(entry, p + W * part));
#pragma GCC unroll 8
        for (int t = 0; t < 8; ++t) re[t][part] = x[t].r, im[t][part] = x[t].i;
    }
    TransposeBlock(re);
    TransposeBlock(im);
#pragma GCC unroll 8
    for (int row = 0; row < 8; ++row)
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part)
            Store(rows + row * stride + W * part, rows + row * stride + 8 + W * part,
                  {re[row][part], im[row][part]});
}

// One stage in place, all its blocks.
template <int R>
void RowStage(double* rows, long count, const FFTStage& stage) {
    const long distance = stage.length / R * fftRow;
    for (double* block = rows; block < rows + count * fftRow; block += stage.length * fftRow) {
        const double* w = stage.factors;
        for (double* at = block; at < block + distance; at += fftRow, w += 2 * (R - 1))
#pragma GCC unroll 1
            for (int part = 0; part < Parts; ++part) {
                double* p = at + W * part;
                Several<Cv, R> x;
#pragma GCC unroll 8
                for (int j = 0; j < R; ++j) x[j] = Load(p + distance * j, p + distance * j + 8);
                Butterfly<R, +1>(x);
                Store(p, p + 8, x[0]);
#pragma GCC unroll 8
                for (int t = 1; t < R; ++t)
                    Store(p + distance * t, p + distance * t + 8,
                          x[t] * Cv{Broadcast(w[2 * t - 2]), Broadcast(w[2 * t - 1])});
            }
    }
}

// One group of the last stage: radix R over neighboring rows; put(t, part, value) takes what comes
// out.
template <int R, class Put>
PHOTRAK_INLINE void LastRowGroup(const double* rows, Put put) {
#pragma GCC unroll 1
    for (int part = 0; part < Parts; ++part) {
        const double* p = rows + W * part;
        Several<Cv, R> x;
#pragma GCC unroll 8
        for (int j = 0; j < R; ++j) x[j] = Load(p + fftRow * j, p + fftRow * j + 8);
        Butterfly<R, +1>(x);
#pragma GCC unroll 8
        for (int t = 0; t < R; ++t) put(t, part, x[t]);
    }
}

// All stages of one run of rows but the last.
PHOTRAK_INLINE void InnerRowStages(double* rows, const RowPlanView& plan) {
    for (long s = 0; s + 1 < plan.stageCount; ++s) {
        const FFTStage& stage = plan.stages[s];
        if (stage.radix == 8)
            RowStage<8>(rows, plan.length, stage);
        else
            RowStage<4>(rows, plan.length, stage);
    }
}

// The last stage of `runs` runs that lie side by side, group by group, so that what belongs
// together at the goal is written together. put(run, turn, place, part, value).
template <class Put>
PHOTRAK_INLINE void LastRowStages(const double* rows, const RowPlanView& plan, long runs, Put put) {
    const long radix = plan.stages[plan.stageCount - 1].radix, groups = plan.length / radix;
    for (long g = 0; g < groups; ++g)
        for (long run = 0; run < runs; ++run) {
            const double* group = rows + fftRow * (run * plan.length + g * radix);
            const auto putGroup = [&](long t, int part, Cv v) {
                put(run, g * radix + t, plan.order[g] + t * groups, part, v);
            };
            if (radix == 8)
                LastRowGroup<8>(group, putGroup);
            else
                LastRowGroup<4>(group, putGroup);
        }
}

// Runs first.. of the caller's transform to its array: place k of run r to row k * step + r.
template <bool Conjugate>
void LeaveRows(double* rows, const RowPlanView& plan, double* data, long step, long runs) {
    for (long run = 0; run < runs; ++run) InnerRowStages(rows + fftRow * plan.length * run, plan);
    LastRowStages(rows, plan, runs, [&](long run, long, long place, int part, Cv v) {
        StoreInterleaved<Conjugate>(data + fftRow * (step * place + run) + 2 * W * part, v);
    });
}

// A bundle of columns: first pass, transform down the columns, factors between the levels.
template <bool Conjugate, bool Coarse>
void TransformBundle(const TransformView& view, const double* data, long column, double* bundle,
                     double* rows) {
    const long m1 = view.columns.length, m2 = view.rows.length, stride = ColumnStride(view);
    for (long k = 0; k < m1; ++k)
        for (long c = 0; c < view.bundle; c += 8)
            EnterRows<Conjugate, Coarse>(view.entry, data, column + c + m2 * k,
                                         bundle + c * stride + k * fftRow, stride);
    for (long c = 0; c < view.bundle; ++c) {
        const double* w = view.middle + 2 * m1 * (column + c);
        double* out = rows + fftRow * (column + c);
        InnerRowStages(bundle + c * stride, view.columns);
        LastRowStages(bundle + c * stride, view.columns, 1,
                      [&](long, long turn, long place, int part, Cv v) {
                          double* p = out + fftRow * m2 * place + W * part;
                          const Cv factor = {Broadcast(w[2 * turn]), Broadcast(w[2 * turn + 1])};
                          Store(p, p + 8, v * factor);
                      });
    }
}

template <bool Conjugate, bool Coarse>
void TransformNatural(const TransformView& view, double* data, double* scratch) {
    const long m1 = view.columns.length, m2 = view.rows.length;
    double* rows = scratch;
    if (m1 == 1) {
        for (long p = 0; p < m2; p += 8)
            EnterRows<Conjugate, Coarse>(view.entry, data, p, rows + fftRow * p, fftRow);
    } else {
        for (long column = 0; column < m2; column += view.bundle) {
            if (view.pause) view.pause();
            TransformBundle<Conjugate, Coarse>(view, data, column, scratch + 2 * view.entry.length,
                                               rows);
        }
    }
    for (long k = 0; k < m1; k += view.together) {
        if (view.pause) view.pause();
        LeaveRows<Conjugate>(rows + k * m2 * fftRow, view.rows, data + fftRow * k, m1,
                             view.together);
    }
}

void Transform(const TransformView& view, double* data, double* scratch, bool conjugate) {
    const bool coarse = view.entry.coarse != nullptr;
    if (conjugate)
        coarse ? TransformNatural<true, true>(view, data, scratch)
               : TransformNatural<true, false>(view, data, scratch);
    else
        coarse ? TransformNatural<false, true>(view, data, scratch)
               : TransformNatural<false, false>(view, data, scratch);
}
