// The eigenvalue front end shared by eig, qz, condeig, mpower and the matrix functions.
#pragma once
#include <vector>

#include "arklib/matrix.h"

namespace ak_internal {

// The eigenvalues of a square matrix as a column, or with want_vectors the diagonal matrix of them,
// the vectors (unit columns) then going to *V. Real when every imaginary part is zero.
Mm eig_core(const Mm& a, bool want_vectors, bool balance, Mm* V);
// The generalised real Schur form of a pair: Q*a*Z = AA, Q*b*Z = BB, and the diagonal's alpha and
// beta (a complex pair of alphas on two rows).
struct qz_parts {
    int n = 0;
    Mm AA, BB, Q, Z;
    std::vector<double> alphar, alphai, beta;
};
// Checks the pair and reduces it; false after a report. `name` labels the messages.
bool generalised_schur(const Mm& a, const Mm& b, const char* name, qz_parts& out);
// The right eigenvectors of the reduced pair (unit columns, complex for conjugate pairs).
Mm qz_vectors(const qz_parts& p);
// alpha ./ beta as a column, real when every imaginary part is zero.
Mm qz_values(const qz_parts& p);
// The generalised problem a x = lambda b x by QZ: the eigenvalues alpha ./ beta as a column, or, with
// V, the diagonal matrix of them and the vectors in *V. `name` labels the messages.
Mm generalised_eig(const Mm& a, const Mm& b, Mm* V, const char* name);
// Scales each non-zero column of v to unit length.
void normalise_columns(Mm& v);
// The complex eigenvectors from the real form left by the real QR with vectors: a conjugate pair
// (wi > 0 at the first of them) has its real and imaginary parts in two columns.
Mm unpack_real_vectors(const Mm& z, const double* wi);

}  // namespace ak_internal
