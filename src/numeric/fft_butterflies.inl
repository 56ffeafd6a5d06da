// Transforms of 2, 4 and 8 points across vectors, lane by lane, exponent sign S, natural order in
// and out. Part of the files compiled once per width.

template <int S>
PHOTRAK_INLINE Cv TimesI(Cv a) {
    if constexpr (S > 0) return {-a.i, a.r};
    return {a.i, -a.r};
}

template <int R, int S>
PHOTRAK_INLINE void Butterfly(Cv* x) {
    if constexpr (R == 2) {
        const Cv a = x[0], b = x[1];
        x[0] = a + b;
        x[1] = a - b;
    } else if constexpr (R == 4) {
        const Cv a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = x[1] - x[3];
        x[0] = a + c;
        x[1] = b + TimesI<S>(d);
        x[2] = a - c;
        x[3] = b - TimesI<S>(d);
    } else {
        static_assert(R == 8);
        constexpr double h = 0.70710678118654752440;
        Cv even[4] = {x[0] + x[4], x[1] + x[5], x[2] + x[6], x[3] + x[7]};
        const Cv b = x[1] - x[5], d = x[3] - x[7];
        // Times the first and the third eighth root of unity, the latter negated.
        const Cv b1 =
            S > 0 ? Cv{(b.r - b.i) * h, (b.i + b.r) * h} : Cv{(b.r + b.i) * h, (b.i - b.r) * h};
        const Cv d3 =
            S > 0 ? Cv{(d.r + d.i) * h, (d.i - d.r) * h} : Cv{(d.r - d.i) * h, (d.i + d.r) * h};
        const Cv a = x[0] - x[4], c = TimesI<S>(x[2] - x[6]);
        const Cv s = a + c, t = a - c, u = b1 - d3, v = TimesI<S>(b1 + d3);
        Butterfly<4, S>(even);
        x[0] = even[0];
        x[2] = even[1];
        x[4] = even[2];
        x[6] = even[3];
        x[1] = s + u;
        x[5] = s - u;
        x[3] = t + v;
        x[7] = t - v;
    }
}
