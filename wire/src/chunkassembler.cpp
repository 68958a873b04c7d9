#include "wire/chunkassembler.h"
