#include "views/stampcache.h"

#include <QFontInfo>
#include <QHash>
#include <algorithm>

uint qHash( const StampKey &key, uint nSeed ) noexcept
{
	QtPrivate::QHashCombine combine;
	uint nHash = qHash( key.m_Text, nSeed );
	for ( const uint nPart : { uint( key.m_Kind ), uint( key.m_nVariant ), uint( key.m_nWidth ), uint( key.m_nHeight ),
			  uint( key.m_Pen ), uint( key.m_nPenStyle ), uint( key.m_Brush ) } )
		nHash = combine( nHash, nPart );
	for ( const QPoint &point : key.m_Points )
		nHash = combine( nHash, uint( point.x() * 31 + point.y() ) );
	return nHash;
}

const Stamp *CStampCache::Insert( const StampKey &key, Stamp stamp )
{
	const int nCost = static_cast<int>( std::min<qsizetype>( stamp.m_Image.sizeInBytes(), LIMIT + 1 ) );
	auto *pStamp = new Stamp( std::move( stamp ) );
	return m_Stamps.insert( key, pStamp, nCost ) ? pStamp : nullptr;
}

int CStampCache::FontIndex( const QFont &font )
{
	const auto found = std::ranges::find( m_Fonts, font, &FontEntry::m_Font );
	if ( found != m_Fonts.end() )
		return static_cast<int>( found - m_Fonts.begin() );

	FontEntry entry{ font, nullptr };
	if ( QFontInfo( font ).fixedPitch() )
		entry.m_pFixedPitch = std::make_unique<CFixedPitchText>( font );
	m_Fonts.push_back( std::move( entry ) );
	return static_cast<int>( m_Fonts.size() ) - 1;
}
