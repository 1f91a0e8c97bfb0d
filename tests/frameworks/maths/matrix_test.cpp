// SPDX-License-Identifier: Apache-2.0
#include "frameworks/maths/matrix.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "frameworks/core/auto_ptr.h"

namespace {

using Numbers = std::vector<float>;

Numbers numbers(const auto_ptr<Matrix>& matrix) {
    Numbers result;
    for (int i = 0; i < matrix->m_Row; ++i) {
        result.insert(result.end(), matrix->m_Data[i], matrix->m_Data[i] + matrix->m_Col);
    }
    return result;
}

// Other sizes and values, beside a model in plain arrays, are the fuzz target's.
TEST(Matrix, ExactValues) {
    Matrix three(3, Numbers{2, 4, 6, 0, 1, 4, 5, 6, 0}.data());
    EXPECT_EQ(three.det(), 2);
    EXPECT_EQ(three.cofator(1, 0), -36);
    EXPECT_EQ(numbers(three.adj()), (Numbers{-24, 36, 10, 20, -30, -8, -5, 8, 2}));
    EXPECT_EQ(numbers(three.inverse()), (Numbers{-12, 18, 5, 10, -15, -4, -2.5, 4, 1}));
    EXPECT_EQ(Matrix(2, Numbers{1, 2, 2, 4}.data()).inverse(), nullptr);
    // The only cofactor of [[a]] is 0, so its adjugate and its inverse are [[0]].
    const Matrix one(1, Numbers{7}.data());
    EXPECT_EQ(one.cofator(0, 0), 0);
    EXPECT_EQ(numbers(one.inverse()), Numbers{0});
}

TEST(Matrix, SumsAndProducts) {
    const auto_ptr<Matrix> a(new Matrix(2, 3, Numbers{1, 2, 3, 4, 5, 6}.data()));
    Matrix b(2, 3, Numbers{6, 5, 4, 3, 2, 1}.data());
    EXPECT_EQ(Matrix::sub(Matrix::multiply(Matrix::add(a.get(), &b), 2.0F), &b), a.get());
    EXPECT_EQ(numbers(a), (Numbers{8, 9, 10, 11, 12, 13}));
    Matrix tall(3, 1, Numbers{1, 10, 100}.data());
    EXPECT_EQ(numbers(Matrix::multiply(a.get(), &tall)), (Numbers{1098, 1431}));
    EXPECT_EQ(Matrix::multiply(a.get(), &b), nullptr);
}

TEST(Matrix, WithoutStorage) {
    float number = 7;
    EXPECT_EQ(Matrix::create(0, 5), nullptr);
    EXPECT_EQ(Matrix::create(-1), nullptr);
    EXPECT_EQ(Matrix::create(1, 1, nullptr), nullptr);
    EXPECT_EQ(Matrix::create(INT_MIN, &number), nullptr);
    EXPECT_EQ(Matrix::create(INT_MAX), nullptr);  // more than an address space

    Matrix empty(INT_MAX, INT_MAX);
    EXPECT_EQ(empty.m_Row, INT_MAX);
    EXPECT_EQ(empty.m_Data, nullptr);
    // Nothing to do is no failure.
    EXPECT_EQ(Matrix::sub(&empty, Matrix::add(&empty, Matrix::multiply(&empty, 1.0F))), &empty);
    EXPECT_EQ(empty.transponse(), nullptr);
    EXPECT_EQ(empty.det() + empty.cofator(0, 0), 0);
    Matrix factor(INT_MAX, 0);
    EXPECT_EQ(Matrix::multiply(&empty, &factor), nullptr);

    EXPECT_EQ(Matrix::add(&empty, nullptr), nullptr);
    EXPECT_EQ(Matrix::sub(nullptr, &empty), nullptr);
    EXPECT_EQ(Matrix::multiply(nullptr, &empty), nullptr);
    EXPECT_EQ(Matrix::multiply(&empty, nullptr), nullptr);
    EXPECT_EQ(Matrix::multiply(nullptr, 2.0F), nullptr);
}

}  // namespace
