#pragma once

/// The LAPACK routines in use, by their Fortran names. Matrices are column-major; `info` above 0 names
/// the first zero pivot, below 0 the first bad argument.
extern "C" {
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* pivot, int* info);
void dgetrs_(const char* trans, const int* n, const int* columns, const double* a, const int* lda,
             const int* pivot, double* b, const int* ldb, int* info);
void dgbtrf_(const int* m, const int* n, const int* kl, const int* ku, double* ab, const int* ldab,
             int* pivot, int* info);
void dgbtrs_(const char* trans, const int* n, const int* kl, const int* ku, const int* columns,
             const double* ab, const int* ldab, const int* pivot, double* b, const int* ldb, int* info);
void dposv_(const char* triangle, const int* n, const int* columns, double* a, const int* lda, double* b,
            const int* ldb, int* info);
void dsyev_(const char* vectors, const char* triangle, const int* n, double* a, const int* lda,
            double* eigenvalues, double* work, const int* workLength, int* info);
}
