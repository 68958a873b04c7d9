#include "recordings/flamelayout.h"

#include <algorithm>

static int32_t AddWrapping( int32_t a, int32_t b )
{
	return static_cast<int32_t>( static_cast<uint32_t>( a ) + static_cast<uint32_t>( b ) );
}

void LayoutFlameGraph( std::vector<FlameBar> &bars, const NodeRows &rows, CKestoFile::CTickTimings &frame )
{
	bars.assign( static_cast<size_t>( rows.Count() ), {} );
	const auto parentOf = [&]( int32_t nRow ) -> FlameBar *
	{
		const int32_t nParent = rows[nRow].m_nParentRow;
		return nParent < 0 ? nullptr : &bars[static_cast<size_t>( nParent )];
	};
	// Children come behind their parent, so from the last row on a row's children are all known. The width collects
	// theirs first.
	for ( int32_t i = rows.Count() - 1; i >= 0; i-- )
	{
		FlameBar &bar = bars[static_cast<size_t>( i )];
		bar.m_nWidth = std::max( bar.m_nWidth, static_cast<int32_t>( frame.GetEntry( rows[i].m_nNode ).m_nTime ) );
		if ( FlameBar *pParent = parentOf( i ) )
			pParent->m_nWidth = AddWrapping( pParent->m_nWidth, bar.m_nWidth );
	}
	// Where the next child of a row starts.
	std::vector<int32_t> nexts( bars.size() );
	for ( int32_t i = 0; i < rows.Count(); i++ )
	{
		FlameBar &bar = bars[static_cast<size_t>( i )];
		if ( rows[i].m_nParentRow >= 0 )
		{
			int32_t &nNext = nexts[static_cast<size_t>( rows[i].m_nParentRow )];
			bar.m_nStart = nNext;
			nNext = AddWrapping( nNext, bar.m_nWidth );
		}
		nexts[static_cast<size_t>( i )] = bar.m_nStart;
	}
}

int FlameColourIndex( const NodeRow &row )
{
	return row.m_nDepth == 0 ? 0 : ( row.m_nFirstLeaf & 1 ) + ( row.m_nDepth & 1 ) * 2;
}

FlameRect FlameBarRect( const FlameBar &bar, int32_t nDepth, const FlameMap &map )
{
	return { map.X( static_cast<float>( bar.m_nStart ) ), map.Y( -static_cast<float>( nDepth ) ),
		static_cast<float>( bar.m_nWidth ) * map.m_flXScale, map.m_flRowHeight * 0.85f };
}
