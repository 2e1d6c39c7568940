// arklib: runtime library of translated M-file programs. The one header a translated program
// includes.
#pragma once

#include "arklib/ops.h"
#include "arklib/memory.h"
#include "arklib/error.h"
#include "arklib/matrix.h"
#include "arklib/subscript.h"
#include "arklib/list.h"
#include "arklib/sparse.h"
#include "arklib/startup.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/strings.h"
#include "arklib/constructors.h"
#include "arklib/random.h"
#include "arklib/sort.h"
#include "arklib/arith.h"
#include "arklib/elementary.h"
#include "arklib/format.h"
#include "arklib/display.h"
#include "arklib/builtins.h"
#include "arklib/hooks.h"
