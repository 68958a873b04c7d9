#include "wire/sessionchunks.h"
