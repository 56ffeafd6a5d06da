// Point by point over arrays of any length: conversion between interleaved and split numbers,
// phases and amplitudes. Part of the files compiled once per width.

void Split(long n, const double* data, FieldView field) {
    long k = 0;
    for (; k + W <= n; k += W) {
        const Cv v = LoadInterleaved(data + 2 * k);
        StoreLoose(field.re + k, v.r);
        StoreLoose(field.im + k, v.i);
    }
    for (; k < n; ++k) {
        field.re[k] = data[2 * k];
        field.im[k] = data[2 * k + 1];
    }
}

void Join(long n, ConstFieldView field, double* data) {
    long k = 0;
    for (; k + W <= n; k += W)
        StoreInterleaved(data + 2 * k, {LoadLoose(field.re + k), LoadLoose(field.im + k)});
    for (; k < n; ++k) {
        data[2 * k] = field.re[k];
        data[2 * k + 1] = field.im[k];
    }
}

// Up to W elements, zeros after; so that the ends of arrays take the same arithmetic.
PHOTRAK_INLINE V LoadSome(const double* p, long count) {
    V v{};
    for (int lane = 0; lane < W && lane < count; ++lane) v[lane] = p[lane];
    return v;
}
PHOTRAK_INLINE void StoreSome(double* p, long count, V v) {
    for (int lane = 0; lane < W && lane < count; ++lane) p[lane] = v[lane];
}

// field = use(field, array) for Count vectors at a time, then by single vectors.
template <class Use>
PHOTRAK_INLINE void OverField(long n, FieldView field, const double* array, Use use) {
    constexpr int Count = Beside;
    long k = 0;
    for (; k + Count * W <= n; k += Count * W) {
        Several<Cv, Count> x;
        Several<V, Count> a;
#pragma GCC unroll 4
        for (int j = 0; j < Count; ++j) {
            x[j] = {LoadLoose(field.re + k + W * j), LoadLoose(field.im + k + W * j)};
            a[j] = LoadLoose(array + k + W * j);
        }
        use.template operator()<Count>(x, a);
#pragma GCC unroll 4
        for (int j = 0; j < Count; ++j) {
            StoreLoose(field.re + k + W * j, x[j].r);
            StoreLoose(field.im + k + W * j, x[j].i);
        }
    }
    for (; k < n; k += W) {
        Cv x = {LoadSome(field.re + k, n - k), LoadSome(field.im + k, n - k)};
        const V a = LoadSome(array + k, n - k);
        use.template operator()<1>(&x, &a);
        StoreSome(field.re + k, n - k, x.r);
        StoreSome(field.im + k, n - k, x.i);
    }
}

void RotateField(long n, FieldView field, const double* phase, double scale) {
    OverField(n, field, phase, [scale]<int Count>(Cv* x, const V* a) {
        Several<V, Count> angle;
#pragma GCC unroll 4
        for (int j = 0; j < Count; ++j) angle[j] = scale * a[j];
        Rotate<Count>(x, angle);
    });
}

void PolarField(long n, FieldView field, const double* phase, double scale, double gain) {
    OverField(n, field, phase, [scale, gain]<int Count>(Cv* x, const V* a) {
        Several<V, Count> angle;
#pragma GCC unroll 4
        for (int j = 0; j < Count; ++j) {
            angle[j] = scale * a[j];
            x[j] = {Broadcast(gain), V{}};
        }
        Rotate<Count>(x, angle);
    });
}

void AmplifyField(long n, FieldView field, const double* exponent, double scale) {
    OverField(n, field, exponent, [scale]<int Count>(Cv* x, const V* a) {
#pragma GCC unroll 4
        for (int j = 0; j < Count; ++j) {
            const V gain = Exp(scale * a[j]);
            x[j] = {x[j].r * gain, x[j].i * gain};
        }
    });
}

PHOTRAK_INLINE V SquaredMagnitude(Cv a) {
    return a.r * a.r + a.i * a.i;
}

PHOTRAK_INLINE double Largest(V v) {
    double most = 0;
    for (int lane = 0; lane < W; ++lane) most = v[lane] > most ? v[lane] : most;
    return most;
}

double PeakPower(long n, ConstFieldView x, ConstFieldView y) {
    V peak{};
    const auto take = [&](V xr, V xi, V yr, V yi) {
        V p = SquaredMagnitude({xr, xi});
        if (y.re) p += SquaredMagnitude({yr, yi});
        peak = p > peak ? p : peak;
    };
    long k = 0;
    for (; k + W <= n; k += W)
        take(LoadLoose(x.re + k), LoadLoose(x.im + k), y.re ? LoadLoose(y.re + k) : V{},
             y.re ? LoadLoose(y.im + k) : V{});
    const long rest = y.re ? n - k : 0;
    take(LoadSome(x.re + k, n - k), LoadSome(x.im + k, n - k),
         LoadSome(rest ? y.re + k : nullptr, rest), LoadSome(rest ? y.im + k : nullptr, rest));
    return Largest(peak);
}
