// Matrix: a small dense matrix of single-precision numbers, for colour and geometry transforms.
//
// Simplicity over speed: determinant, cofactors and inverse are plain Laplace expansions, which cost on the order of n!
// operations and one temporary minor for each step. That is fine up to about 6 x 6; use something else beyond.
//
// Storage is one galloc_malloc block: m_Row row pointers, then the elements row by row. Element (i, j) is m_Data[i][j],
// to read and to write. A matrix whose sizes are below 1, or for which memory was short, has no storage: m_Data is null
// and every operation on it gives null or 0. One matrix must not be used by two threads at once.
//
// Operations that return a new matrix return it with count 0: take it into an auto_ptr<Matrix> or delete it. The
// in-place ones return their first argument, so that calls can be chained.
#ifndef KORVANE_FRAMEWORKS_MATHS_MATRIX_H_
#define KORVANE_FRAMEWORKS_MATHS_MATRIX_H_

#include "frameworks/core/export.h"
#include "frameworks/core/ref_base.h"

class KORVANE_API Matrix : public RefBase {
  public:
    // Zeros. Sizes below 1 are kept as they are, without storage.
    Matrix(int rows, int cols);

    // A copy of rows x cols numbers, row by row. No storage when `data` is null.
    Matrix(int rows, int cols, const float* data);

    // n x n. Without data all zeros, not the identity.
    explicit Matrix(int n);
    Matrix(int n, const float* data);

    ~Matrix() override;

    Matrix(const Matrix&) = delete;
    Matrix& operator=(const Matrix&) = delete;

    // As the constructors, but null instead of a matrix without storage.
    static Matrix* create(int rows, int cols);
    static Matrix* create(int rows, int cols, const float* data);
    static Matrix* create(int n);
    static Matrix* create(int n, const float* data);

    // a += b and a -= b, element by element; return a. Null, with nothing changed, when the sizes differ.
    static Matrix* add(Matrix* a, const Matrix* b);
    static Matrix* sub(Matrix* a, const Matrix* b);

    // a *= s, element by element; returns a.
    static Matrix* multiply(Matrix* a, float s);

    // The product as a new matrix of a's rows and b's columns, summed in single precision from the first term on. Null
    // when a has not as many columns as b has rows.
    static Matrix* multiply(const Matrix* a, const Matrix* b);

    // A new matrix with rows and columns exchanged.
    Matrix* transponse() const;

    // The determinant of what is left without row i and column j. It bears no sign: the caller applies (-1)^(i + j). An
    // index outside the matrix, and the empty minor of a 1 x 1 matrix, give 0.
    float cofator(int i, int j) const;

    // The determinant, expanded along the first column. A matrix that is not square has no determinant; the expansion
    // then runs out of rows or columns before it reaches a closed form and gives 0.
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
    // Storage for the present sizes, its elements left unset; false when there is none to be had.
    KORVANE_HIDDEN bool allocate();
};

#endif  // KORVANE_FRAMEWORKS_MATHS_MATRIX_H_
