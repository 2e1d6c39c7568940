// Random numbers: uniform (randM, the language's rand) and normal (randn) deviates, each with a
// "state" generator (the default) and the older "seed" generator, and randperm.
#pragma once
#include <cstddef>

#include "arklib/matrix.h"

// One deviate.
double randM();
double randn();

// randM(n) is n x n, randM(m, n) is m x n. With an Mm: a scalar s gives s x s, a vector of 2 to 4
// elements those sizes, anything else the size of the argument; several arguments give the sizes in
// order. randM("state") is the state as a column of 35, randM("seed") the seed value;
// randM("state", y) seeds (scalar y) or restores (35 elements) the state generator and selects it;
// randM("seed", y) seeds the seed generator and selects it. Those two return x_M.
Mm randM(double n);
Mm randM(double m, double n);
Mm randM(const Mm& x);
Mm randM(const Mm& x, const Mm& y);
Mm randM(const Mm& x, const Mm& y, const Mm& z);
Mm randM(const Mm& x, const Mm& y, const Mm& z, const Mm& w);

// The same for randn; its state is 2 words.
Mm randn(double n);
Mm randn(double m, double n);
Mm randn(const Mm& x);
Mm randn(const Mm& x, const Mm& y);
Mm randn(const Mm& x, const Mm& y, const Mm& z);
Mm randn(const Mm& x, const Mm& y, const Mm& z, const Mm& w);

// randM("state"), randM("seed", 7), ... written with a string literal.
template <std::size_t N>
inline Mm randM(const char (&command)[N]) {
    return randM(TM(command));
}
template <std::size_t N>
inline Mm randM(const char (&command)[N], const Mm& y) {
    return randM(TM(command), y);
}
template <std::size_t N>
inline Mm randn(const char (&command)[N]) {
    return randn(TM(command));
}
template <std::size_t N>
inline Mm randn(const char (&command)[N], const Mm& y) {
    return randn(TM(command), y);
}

// A random permutation of 1..n as a row: the index of sort(randM(1, n)).
Mm randperm(const Mm& n);

namespace ak_internal {

// Fill `n` doubles with as many scalar draws of randM() or randn(), in order.
void rand_fill(double* out, int n);
void randn_fill(double* out, int n);

// The normal generator's tables: V (66 entries, twice the layer edges, ending in 0.0), T (64, the
// layer widths V[k+1] - V[k]) and W (65, V[k+1] * 2^-32).
const double* randn_table_V();
const double* randn_table_T();
const double* randn_table_W();

}  // namespace ak_internal
