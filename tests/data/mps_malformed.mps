NAME BROKEN
ROWS
 N cost
 L c1
COLUMNS
 x cost 1 c1 1
 y cost 1 c9 1
RHS
 rhs c1 1
ENDATA
