#!/usr/bin/env bash
# Writes the MAT-files of tests/data that other programs made: GNU Octave (save -v4, -v6, -v7) and
# SciPy (savemat, formats 4 and 5, with and without compression), plus a few files written byte by
# byte by tools/make_matfile_fixtures.py (big-endian records and elements, UTF-16 and UTF-32 text,
# and the header of an HDF5-based file). The tests read these files and do not need either program.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
cd "$here/../tests/data"

octave --no-gui -q --eval '
a = [1 2 3; 4 5 6.5]; z = [1+2i, -3.5-4i]; e = []; t3 = reshape(1:12, 2, 3, 2);
str = "hello"; cm = ["abc"; "xyz"]; sp = sparse([1 0 2; 0 3 0]); spz = sparse([1i 0; 0 2]);
c = {1, "two"; {3, [4 5]}, []}; st(1).a = 1; st(2).a = "x"; st(1).b = {2};
lg = logical([1 0 1]); u8 = uint8([1 2 255]); i16 = int16([-3 4]); i64 = int64([-5 7]);
big = 0.25 * (1:300);
save("-v6", "octave_v6.mat", "a", "z", "e", "t3", "str", "cm", "sp", "spz", "c", "st", "lg", "u8", "i16", "i64", "big");
save("-v7", "octave_v7.mat", "a", "z", "e", "t3", "str", "cm", "sp", "spz", "c", "st", "lg", "u8", "i16", "i64", "big");
save("-v4", "octave_v4.mat", "a", "z", "str", "sp");
sg = single([1.5 2.5]);
save("-v6", "octave_v6_single.mat", "sg");
'

# After Octave: the script also rewrites the header text of Octave's files.
/usr/bin/python3 "$here/make_matfile_fixtures.py"
