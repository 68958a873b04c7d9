#include "tools/numberoption.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <sstream>

#include "tools/text.h"

static bool IsWholeNumberFrom( std::string_view text, int64_t nFirst )
{
	int64_t nValue = 0;
	const auto [pEnd, error] = std::from_chars( text.data(), text.data() + text.size(), nValue );
	const bool bOctal = text.size() > 1 && text.front() == '0';
	return error == std::errc() && pEnd == text.data() + text.size() && !bOctal && nValue >= nFirst;
}

CLI::Validator NumberBetween( double flFirst, double flLast )
{
	std::ostringstream range;
	range << "a number from " << flFirst << " to " << flLast;
	return CLI::Validator(
		[flFirst, flLast, expected = range.str()]( const std::string &text )
		{
			const std::optional<double> flValue = ReadAmount( text );
			const bool bGood = flValue && *flValue >= flFirst && *flValue <= flLast;
			return bGood ? std::string() : '"' + text + "\" is not " + expected;
		},
		"" );
}

CLI::Validator WholeNumberFrom( int64_t nFirst )
{
	return CLI::Validator(
		[nFirst]( const std::string &text )
		{
			return IsWholeNumberFrom( text, nFirst )
					   ? std::string()
					   : '"' + text + "\" is not a whole number from " + std::to_string( nFirst ) + " on";
		},
		"" );
}
