#include "tools/limits.h"

#include "tools/text.h"

static std::string_view Trim( std::string_view text )
{
	const size_t nFirst = text.find_first_not_of( ' ' );
	if ( nFirst == std::string_view::npos )
		return {};
	return text.substr( nFirst, text.find_last_not_of( ' ' ) - nFirst + 1 );
}

std::optional<TimeLimit> ReadTimeLimit( std::string_view text )
{
	const size_t nSign = text.rfind( "<=" );
	if ( nSign == std::string_view::npos )
		return std::nullopt;
	const std::string_view number = Trim( text.substr( nSign + 2 ) );
	const std::optional<double> flMilliseconds = ReadAmount( number );
	if ( !flMilliseconds )
		return std::nullopt;
	return TimeLimit{ std::string( Trim( text.substr( 0, nSign ) ) ), *flMilliseconds, std::string( number ) };
}
