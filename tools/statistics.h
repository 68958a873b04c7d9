// Mean, spread and percentiles of a set of times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// A set of n numbers, x(1) <= … <= x(n). Without numbers every figure is 0.
//
// Percentile p (0 to 100) is found by linear interpolation between the two nearest ranks: with h = (n - 1) * p / 100,
// it is x(1 + floor h) + (h - floor h) * (x(2 + floor h) - x(1 + floor h)). So the 0th is the smallest number, the
// 100th the largest, and the 50th the median (of an even count: the mean of the middle two). Spreadsheets call this the
// inclusive percentile.
class CDistribution
{
public:
	CDistribution() = default;
	// Zeros may be given by their count alone; they are numbers like the others.
	explicit CDistribution( std::vector<int32_t> numbers, size_t nFurtherZeros = 0 );

	size_t Count() const { return m_Numbers.size() + m_nZeros; }
	double Mean() const;
	double Variance() const; // of a sample: divided by n - 1; 0 for n < 2
	double Percentile( double flPercent ) const;
	double Median() const { return Percentile( 50.0 ); }
	int32_t Minimum() const { return Count() == 0 ? 0 : At( 0 ); }
	int32_t Maximum() const { return Count() == 0 ? 0 : At( Count() - 1 ); }

private:
	int32_t At( size_t nRank ) const; // from 0

	std::vector<int32_t> m_Numbers; // ascending
	size_t m_nZeros = 0;
	size_t m_nFirstZero = 0; // rank of the first of the further zeros
};
