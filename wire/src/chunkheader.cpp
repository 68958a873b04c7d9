#include "wire/chunkheader.h"
