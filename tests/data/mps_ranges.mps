* Free form. Every variable sits in a row of its own (or none), so each optimum
* follows from its row's range or its bounds alone.
NAME RANGES1
ROWS
 N obj
 L r1
 G r2
 E r3
 E r4
 l r5
 G r6
 L r7
COLUMNS
 x1 obj 1 r1 1
 x2 obj -1 r2 1
 x3 obj -1 r3 1
 x4 obj 1 r4 1
 x5 obj -1 r5 1
 x6 obj 1
 x7 obj -1
 x8 obj 1
 x9 obj -1
 x10 obj 1 r6 1
 x11 obj -1
 x12 obj -1 r7 1
 x13 obj 1 r1 0
RHS
 rhs r1 10 r2 2
 rhs r3 4 r4 3
 rhs r5 8 r6 -4
 rhs r7 9
RANGES
 rng r1 4 r2 3
 rng r3 2 r4 -1
BOUNDS
 UP bnd x1 20
 MI bnd x2
 UP bnd x2 100
 FR bnd x5
 LO bnd x6 -3
 BV bnd x7
 FX bnd x8 2.5
 LI bnd x9 1
 UI bnd x9 7
 MI bnd x10
 UP bnd x11 -2
 PL bnd x12
 SC bnd x13 5
ENDDATA
