#include "miniprofiler/miniprofilerstatistics.h"

#include <algorithm>
#include <cmath>
#include <cstring>

// A vector of four does not fit into the registers that every processor has, so a function that was called with one
// would be called differently in either compilation: none is.
#define INLINED __attribute__( ( always_inline ) ) inline
#pragma GCC diagnostic ignored "-Wpsabi"

namespace
{
template <uint32_t LANES>
struct Vectors;

template <>
struct Vectors<2>
{
	using Lanes = double __attribute__( ( vector_size( 16 ) ) );
	using Bits = uint64_t __attribute__( ( vector_size( 16 ) ) );
	using Mask = int64_t __attribute__( ( vector_size( 16 ) ) );
};

template <>
struct Vectors<4>
{
	using Lanes = double __attribute__( ( vector_size( 32 ) ) );
	using Bits = uint64_t __attribute__( ( vector_size( 32 ) ) );
	using Mask = int64_t __attribute__( ( vector_size( 32 ) ) );
};

// LANES records are computed side by side, in vectors: two everywhere, four where the processor has wider ones. All of
// it is inlined into the two functions that say for which processor they are compiled.
template <uint32_t LANES>
struct LaneStatistics
{
	using Lanes = typename Vectors<LANES>::Lanes;
	using Bits = typename Vectors<LANES>::Bits;
	using Mask = typename Vectors<LANES>::Mask;

	// The nearest doubles, as a conversion gives them, from operations that exist for vectors: each half of a number
	// becomes the mantissa of a double with a fixed exponent, and one rounding happens in the last addition.
	INLINED static Lanes ToDouble( const uint64_t *pValues )
	{
		constexpr uint64_t LOW_EXPONENT = 0x4330000000000000;  // 2^52
		constexpr uint64_t HIGH_EXPONENT = 0x4530000000000000; // 2^84
		constexpr double BOTH = 0x1p84 + 0x1p52;
		Bits values;
		std::memcpy( &values, pValues, sizeof( values ) );
		const auto low = reinterpret_cast<Lanes>( ( values & 0xFFFFFFFF ) | LOW_EXPONENT );
		const auto high = reinterpret_cast<Lanes>( ( values >> 32 ) | HIGH_EXPONENT );
		return ( high - BOTH ) + low;
	}

	INLINED static Lanes Larger( Lanes a, Lanes b ) { return a > b ? a : b; }

	INLINED static Lanes Where( Mask mask, Lanes values ) // 0 elsewhere
	{
		return reinterpret_cast<Lanes>( reinterpret_cast<Mask>( values ) & mask );
	}

	// Sums of one statistic's distances from a pivot, which is one of its samples: a single pass then gives the
	// deviation as exactly as two passes do, since squares around a sample are at most as many times larger than those
	// around the mean as there are samples.
	struct PivotSums
	{
		Lanes m_Pivot{};
		Lanes m_Sum{};
		Lanes m_Squares{};

		INLINED void Add( Lanes values, Mask taken )
		{
			const Lanes distances = Where( taken, values - m_Pivot );
			m_Sum += distances;
			m_Squares += distances * distances;
		}

		// Of the samples from the given mean, which need not be their own.
		double Deviation( uint32_t nLane, double flSamples, double flMean ) const
		{
			if ( flSamples == 0.0 )
				return 0.0;
			const double flOwnMean = m_Sum[nLane] / flSamples; // from the pivot
			const double flVariance = std::max( m_Squares[nLane] / flSamples - flOwnMean * flOwnMean, 0.0 );
			const double flShift = flMean - m_Pivot[nLane] - flOwnMean;
			return std::sqrt( flVariance + flShift * flShift );
		}
	};

	struct LaneSums
	{
		Lanes m_Ticks{};
		Lanes m_Calls{};
		Lanes m_PeakTicks{};
		Lanes m_PeakCalls{};
		Lanes m_PeakPerCall{};
		PivotSums m_TickDistances;
		PivotSums m_CallDistances;
		PivotSums m_PerCallDistances; // of samples with calls
		Lanes m_CallSamples{};        // how many these are
	};

	struct LaneReader
	{
		const CMiniProfilerHistory &m_History;
		const CMiniProfilerHistory::Rows &m_Rows; // of the records' block
		uint32_t m_nLane;                         // in the block
		uint32_t m_nSamples;                      // of the record that has the most

		const CMiniProfilerHistory::Row &RowAt( uint32_t nAge ) const { return m_Rows[m_History.Slot( nAge )]; }
		INLINED Lanes Ticks( uint32_t nAge ) const { return ToDouble( &RowAt( nAge ).m_Ticks[m_nLane] ); }
		INLINED Lanes Calls( uint32_t nAge ) const { return ToDouble( &RowAt( nAge ).m_Calls[m_nLane] ); }
		INLINED Lanes PerCall( uint32_t nAge ) const { return Ticks( nAge ) / Larger( Calls( nAge ), Lanes{} + 1.0 ); }
	};

	// The newest sample; per call the newest one that has calls.
	INLINED static void ChoosePivots( const LaneReader &reader, LaneSums &sums )
	{
		sums.m_TickDistances.m_Pivot = reader.Ticks( 0 );
		sums.m_CallDistances.m_Pivot = reader.Calls( 0 );
		for ( uint32_t j = 0; j < LANES; j++ )
		{
			uint32_t nAge = 0;
			while ( nAge + 1 < reader.m_nSamples && reader.RowAt( nAge ).m_Calls[reader.m_nLane + j] == 0 )
				nAge++;
			sums.m_PerCallDistances.m_Pivot[j] = reader.PerCall( nAge )[j];
		}
	}

