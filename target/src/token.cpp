#include "token.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "wire/sessionchunks.h"

namespace showbudget
{
namespace
{
constexpr const char *VARIABLE = "SHOWBUDGET_TOKEN";
constexpr const char *FILE_VARIABLE = "SHOWBUDGET_TOKEN_FILE";

bool IsGiven( const char *pText )
{
	return pText && *pText;
}

bool ReadFirstLine( const char *pPath, std::string &line, std::string &error )
{
	const std::unique_ptr<FILE, int ( * )( FILE * )> pFile( std::fopen( pPath, "re" ), std::fclose );
	// Enough to see that a line is too long, with its end.
	char text[wire::MAX_HELLO_TOKEN + 3];
	const size_t nRead = pFile ? std::fread( text, 1, sizeof( text ), pFile.get() ) : 0;
	if ( !pFile || std::ferror( pFile.get() ) )
	{
		error = std::string( FILE_VARIABLE ) + ": cannot read \"" + pPath + "\": " + std::strerror( errno );
		return false;
	}
	const std::string_view whole( text, nRead );
	line = whole.substr( 0, whole.find( '\n' ) );
	if ( line.ends_with( '\r' ) )
		line.pop_back();
	return true;
}

bool Check( const std::string &token, const std::string &source, std::string &error )
{
	if ( wire::IsToken( token ) )
		return true;
	error = source + ": a token is one line of 1 to " + std::to_string( wire::MAX_HELLO_TOKEN ) +
			" bytes without control characters";
	return false;
}
} // namespace

bool FindToken( const char *pSetting, std::string &token, std::string &error )
{
	token.clear();
	const char *pVariable = secure_getenv( VARIABLE );
	const char *pPath = secure_getenv( FILE_VARIABLE );
	if ( IsGiven( pSetting ) )
		return Check( token = pSetting, "Settings::m_pToken", error );
	if ( IsGiven( pVariable ) )
		return Check( token = pVariable, VARIABLE, error );
	if ( IsGiven( pPath ) )
		return ReadFirstLine( pPath, token, error ) && Check( token, '"' + std::string( pPath ) + '"', error );
	return true;
}

bool IsSameToken( std::string_view own, std::string_view other )
{
	volatile unsigned int nDifference = own.size() != other.size();
	for ( size_t i = 0; i < wire::MAX_HELLO_TOKEN; i++ )
	{
		const unsigned char nOwn = i < own.size() ? static_cast<unsigned char>( own[i] ) : 0;
		const unsigned char nOther = i < other.size() ? static_cast<unsigned char>( other[i] ) : 0;
		nDifference = nDifference | static_cast<unsigned int>( nOwn ^ nOther );
	}
	return nDifference == 0;
}
} // namespace showbudget
