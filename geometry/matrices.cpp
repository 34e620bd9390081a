// Dense matrices (column-major, owned storage) and their in-place Gauss-Jordan inversion.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/heap.hpp"
#include "korvelbase/mem.h"
#include "korvelbase/qmmatrix.h"

namespace {

std::size_t indexOf(const DenseMatrix& m, std::size_t row, std::size_t column) {
    return static_cast<std::size_t>(m.rows) * column + row;
}

double& at(DenseMatrix& m, std::size_t row, std::size_t column) { return m.data[indexOf(m, row, column)]; }

double at(const DenseMatrix& m, std::size_t row, std::size_t column) {
    return m.data[indexOf(m, row, column)];
}

// Element (r, c) of op(m), op transposing when transposed is true.
double opAt(const DenseMatrix& m, bool transposed, std::size_t r, std::size_t c) {
    return transposed ? at(m, c, r) : at(m, r, c);
}

std::uint32_t opRows(const DenseMatrix& m, bool transposed) { return transposed ? m.cols : m.rows; }
std::uint32_t opCols(const DenseMatrix& m, bool transposed) { return transposed ? m.rows : m.cols; }

void swapRows(DenseMatrix& m, std::size_t a, std::size_t b) {
    for (std::size_t c = 0; c < m.cols; ++c) std::swap(at(m, a, c), at(m, b, c));
}

void swapColumns(DenseMatrix& m, std::size_t a, std::size_t b) {
    for (std::size_t r = 0; r < m.rows; ++r) std::swap(at(m, r, a), at(m, r, b));
}

// The three index vectors of the inversion (pivot row and pivot column of each pass, and how
// often each column served as pivot) and a scratch column, released together on every path.
// Small matrices keep them on the stack; larger ones take index vectors from the heap.
class PivotRecord {
public:
    explicit PivotRecord(int n) {
        if (n <= kSmall) {
            row_ = small_[0];
            column_ = small_[1];
            used_ = small_[2];
            factors_ = smallFactors_;
            for (int i = 0; i < n; ++i) used_[i] = 0;
            return;
        }
        onHeap_ = true;
        row_ = qmMatrix_ivector(0, n - 1);
        column_ = qmMatrix_ivector(0, n - 1);
        used_ = qmMatrix_ivector(0, n - 1);
        factors_ = kb::heap::allocateArray<double>(static_cast<std::size_t>(n));
    }
    ~PivotRecord() {
        if (!onHeap_) return;
        qmMatrix_freeIvector(row_, 0);
        qmMatrix_freeIvector(column_, 0);
        qmMatrix_freeIvector(used_, 0);
        kb::heap::release(factors_);
    }
    PivotRecord(const PivotRecord&) = delete;
    PivotRecord& operator=(const PivotRecord&) = delete;
    bool ready() const {
        return row_ != nullptr && column_ != nullptr && used_ != nullptr && factors_ != nullptr;
    }