	// Slots that a young record has not reached hold 0: they change no sum and no peak, but have no distance either.
	INLINED static void SumLanes( const LaneReader &reader, Lanes counts, LaneSums &sums )
	{
		ChoosePivots( reader, sums );
		LaneSums local = sums; // whose parts may live in registers
		Lanes age{};
		for ( uint32_t i = 0; i < reader.m_nSamples; i++ )
		{
			const Lanes ticks = reader.Ticks( i );
			const Lanes calls = reader.Calls( i );
			const Lanes perCall = ticks / Larger( calls, Lanes{} + 1.0 );
			const Mask taken = age < counts;
			const Mask called = calls != 0.0;
			local.m_Ticks += ticks;
			local.m_Calls += calls;
			local.m_PeakTicks = Larger( ticks, local.m_PeakTicks );
			local.m_PeakCalls = Larger( calls, local.m_PeakCalls );
			local.m_PeakPerCall = Larger( perCall, local.m_PeakPerCall );
			local.m_TickDistances.Add( ticks, taken );
			local.m_CallDistances.Add( calls, taken );
			local.m_PerCallDistances.Add( perCall, called );
			local.m_CallSamples += Where( called, Lanes{} + 1.0 );
			age += 1.0;
		}
		sums = local;
	}

	static MiniProfilerArray MakeArray( double flCalls, double flInclusive, double flInclusiveCall )
	{
		return { 0.0f, static_cast<float>( flCalls ), static_cast<float>( flInclusive ), 0.0f,
			static_cast<float>( flInclusiveCall ), 0.0f };
	}

	INLINED static void StoreStatistics( CQMiniProfilerRecord &record, const LaneReader &reader, uint32_t nLane,
		const LaneSums &sums, double flCount, bool bPeaks )
	{
		const double flTicks = sums.m_Ticks[nLane];
		const double flCalls = sums.m_Calls[nLane];
		const double flMeanTicks = flTicks / flCount;
		const double flMeanCalls = flCalls / flCount;
		const double flPerCall = flTicks / std::max( flCalls, 1.0 );
		record.m_Cur = MakeArray( reader.Calls( 0 )[nLane], reader.Ticks( 0 )[nLane], reader.PerCall( 0 )[nLane] );
		record.m_Peaks = bPeaks
							 ? MakeArray( sums.m_PeakCalls[nLane], sums.m_PeakTicks[nLane], sums.m_PeakPerCall[nLane] )
							 : record.m_Cur;
		record.SetFlag( MINIPROFILER_ROW_IDLE, flCalls == 0.0 && flTicks == 0.0 );
		record.m_Ave = MakeArray( flMeanCalls, flMeanTicks, flPerCall );
		if ( flCount >= 2.0 )
			record.m_StDev = MakeArray( sums.m_CallDistances.Deviation( nLane, flCount, flMeanCalls ),
				sums.m_TickDistances.Deviation( nLane, flCount, flMeanTicks ),
				sums.m_PerCallDistances.Deviation( nLane, sums.m_CallSamples[nLane], flPerCall ) );
	}

	// Of LANES records of a block.
	INLINED static void ComputeLanes( const CMiniProfilerHistory &history, const CMiniProfilerHistory::Rows &rows,
		std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks )
	{
		const uint32_t nFirst = records[0]->HistoryIndex();
		const auto nRecords = std::min( LANES, static_cast<uint32_t>( records.size() ) );
		Lanes counts{};
		uint32_t nSamples = 0;
		for ( uint32_t j = 0; j < nRecords; j++ )
		{
			counts[j] = history.Count( nFirst + j );
			nSamples = std::max( nSamples, history.Count( nFirst + j ) );
		}
		if ( nSamples == 0 )
			return;

		const LaneReader reader{ history, rows, nFirst % CMiniProfilerHistory::BLOCK_RECORDS, nSamples };
		LaneSums sums;
		SumLanes( reader, counts, sums );
		for ( uint32_t j = 0; j < nRecords; j++ )
			if ( counts[j] > 0.0 )
				StoreStatistics( *records[j], reader, j, sums, counts[j], bPeaks );
	}

	INLINED static void Compute( const CMiniProfilerHistory &history,
		std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks )
	{
		constexpr size_t BLOCK_RECORDS = CMiniProfilerHistory::BLOCK_RECORDS;
		static_assert( BLOCK_RECORDS % LANES == 0 );
		CMiniProfilerHistory::Rows room;
		for ( uint32_t nBlock = 0; !records.empty(); nBlock++ )
		{
			const auto members = records.first( std::min( BLOCK_RECORDS, records.size() ) );
			const CMiniProfilerHistory::Rows &rows = history.RowsOf( nBlock, room );
			for ( size_t nFirst = 0; nFirst < members.size(); nFirst += LANES )
				ComputeLanes( history, rows, members.subspan( nFirst ), bPeaks );
			records = records.subspan( members.size() );
		}
	}
};

void ComputeAnywhere(
	const CMiniProfilerHistory &history, std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks )
{
	LaneStatistics<2>::Compute( history, records, bPeaks );
}

__attribute__( ( target( "avx2" ) ) ) void ComputeWide(
	const CMiniProfilerHistory &history, std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks )
{
	LaneStatistics<4>::Compute( history, records, bPeaks );
}
} // namespace

bool HasWideVectors()
{
	static const bool s_bWide = __builtin_cpu_supports( "avx2" );
	return s_bWide;
}

void ComputeMiniProfilerStatistics( const CMiniProfilerHistory &history,
	std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks, bool bWide )
{
	if ( bWide )
		ComputeWide( history, records, bPeaks );
	else
		ComputeAnywhere( history, records, bPeaks );
}
