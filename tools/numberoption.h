// Checks of options that take a number: a decimal one that is what it looks like. By itself the option library also
// takes "nan", hexadecimal numbers, "010" as 8, and "-1" as a very large number.
#pragma once

#include <cstdint>
#include <string_view>

namespace CLI
{
class Validator;
}

CLI::Validator NumberBetween( double flFirst, double flLast ); // both included
CLI::Validator WholeNumberFrom( int64_t nFirst );              // 0 or more
