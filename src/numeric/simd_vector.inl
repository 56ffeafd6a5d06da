// Vectors of W doubles and of W complex numbers by the compiler's vector types. For the files that
// are compiled once per width (simd_plain.cpp, simd_avx2.cpp, simd_avx512.cpp) and nobody else:
// they set PHOTRAK_SIMD_WIDTH and include this inside a namespace of their own.

#define PHOTRAK_INLINE __attribute__((always_inline)) inline

constexpr int W = PHOTRAK_SIMD_WIDTH;
// Vectors to eight doubles, the unit in which all tables are laid out.
constexpr int Parts = 8 / W;

typedef double V __attribute__((vector_size(W * 8)));
typedef double Aligned __attribute__((vector_size(W * 8), may_alias));
typedef double Loose __attribute__((vector_size(W * 8), aligned(8), may_alias));
typedef long long Bits __attribute__((vector_size(W * 8)));

PHOTRAK_INLINE V Load(const double* p) {
    return *reinterpret_cast<const Aligned*>(p);
}
PHOTRAK_INLINE void Store(double* p, V v) {
    *reinterpret_cast<Aligned*>(p) = v;
}
PHOTRAK_INLINE V LoadLoose(const double* p) {
    return *reinterpret_cast<const Loose*>(p);
}
PHOTRAK_INLINE void StoreLoose(double* p, V v) {
    *reinterpret_cast<Loose*>(p) = v;
}
PHOTRAK_INLINE V Broadcast(double x) {
    return x - V{};
}

struct Cv {
    V r, i;
};
/// A plain array of a constant number, counted in int as the loops over it are.
template <typename T, int N>
using Several = T[static_cast<std::size_t>(N)];
PHOTRAK_INLINE Cv operator+(Cv a, Cv b) {
    return {a.r + b.r, a.i + b.i};
}
PHOTRAK_INLINE Cv operator-(Cv a, Cv b) {
    return {a.r - b.r, a.i - b.i};
}
PHOTRAK_INLINE Cv operator*(Cv a, Cv b) {
    return {a.r * b.r - a.i * b.i, a.r * b.i + a.i * b.r};
}
PHOTRAK_INLINE Cv TimesConjugate(Cv a, Cv b) {
    return {a.r * b.r + a.i * b.i, a.i * b.r - a.r * b.i};
}
PHOTRAK_INLINE Cv Load(const double* re, const double* im) {
    return {Load(re), Load(im)};
}
PHOTRAK_INLINE void Store(double* re, double* im, Cv v) {
    Store(re, v.r);
    Store(im, v.i);
}

// The index lists differ by width and are checked even in branches not taken: hence the
// preprocessor.
#if PHOTRAK_SIMD_WIDTH == 2
PHOTRAK_INLINE V Even(V a, V b) {
    return __builtin_shufflevector(a, b, 0, 2);
}
PHOTRAK_INLINE V Odd(V a, V b) {
    return __builtin_shufflevector(a, b, 1, 3);
}
PHOTRAK_INLINE V ZipLow(V a, V b) {
    return __builtin_shufflevector(a, b, 0, 2);
}
PHOTRAK_INLINE V ZipHigh(V a, V b) {
    return __builtin_shufflevector(a, b, 1, 3);
}
PHOTRAK_INLINE void Transpose(V* a) {
    const V low = ZipLow(a[0], a[1]), high = ZipHigh(a[0], a[1]);
    a[0] = low;
    a[1] = high;
}
#elif PHOTRAK_SIMD_WIDTH == 4
PHOTRAK_INLINE V Even(V a, V b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6);
}
PHOTRAK_INLINE V Odd(V a, V b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7);
}
PHOTRAK_INLINE V ZipLow(V a, V b) {
    return __builtin_shufflevector(a, b, 0, 4, 1, 5);
}
PHOTRAK_INLINE V ZipHigh(V a, V b) {
    return __builtin_shufflevector(a, b, 2, 6, 3, 7);
}
PHOTRAK_INLINE void Transpose(V* a) {
    const V b0 = __builtin_shufflevector(a[0], a[1], 0, 4, 2, 6);
    const V b1 = __builtin_shufflevector(a[0], a[1], 1, 5, 3, 7);
    const V b2 = __builtin_shufflevector(a[2], a[3], 0, 4, 2, 6);
    const V b3 = __builtin_shufflevector(a[2], a[3], 1, 5, 3, 7);
    a[0] = __builtin_shufflevector(b0, b2, 0, 1, 4, 5);
    a[1] = __builtin_shufflevector(b1, b3, 0, 1, 4, 5);
    a[2] = __builtin_shufflevector(b0, b2, 2, 3, 6, 7);
    a[3] = __builtin_shufflevector(b1, b3, 2, 3, 6, 7);
}
#else
PHOTRAK_INLINE V Even(V a, V b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14);
}
PHOTRAK_INLINE V Odd(V a, V b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15);
}
PHOTRAK_INLINE V ZipLow(V a, V b) {
    return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}
