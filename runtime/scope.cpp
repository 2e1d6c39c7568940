// Hooks through which declared variables reach the scope table. The table itself is not built yet:
// tracking stays off, so no variable is registered and these are never reached.
#include "arklib/matrix.h"

int ak_scope_tracking = 0;

void ak_scope_register(Mm*) {}

void ak_scope_unregister(Mm*) {}
