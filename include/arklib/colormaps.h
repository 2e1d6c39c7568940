// Colormaps (m x 3 matrices of red, green and blue in [0, 1]; 64 colours when m is not given) and
// conversions between indexed, RGB, grey and HSV colour.
#pragma once
#include "arklib/matrix.h"

Mm gray();
Mm gray(const Mm& m);
Mm hot();
Mm hot(const Mm& m);
Mm cool();
Mm cool(const Mm& m);
Mm jet();
Mm jet(const Mm& m);
Mm hsv();
Mm hsv(const Mm& m);
Mm bone();
Mm bone(const Mm& m);
Mm copper();
Mm copper(const Mm& m);
Mm pink();
Mm pink(const Mm& m);
Mm spring();
Mm spring(const Mm& m);
Mm summer();
Mm summer(const Mm& m);
Mm autumn();
Mm autumn(const Mm& m);
Mm winter();
Mm winter(const Mm& m);
// The line colours, repeated to m rows.
Mm lines();
Mm lines(const Mm& m);
// The library's default map: lightness rises evenly from deep blue through teal to yellow, so that
// equal steps in data look like equal steps in colour, and it stays ordered when printed in grey.
Mm arkmap();
Mm arkmap(const Mm& m);

// X indexes map (from 1 for doubles, from 0 for bytes); the result is rows x cols x 3.
Mm ind2rgb(const Mm& x, const Mm& map);
// Luminance 0.2989 R + 0.5870 G + 0.1140 B of an RGB image (a byte image stays bytes) or map.
Mm rgb2gray(const Mm& rgb);
// Hue, saturation and value of a map (m x 3) or an image (rows x cols x 3), and back.
Mm rgb2hsv(const Mm& rgb);
Mm hsv2rgb(const Mm& hsv);
