// The same use as in C, of a header that is included twice.
#include "public_header.c"
#include "ficon_cmi.h"
