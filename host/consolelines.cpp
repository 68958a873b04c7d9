#include "consolelines.h"

#include <utility>

CNewestLines::CNewestLines( int nLineLimit, qint64 nCharacterLimit )
	: m_nLineLimit( nLineLimit )
	, m_nCharacterLimit( nCharacterLimit )
{
}

void CNewestLines::Add( ConsoleLine line )
{
	m_nCharacters += line.m_Text.size();
	m_Lines.push_back( std::move( line ) );
	RemoveExcess();
}

void CNewestLines::LimitAs( const CNewestLines &other )
{
	m_nLineLimit = other.m_nLineLimit;
	m_nCharacterLimit = other.m_nCharacterLimit;
	RemoveExcess();
}

void CNewestLines::RemoveExcess()
{
	while ( !IsRoomFor( Count(), m_nCharacters ) )
		RemoveOldest( 1 );
}

int CNewestLines::CountThatGoFor( const CNewestLines &newer ) const
{
	int nGone = 0;
	qint64 nCharacters = m_nCharacters + newer.m_nCharacters;
	while ( nGone < Count() && !IsRoomFor( Count() - nGone + newer.Count(), nCharacters ) )
		nCharacters -= At( nGone++ ).m_Text.size();
	return nGone;
}

void CNewestLines::RemoveOldest( int nCount )
{
	for ( int i = 0; i < nCount; i++ )
		m_nCharacters -= At( i ).m_Text.size();
	m_Lines.erase( m_Lines.begin(), m_Lines.begin() + nCount );
}

void CNewestLines::Append( CNewestLines newer )
{
	m_nCharacters += newer.m_nCharacters;
	for ( ConsoleLine &line : newer.m_Lines )
		m_Lines.push_back( std::move( line ) );
}

void CNewestLines::Clear()
{
	m_Lines.clear();
	m_nCharacters = 0;
}
