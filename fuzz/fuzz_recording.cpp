// Bytes as a recording, read by the parser in three ways and by the slow reader; all must agree.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "tests/recordings/recordingoracle.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	const std::string difference = CompareAllReaders( { pData, nSize } );
	if ( !difference.empty() )
	{
		std::fprintf( stderr, "%s\n", difference.c_str() );
		std::abort();
	}
	return 0;
}
