// SPDX-License-Identifier: Apache-2.0
#include "frameworks/maths/matrix.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <optional>

#include "frameworks/core/memory.h"

namespace {

size_t elementCount(const Matrix& matrix) {
    return static_cast<size_t>(matrix.m_Row) * static_cast<size_t>(matrix.m_Col);
}

bool hasStorage(const Matrix* matrix) {
    return matrix != nullptr && matrix->m_Data != nullptr;
}

float sign(int k) {
    return k % 2 == 0 ? 1.0F : -1.0F;
}

// The matrix if it has storage; else it is deleted, and the result is null.
Matrix* completed(Matrix* matrix) {
    if (hasStorage(matrix)) {
        return matrix;
    }
    delete matrix;
    return nullptr;
}

Matrix* addScaled(Matrix* a, const Matrix* b, float scale) {
    if (a == nullptr || b == nullptr || a->m_Row != b->m_Row || a->m_Col != b->m_Col) {
        return nullptr;
    }
    if (!hasStorage(a) || !hasStorage(b)) {
        return a;
    }
    float* sum = a->m_Data[0];
    const float* term = b->m_Data[0];
    for (size_t i = 0; i < elementCount(*a); ++i) {
        sum[i] += scale * term[i];
    }
    return a;
}

std::optional<float> determinant(const Matrix& matrix);

// Null when memory is short. The minor of a single row or column is empty and counts 0.
std::optional<float> cofactor(const Matrix& matrix, int i, int j) {
    const Matrix rest(matrix.m_Row - 1, matrix.m_Col - 1);
    if (rest.m_Row < 1 || rest.m_Col < 1) {
        return 0.0F;
    }
    if (!hasStorage(&rest)) {
        return std::nullopt;
    }
    for (int r = 0; r < rest.m_Row; ++r) {
        const float* from = matrix.m_Data[r + (r >= i ? 1 : 0)];
        std::copy(from, from + j, rest.m_Data[r]);
        std::copy(from + j + 1, from + matrix.m_Col, rest.m_Data[r] + j);
    }
    return determinant(rest);
}

// Null when memory is short: without one of its terms the sum would be another number.
std::optional<float> determinant(const Matrix& matrix) {
    const int rows = matrix.m_Row;
    const int cols = matrix.m_Col;
    float** const a = matrix.m_Data;
    if (rows == 1 && cols == 1) {
        return a[0][0];
    }
    if (rows == 2 && cols == 2) {
        return a[0][0] * a[1][1] - a[0][1] * a[1][0];
    }
    // One term a column, since that is what the expansion counts; rows that are not there add nothing.
    float sum = 0;
    for (int k = 0; k < std::min(cols, rows); ++k) {
        const std::optional<float> term = cofactor(matrix, k, 0);
        if (!term) {
            return std::nullopt;
        }
        sum += sign(k) * a[k][0] * *term;
    }
    return sum;
}

}  // namespace

Matrix::Matrix(int rows, int cols) : m_Row(rows), m_Col(cols) {
    if (allocate()) {
        galloc_memset(m_Data[0], 0, elementCount(*this) * sizeof(float));
    }
}

Matrix::Matrix(int rows, int cols, float* data) : m_Row(rows), m_Col(cols) {
    if (data != nullptr && allocate()) {
        galloc_memcpy(m_Data[0], data, elementCount(*this) * sizeof(float));
    }
}

Matrix::Matrix(int n) : Matrix(n, n) {}

Matrix::Matrix(int n, float* data) : Matrix(n, n, data) {}

Matrix::~Matrix() {
    galloc_free(m_Data);
    m_Data = nullptr;
    m_Row = 0;
    m_Col = 0;
}

