* Fixed form: the names sit in their columns, and one row name holds a blank.
NAME          FIXED1
ROWS
 N  COST
 L  LIM 1
 G  LIM2
 E  MYEQN
COLUMNS
    X1        COST         1.0         LIM 1        1.0
    X1        LIM2         1.0
    X2        COST         2.0         LIM 1        1.0
    X2        MYEQN       -1.0
    X3        COST        -1.0         MYEQN        1.0
RHS
    RHS       LIM 1        4.0         LIM2         1.0
    RHS       MYEQN        7.0
BOUNDS
 UP BND       X1           4.0
 LO BND       X2          -1.0
 UP BND       X2           1.0
ENDATA