    static constexpr int kSmall = 32;
    std::int32_t* row_ = nullptr;
    std::int32_t* column_ = nullptr;
    std::int32_t* used_ = nullptr;
    double* factors_ = nullptr;

private:
    std::int32_t small_[3][kSmall] = {};  // (the third array lists the indices not pivoted)
    double smallFactors_[kSmall] = {};
    bool onHeap_ = false;
};

// The largest element among the rows and columns not yet pivoted (one set: a pivot's row is
// swapped to its column's index), the last of equals in row-by-row order.
void findPivot(const double* a, std::size_t n, const std::int32_t* remaining, std::size_t count,
               std::size_t& pivotRow, std::size_t& pivotColumn) {
    double largest = 0.0;
    for (std::size_t jj = 0; jj < count; ++jj) {
        const std::size_t j = static_cast<std::size_t>(remaining[jj]);
        for (std::size_t kk = 0; kk < count; ++kk) {
            const std::size_t k = static_cast<std::size_t>(remaining[kk]);
            const double size = std::fabs(a[n * k + j]);
            if (size >= largest) {
                largest = size;
                pivotRow = j;
                pivotColumn = k;
            }
        }
    }
}

// Divides the pivot row by the pivot (whose place receives 1 first) and clears the pivot
// column from every other row: a(r, c) -= a(p, c) * a(r, p), a column at a time.  The pivot
// row takes a factor of 0, which leaves it as it is, so each column is one plain loop.
void eliminate(double* a, std::size_t n, std::size_t p, double* factors) {
    double* pivotColumn = a + n * p;
    const double inverse = 1.0 / pivotColumn[p];
    pivotColumn[p] = 1.0;
    for (std::size_t c = 0; c < n; ++c) a[n * c + p] *= inverse;
    for (std::size_t r = 0; r < n; ++r) {
        factors[r] = pivotColumn[r];
        pivotColumn[r] = 0.0;
    }
    factors[p] = 0.0;
    pivotColumn[p] = inverse;
    for (std::size_t c = 0; c < n; ++c) {
        double* column = a + n * c;
        const double pivotValue = column[p];
        for (std::size_t r = 0; r < n; ++r) column[r] -= pivotValue * factors[r];
    }
}

bool invert(DenseMatrix& m) {
    const std::size_t n = m.rows;
    double* a = m.data;
    PivotRecord pivots(static_cast<int>(n));
    if (!pivots.ready()) return false;
    // The indices not yet pivoted, in increasing order (a column is pivoted at most once, so
    // the count of uses per column reduces to this list).
    std::int32_t* remaining = pivots.used_;
    for (std::size_t i = 0; i < n; ++i) remaining[i] = static_cast<std::int32_t>(i);
    std::size_t left = n;
    for (std::size_t pass = 0; pass < n; ++pass) {
        std::size_t row = 0;
        std::size_t column = 0;
        findPivot(a, n, remaining, left, row, column);
        std::size_t at = 0;
        while (remaining[at] != static_cast<std::int32_t>(column)) ++at;
        for (; at + 1 < left; ++at) remaining[at] = remaining[at + 1];
        --left;
        if (row != column) swapRows(m, row, column);
        pivots.row_[pass] = static_cast<std::int32_t>(row);
        pivots.column_[pass] = static_cast<std::int32_t>(column);
        if (a[n * column + column] == 0.0) return false;
        eliminate(a, n, column, pivots.factors_);
    }
    for (std::size_t pass = n; pass-- > 0;) {
        if (pivots.row_[pass] != pivots.column_[pass]) {
            swapColumns(m, static_cast<std::size_t>(pivots.row_[pass]),
                        static_cast<std::size_t>(pivots.column_[pass]));
        }
    }
    return true;
}

}  // namespace

