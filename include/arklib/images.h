// Image files: PNG (libpng) and JPEG (libjpeg). Images are rows x cols (grey) or rows x cols x 3
// (RGB) arrays of bytes; an indexed PNG gives its indices (from 0) and a colormap.
#pragma once
#include "arklib/matrix.h"

// imread(file), imread(file, format); [x, map, alpha] = imread(...). The format ('png', 'jpg' or
// 'jpeg') is found from the file's first bytes when not given. 16-bit PNG samples are read as 8-bit.
Mm imread(const Mm& file);
Mm imread(const Mm& file, const Mm& format);
Mm imread(const Mm& file, i_o_t, Mm& map);
Mm imread(const Mm& file, i_o_t, Mm& map, Mm& alpha);
Mm imread(const Mm& file, const Mm& format, i_o_t, Mm& map, Mm& alpha);
// imwrite(a, file), imwrite(a, file, format), imwrite(x, map, file), imwrite(a, file, 'Quality', q)
// (JPEG quality 0 to 100, 75 by default). Doubles are taken as [0, 1] and clipped; bytes as they are;
// the format comes from the file's extension when not given.
Mm imwrite(const Mm& a, const Mm& file);
Mm imwrite(const Mm& a, const Mm& b, const Mm& c);
Mm imwrite(const Mm& a, const Mm& b, const Mm& c, const Mm& d);
// A structure describing the file: Filename, FileSize, Format, Width, Height, BitDepth, ColorType.
Mm imfinfo(const Mm& file);
Mm imfinfo(const Mm& file, const Mm& format);
