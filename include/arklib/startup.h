// Start and end of a translated program: the handshake with the library, and the ways out.
//
//     int main() {
//         initM();          // or initM2(ARKLIB_VERSION, ARKLIB_MM_SIZE)
//         ...
//         exitM();
//         return 0;
//     }
#pragma once
#include "arklib/matrix.h"

// The library's version, printed as 4.51.
#define ARKLIB_VERSION 4510
// The size of the matrix head as the program including this header sees it.
#define ARKLIB_MM_SIZE (static_cast<int>(sizeof(Mm)))

// Checks that the program was compiled against this library (version and size of Mm), resets the
// floating-point unit and gives the constant objects their values again. Called first.
void initM2(int version, int size);
// initM2 with the values of this header.
inline void initM() { initM2(ARKLIB_VERSION, ARKLIB_MM_SIZE); }

// Closes the graphics side and resets the floating-point unit. The library stays usable.
void exitM();
// exitM, then ends the process with status 0. Distinct from the C library's exit(int).
[[noreturn]] Mm exit();
[[noreturn]] Mm quit();

// Turns multi-task mode on or off (atomic reference counts, runtime locks); returns the process id.
// Call it before the program starts threads.
unsigned ak_set_AK(int on);

// Shows pending drawing and closes the graphics engine with `code`. Returns x_M.
Mm guiexit(const Mm& code);
