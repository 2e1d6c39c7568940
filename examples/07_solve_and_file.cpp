// A linear system solved with the backslash operator, its solution written to a text file and read
// back.
//
// M source (solve.m):
//
//   A = magic(4) + 4 * eye(4);
//   b = A * [1; 2; 3; 4];
//   x = A \ b;
//   disp(x')
//   name = tempname;
//   fid = fopen(name, 'w'); fprintf(fid, '%.17g\n', x); fclose(fid);
//   fid = fopen(name, 'r'); y = fscanf(fid, '%g'); fclose(fid);
//   delete(name)
//   disp(max(abs(x - y)))
#include "arklib.h"

int main() {
    initM();
    Mm A("A", 0, 0), b("b", 0, 0), x("x", 0, 0), y("y", 0, 0), name("name", 0, 0), fid("fid", 0, 0);
    A = magic(Mm(4.0)) + 4.0 * eye(Mm(4.0));
    b = mtimes(A, Mm((BR(1.0), semi, 2.0, semi, 3.0, semi, 4.0)));
    x = mldivide(A, b);
    disp(transpose(x));
    name = tempname();
    fid = fopen(name, TM("w"));
    fprintf(fid, TM("%.17g\n"), x);
    fclose(fid);
    fid = fopen(name, TM("r"));
    y = fscanf(fid, TM("%g"));
    fclose(fid);
    deleteM(name);
    disp(max(abs(x - y)));
    exitM();
    return 0;
}
