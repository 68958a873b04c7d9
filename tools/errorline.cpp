#include "tools/errorline.h"

#include <cerrno>
#include <system_error>

static void AppendOneLine( std::string &line, std::string_view text )
{
	for ( const char c : text )
	{
		const auto nByte = static_cast<unsigned char>( c );
		if ( c == '\n' )
			line += "; ";
		else
			line += nByte < 0x20 || nByte == 0x7F ? '?' : c;
	}
}

std::string FormatErrorLine( std::string_view file, std::optional<int64_t> nOffset, std::string_view what )
{
	std::string line = "kesto: ";
	if ( !file.empty() )
	{
		AppendOneLine( line, file );
		line += ": ";
	}
	if ( nOffset )
		line += "offset " + std::to_string( *nOffset ) + ": ";
	AppendOneLine( line, what );
	return line;
}

std::string LastSystemError()
{
	return std::generic_category().message( errno );
}
