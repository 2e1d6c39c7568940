NAME INFEAS
ROWS
 N cost
 G atleast
 L atmost
COLUMNS
 x cost 1 atleast 1
 x atmost 1
RHS
 rhs atleast 3 atmost 2
ENDATA
