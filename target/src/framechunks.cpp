#include "framechunks.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "registry.h"
#include "wire/budgetchunks.h"
#include "wire/chunkheader.h"

namespace showbudget
{
namespace
{
constexpr uint64_t MICROSECONDS = 1000000;

// Makes room for a chunk and writes its header; what it returns is the payload.
std::span<uint8_t> BeginChunk( Bytes &out, uint32_t nType, size_t nLength )
{
	const size_t nBegin = out.size();
	out.resize( nBegin + wire::CHUNK_HEADER_SIZE + nLength );
	wire::WriteChunkHeader( std::span<uint8_t, wire::CHUNK_HEADER_SIZE>( out.data() + nBegin, wire::CHUNK_HEADER_SIZE ),
		{ nType, wire::CHUNK_VERSION, static_cast<uint32_t>( nLength ) } );
	return std::span( out ).subspan( nBegin + wire::CHUNK_HEADER_SIZE );
}
} // namespace

void AppendChunk( Bytes &out, uint32_t nType, std::span<const uint8_t> payload )
{
	std::ranges::copy( payload, BeginChunk( out, nType, payload.size() ).begin() );
}

uint64_t CMicroseconds::At( uint64_t nTicks ) const
{
	__extension__ using Wide = unsigned __int128;
	return static_cast<uint64_t>( static_cast<Wide>( nTicks - m_nOrigin ) * MICROSECONDS / m_nFrequency );
}

std::span<const uint32_t> CMicroseconds::Convert( const Frame &frame )
{
	constexpr uint64_t MAX_VALUE = std::numeric_limits<uint32_t>::max();
	if ( m_nOrigin == 0 )
		m_nOrigin = frame.m_Header.m_nBegin;

	const uint32_t nBudgets = frame.m_Header.m_nBudgets;
	m_Values.resize( nBudgets );
	const uint64_t nEnd = frame.m_Header.m_nEnd;
	uint64_t nTicks = frame.m_Header.m_nBegin;
	for ( uint32_t i = BUDGET_OTHER + 1; i < nBudgets; i++ )
	{
		// Counters of two processors may be some ticks apart, and a budget of no length then comes out negative.
		const uint64_t nLength = static_cast<int64_t>( frame.m_BudgetTicks[i] ) > 0 ? frame.m_BudgetTicks[i] : 0;
		const uint64_t nNext = std::min( nTicks + nLength, nEnd );
		m_Values[i - 1] = static_cast<uint32_t>( std::min( At( nNext ) - At( nTicks ), MAX_VALUE ) );
		nTicks = nNext;
	}
	m_Values[nBudgets - 1] = static_cast<uint32_t>( std::min( At( nEnd ) - At( nTicks ), MAX_VALUE ) );
	return m_Values;
}

float AveragedFrameRate( const FrameHeader &header, uint64_t nTickFrequency )
{
	if ( header.m_nAverageTicks == 0 )
		return 0.0f;
	const double flSeconds = static_cast<double>( header.m_nAverageTicks ) / static_cast<double>( nTickFrequency );
	return static_cast<float>( header.m_nAverageFrames / flSeconds );
}

void AppendCategories( Bytes &out, uint32_t nBudgets )
{
	std::vector<wire::Category> categories;
	categories.reserve( nBudgets );
	for ( uint32_t i = 1; i <= nBudgets; i++ )
	{
		const Budget &budget = GetBudget( i < nBudgets ? i : BUDGET_OTHER );
		categories.push_back( { budget.m_Name, budget.m_nRed, budget.m_nGreen, budget.m_nBlue } );
	}
	wire::WriteCategories( BeginChunk( out, wire::CHUNK_CATEGORIES, wire::CategoriesSize( nBudgets ) ), categories );
}

void AppendSample( Bytes &out, bool bContinuation, float flFrameRate, std::span<const uint32_t> values )
{
	const size_t nLength = wire::SampleSize( static_cast<uint32_t>( values.size() ) );
	wire::WriteSample( BeginChunk( out, wire::CHUNK_SAMPLE, nLength ), bContinuation, flFrameRate, values );
}

namespace
{
constexpr uint32_t BLOCK_DATA = 0;
constexpr uint32_t BLOCK_NAMES = 1;
constexpr size_t BLOCK_HEADER_SIZE = 8;
constexpr uint32_t LIVE_SAMPLES_MARK = 0x4B4D5331;
constexpr uint32_t LIVE_SAMPLES_LAYOUT = 1;
} // namespace

CMiniProfilerWriter::CMiniProfilerWriter( Bytes &out, uint64_t nServiceTicks )
	: m_Out( out )
	, m_nBegin( out.size() )
{
	BeginChunk( out, wire::CHUNK_MINIPROFILER, 0 );
	U64( nServiceTicks );
}

void CMiniProfilerWriter::BeginData( uint32_t nRegistered )
{
	BeginBlock( BLOCK_DATA );
	U32( LIVE_SAMPLES_MARK );
	U32( LIVE_SAMPLES_LAYOUT );
	U64( 0 );
	U32( nRegistered );
	U32( 0 ); // their number, once it is known
}

void CMiniProfilerWriter::AddEntry( const FrameEntry &entry )
{
	U32( 0 );
	U64( SiteId( entry.m_nSite ) );
	U64( entry.m_nCaller == SITE_NONE ? 0 : SiteId( entry.m_nCaller ) );
	U64( entry.m_nTicks );
	U64( entry.m_nCalls );
	m_nCount++;
}

void CMiniProfilerWriter::EndData()
{
	constexpr size_t COUNT_AT = BLOCK_HEADER_SIZE + 20;
	PatchU32( m_nBlock + COUNT_AT, m_nCount );
	EndBlock();
}

void CMiniProfilerWriter::BeginNames( uint64_t nTickFrequency )
{
	BeginBlock( BLOCK_NAMES );
	U64( nTickFrequency );
	U32( 0 ); // their number, once it is known
}

void CMiniProfilerWriter::AddName( uint32_t nSite )
{
	const Site &site = GetSite( nSite );
	char number[16];
	const int nDigits = std::snprintf( number, sizeof( number ), "%u", site.m_nLine );
	U64( SiteId( nSite ) );
	U64( 0 ); // a call site has no parent but the callers that it really has
	Text( site.m_Name );
	m_Out.push_back( 0 );
	// Every line ends with a line feed, the last one too.
	for ( const std::string_view line : { std::string_view( GetBudget( site.m_nBudget ).m_Name ),
			  std::string_view( site.m_Function ), std::string_view( site.m_File ),
			  std::string_view( number, static_cast<size_t>( nDigits ) ), std::string_view( site.m_Project ) } )
	{
		Text( line );
		m_Out.push_back( '\n' );
	}
	m_Out.push_back( 0 );
	m_nCount++;
}

void CMiniProfilerWriter::EndNames()
{
	constexpr size_t COUNT_AT = BLOCK_HEADER_SIZE + 8;
	PatchU32( m_nBlock + COUNT_AT, m_nCount );
	EndBlock();
}

void CMiniProfilerWriter::Finish()
{
	wire::WriteChunkHeader(
		std::span<uint8_t, wire::CHUNK_HEADER_SIZE>( m_Out.data() + m_nBegin, wire::CHUNK_HEADER_SIZE ),
		{ wire::CHUNK_MINIPROFILER, wire::CHUNK_VERSION, PayloadSize() } );
}

void CMiniProfilerWriter::BeginBlock( uint32_t nKind )
{
	m_nBlock = m_Out.size();
	m_nCount = 0;
	U32( nKind );
	U32( 0 ); // where it ends, once that is known
}

// A block says where the next one begins, counted from the start of the payload.
void CMiniProfilerWriter::EndBlock()
{
	PatchU32( m_nBlock + 4, PayloadSize() );
}

uint32_t CMiniProfilerWriter::PayloadSize() const
{
	return static_cast<uint32_t>( m_Out.size() - m_nBegin - wire::CHUNK_HEADER_SIZE );
}

void CMiniProfilerWriter::U32( uint32_t nValue )
{
	const size_t nAt = m_Out.size();
	m_Out.resize( nAt + 4 );
	PatchU32( nAt, nValue );
}

void CMiniProfilerWriter::U64( uint64_t nValue )
{
	U32( static_cast<uint32_t>( nValue ) );
	U32( static_cast<uint32_t>( nValue >> 32 ) );
}

void CMiniProfilerWriter::Text( std::string_view text )
{
	m_Out.insert( m_Out.end(), text.begin(), text.end() );
}

void CMiniProfilerWriter::PatchU32( size_t nAt, uint32_t nValue )
{
	for ( size_t i = 0; i < 4; i++ )
		m_Out[nAt + i] = static_cast<uint8_t>( nValue >> ( 8 * i ) );
}
} // namespace showbudget
