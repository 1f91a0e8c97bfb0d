// SPDX-License-Identifier: Apache-2.0
// The scalar twins of the LBP functions. Pointers are not null.
#ifndef KORVANE_ALGORITHMS_LBP_SCALAR_H_
#define KORVANE_ALGORITHMS_LBP_SCALAR_H_

namespace korvane {

void lbp_pyr_features_scalar(char* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                             unsigned short img_nCols);
void lbp_pyr_features_sparse_scalar(unsigned int* vec, unsigned int vec_nDim, unsigned int* img,
                                    unsigned short img_nRows, unsigned short img_nCols);
double lbp_pyr_dotprod_scalar(double* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                              unsigned short img_nCols);
void lbp_pyr_addvec_scalar(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                           unsigned short img_nCols);
void lbp_pyr_subvec_scalar(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                           unsigned short img_nCols);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_LBP_SCALAR_H_
