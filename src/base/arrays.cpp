// One block for each table: data with one spare element below the first, row pointers with one
// spare below the first row.
#include "base/arrays.h"

#include <limits>

#include "base/escape.h"
#include "base/memory.h"

namespace photrak {
namespace {

constexpr const char* matrixRows = "allocation failure 1 in matrix()";
constexpr const char* matrixData = "allocation failure 2 in matrix()";

/// Elements of nl..nh, or -1 where that is no range. An empty range (nh = nl - 1) has 0.
long Count(long nl, long nh) {
    long count = 0;
    if (__builtin_sub_overflow(nh, nl, &count) || __builtin_add_overflow(count, 1, &count)) {
        return -1;
    }
    return count < 0 ? -1 : count;
}

/// Product of two counts, -1 when one is negative or it overflows.
long Product(long a, long b) {
    long product = 0;
    return a < 0 || b < 0 || __builtin_mul_overflow(a, b, &product) ? -1 : product;
}

/// Moves a pointer by elements. The origin of an offset array lies outside its block, hence by way
/// of integers, where that is defined.
template <class T>
T* Shift(T* p, long elements) {
    const auto bytes = static_cast<std::uintptr_t>(elements) * sizeof(T);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): once per array, never in a loop over samples
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(p) + bytes);
}

/// A block of count + 1 elements, or null.
template <class T>
T* NewBlock(long count) {
    if (count < 0 || count >= std::numeric_limits<long>::max() / long{sizeof(T)} - 1) {
        return nullptr;
    }
    return static_cast<T*>(Allocate((static_cast<std::size_t>(count) + 1) * sizeof(T)));
}

template <class T>
T* NewVector(long nl, long nh, const char* message) {
    T* block = NewBlock<T>(Count(nl, nh));
    if (!block) NumericFailure(message);
    return Shift(block, 1 - nl);
}

template <class T>
void FreeVector(T* p, long nl) {
    if (p) Release(Shift(p, nl - 1));
}

/// The table of row pointers; a matrix has at least one row, since row nrl holds the data block.
template <class T>
OwnedBlock<T*> NewRows(long rows, const char* message) {
    OwnedBlock<T*> table(rows < 1 ? nullptr : NewBlock<T*>(rows));
    if (!table) NumericFailure(message);
    return table;
}

template <class T>
T** NewMatrix(long nrl, long nrh, long ncl, long nch) {
    const long rows = Count(nrl, nrh), columns = Count(ncl, nch);
    OwnedBlock<T*> table = NewRows<T>(rows, matrixRows);
    T* data = NewBlock<T>(Product(rows, columns));
    if (!data) {
        table.reset();
        NumericFailure(matrixData);
    }
    for (long row = 0; row < rows; ++row) {
        table.get()[row + 1] = Shift(data, 1 - ncl + row * columns);
    }
    return Shift(table.release(), 1 - nrl);
}

template <class T>
void FreeMatrix(T** m, long nrl, long ncl) {
    if (!m) return;
    FreeVector(m[nrl], ncl);
    FreeVector(m, nrl);
}

}  // namespace

double* vector(long nl, long nh) {
    return NewVector<double>(nl, nh, "allocation failure in vector()");
}
double* dvector(long nl, long nh) {
    return NewVector<double>(nl, nh, "allocation failure in dvector()");
}
std::int32_t* ivector(long nl, long nh) {
    return NewVector<std::int32_t>(nl, nh, "allocation failure in ivector()");
}
std::int32_t* lvector(long nl, long nh) {
    return NewVector<std::int32_t>(nl, nh, "allocation failure in lvector()");
}
unsigned char* cvector(long nl, long nh) {
    return NewVector<unsigned char>(nl, nh, "allocation failure in cvector()");
}
Complex* cmplxvector(long nl, long nh) {
    return NewVector<Complex>(nl, nh, "allocation failure in cmplxvector()");
}

