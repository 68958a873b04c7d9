// Reads a whole file into memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/command.h"

// "-" is standard input. The result is empty, or what went wrong, without the file's name.
std::string ReadInputFile( CommandContext &context, const std::string &path, std::vector<uint8_t> &bytes );
