#include "frame/staticinit.h"

#include "keel0/bufferstring.h"
#include "keel0/platform.h"

void CStaticInitState::Touch( const void *pGuardedData )
{
	uint32_t nBefore = m_nWord.load();
	while ( !m_nWord.compare_exchange_weak( nBefore, nBefore | TOUCHED ) )
		continue;
	if ( nBefore != ALL_BUT_TOUCHED )
		return;
	CBufferString text;
	text.Format( "Intentionally vague touch behavior for %p\n", pGuardedData );
	Plat_DebugPrint( text.Get() );
}

void ReportMissingOrderedConstruct()
{
	Plat_FatalErrorFunc( "Ordered constructor wrapped type has no default constructor.\n\tYou must construct it with "
						 "ORDERED_CONSTRUCT macro in the dependency resolution function.\n" );
}
