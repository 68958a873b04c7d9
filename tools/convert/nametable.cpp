#include "tools/convert/nametable.h"

#include <functional>

#include "tools/convert/text.h"

namespace convert
{
CNameTable::CNameTable( CReport &report )
	: m_Report( report )
	, m_Slots( 1024 )
{
}

uint32_t CNameTable::Intern( std::string_view name )
{
	const uint32_t nHash = static_cast<uint32_t>( std::hash<std::string_view>()( name ) );
	const size_t nMask = m_Slots.size() - 1;
	size_t nSlot = nHash & nMask;
	for ( ; m_Slots[nSlot].m_nName != EMPTY; nSlot = ( nSlot + 1 ) & nMask )
		if ( m_Slots[nSlot].m_nHash == nHash && m_Names[m_Slots[nSlot].m_nName] == name )
			return m_Slots[nSlot].m_nName;
	return Add( name, nHash, nSlot );
}

uint32_t CNameTable::Add( std::string_view name, uint32_t nHash, size_t nSlot )
{
	if ( name.size() > MAX_NAME_BYTES )
	{
		m_Report.Add( Note::NameCut );
		return Intern( ToUtf8( CutUtf8( name, MAX_NAME_BYTES / 2 ) ) );
	}
	if ( !IsUtf8( name ) )
		return Intern( CutUtf8( ToUtf8( name ), MAX_NAME_BYTES ) );
	const bool bFull = m_Names.size() >= MAX_NAMES || m_nBytes + name.size() > MAX_BYTES;
	if ( bFull && name != COMMON_NAME )
	{
		m_Report.Add( Note::TooManyNames );
		return Intern( COMMON_NAME );
	}
	const uint32_t nName = Count();
	m_Names.emplace_back( name );
	m_nBytes += name.size();
	m_Slots[nSlot] = { nHash, nName };
	if ( m_Names.size() * 2 > m_Slots.size() )
		Grow();
	return nName;
}

void CNameTable::Grow()
{
	std::vector<Slot> slots( m_Slots.size() * 2 );
	for ( const Slot &slot : m_Slots )
	{
		if ( slot.m_nName == EMPTY )
			continue;
		size_t nSlot = slot.m_nHash & ( slots.size() - 1 );
		while ( slots[nSlot].m_nName != EMPTY )
			nSlot = ( nSlot + 1 ) & ( slots.size() - 1 );
		slots[nSlot] = slot;
	}
	m_Slots = std::move( slots );
}
} // namespace convert
