/*
 * KorvelBase: dense matrices of doubles.
 *
 * A DenseMatrix owns rows * cols doubles stored column-major: element (r, c), both from 0,
 * lies at data[rows * c + r].  Storage comes from qmMem_calloc and goes back with
 * qmMatrix_freeMatrix.  Element access and products take their arguments as valid (no bounds
 * or size checks); a null matrix is refused where a result can say so.
 * Threads: no shared state; a matrix is used from one thread at a time.
 */
#ifndef KORVELBASE_QMMATRIX_H
#define KORVELBASE_QMMATRIX_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

typedef struct DenseMatrix {
    uint32_t rows;
    uint32_t cols;
    double* data;
} DenseMatrix;

/**
 * Sets the sizes and allocates rows * cols zeroed doubles.  Earlier storage is NOT released
 * (free it first).  ERR_FAILURE for a null matrix or no memory (data is then null); a size of
 * 0 allocates nothing and succeeds with null data.
 */
KB_API int qmMatrix_memMatrix(DenseMatrix* matrix, uint32_t rows, uint32_t cols) KB_NOEXCEPT;
/** Sets both sizes to 0 and releases the storage.  0, or ERR_FAILURE for a null matrix. */
KB_API int qmMatrix_freeMatrix(DenseMatrix* matrix) KB_NOEXCEPT;
/** Element (row, column); no bounds check; a null matrix gives 0.0. */
KB_API double qmMatrix_getElementMatrix(const DenseMatrix* matrix, int row, int column) KB_NOEXCEPT;
/** Stores value at (row, column); no bounds check; a null matrix is ignored. */
KB_API void qmMatrix_putElementMatrix(DenseMatrix* matrix, int row, int column,
                                      double value) KB_NOEXCEPT;
/** Exchanges elements (rowA, columnA) and (rowB, columnB); no bounds check. */
KB_API void qmMatrix_swapMatrixElem(DenseMatrix* matrix, int rowA, int columnA, int rowB,
                                    int columnB) KB_NOEXCEPT;
/**
 * result := op(A) * op(B), op transposing when its flag is non-zero.  result is newly
 * allocated (rows of op(A) by columns of op(B)) whatever it held before: free it after use.
 * Inner sizes are not compared (the columns of op(A) are used).  ERR_FAILURE for null
 * arguments or no memory.  result may not be A or B.
 */
KB_API int qmMatrix_multMatrix(DenseMatrix* result, int transposeA, const DenseMatrix* a,
                               int transposeB, const DenseMatrix* b) KB_NOEXCEPT;
/** Multiplies every element by factor.  ERR_FAILURE for a null matrix. */
KB_API int qmMatrix_multScalerMatrix(DenseMatrix* matrix, double factor) KB_NOEXCEPT;
/**
 * result := A - B, newly allocated.  Different sizes return 1 (deliberately not ERR_FAILURE)
 * with nothing allocated; no memory or null arguments give ERR_FAILURE.
 */
KB_API int qmMatrix_subtractMatrix(DenseMatrix* result, const DenseMatrix* a,
                                   const DenseMatrix* b) KB_NOEXCEPT;
/**
 * Inverts a square matrix in place by Gauss-Jordan elimination with full pivoting (the
 * largest remaining element, last one on ties, becomes each pivot; rows are swapped to bring
 * it to the diagonal and the column swaps are undone at the end).  ERR_FAILURE when singular
 * (a zero pivot or a column pivoted twice; the matrix is then left partly reduced), not square,
 * null, or when the index vectors cannot be allocated.  Cost: O(n^3).
 */
KB_API int qmMatrix_invertMatrix(DenseMatrix* matrix) KB_NOEXCEPT;
/**
 * An index vector of 32-bit integers valid from index low to index high (inclusive), zeroed;
 * null when high < low or without memory.  Release it with qmMatrix_freeIvector(vector, low).
 */
KB_API int32_t* qmMatrix_ivector(int low, int high) KB_NOEXCEPT;
/** Releases an index vector made by qmMatrix_ivector with the same low; null is ignored. */
KB_API void qmMatrix_freeIvector(int32_t* vector, int low) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMMATRIX_H */
