// The resource manifests that the module offers to the host.
#pragma once

#include <vector>

using MakeResourceManifestFn = void *(*)( void *pContext );

class CResourceManifestList
{
public:
	void Add( MakeResourceManifestFn pMake );

	int Count() const { return static_cast<int>( m_Entries.size() ); }

	// Fills ppManifests with the first nMaxCount manifests at most and returns how many those are. A manifest is made
	// on its first request, with pContext for its maker, and stays the same from then on.
	int Get( int nMaxCount, void **ppManifests, void *pContext );

private:
	struct Entry
	{
		void *m_pManifest = nullptr;
		MakeResourceManifestFn m_pMake = nullptr;
	};

	std::vector<Entry> m_Entries;
};
