#include "keel0/mathlib.h"
