// Functions of square matrices, and the Kronecker product and trace.
#pragma once
#include "arklib/matrix.h"

// The matrix exponential: scaling and squaring with a degree-13 Pade approximant.
Mm expm(const Mm& a);
// The principal logarithm: inverse scaling and squaring on the complex Schur form.
Mm logm(const Mm& a);
// The principal square root: the Schur method.
Mm sqrtm(const Mm& a);
// f(A) for f one of 'exp', 'log', 'sqrt', 'sin', 'cos', 'sinh', 'cosh'.
Mm funm(const Mm& a, const Mm& f);
Mm kron(const Mm& a, const Mm& b);
Mm trace(const Mm& a);
