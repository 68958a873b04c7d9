#include "views/historycolumns.h"

#include <QFontMetrics>
#include <algorithm>
#include <limits>

HistoryMeasures HistoryMeasures::Make( const BudgetViewStyle &style )
{
	HistoryMeasures measures;
	measures.m_nLabelWidth = QFontMetrics( style.m_RowFont ).horizontalAdvance( QStringLiteral( "00.00 fps" ) );
	measures.m_nBarWidth = style.m_flUIScale > 1.0f ? 4 : 2;
	return measures;
}

int HistoryVisibleColumns( const HistoryMeasures &measures, int nNarrowerWidth )
{
	return std::max( 0, ( nNarrowerWidth - measures.m_nLabelWidth ) / measures.Pitch() );
}

HistoryScrollRange HistoryScrollRange::Make( uint32_t nSampleCount, int nVisible, bool bCursorMode )
{
	HistoryScrollRange range;
	const int64_t nHidden = int64_t{ nSampleCount } - nVisible;
	range.m_bShown = bCursorMode && nHidden > 0;
	if ( !range.m_bShown )
		return range;
	// A scroll bar counts in int. Beyond that it offers the newest end: what it leaves out left the ring long before.
	range.m_nMaximum = static_cast<int>( std::min<int64_t>( nHidden, std::numeric_limits<int>::max() ) );
	range.m_nBase = static_cast<uint32_t>( nHidden - range.m_nMaximum );
	return range;
}

int64_t HistoryColumns::NewestShown() const
{
	const int64_t nNewest = int64_t{ m_nSampleCount } - 1;
	const int64_t nShown = m_bScrolled ? int64_t{ m_nFirstSample } - 1 + m_nVisible : nNewest;
	return std::max<int64_t>( 0, std::min( nShown, nNewest ) );
}

int HistoryColumns::Filled() const
{
	if ( m_nSampleCount == 0 )
		return 0;
	return static_cast<int>( std::min<int64_t>( m_nVisible, NewestShown() + 1 ) );
}

std::optional<int> HistoryColumns::ColumnOf( uint32_t nSample ) const
{
	const int64_t nColumn = NewestShown() - nSample;
	if ( nColumn < 0 || nColumn >= Filled() )
		return std::nullopt;
	return static_cast<int>( nColumn );
}

int HistoryColumns::RightEdge( int nWidth, int nColumn ) const
{
	return nWidth - m_Measures.m_nLabelWidth - 1 - nColumn * m_Measures.Pitch();
}

int HistoryColumns::Centre( int nWidth, int nColumn ) const
{
	return RightEdge( nWidth, nColumn ) - m_Measures.Pitch() / 2;
}

int64_t HistoryColumns::SampleOfPickColumn( int nPickColumn ) const
{
	if ( int64_t{ m_nVisible } > m_nSampleCount )
		return int64_t{ m_nSampleCount } - m_nVisible + nPickColumn;
	return nPickColumn + int64_t{ m_bScrolled ? m_nFirstSample : 0 };
}

uint32_t HistoryColumns::Pick( int x ) const
{
	const int nPickColumn = std::clamp( x / m_Measures.Pitch(), 0, std::max( 0, m_nVisible - 1 ) );
	const int64_t nNewest = std::max<int64_t>( 0, int64_t{ m_nSampleCount } - 1 );
	return static_cast<uint32_t>( std::clamp<int64_t>( SampleOfPickColumn( nPickColumn ), 0, nNewest ) );
}

std::optional<uint32_t> HistoryColumns::SampleUnder( int x ) const
{
	if ( x < 0 || x / m_Measures.Pitch() >= m_nVisible )
		return std::nullopt;
	const int64_t nSample = SampleOfPickColumn( x / m_Measures.Pitch() );
	if ( nSample < 0 || nSample >= m_nSampleCount )
		return std::nullopt;
	return static_cast<uint32_t>( nSample );
}
