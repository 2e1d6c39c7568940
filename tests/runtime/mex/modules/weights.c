/* The weights of the weighted module: element k (zero-based) counts k + 1 times. */
double weight_of(int k) { return k + 1.0; }
