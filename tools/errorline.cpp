#include "tools/errorline.h"

#include <cerrno>
#include <system_error>

#include "wire/plaintext.h"

static void AppendOneLine( std::string &line, std::string_view text )
{
	for ( size_t nEnd = text.find( '\n' ); nEnd != std::string_view::npos; nEnd = text.find( '\n' ) )
	{
		line += wire::ToPlainLine( text.substr( 0, nEnd ) ) + "; ";
		text.remove_prefix( nEnd + 1 );
	}
	line += wire::ToPlainLine( text );
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
