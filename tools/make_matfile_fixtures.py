"""MAT-file fixtures from SciPy, and a few written byte by byte (run by make_matfile_fixtures.sh).

Every file holds small values whose expected contents the tests in tests/io/matfile_test.cpp state.
"""
import struct

import numpy as np
import scipy.io
import scipy.sparse

values = {
    "a": np.array([[1.0, 2.0, 3.0], [4.0, 5.0, 6.5]]),
    "z": np.array([[1 + 2j, -3.5 - 4j]]),
    "e": np.zeros((0, 0)),
    "t3": np.arange(1.0, 13.0).reshape((2, 3, 2), order="F"),
    "str": "hello",
    "uni": "h\u00e9\u2192",
    "cm": np.array(["abc", "xyz"]),
    "sp": scipy.sparse.csc_matrix(np.array([[1.0, 0, 2.0], [0, 3.0, 0]])),
    "spz": scipy.sparse.csc_matrix(np.array([[1j, 0], [0, 2]])),
    "lg": np.array([[True, False, True]]),
    "u8": np.array([[1, 2, 255]], dtype=np.uint8),
    "i16": np.array([[-3, 4]], dtype=np.int16),
    "i32": np.array([[-70000, 5]], dtype=np.int32),
    "u64": np.array([[7, 2**40]], dtype=np.uint64),
}
cell = np.empty((2, 2), dtype=object)
cell[0, 0] = 1.0
cell[0, 1] = "two"
inner = np.empty((1, 2), dtype=object)
inner[0, 0] = 3.0
inner[0, 1] = np.array([[4.0, 5.0]])
cell[1, 0] = inner
cell[1, 1] = np.zeros((0, 0))
values["c"] = cell
st = np.empty((1, 2), dtype=[("a", object), ("b", object)])
st[0, 0] = (1.0, "p")
st[0, 1] = ("x", np.array([[2.0, 3.0]]))
values["st"] = st

scipy.io.savemat("scipy_v5.mat", values, format="5")
scipy.io.savemat("scipy_v5z.mat", values, format="5", do_compression=True)
scipy.io.savemat("scipy_v4.mat", {"a": values["a"], "z": values["z"], "str": "hello", "sp": values["sp"]},
                 format="4")


# ---- written byte by byte -----------------------------------------------------------------------------
def pad8(b):
    return b + b"\0" * ((8 - len(b) % 8) % 8)


def tag(order, mtype, data):
    return pad8(struct.pack(order + "II", mtype, len(data)) + data)


def small_tag(order, mtype, data):
    # The tag word holds the byte count in its high half and the type in its low half.
    assert len(data) <= 4
    return struct.pack(order + "I", (len(data) << 16) | mtype) + data + b"\0" * (4 - len(data))


def matrix(order, cls, dims, name, body, flags=0, nzmax=0):
    head = tag(order, 6, struct.pack(order + "II", cls | flags, nzmax))
    head += tag(order, 5, struct.pack(order + "%di" % len(dims), *dims))
    head += tag(order, 1, name.encode()) if len(name) > 4 else small_tag(order, 1, name.encode())
    content = head + body
    return struct.pack(order + "II", 14, len(content)) + content


def header(order, text):
    h = text.encode().ljust(116, b" ") + b"\0" * 8
    return h + struct.pack(order + "H", 0x0100) + (b"MI" if order == ">" else b"IM")


be = ">"
doubles = matrix(be, 6, [2, 2], "bed", tag(be, 9, struct.pack(">4d", 1.0, 2.0, 3.0, 4.5)))
cplx = matrix(be, 6, [1, 2], "bez", tag(be, 9, struct.pack(">2d", 1.0, -2.0)) + tag(be, 9, struct.pack(">2d", 0.5, 3.0)),
              flags=0x0800)
text = matrix(be, 4, [1, 2], "bes", small_tag(be, 4, struct.pack(">2H", ord("o"), ord("k"))))
inner_cell = matrix(be, 6, [1, 1], "", tag(be, 9, struct.pack(">d", 7.0)))
cell_el = matrix(be, 1, [1, 1], "bec", inner_cell)
fields = small_tag(be, 5, struct.pack(">i", 8)) + tag(be, 1, b"f".ljust(8, b"\0") + b"gg".ljust(8, b"\0"))
strct = matrix(be, 2, [1, 1], "best", fields + matrix(be, 6, [1, 1], "", tag(be, 9, struct.pack(">d", 1.0)))
               + matrix(be, 6, [0, 0], "", b""))
sparse = matrix(be, 5, [2, 2], "besp", tag(be, 5, struct.pack(">2i", 1, 0)) + tag(be, 5, struct.pack(">3i", 0, 1, 2))
                + tag(be, 9, struct.pack(">2d", 5.0, 6.0)), nzmax=2)
with open("bytes_be_v5.mat", "wb") as f:
    f.write(header(be, "MAT-file, big-endian, written byte by byte"))
    for el in (doubles, cplx, text, cell_el, strct, sparse):
        f.write(el)

le = "<"
utf16 = matrix(le, 4, [1, 3], "u16", tag(le, 17, "a\u00e9".encode("utf-16-le") + "\U0001F600".encode("utf-16-le")))
utf32 = matrix(le, 4, [1, 2], "u32", tag(le, 18, "z\u2192".encode("utf-32-le")))
with open("bytes_utf.mat", "wb") as f:
    f.write(header(le, "MAT-file, text elements, written byte by byte"))
    f.write(utf16)
    f.write(utf32)

# A big-endian level-4 record: type 1000 (big-endian doubles), 2 x 2, named "b4".
with open("bytes_be_v4.mat", "wb") as f:
    f.write(struct.pack(">5i", 1000, 2, 2, 0, 3) + b"b4\0" + struct.pack(">4d", 1.0, 2.0, 3.0, 4.0))
    f.write(struct.pack(">5i", 1001, 1, 2, 0, 3) + b"s4\0" + struct.pack(">2d", ord("h"), ord("i")))

# The start of an HDF5-based file: the 128-byte text header with version 0x0200, blank to 512, then
# the HDF5 signature.
with open("bytes_hdf5.mat", "wb") as f:
    text = b"MAT-file of the HDF5-based container, Platform: GLNXA64, HDF5 schema 1.00 ."
    f.write(text.ljust(116, b" ") + b"\0" * 8 + struct.pack("<H", 0x0200) + b"IM")
    f.write(b"\0" * (512 - 128))
    f.write(b"\x89HDF\r\n\x1a\n" + b"\0" * 24)


# The descriptive text at the start of the level-5 files of both programs is replaced by a neutral
# one of the same length (readers look only at its first three bytes, "MAT").
def neutral_header(name, writer):
    with open(name, "r+b") as f:
        f.write(("MAT-file written by " + writer).encode().ljust(116, b" "))


for name in ("octave_v6.mat", "octave_v7.mat", "octave_v6_single.mat"):
    neutral_header(name, "GNU Octave")
for name in ("scipy_v5.mat", "scipy_v5z.mat"):
    neutral_header(name, "SciPy")
