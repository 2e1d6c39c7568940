// Load-time set-up and unload-time clean-up of the library.
#include "core/startup.h"

#include "arklib/matrix.h"
#include "core/matrix_internal.h"

library_lifetime::library_lifetime() : player_program{}, crash_text{}, viewer_program{}, gnuplot_program{}, trace(0) {
    ak_internal::init_const();
}

library_lifetime::~library_lifetime() {}
