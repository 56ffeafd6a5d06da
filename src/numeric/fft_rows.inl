// Natural order in and out, by rows of eight complex numbers (see fft_kernels.h). Part of the files
// compiled once per width.

// Radix 8 over the points p + j * n / 8 for eight neighbors p, their factors, and the turn that
// makes row p of the bins 0..7. Rows go `stride` doubles apart.
template <bool Conjugate>
PHOTRAK_INLINE void EnterRows(const double* data, long n, const double* factors, double* rows,
                              long stride) {
    V re[8][Parts], im[8][Parts];
#pragma GCC unroll 8
    for (int part = 0; part < Parts; ++part) {
        Cv x[8];
#pragma GCC unroll 8
        for (int j = 0; j < 8; ++j) {
            const Cv a = LoadInterleaved(data + n / 4 * j + 2 * W * part);
            x[j] = Conjugate ? Cv{a.i, a.r} : a;
        }
        Butterfly<8, +1>(x);
#pragma GCC unroll 8
        for (int t = 0; t < 8; ++t) {
            const double* w = factors + fftRow * (t - 1) + W * part;
            const Cv turned = t == 0 ? x[0] : x[t] * Load(w, w + 8);
            re[t][part] = turned.r;
            im[t][part] = turned.i;
        }
    }
    TransposeBlock(re);
    TransposeBlock(im);
#pragma GCC unroll 8
    for (int p = 0; p < 8; ++p)
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part)
            Store(rows + p * stride + W * part, rows + p * stride + 8 + W * part,
                  {re[p][part], im[p][part]});
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
                Cv x[R];
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

// The last stage, radix R over neighboring rows; put(place, part, value) takes what comes out.
template <int R, class Put>
PHOTRAK_INLINE void LastRowStage(const double* rows, const RowPlanView& plan, Put put) {
    const long groups = plan.length / R;
    for (long g = 0; g < groups; ++g, rows += R * fftRow)
#pragma GCC unroll 1
        for (int part = 0; part < Parts; ++part) {
            const double* p = rows + W * part;
            Cv x[R];
#pragma GCC unroll 8
            for (int j = 0; j < R; ++j) x[j] = Load(p + fftRow * j, p + fftRow * j + 8);
            Butterfly<R, +1>(x);
#pragma GCC unroll 8
            for (int t = 0; t < R; ++t) put(g * R + t, plan.order[g] + t * groups, part, x[t]);
        }
}

// All stages of one run of rows.
template <class Put>
PHOTRAK_INLINE void TransformRows(double* rows, const RowPlanView& plan, Put put) {
    for (long s = 0; s + 1 < plan.stageCount; ++s) {
        const FFTStage& stage = plan.stages[s];
        if (stage.radix == 8)
            RowStage<8>(rows, plan.length, stage);
        else
            RowStage<4>(rows, plan.length, stage);
    }
    if (plan.stages[plan.stageCount - 1].radix == 8)
        LastRowStage<8>(rows, plan, put);
    else
        LastRowStage<4>(rows, plan, put);
}

// Rows to the caller's array: the last transform of `plan`, place k to row k * step of `data`.
template <bool Conjugate>
void LeaveRows(double* rows, const RowPlanView& plan, double* data, long step) {
    TransformRows(rows, plan, [&](long, long place, int part, Cv v) {
        StoreInterleaved(data + fftRow * step * place + 2 * W * part, Conjugate ? Cv{v.i, v.r} : v);
    });
}

// A bundle of eight columns: first pass, transform down the columns, factors between the levels.
template <bool Conjugate>
void TransformBundle(const TransformView& view, const double* data, long column, double* bundle,
                     double* rows) {
    const long m1 = view.columns.length, m2 = view.rows.length, stride = ColumnStride(view);
    for (long k = 0; k < m1; ++k)
        EnterRows<Conjugate>(data + 2 * (column + m2 * k), view.n,
                             view.entryFactors + 14 * (column + m2 * k), bundle + k * fftRow,
                             stride);
    for (long c = 0; c < 8; ++c) {
        const double* w = view.middle + 2 * m1 * (column + c);
        double* out = rows + fftRow * (column + c);
        TransformRows(
            bundle + c * stride, view.columns, [&](long turn, long place, int part, Cv v) {
                double* p = out + fftRow * m2 * place + W * part;
                Store(p, p + 8, v * Cv{Broadcast(w[2 * turn]), Broadcast(w[2 * turn + 1])});
            });
    }
}

template <bool Conjugate>
void TransformNatural(const TransformView& view, double* data, double* scratch) {
    const long m1 = view.columns.length, m2 = view.rows.length;
    double* rows = scratch;
    if (m1 == 1) {
        for (long p = 0; p < m2; p += 8)
            EnterRows<Conjugate>(data + 2 * p, view.n, view.entryFactors + 14 * p,
                                 rows + fftRow * p, fftRow);
    } else {
        for (long column = 0; column < m2; column += 8)
            TransformBundle<Conjugate>(view, data, column, scratch + 2 * view.n, rows);
    }
    for (long k = 0; k < m1; ++k)
        LeaveRows<Conjugate>(rows + k * m2 * fftRow, view.rows, data + fftRow * k, m1);
}

void Transform(const TransformView& view, double* data, double* scratch, bool conjugate) {
    if (conjugate)
        TransformNatural<true>(view, data, scratch);
    else
        TransformNatural<false>(view, data, scratch);
}
