// Call stacks of samples, each once.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tools/convert/pairindex.h"

namespace convert
{
// Stacks that begin alike share what they have in common. The empty stack is EMPTY_STACK.
class CStackTable
{
public:
	static constexpr uint32_t EMPTY_STACK = 0;
	static constexpr size_t MAX_STACKS = 1u << 21; // with their beginnings

	uint32_t Push( uint32_t nStack, uint32_t nName ) // nStack itself when the table is full
	{
		// What was pushed on a stack first is found without the index, which so stays small where most stacks go on in
		// one way only.
		const uint32_t nFirst = m_Entries[nStack].m_nFirstAbove;
		if ( nFirst != EMPTY_STACK && m_Entries[nFirst].m_nName == nName )
			return nFirst;
		const uint64_t nKey = CPairIndex::Key( nStack, nName );
		const uint32_t nFound = nFirst == EMPTY_STACK ? CPairIndex::EMPTY : m_Index.Find( nKey );
		if ( nFound != CPairIndex::EMPTY || m_Entries.size() >= MAX_STACKS )
			return nFound != CPairIndex::EMPTY ? nFound : nStack;
		const auto nEntry = static_cast<uint32_t>( m_Entries.size() );
		m_Entries.push_back( { nStack, nName } );
		if ( nFirst == EMPTY_STACK )
			m_Entries[nStack].m_nFirstAbove = nEntry;
		else
			m_Index.Add( nKey, nEntry );
		return nEntry;
	}

	// Names from the outermost to the innermost.
	void Get( uint32_t nStack, std::vector<uint32_t> &names ) const
	{
		names.clear();
		for ( ; nStack != EMPTY_STACK; nStack = m_Entries[nStack].m_nBelow )
			names.push_back( m_Entries[nStack].m_nName );
		std::reverse( names.begin(), names.end() );
	}

private:
	struct Entry
	{
		uint32_t m_nBelow;
		uint32_t m_nName;
		uint32_t m_nFirstAbove = EMPTY_STACK; // which is above nothing
	};
	std::vector<Entry> m_Entries{ Entry{ 0, 0 } };
	CPairIndex m_Index; // of all but those that are the first above another
};
} // namespace convert
