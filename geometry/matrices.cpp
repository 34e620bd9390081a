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

// The three index vectors of the inversion, released together on every path.
class PivotRecord {
public:
    explicit PivotRecord(int n)
        : row_(qmMatrix_ivector(0, n - 1)), column_(qmMatrix_ivector(0, n - 1)),
          used_(qmMatrix_ivector(0, n - 1)) {}
    ~PivotRecord() {
        qmMatrix_freeIvector(row_, 0);
        qmMatrix_freeIvector(column_, 0);
        qmMatrix_freeIvector(used_, 0);
    }
    PivotRecord(const PivotRecord&) = delete;
    PivotRecord& operator=(const PivotRecord&) = delete;
    bool ready() const { return row_ != nullptr && column_ != nullptr && used_ != nullptr; }
    std::int32_t* row_;     // pivot row of each pass
    std::int32_t* column_;  // pivot column of each pass
    std::int32_t* used_;    // times each column served as pivot
};

// The largest remaining element among rows and columns not yet pivoted (the last of equals);
// false when a column would be pivoted twice.
bool findPivot(const DenseMatrix& m, const std::int32_t* used, std::size_t& pivotRow,
               std::size_t& pivotColumn) {
    const std::size_t n = m.rows;
    double largest = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
        if (used[j] == 1) continue;
        for (std::size_t k = 0; k < n; ++k) {
            if (used[k] == 0) {
                if (std::fabs(at(m, j, k)) >= largest) {
                    largest = std::fabs(at(m, j, k));
                    pivotRow = j;
                    pivotColumn = k;
                }
            } else if (used[k] > 1) {
                return false;
            }
        }
    }
    return true;
}

// Divides the pivot row by the pivot and clears the pivot column in every other row.
void eliminate(DenseMatrix& m, std::size_t p) {
    const std::size_t n = m.rows;
    const double inverse = 1.0 / at(m, p, p);
    at(m, p, p) = 1.0;
    for (std::size_t c = 0; c < n; ++c) at(m, p, c) *= inverse;
    for (std::size_t r = 0; r < n; ++r) {
        if (r == p) continue;
        const double factor = at(m, r, p);
        at(m, r, p) = 0.0;
        for (std::size_t c = 0; c < n; ++c) at(m, r, c) -= at(m, p, c) * factor;
    }
}

bool invert(DenseMatrix& m) {
    const int n = static_cast<int>(m.rows);
    PivotRecord pivots(n);
    if (!pivots.ready()) return false;
    for (int pass = 0; pass < n; ++pass) {
        std::size_t row = 0;
        std::size_t column = 0;
        if (!findPivot(m, pivots.used_, row, column)) return false;
        ++pivots.used_[column];
        if (pivots.used_[column] > 1) return false;  // a column chosen twice: singular
        if (row != column) swapRows(m, row, column);
        pivots.row_[pass] = static_cast<std::int32_t>(row);
        pivots.column_[pass] = static_cast<std::int32_t>(column);
        if (at(m, column, column) == 0.0) return false;
        eliminate(m, column);
    }
    for (int pass = n - 1; pass >= 0; --pass) {
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
