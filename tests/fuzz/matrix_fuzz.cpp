// SPDX-License-Identifier: Apache-2.0
// Matrices of any size and values, combined in any order, beside plain arrays in which the same is done.
#include <cmath>
#include <cstring>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/maths/matrix.h"
#include "tests/fuzz/fuzz.h"

namespace {

using Cells = std::vector<float>;

Cells cells_of(const Matrix& m) {
    const float* first = m.m_Data == nullptr ? nullptr : m.m_Data[0];
    return first == nullptr ? Cells() : Cells(first, first + static_cast<ptrdiff_t>(m.m_Row) * m.m_Col);
}

bool same(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

void require_cells(const Matrix& matrix, const Cells& expected) {
    const Cells cells = cells_of(matrix);
    REQUIRE(std::equal(cells.begin(), cells.end(), expected.begin(), expected.end(), same));
}

float signed_by(int parity, float value) {
    return parity % 2 == 0 ? value : -1.0F * value;
}

float determinant(const Cells& m, size_t n) {
    if (n < 3) {
        return n == 0 ? 0 : n == 1 ? m[0] : m[0] * m[3] - m[1] * m[2];
    }
    float sum = 0;
    for (size_t k = 0; k < n; ++k) {
        Cells rest;
        for (size_t i = 0; i < n * n; ++i) {
            if (i / n != k && i % n != 0) {
                rest.push_back(m[i]);
            }
        }
        sum += signed_by(static_cast<int>(k), 1.0F) * m[k * n] * determinant(rest, n - 1);
    }
    return sum;
}

auto_ptr<Matrix> read_matrix(Input& input) {
    const int rows = input.between(-1, 5);
    const int columns = input.ConsumeBool() ? rows : input.between(-1, 5);
    auto cells = Input::buffer<float>(static_cast<size_t>(std::max(rows, 0) * std::max(columns, 0)));
    const bool isGiven = input.ConsumeBool();
    std::for_each(cells.begin(), cells.end(), [&](float& cell) { cell = isGiven ? input.number(1) : 0; });
    auto_ptr<Matrix> matrix(isGiven ? new Matrix(rows, columns, cells.data()) : new Matrix(rows, columns));
    REQUIRE(matrix->m_Row == rows && matrix->m_Col == columns);
    require_cells(*matrix, cells);
    return matrix;
}

void require_product(Matrix& a, Matrix& b) {
    const auto_ptr<Matrix> product(Matrix::multiply(&a, &b));
    const bool hasCells = a.m_Data != nullptr && b.m_Data != nullptr;
    REQUIRE((product.get() != nullptr) == (a.m_Col == b.m_Row && (hasCells || a.m_Row < 1)));
    for (int i = 0; product.get() != nullptr && hasCells && i < a.m_Row * b.m_Col; ++i) {
        float sum = 0;
        for (int k = 0; k < a.m_Col; ++k) {
            sum += a.m_Data[i / b.m_Col][k] * b.m_Data[k][i % b.m_Col];
        }
        REQUIRE(same(product->m_Data[i / b.m_Col][i % b.m_Col], sum));
    }
}

void require_inverse(Matrix& a) {
    if (a.m_Row == a.m_Col) {
        REQUIRE(same(a.det(), determinant(cells_of(a), static_cast<size_t>(std::max(a.m_Row, 0)))));
    }
    REQUIRE(a.cofator(0, -1) == 0 && a.cofator(a.m_Row, 0) == 0 && a.cofator(0, a.m_Col) == 0);
    const auto_ptr<Matrix> inverse(a.inverse()), adjugate(a.adj());
    REQUIRE((inverse.get() == nullptr) == (a.m_Data == nullptr || a.det() == 0.0F));
    REQUIRE((adjugate.get() == nullptr) == (a.m_Data == nullptr));
    for (int i = 0; inverse.get() != nullptr && i < a.m_Row * a.m_Col; ++i) {
        const int row = i / a.m_Col, column = i % a.m_Col;
        const float term = signed_by(row + column, a.cofator(row, column));
        REQUIRE(same(adjugate->m_Data[column][row], term));
        REQUIRE(same(inverse->m_Data[column][row], term * (1.0F / a.det())));
    }
}

}  // namespace

void fuzz(Input& input) {
    auto_ptr<Matrix> a = read_matrix(input);
    for (int step = 0; step < 6 && input.remaining_bytes() > 0; ++step) {
        const auto_ptr<Matrix> b = input.ConsumeBool() ? a : read_matrix(input);
        Cells expected = cells_of(*a);
        const Cells other = cells_of(*b);
        const int kind = input.between(0, 4);
        if (kind < 2) {
            const bool fits = a->m_Row == b->m_Row && a->m_Col == b->m_Col;
            for (size_t i = 0; fits && i < other.size(); ++i) {
                expected[i] += signed_by(kind, other[i]);
            }
            const Matrix* sum = (kind == 0 ? Matrix::add : Matrix::sub)(a.get(), b.get());
            REQUIRE(sum == (fits ? a.get() : nullptr));
        } else if (kind == 2) {
            const float factor = input.number(1);
            std::for_each(expected.begin(), expected.end(), [&](float& cell) { cell *= factor; });
            REQUIRE(Matrix::multiply(a.get(), factor) == a.get());
        } else if (kind == 3) {
            require_product(*a, *b);
        } else {
            require_inverse(*a);
            const auto_ptr<Matrix> turned(a->transponse());
            a = turned.get() == nullptr ? a : auto_ptr<Matrix>(turned->transponse());
        }
        require_cells(*a, expected);
    }
}
