#include "keel0/memalloc.h"
