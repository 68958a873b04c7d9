#include "wire/controlchunks.h"
