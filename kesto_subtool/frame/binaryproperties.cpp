#include "frame/binaryproperties.h"

#include "frame/staticinit.h"

namespace
{
int Answer( BinaryProperty *pResult, const char *pString )
{
	pResult->m_pString = pString;
	pResult->m_Kind = BinaryPropertyKind::String;
	return 1;
}

int Answer( BinaryProperty *pResult, intptr_t nInteger )
{
	pResult->m_nInteger = nInteger;
	pResult->m_Kind = BinaryPropertyKind::Integer;
	return 1;
}
} // namespace

int GetBinaryProperty( CStaticInitState &state, const void *pGuardedData, int nKey, BinaryProperty *pResult )
{
	state.Touch( pGuardedData );
	switch ( nKey )
	{
		case 0:
			return Answer( pResult, "Release" );
		case 1:
		case 5:
			return Answer( pResult, intptr_t{ 0 } );
		case 2:
		case 6:
			return Answer( pResult, intptr_t{ 1 } );
		case 3:
		case 4:
			return Answer( pResult, "kesto_subtool" );
		case 7:
			return Answer( pResult, intptr_t{ 2 } );
		default:
			return 0;
	}
}
