#include "keel0/strtools.h"

#include <algorithm>
#include <cstdio>

int V_vsnprintf( char *pBuffer, size_t nSize, const char *pFormat, va_list arguments )
{
	const int nNeeded = std::vsnprintf( pBuffer, nSize, pFormat, arguments );
	if ( nNeeded < 0 )
	{
		if ( nSize > 0 )
			pBuffer[0] = '\0'; // the standard leaves open what stands there after a failure
		return -1;
	}
	if ( nSize == 0 )
		return 0;
	return static_cast<int>( std::min( static_cast<size_t>( nNeeded ), nSize - 1 ) );
}

int V_snprintf( char *pBuffer, size_t nSize, const char *pFormat, ... )
{
	va_list arguments;
	va_start( arguments, pFormat );
	const int nWritten = V_vsnprintf( pBuffer, nSize, pFormat, arguments );
	va_end( arguments );
	return nWritten;
}
