#include "tools/accesstoken.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "tools/errorline.h"
#include "wire/sessionchunks.h"

namespace
{
constexpr const char *VARIABLE = "SHOWBUDGET_TOKEN";
constexpr const char *FILE_VARIABLE = "SHOWBUDGET_TOKEN_FILE";

std::optional<std::string> ReadFirstLine( const char *pPath, std::string &problem )
{
	const std::unique_ptr<FILE, int ( * )( FILE * )> pFile( std::fopen( pPath, "re" ), std::fclose );
	char text[wire::MAX_HELLO_TOKEN + 3]; // enough to see that a line is too long, with its end
	const size_t nRead = pFile ? std::fread( text, 1, sizeof( text ), pFile.get() ) : 0;
	if ( !pFile || std::ferror( pFile.get() ) )
	{
		problem = std::string( FILE_VARIABLE ) + ": cannot read " + pPath + ": " + LastSystemError();
		return std::nullopt;
	}
	const std::string_view whole( text, nRead );
	std::string line( whole.substr( 0, whole.find( '\n' ) ) );
	if ( line.ends_with( '\r' ) )
		line.pop_back();
	return line;
}

std::optional<std::string> Check( std::string token, const std::string &origin, std::string &problem )
{
	if ( wire::IsToken( token ) )
		return token;
	problem = origin + ": a token is one line of 1 to " + std::to_string( wire::MAX_HELLO_TOKEN ) +
			  " bytes without control characters";
	return std::nullopt;
}
} // namespace

std::optional<std::string> FindAccessToken( std::string &problem )
{
	const char *pToken = std::getenv( VARIABLE );
	if ( pToken && *pToken )
		return Check( pToken, VARIABLE, problem );
	const char *pPath = std::getenv( FILE_VARIABLE );
	if ( !pPath || !*pPath )
		return std::string();
	std::optional<std::string> line = ReadFirstLine( pPath, problem );
	return line ? Check( std::move( *line ), pPath, problem ) : std::nullopt;
}
