#include "recordings/framefinder.h"

#include <algorithm>

static double MedianOf( std::vector<int32_t> values )
{
	if ( values.empty() )
		return 0.0;
	const auto middle = values.begin() + static_cast<ptrdiff_t>( values.size() / 2 );
	std::nth_element( values.begin(), middle, values.end() );
	if ( values.size() % 2 != 0 )
		return *middle;
	return ( static_cast<double>( *std::max_element( values.begin(), middle ) ) + *middle ) / 2.0;
}

FrameFinder::FrameFinder( const CKestoFile &file )
{
	m_Times.reserve( static_cast<size_t>( file.GetFrameCount() ) );
	for ( int i = 0; i < file.GetFrameCount(); i++ )
		m_Times.push_back( static_cast<int32_t>( file.GetFrame( i )->PeekEntry( file.GetRootNode() ).m_nTime ) );
	m_flMedian = MedianOf( m_Times );
}

int FrameFinder::FindNextSlow( int nFrame ) const
{
	for ( int i = std::max( nFrame + 1, 0 ); i < Count(); i++ )
		if ( IsSlow( i ) )
			return i;
	return -1;
}

int FrameFinder::FindPreviousSlow( int nFrame ) const
{
	for ( int i = std::min( nFrame, Count() ) - 1; i >= 0; i-- )
		if ( IsSlow( i ) )
			return i;
	return -1;
}

int FrameFinder::FindSlowest() const
{
	return m_Times.empty() ? -1
						   : static_cast<int>( std::max_element( m_Times.begin(), m_Times.end() ) - m_Times.begin() );
}