bool Matrix::allocate() {
    if (m_Row < 1 || m_Col < 1) {
        return false;
    }
    const auto rows = static_cast<size_t>(m_Row);
    const auto cols = static_cast<size_t>(m_Col);
    size_t bytes = 0;
    if (__builtin_mul_overflow(rows, sizeof(float*) + cols * sizeof(float), &bytes)) {
        return false;
    }
    void* block = galloc_malloc(bytes);
    if (block == nullptr) {
        return false;
    }
    m_Data = static_cast<float**>(block);
    auto* elements = reinterpret_cast<float*>(m_Data + rows);
    for (size_t i = 0; i < rows; ++i) {
        m_Data[i] = elements + i * cols;
    }
    return true;
}

Matrix* Matrix::create(int rows, int cols) {
    return completed(new (std::nothrow) Matrix(rows, cols));
}

Matrix* Matrix::create(int rows, int cols, float* data) {
    return completed(new (std::nothrow) Matrix(rows, cols, data));
}

Matrix* Matrix::create(int n) {
    return create(n, n);
}

Matrix* Matrix::create(int n, float* data) {
    return create(n, n, data);
}

Matrix* Matrix::add(Matrix* a, Matrix* b) {
    return addScaled(a, b, 1.0F);
}

Matrix* Matrix::sub(Matrix* a, Matrix* b) {
    return addScaled(a, b, -1.0F);
}

Matrix* Matrix::multiply(Matrix* a, float s) {
    for (size_t i = 0; hasStorage(a) && i < elementCount(*a); ++i) {
        a->m_Data[0][i] *= s;
    }
    return a;
}

Matrix* Matrix::multiply(Matrix* a, Matrix* b) {
    if (a == nullptr || b == nullptr || a->m_Col != b->m_Row) {
        return nullptr;
    }
    if (a->m_Row < 1) {
        return new (std::nothrow) Matrix(a->m_Row, b->m_Col);
    }
    if (!hasStorage(a) || !hasStorage(b)) {
        return nullptr;
    }
    Matrix* product = create(a->m_Row, b->m_Col);
    if (product == nullptr) {
        return nullptr;
    }
    for (int i = 0; i < a->m_Row; ++i) {
        for (int k = 0; k < a->m_Col; ++k) {
            for (int j = 0; j < b->m_Col; ++j) {
                product->m_Data[i][j] += a->m_Data[i][k] * b->m_Data[k][j];
            }
        }
    }
    return product;
}

Matrix* Matrix::transponse() const {
    Matrix* result = hasStorage(this) ? create(m_Col, m_Row) : nullptr;
    if (result == nullptr) {
        return nullptr;
    }
    for (int i = 0; i < m_Row; ++i) {
        for (int j = 0; j < m_Col; ++j) {
            result->m_Data[j][i] = m_Data[i][j];
        }
    }
    return result;
}

float Matrix::cofator(int i, int j) const {
    if (!hasStorage(this) || i < 0 || i >= m_Row || j < 0 || j >= m_Col) {
        return 0;
    }
    return cofactor(*this, i, j).value_or(0.0F);
}

float Matrix::det() const {
    return hasStorage(this) ? determinant(*this).value_or(0.0F) : 0.0F;
}

Matrix* Matrix::adj() const {
    if (!hasStorage(this)) {
        return nullptr;
    }
    const Matrix cofactors(m_Row, m_Col);
    if (!hasStorage(&cofactors)) {
        return nullptr;
    }
    for (int i = 0; i < m_Row; ++i) {
        for (int j = 0; j < m_Col; ++j) {
            // Parities add without the sum of two large indices leaving an int.
            const std::optional<float> term = cofactor(*this, i, j);
            if (!term) {
                return nullptr;
            }
            cofactors.m_Data[i][j] = sign(i % 2 + j % 2) * *term;
        }
    }
    return cofactors.transponse();
}

Matrix* Matrix::inverse() const {
    const float determinant = det();
    if (!hasStorage(this) || determinant == 0.0F) {
        return nullptr;
    }
    return multiply(adj(), 1.0F / determinant);
}
