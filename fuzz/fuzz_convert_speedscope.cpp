#include "fuzz/convertoracle.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	fuzz::CheckConversion( { reinterpret_cast<const char *>( pData ), nSize }, convert::Format::Speedscope );
	return 0;
}