void free_vector(double* p, long nl) {
    FreeVector(p, nl);
}
void free_dvector(double* p, long nl) {
    FreeVector(p, nl);
}
void free_ivector(std::int32_t* p, long nl) {
    FreeVector(p, nl);
}
void free_lvector(std::int32_t* p, long nl) {
    FreeVector(p, nl);
}
void free_cvector(unsigned char* p, long nl) {
    FreeVector(p, nl);
}
void free_cmplxvector(Complex* p, long nl) {
    FreeVector(p, nl);
}

double** matrix(long nrl, long nrh, long ncl, long nch) {
    return NewMatrix<double>(nrl, nrh, ncl, nch);
}
double** dmatrix(long nrl, long nrh, long ncl, long nch) {
    return NewMatrix<double>(nrl, nrh, ncl, nch);
}
std::int32_t** imatrix(long nrl, long nrh, long ncl, long nch) {
    return NewMatrix<std::int32_t>(nrl, nrh, ncl, nch);
}

double** submatrix(double** a, long oldrl, long oldrh, long oldcl, long /*oldch*/, long newrl,
                   long newcl) {
    const long rows = Count(oldrl, oldrh);
    OwnedBlock<double*> table = NewRows<double>(rows, "allocation failure in submatrix()");
    for (long row = 0; row < rows; ++row) {
        table.get()[row + 1] = Shift(a[oldrl + row], oldcl - newcl);
    }
    return Shift(table.release(), 1 - newrl);
}

double** convert_matrix(double* a, long nrl, long nrh, long ncl, long nch) {
    const long rows = Count(nrl, nrh), columns = Count(ncl, nch);
    constexpr const char* message = "allocation failure in convert_matrix()";
    OwnedBlock<double*> table = NewRows<double>(columns < 0 ? -1 : rows, message);
    for (long row = 0; row < rows; ++row) table.get()[row + 1] = Shift(a, row * columns - ncl);
    return Shift(table.release(), 1 - nrl);
}

double*** f3tensor(long nrl, long nrh, long ncl, long nch, long ndl, long ndh) {
    const long rows = Count(nrl, nrh), columns = Count(ncl, nch), depth = Count(ndl, ndh);
    OwnedBlock<double**> top = NewRows<double*>(rows, "allocation failure 1 in f3tensor()");
    const long middleCount = columns < 1 ? -1 : Product(rows, columns);
    OwnedBlock<double*> middle(NewBlock<double*>(middleCount));
    if (!middle) {
        top.reset();
        NumericFailure("allocation failure 2 in f3tensor()");
    }
    double* data = NewBlock<double>(Product(middleCount, depth));
    if (!data) {
        middle.reset();
        top.reset();
        NumericFailure("allocation failure 3 in f3tensor()");
    }
    for (long i = 0; i < middleCount; ++i) middle.get()[i + 1] = Shift(data, 1 - ndl + i * depth);
    for (long row = 0; row < rows; ++row) {
        top.get()[row + 1] = Shift(middle.get(), 1 - ncl + row * columns);
    }
    static_cast<void>(middle.release());  // reachable from the first row
    return Shift(top.release(), 1 - nrl);
}

void free_matrix(double** m, long nrl, long ncl) {
    FreeMatrix(m, nrl, ncl);
}
void free_dmatrix(double** m, long nrl, long ncl) {
    FreeMatrix(m, nrl, ncl);
}
void free_imatrix(std::int32_t** m, long nrl, long ncl) {
    FreeMatrix(m, nrl, ncl);
}
void free_submatrix(double** m, long nrl) {
    FreeVector(m, nrl);
}
void free_convert_matrix(double** m, long nrl) {
    FreeVector(m, nrl);
}
void free_f3tensor(double*** t, long nrl, long ncl, long ndl) {
    if (!t) return;
    FreeVector(t[nrl][ncl], ndl);
    FreeVector(t[nrl], ncl);
    FreeVector(t, nrl);
}

}  // namespace photrak
