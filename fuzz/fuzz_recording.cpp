// Bytes as a recording, read by the parser in three ways and by the slow reader; all must agree.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "memorylimit.h"
#include "tests/recordings/recordingoracle.h"

namespace
{
// The parser alone: the other readers may take what they like.
void CheckMemory( std::span<const uint8_t> bytes )
{
	CMemoryLimit limit( bytes.size() );
	CKestoMemoryReader reader( bytes );
	ParseRecording( reader );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	CheckMemory( { pData, nSize } );
	const std::string difference = CompareAllReaders( { pData, nSize } );
	if ( !difference.empty() )
	{
		std::fprintf( stderr, "%s\n", difference.c_str() );
		std::abort();
	}
	return 0;
}
