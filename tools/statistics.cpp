#include "tools/statistics.h"

#include <algorithm>
#include <cmath>

CDistribution::CDistribution( std::vector<int32_t> numbers, size_t nFurtherZeros )
	: m_Numbers( std::move( numbers ) )
	, m_nZeros( nFurtherZeros )
{
	std::sort( m_Numbers.begin(), m_Numbers.end() );
	m_nFirstZero = static_cast<size_t>( std::lower_bound( m_Numbers.begin(), m_Numbers.end(), 0 ) - m_Numbers.begin() );
}

int32_t CDistribution::At( size_t nRank ) const
{
	if ( nRank < m_nFirstZero )
		return m_Numbers[nRank];
	if ( nRank < m_nFirstZero + m_nZeros )
		return 0;
	return m_Numbers[nRank - m_nZeros];
}

double CDistribution::Mean() const
{
	int64_t nSum = 0; // 2^32 numbers of 31 bits fit
	for ( const int32_t nNumber : m_Numbers )
		nSum += nNumber;
	return Count() == 0 ? 0.0 : static_cast<double>( nSum ) / static_cast<double>( Count() );
}

double CDistribution::Variance() const
{
	if ( Count() < 2 )
		return 0.0;
	const double flMean = Mean();
	double flSum = flMean * flMean * static_cast<double>( m_nZeros );
	for ( const int32_t nNumber : m_Numbers )
		flSum += ( nNumber - flMean ) * ( nNumber - flMean );
	return flSum / static_cast<double>( Count() - 1 );
}

double CDistribution::Percentile( double flPercent ) const
{
	if ( Count() == 0 )
		return 0.0;
	// In hundredths of a rank, which are whole numbers where the percentile is one: the result is then rounded once.
	const double flRank = static_cast<double>( Count() - 1 ) * std::clamp( flPercent, 0.0, 100.0 );
	const auto nBelow = static_cast<size_t>( flRank / 100.0 );
	const size_t nAbove = std::min( nBelow + 1, Count() - 1 );
	const double flPart = flRank - 100.0 * static_cast<double>( nBelow );
	return ( At( nBelow ) * ( 100.0 - flPart ) + At( nAbove ) * flPart ) / 100.0;
}