PHOTRAK_INLINE V ZipHigh(V a, V b) {
    return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}
PHOTRAK_INLINE void Transpose(V* a) {
    V b[8], c[8];
#pragma GCC unroll 4
    for (int k = 0; k < 8; k += 2) {
        b[k] = __builtin_shufflevector(a[k], a[k + 1], 0, 8, 2, 10, 4, 12, 6, 14);
        b[k + 1] = __builtin_shufflevector(a[k], a[k + 1], 1, 9, 3, 11, 5, 13, 7, 15);
    }
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
        const int at = k / 2 * 4 + k % 2;
        c[at] = __builtin_shufflevector(b[at], b[at + 2], 0, 1, 8, 9, 4, 5, 12, 13);
        c[at + 2] = __builtin_shufflevector(b[at], b[at + 2], 2, 3, 10, 11, 6, 7, 14, 15);
    }
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
        a[k] = __builtin_shufflevector(c[k], c[k + 4], 0, 1, 2, 3, 8, 9, 10, 11);
        a[k + 4] = __builtin_shufflevector(c[k], c[k + 4], 4, 5, 6, 7, 12, 13, 14, 15);
    }
}
#endif

// W complex numbers from and to interleaved memory; `Exchange` swaps real and imaginary parts,
// which is the conjugate times i and turns a transform of one sign into that of the other.
template <bool Exchange = false>
PHOTRAK_INLINE Cv LoadInterleaved(const double* p) {
    const V a = LoadLoose(p), b = LoadLoose(p + W);
    if constexpr (Exchange) return {Odd(a, b), Even(a, b)};
    return {Even(a, b), Odd(a, b)};
}
template <bool Exchange = false>
PHOTRAK_INLINE void StoreInterleaved(double* p, Cv v) {
    const Cv a = Exchange ? Cv{v.i, v.r} : v;
    StoreLoose(p, ZipLow(a.r, a.i));
    StoreLoose(p + W, ZipHigh(a.r, a.i));
}

// Turns an 8 x 8 block held as 8 rows of Parts vectors.
PHOTRAK_INLINE void TransposeBlock(V (*a)[Parts]) {
    V b[8][Parts];
#pragma GCC unroll 8
    for (int row = 0; row < Parts; ++row)
#pragma GCC unroll 8
        for (int column = 0; column < Parts; ++column) {
            V square[W];
#pragma GCC unroll 8
            for (int k = 0; k < W; ++k) square[k] = a[row * W + k][column];
            Transpose(square);
#pragma GCC unroll 8
            for (int k = 0; k < W; ++k) b[column * W + k][row] = square[k];
        }
#pragma GCC unroll 8
    for (int row = 0; row < 8; ++row)
#pragma GCC unroll 8
        for (int part = 0; part < Parts; ++part) a[row][part] = b[row][part];
}
