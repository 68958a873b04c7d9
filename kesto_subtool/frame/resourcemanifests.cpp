#include "frame/resourcemanifests.h"

#include <algorithm>

void CResourceManifestList::Add( MakeResourceManifestFn pMake )
{
	m_Entries.push_back( { nullptr, pMake } );
}

int CResourceManifestList::Get( int nMaxCount, void **ppManifests, void *pContext )
{
	const int nCount = std::clamp( nMaxCount, 0, Count() );
	for ( int i = 0; i < nCount; i++ )
	{
		Entry &entry = m_Entries[static_cast<size_t>( i )];
		if ( !entry.m_pManifest )
			entry.m_pManifest = entry.m_pMake( pContext );
		ppManifests[i] = entry.m_pManifest;
	}
	return nCount;
}
