// Signal processing: discrete Fourier transforms (on FFTW), digital filters, convolution and
// correlation, frequency response and windows.
#pragma once
#include "arklib/matrix.h"

// fft(x), fft(x, n), fft(x, n, dim): the DFT along dim (the first non-singleton dimension when
// not given), x padded with zeros or cut to n points along it (an empty n keeps the length).
Mm fft(const Mm& x);
Mm fft(const Mm& x, const Mm& n);
Mm fft(const Mm& x, const Mm& n, const Mm& dim);
// The inverse, scaled by 1/n. A result whose input was conjugate-symmetric along dim is real.
Mm ifft(const Mm& x);
Mm ifft(const Mm& x, const Mm& n);
Mm ifft(const Mm& x, const Mm& n, const Mm& dim);
// Along the first two dimensions, with optional sizes m and n.
Mm fft2(const Mm& x);
Mm fft2(const Mm& x, const Mm& m, const Mm& n);
Mm ifft2(const Mm& x);
Mm ifft2(const Mm& x, const Mm& m, const Mm& n);
// Along every dimension; siz gives the size along each.
Mm fftn(const Mm& x);
Mm fftn(const Mm& x, const Mm& siz);
Mm ifftn(const Mm& x);
Mm ifftn(const Mm& x, const Mm& siz);
// Moves the zero frequency to the middle (along every dimension, or along dim).
Mm fftshift(const Mm& x);
Mm fftshift(const Mm& x, const Mm& dim);
Mm ifftshift(const Mm& x);
Mm ifftshift(const Mm& x, const Mm& dim);

// y = filter(b, a, x, zi, dim): the rational filter b/a in direct form II transposed along dim,
// with initial and final delay states (length max(numel(a), numel(b)) - 1 along dim).
Mm filter(const Mm& b, const Mm& a, const Mm& x);
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi);
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi, const Mm& dim);
Mm filter(const Mm& b, const Mm& a, const Mm& x, i_o_t, Mm& zf);
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi, i_o_t, Mm& zf);
Mm filter(const Mm& b, const Mm& a, const Mm& x, const Mm& zi, const Mm& dim, i_o_t, Mm& zf);
// Two-dimensional convolution with the shape 'full' (default), 'same' or 'valid'.
Mm conv2(const Mm& a, const Mm& b);
Mm conv2(const Mm& a, const Mm& b, const Mm& shape);
// filter2(h, x, shape) correlates x with h: conv2(x, rot90(h, 2), shape); shape 'same' by default.
Mm filter2(const Mm& h, const Mm& x);
Mm filter2(const Mm& h, const Mm& x, const Mm& shape);
// Cross-correlation over the lags -(N-1)..(N-1) as a column (row for row input); the scale
// option is 'none', 'biased', 'unbiased' or 'coeff'; the lags come as a second output.
Mm xcorr(const Mm& x);
Mm xcorr(const Mm& x, const Mm& y);
Mm xcorr(const Mm& x, const Mm& y, const Mm& scale);
Mm xcorr(const Mm& x, i_o_t, Mm& lags);
Mm xcorr(const Mm& x, const Mm& y, i_o_t, Mm& lags);
Mm xcorr(const Mm& x, const Mm& y, const Mm& scale, i_o_t, Mm& lags);
// [h, w] = freqz(b, a, n): the response at n (512 by default) frequencies in [0, pi).
Mm freqz(const Mm& b);
Mm freqz(const Mm& b, const Mm& a);
Mm freqz(const Mm& b, const Mm& a, const Mm& n);
Mm freqz(const Mm& b, i_o_t, Mm& w);
Mm freqz(const Mm& b, const Mm& a, i_o_t, Mm& w);
Mm freqz(const Mm& b, const Mm& a, const Mm& n, i_o_t, Mm& w);
// Windows of n points as columns.
Mm hamming(const Mm& n);
Mm hanning(const Mm& n);
// Removes the least-squares line (or, with 'constant' or 0, the mean) from each column.
Mm detrend(const Mm& x);
Mm detrend(const Mm& x, const Mm& kind);
// The smallest p with 2^p >= abs(n), element by element.
Mm nextpow2(const Mm& n);
