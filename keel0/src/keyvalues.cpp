#include "keel0/keyvalues.h"
