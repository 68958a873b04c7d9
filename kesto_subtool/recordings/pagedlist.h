// A list indexed by node id that costs memory only around the ids that were written.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

#include "wire/recordingtokens.h"

// A recording names its nodes by ids up to a million, and ten bytes are enough to name the last one. So the list grows
// by a count alone; its entries lie in pages that exist once something in them was written. Entries of other pages read
// as T{}. Nothing is moved when the list grows, so references stay valid.
template <typename T>
class CPagedList
{
public:
	static constexpr int32_t PAGE_SIZE = 4096; // entries
	static constexpr int32_t MAX_COUNT = wire::RECORDING_MAX_NODES;

	int32_t Count() const { return m_nCount; }
	void Extend( int32_t nCount ) { m_nCount = std::max( m_nCount, nCount ); } // nCount <= MAX_COUNT; never shrinks

	// nIndex is from 0 to MAX_COUNT - 1; at or past Count() it reads as T{}.
	const T &operator[]( int32_t nIndex ) const
	{
		const std::unique_ptr<T[]> &pPage = m_Pages[PageOf( nIndex )];
		return pPage ? pPage[OffsetOf( nIndex )] : s_Default;
	}

	// For writing; does not extend the list.
	T &At( int32_t nIndex ) { return Page( nIndex / PAGE_SIZE )[OffsetOf( nIndex )]; }

	// The PAGE_SIZE entries from nPage * PAGE_SIZE on, for writing.
	T *Page( int32_t nPage )
	{
		std::unique_ptr<T[]> &pPage = m_Pages[static_cast<size_t>( nPage )];
		if ( !pPage )
			pPage = std::make_unique<T[]>( PAGE_SIZE );
		return pPage.get();
	}

	// Whether any entry of nIndex's page was ever written.
	bool HasPageOf( int32_t nIndex ) const { return m_Pages[PageOf( nIndex )] != nullptr; }

private:
	static size_t PageOf( int32_t nIndex ) { return static_cast<size_t>( nIndex ) / PAGE_SIZE; }
	static size_t OffsetOf( int32_t nIndex ) { return static_cast<size_t>( nIndex ) % PAGE_SIZE; }

	static inline const T s_Default{};

	std::array<std::unique_ptr<T[]>, MAX_COUNT / PAGE_SIZE> m_Pages;
	int32_t m_nCount = 0;
};
