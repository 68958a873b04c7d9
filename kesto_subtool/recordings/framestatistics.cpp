#include "recordings/framestatistics.h"

#include <cstring>

using Storage = CKestoFile::CTickTimings::Storage;

// Four numbers that are worked on at once. Parsing spends most of its time here, and compilers do not find this form by
// themselves.
using Four = int32_t __attribute__( ( vector_size( 16 ) ) );

static uint32_t Magnitude( int32_t nTime )
{
	const uint32_t nBits = static_cast<uint32_t>( nTime );
	return nTime < 0 ? 0u - nBits : nBits;
}

void AddToStatistics(
	CKestoFile::Maximum &maximum, CKestoFile::Sum &sum, const CKestoFile::CTickTimings::Entry &entry, int32_t nFrame )
{
	const int32_t nTime = static_cast<int32_t>( entry.m_nTime );
	if ( Magnitude( nTime ) > Magnitude( maximum.m_nTime ) )
		maximum = { nTime, nFrame };
	sum.m_nCalls += entry.m_nCalls;
	sum.m_nTime += entry.m_nTime;
}

static Four Load( const void *p )
{
	Four values;
	std::memcpy( &values, p, sizeof( values ) );
	return values;
}

static bool IsAnySet( Four mask )
{
	int64_t halves[2];
	std::memcpy( halves, &mask, sizeof( halves ) );
	return ( halves[0] | halves[1] ) != 0;
}

static void AddTo( void *pSums, Four values )
{
	using FourUnsigned = uint32_t __attribute__( ( vector_size( 16 ) ) );
	const FourUnsigned sums =
		reinterpret_cast<FourUnsigned>( Load( pSums ) ) + reinterpret_cast<FourUnsigned>( values );
	std::memcpy( pSums, &sums, sizeof( sums ) );
}

// Adds to the sums of four packed entries, unless one is long or makes a maximum; false then.
static bool AddFour( const CKestoFile::Maximum *pMaxima, CKestoFile::Sum *pSums, const uint32_t *pPacked )
{
	static_assert( sizeof( CKestoFile::Maximum ) == 8 && sizeof( CKestoFile::Sum ) == 8 );
	const Four packed = Load( pPacked );
	const Four calls = packed & 0xff;
	const Four times = ( packed >> 8 & 0xffffff ) * static_cast<int32_t>( wire::RECORDING_TIME_UNIT );
	const Four maxima = __builtin_shufflevector( Load( pMaxima ), Load( pMaxima + 2 ), 0, 2, 4, 6 );
	// Of the most negative number there is no magnitude; what this gives is negative and makes the entry look at it.
	const Four signs = maxima >> 31;
	const Four magnitudes = ( maxima ^ signs ) - signs;
	if ( IsAnySet( ( packed == static_cast<int32_t>( Storage::LONG ) ) | ( times > magnitudes ) ) )
		return false;
	AddTo( pSums, __builtin_shufflevector( calls, times, 0, 4, 1, 5 ) );
	AddTo( pSums + 2, __builtin_shufflevector( calls, times, 2, 6, 3, 7 ) );
	return true;
}

void AddToStatistics( CKestoFile::Maximum *pMaxima, CKestoFile::Sum *pSums, const Storage &frame, int32_t nFirst,
	int32_t nCount, int32_t nFrame )
{
	const uint32_t *pPacked = frame.m_pPacked.get() + nFirst;
	const auto addOne = [&]( int32_t i )
	{
		const bool bLong = pPacked[i] == Storage::LONG;
		AddToStatistics(
			pMaxima[i], pSums[i], bLong ? frame.Get( nFirst + i ) : Storage::Unpack( pPacked[i] ), nFrame );
	};
	int32_t i = 0;
	for ( ; i + 4 <= nCount; i += 4 )
		if ( !AddFour( pMaxima + i, pSums + i, pPacked + i ) )
			for ( int32_t j = i; j < i + 4; j++ )
				addOne( j );
	for ( ; i < nCount; i++ )
		addOne( i );
}
