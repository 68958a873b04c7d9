#include "wire/budgetchunks.h"