extern "C" {

int qmMatrix_memMatrix(DenseMatrix* matrix, uint32_t rows, uint32_t cols) noexcept {
    if (matrix == nullptr) return ERR_FAILURE;
    matrix->rows = rows;
    matrix->cols = cols;
    matrix->data = nullptr;
    const auto count = static_cast<std::uint64_t>(rows) * cols;
    if (count == 0) return 0;
    if (count > SIZE_MAX / sizeof(double)) return ERR_FAILURE;
    matrix->data = static_cast<double*>(qmMem_calloc(static_cast<std::size_t>(count), sizeof(double)));
    return matrix->data != nullptr ? 0 : ERR_FAILURE;
}

int qmMatrix_freeMatrix(DenseMatrix* matrix) noexcept {
    if (matrix == nullptr) return ERR_FAILURE;
    matrix->rows = 0;
    matrix->cols = 0;
    if (matrix->data != nullptr) qmMem_free(matrix->data);
    matrix->data = nullptr;
    return 0;
}

double qmMatrix_getElementMatrix(const DenseMatrix* matrix, int row, int column) noexcept {
    if (matrix == nullptr) return 0.0;
    return at(*matrix, static_cast<std::size_t>(row), static_cast<std::size_t>(column));
}

void qmMatrix_putElementMatrix(DenseMatrix* matrix, int row, int column, double value) noexcept {
    if (matrix == nullptr) return;
    at(*matrix, static_cast<std::size_t>(row), static_cast<std::size_t>(column)) = value;
}

void qmMatrix_swapMatrixElem(DenseMatrix* matrix, int rowA, int columnA, int rowB,
                             int columnB) noexcept {
    if (matrix == nullptr) return;
    std::swap(at(*matrix, static_cast<std::size_t>(rowA), static_cast<std::size_t>(columnA)),
              at(*matrix, static_cast<std::size_t>(rowB), static_cast<std::size_t>(columnB)));
}

int qmMatrix_multMatrix(DenseMatrix* result, int transposeA, const DenseMatrix* a, int transposeB,
                        const DenseMatrix* b) noexcept {
    if (result == nullptr || a == nullptr || b == nullptr) return ERR_FAILURE;
    const bool ta = transposeA != 0;
    const bool tb = transposeB != 0;
    const std::uint32_t rows = opRows(*a, ta);
    const std::uint32_t cols = opCols(*b, tb);
    const std::uint32_t inner = opCols(*a, ta);
    if (qmMatrix_memMatrix(result, rows, cols) != 0) return ERR_FAILURE;
    for (std::size_t c = 0; c < cols; ++c) {
        for (std::size_t k = 0; k < inner; ++k) {
            const double factor = opAt(*b, tb, k, c);
            for (std::size_t r = 0; r < rows; ++r) at(*result, r, c) += opAt(*a, ta, r, k) * factor;
        }
    }
    return 0;
}

int qmMatrix_multScalerMatrix(DenseMatrix* matrix, double factor) noexcept {
    if (matrix == nullptr) return ERR_FAILURE;
    const std::size_t count = static_cast<std::size_t>(matrix->rows) * matrix->cols;
    for (std::size_t i = 0; i < count; ++i) matrix->data[i] *= factor;
    return 0;
}

int qmMatrix_subtractMatrix(DenseMatrix* result, const DenseMatrix* a, const DenseMatrix* b) noexcept {
    if (result == nullptr || a == nullptr || b == nullptr) return ERR_FAILURE;
    if (a->rows != b->rows || a->cols != b->cols) return 1;  // deliberately not ERR_FAILURE
    if (qmMatrix_memMatrix(result, a->rows, a->cols) != 0) return ERR_FAILURE;
    const std::size_t count = static_cast<std::size_t>(a->rows) * a->cols;
    for (std::size_t i = 0; i < count; ++i) result->data[i] = a->data[i] - b->data[i];
    return 0;
}

int qmMatrix_invertMatrix(DenseMatrix* matrix) noexcept {
    if (matrix == nullptr || matrix->rows != matrix->cols || matrix->rows > INT32_MAX) {
        return ERR_FAILURE;
    }
    if (matrix->rows == 0) return 0;
    return invert(*matrix) ? 0 : ERR_FAILURE;
}

int32_t* qmMatrix_ivector(int low, int high) noexcept {
    if (high < low) return nullptr;
    // Indices low..high are valid.  Below a low of 0 the block starts at index low itself;
    // from 0 up it starts at index 0, so the pointer returned always lies inside the block.
    const std::int64_t first = low < 0 ? low : 0;
    const auto count = static_cast<std::size_t>(static_cast<std::int64_t>(high) - first + 1);
    auto* block = static_cast<std::int32_t*>(qmMem_calloc(count, sizeof(std::int32_t)));
    if (block == nullptr) return nullptr;
    return block - first;
}

void qmMatrix_freeIvector(int32_t* vector, int low) noexcept {
    if (vector == nullptr) return;
    qmMem_free(low < 0 ? vector + low : vector);
}

}  // extern "C"
