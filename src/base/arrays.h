// One-based arrays after the classic family: x(nl, nh) gives a pointer whose first usable element
// is nl; one spare element lies below it. Contents are not cleared. Exhausted memory, or a range
// that is no range, goes to NumericFailure with the message of the table and does not return.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

double* vector(long nl, long nh);
double* dvector(long nl, long nh);
std::int32_t* ivector(long nl, long nh);
std::int32_t* lvector(long nl, long nh);
unsigned char* cvector(long nl, long nh);
Complex* cmplxvector(long nl, long nh);
void free_vector(double* p, long nl);
void free_dvector(double* p, long nl);
void free_ivector(std::int32_t* p, long nl);
void free_lvector(std::int32_t* p, long nl);
void free_cvector(unsigned char* p, long nl);
void free_cmplxvector(Complex* p, long nl);

double** matrix(long nrl, long nrh, long ncl, long nch);
double** dmatrix(long nrl, long nrh, long ncl, long nch);
std::int32_t** imatrix(long nrl, long nrh, long ncl, long nch);
/// Row table into an existing matrix: rows oldrl..oldrh, columns oldcl..oldch become newrl..,
/// newcl..
double** submatrix(double** a, long oldrl, long oldrh, long oldcl, long oldch, long newrl,
                   long newcl);
/// Row table over a flat array a whose first element is [nrl][ncl].
double** convert_matrix(double* a, long nrl, long nrh, long ncl, long nch);
double*** f3tensor(long nrl, long nrh, long ncl, long nch, long ndl, long ndh);
void free_matrix(double** m, long nrl, long ncl);
void free_dmatrix(double** m, long nrl, long ncl);
void free_imatrix(std::int32_t** m, long nrl, long ncl);
void free_submatrix(double** m, long nrl);
void free_convert_matrix(double** m, long nrl);
void free_f3tensor(double*** t, long nrl, long ncl, long ndl);

/// A one-based double array owned by a scope: Doubles a(n) has a[1]..a[n] (and a[0], never a
/// sample).
class Doubles {
  public:
    explicit Doubles(long n) : data_(dvector(1, n)), size_(n) {}
    ~Doubles() { free_dvector(data_, 1); }
    Doubles(const Doubles&) = delete;
    Doubles& operator=(const Doubles&) = delete;
    double& operator[](long i) { return data_[i]; }
    double operator[](long i) const { return data_[i]; }
    double* Data() { return data_; }
    const double* Data() const { return data_; }
    long Size() const { return size_; }

  private:
    double* data_;
    long size_;
};

/// The double view of a one-based complex array: view[2k-1], view[2k] = re, im of sample k. It is
/// the address of the imaginary double of element 0.
inline double* DoubleView(Complex* samples) {
    return samples ? &samples[0].im : nullptr;
}
inline const double* DoubleView(const Complex* samples) {
    return samples ? &samples[0].im : nullptr;
}

}  // namespace photrak
