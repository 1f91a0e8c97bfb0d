// SPDX-License-Identifier: Apache-2.0
// Matrix: a small dense matrix of single-precision numbers, for colour and geometry transforms.
//
// Determinant, cofactors and inverse are plain Laplace expansions. They cost about n! operations, which is fine up to
// 6 x 6.
//
// Storage is one galloc_malloc block: m_Row row pointers, then the elements row by row. Element (i, j) is m_Data[i][j],
// to read and to write. A matrix with a size below 1, or for which memory was short, has no storage: m_Data is null.
// Operations that need its elements give null or 0. One matrix must not be used by two threads at once.
//
// Operations that return a new matrix return it with count 0: take it into an auto_ptr<Matrix> or delete it. When
// memory is short they return null, and a determinant or cofactor is 0. In-place operations return their first
// argument, so that calls can be chained. Operands are only read, also where their type is not const: the types are
// part of the interface, as are all names of this class.
#ifndef KORVANE_FRAMEWORKS_MATHS_MATRIX_H_
#define KORVANE_FRAMEWORKS_MATHS_MATRIX_H_

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

class KORVANE_API Matrix : public RefBase {
  public:
    // Zeros. Sizes below 1 are kept as they are, without storage.
    Matrix(int rows, int cols);

    // A copy of rows x cols numbers, row by row. No storage when `data` is null.
    Matrix(int rows, int cols, float* data);

    // n x n. Without data all zeros, not the identity.
    explicit Matrix(int n);
    Matrix(int n, float* data);

    ~Matrix() override;

    Matrix(const Matrix&) = delete;
    Matrix& operator=(const Matrix&) = delete;

    // As the constructors, but null instead of a matrix without storage.
    static Matrix* create(int rows, int cols);
    static Matrix* create(int rows, int cols, float* data);
    static Matrix* create(int n);
    static Matrix* create(int n, float* data);

    // a += b and a -= b, element by element; return a. Null, with nothing changed, when one is null or the sizes
    // differ. Without storage there is nothing to do, and the result is a.
    static Matrix* add(Matrix* a, Matrix* b);
    static Matrix* sub(Matrix* a, Matrix* b);

    // a *= s, element by element; returns a, also without storage.
    static Matrix* multiply(Matrix* a, float s);

    // The product as a new matrix of a's rows and b's columns, summed in single precision from the first term on. Null
    // when a has not as many columns as b has rows. When a has fewer than one row, a new matrix without storage.
    static Matrix* multiply(Matrix* a, Matrix* b);

    // A new matrix with rows and columns exchanged.
    Matrix* transponse() const;

    // The determinant of what is left without row i and column j. It bears no sign: the caller applies (-1)^(i + j). An
    // index outside the matrix, and the empty minor of a 1 x 1 matrix, give 0.
    float cofator(int i, int j) const;

    // The determinant, expanded along the first column. 0 for a matrix that is not square.
    float det() const;

    // The transposed matrix of the signed cofactors, as a new matrix. The adjugate of a 1 x 1 matrix is [[0]], as its
    // only cofactor is 0.
    Matrix* adj() const;

    // A new matrix, the adjugate times 1 / det(); null when the determinant is exactly 0: near-singular matrices are
    // inverted as they are. The inverse of a 1 x 1 matrix is [[0]], not [[1 / a]]: see adj().
    Matrix* inverse() const;

    int m_Row = 0;
    int m_Col = 0;
    float** m_Data = nullptr;

  private:
    // Allocates storage for the sizes, without setting its elements. False when there is none.
    KORVANE_HIDDEN bool allocate();
};

#endif  // KORVANE_FRAMEWORKS_MATHS_MATRIX_H_
