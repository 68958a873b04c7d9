#include "keel0/logging.h"
