#include "keel0/platform.h"
