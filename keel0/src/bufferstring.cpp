#include "keel0/bufferstring.h"
