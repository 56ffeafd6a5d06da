// exp(i x) and exp(x) on vectors. Part of the files compiled once per width.

// Beyond this the reduction below loses exactness; such lanes, and what is no number, go to the
// library's functions.
constexpr double reducibleAngle = 1e6;
// Within this no reduction is due: the nearest multiple of pi/2 is 0.
constexpr double plainAngle = 0.785;

// Whether some lane of some vector is not within [-limit, limit].
template <int Count>
PHOTRAK_INLINE bool AnyBeyond(const V* x, double limit) {
#if PHOTRAK_SIMD_WIDTH == 8
    __mmask8 beyond = 0;
#pragma GCC unroll 8
    for (int k = 0; k < Count; ++k)
        beyond |= _mm512_cmp_pd_mask(_mm512_abs_pd(x[k]), _mm512_set1_pd(limit), _CMP_NLE_UQ);
    return beyond != 0;
#else
    Bits beyond{};
#pragma GCC unroll 8
    for (int k = 0; k < Count; ++k) beyond |= ~((x[k] <= limit) & (x[k] >= -limit));
#if PHOTRAK_SIMD_WIDTH == 4
    return _mm256_movemask_pd(reinterpret_cast<__m256d>(beyond)) != 0;
#else
    return (beyond[0] | beyond[1]) != 0;
#endif
#endif
}

// Sine and cosine within [-pi/4, pi/4]: the minimax polynomials of the usual libraries, highest
// power first. They are evaluated side by side for Count vectors, since one chain of dependent
// operations after the other would leave the processor waiting.
constexpr double sineTerms[] = {1.58962301576546568060e-10, -2.50507477628578072866e-8,
                                2.75573136213857245213e-6,  -1.98412698295895385996e-4,
                                8.33333333332211858878e-3,  -1.66666666666666307295e-1};
constexpr double cosineTerms[] = {-1.13585365213876817300e-11, 2.08757008419747316778e-9,
                                  -2.75573141792967388112e-7,  2.48015872888517045348e-5,
                                  -1.38888888888730564116e-3,  4.16666666666665929218e-2};

// How many such chains are worth having in flight.
constexpr int Beside = 4;

template <int Count>
PHOTRAK_INLINE void ExpIPlain(const V* x, Cv* out) {
    Several<V, Count> z, s, c;
#pragma GCC unroll 8
    for (int k = 0; k < Count; ++k) {
        z[k] = x[k] * x[k];
        s[k] = sineTerms[0] * z[k] + sineTerms[1];
        c[k] = cosineTerms[0] * z[k] + cosineTerms[1];
    }
#pragma GCC unroll 8
    for (int term = 2; term < 6; ++term)
#pragma GCC unroll 8
        for (int k = 0; k < Count; ++k) {
            s[k] = s[k] * z[k] + sineTerms[term];
            c[k] = c[k] * z[k] + cosineTerms[term];
        }
#pragma GCC unroll 8
    for (int k = 0; k < Count; ++k) {
        out[k].r = c[k] * z[k] * z[k] - 0.5 * z[k] + 1.0;
        out[k].i = s[k] * z[k] * x[k] + x[k];
    }
}

// Reduction by a multiple of pi/2 in three parts of 33 bits, so that the products are exact.
PHOTRAK_INLINE Cv ExpIReduced(V x) {
    constexpr double magic = 6755399441055744.0;  // 1.5 * 2^52: rounds to an integer
    const V rounded = x * 0.63661977236758134308 + magic;
    const V k = rounded - magic;
    const Bits quadrant = (Bits)rounded;
    x = x - k * 1.57079632673412561417e+00;
    x = x - k * 6.07710050630396597660e-11;
    x = x - k * 2.02226624879595063154e-21;
    Cv w;
    ExpIPlain<1>(&x, &w);
    const Bits sine = (Bits)w.i, cosine = (Bits)w.r, swap = -(quadrant & 1);
    return {(V)(((sine & swap) | (cosine & ~swap)) ^ (((quadrant + 1) & 2) << 62)),
            (V)(((cosine & swap) | (sine & ~swap)) ^ ((quadrant & 2) << 62))};
}

// For angles of any size.
template <int Count>
__attribute__((noinline)) void RotateFar(Cv* y, const V* x) {
    for (int k = 0; k < Count; ++k) {
        Cv w = ExpIReduced(x[k]);
        if (AnyBeyond<1>(x + k, reducibleAngle))
            for (int lane = 0; lane < W; ++lane) {
                const double angle = x[k][lane];
                if (angle >= -reducibleAngle && angle <= reducibleAngle) continue;
                w.r[lane] = __builtin_cos(angle);
                w.i[lane] = __builtin_sin(angle);
            }
        y[k] = y[k] * w;
    }
}

// y[k] = y[k] * exp(i x[k]). Both ways give the same bits to an angle that both can take.
template <int Count>
PHOTRAK_INLINE void Rotate(Cv* y, const V* x) {
    if (__builtin_expect(AnyBeyond<Count>(x, plainAngle), 0)) {
        Several<V, Count> angles;
        Several<Cv, Count> values;
        for (int k = 0; k < Count; ++k) angles[k] = x[k], values[k] = y[k];
        RotateFar<Count>(values, angles);
        for (int k = 0; k < Count; ++k) y[k] = values[k];
        return;
    }
    Several<Cv, Count> w;
    ExpIPlain<Count>(x, w);
#pragma GCC unroll 8
    for (int k = 0; k < Count; ++k) y[k] = y[k] * w[k];
}

// exp(x): a power of two times a polynomial on [-ln 2 / 2, ln 2 / 2]; far ends by the library.
PHOTRAK_INLINE V Exp(V x) {
    constexpr double magic = 6755399441055744.0, farEnd = 700;
    const V rounded = x * 1.44269504088896340736 + magic;
    const V k = rounded - magic;
    const V r = (x - k * 6.93147180369123816490e-01) - k * 1.90821492927058770002e-10;
    V p = Broadcast(1.0 / 6227020800.0);
    constexpr double inverseFactorials[] = {1.0 / 479001600,
                                            1.0 / 39916800,
                                            1.0 / 3628800,
                                            1.0 / 362880,
                                            1.0 / 40320,
                                            1.0 / 5040,
                                            1.0 / 720,
                                            1.0 / 120,
                                            1.0 / 24,
                                            1.0 / 6,
                                            0.5,
                                            1.0,
                                            1.0};
#pragma GCC unroll 16
    for (double c : inverseFactorials) p = p * r + c;
    V result = (V)((Bits)p + ((Bits)rounded << 52));
    if (__builtin_expect(AnyBeyond<1>(&x, farEnd), 0))
        for (int lane = 0; lane < W; ++lane)
            if (!(x[lane] >= -farEnd && x[lane] <= farEnd)) result[lane] = __builtin_exp(x[lane]);
    return result;
}
