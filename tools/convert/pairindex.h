// Finds a number by a pair of numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace convert
{
// A hash table without removal. Values are never EMPTY.
class CPairIndex
{
public:
	static constexpr uint32_t EMPTY = 0xFFFFFFFF;

	CPairIndex()
		: m_Slots( 256 )
	{
	}

	uint32_t Find( uint64_t nKey ) const
	{
		return m_Slots[SlotOf( m_Slots, nKey )].m_nValue;
	} // EMPTY when there is none

	void Add( uint64_t nKey, uint32_t nValue ) // that is not there yet
	{
		if ( ( m_nCount + 1 ) * 2 > m_Slots.size() )
			Grow();
		m_Slots[SlotOf( m_Slots, nKey )] = { nKey, nValue };
		m_nCount++;
	}
	static uint64_t Key( uint32_t nFirst, uint32_t nSecond ) { return uint64_t{ nFirst } << 32 | nSecond; }

private:
	struct Slot
	{
		uint64_t m_nKey = 0;
		uint32_t m_nValue = EMPTY;
	};

	// The slot of the key, or the empty one that it would take.
	static size_t SlotOf( const std::vector<Slot> &slots, uint64_t nKey )
	{
		const size_t nMask = slots.size() - 1;
		size_t nSlot = static_cast<size_t>( ( nKey * 0x9E3779B97F4A7C15u ) >> 32 ) & nMask;
		while ( slots[nSlot].m_nValue != EMPTY && slots[nSlot].m_nKey != nKey )
			nSlot = ( nSlot + 1 ) & nMask;
		return nSlot;
	}
	void Grow()
	{
		std::vector<Slot> slots( m_Slots.size() * 2 );
		for ( const Slot &slot : m_Slots )
			if ( slot.m_nValue != EMPTY )
				slots[SlotOf( slots, slot.m_nKey )] = slot;
		m_Slots.swap( slots );
	}

	std::vector<Slot> m_Slots; // a power of two
	size_t m_nCount = 0;
};
} // namespace convert
