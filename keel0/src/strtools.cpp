#include "keel0/strtools.h"
