// miniM: the plain matrix record exchanged with the graphics engine.
#include <cstdlib>

#include "arklib/matrix.h"

miniM::miniM() : ndims(2), dims{0, 0, 1, 1}, str(0), data(nullptr) {}

miniM::miniM(const miniM& shape, int s) : ndims(shape.ndims), str(s), data(nullptr) {
    for (int k = 0; k < 4; ++k) dims[k] = shape.dims[k];
    alloc();
}

miniM::miniM(int nd, const int* d, int s) : ndims(2), dims{0, 0, 0, 0}, str(s), data(nullptr) {
    setsize(nd, d);
    alloc();
}

void miniM::setsize(int rows, int cols, int depth) {
    ndims = 2;
    dims[0] = rows;
    dims[1] = cols;
    dims[2] = 1;
    dims[3] = 1;
    if (depth >= 1) {
        ndims = 3;
        dims[2] = depth;
    }
}

void miniM::setsize(int n, const int* d) {
    if (n > 4) n = 4;
    ndims = n;
    for (int k = 0; k < 4; ++k) dims[k] = k < n ? d[k] : 1;
}

int miniM::size() const {
    long long n = 1;
    for (int k = 0; k < 4; ++k) n *= dims[k];
    return n > 0x7fffffff ? 0x7fffffff : static_cast<int>(n);
}

void miniM::alloc() {
    int n = size();
    data = n < 1 ? nullptr : static_cast<double*>(std::calloc(n, sizeof(double)));
    if (n >= 1 && !data) error("Out of memory!");
}

void miniM::free() {
    std::free(data);
    data = nullptr;
    ndims = -1;
}

double* miniM::addr(int k) {
    if (k >= 0 && k <= size()) return data + k;
    error("miniM addr: offset out of range.");
    return data;
}

double& miniM::r(int k) {
    if (k >= 1 && k <= size() && data) return data[k - 1];
    error("miniM.r: r out of range");
    static double scratch;
    return scratch;
}
