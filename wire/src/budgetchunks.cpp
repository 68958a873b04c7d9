#include "wire/budgetchunks.h"

#include <cassert>

#include "keel0/strtools.h"
#include "utf8.h"
#include "wire/bytewriter.h"

namespace wire
{
namespace
{
constexpr size_t CATEGORIES_BEGIN = 4; // of the records
constexpr size_t SAMPLE_BEGIN = 12;    // of the values

// The sum of 32-bit counts and sizes is taken in 64 bits, where it cannot overflow.
CountProblem CheckCount( size_t nPayload, size_t nBegin, uint32_t nCount, size_t nRecordSize )
{
	return nBegin + uint64_t{ nCount } * nRecordSize > nPayload ? CountProblem::DoesNotFit : CountProblem::None;
}
} // namespace

CCategoriesView::CCategoriesView( std::span<const uint8_t> payload )
	: m_Payload( payload )
{
	if ( payload.size() < CATEGORIES_BEGIN )
	{
		m_Problem = CountProblem::NoCount;
		return;
	}
	m_nCount = V_ReadBigEndian32( payload.data() );
	m_Problem = CheckCount( payload.size(), CATEGORIES_BEGIN, m_nCount, CATEGORY_RECORD_SIZE );
	if ( m_Problem == CountProblem::None && m_nCount > MAX_CATEGORIES )
		m_Problem = CountProblem::TooMany;
}

Category CCategoriesView::operator[]( uint32_t nIndex ) const
{
	assert( m_Problem == CountProblem::None && nIndex < m_nCount );
	const uint8_t *pRecord = m_Payload.data() + CATEGORIES_BEGIN + nIndex * CATEGORY_RECORD_SIZE;
	const uint8_t *pColour = pRecord + CATEGORY_NAME_SIZE;
	return { UpToTerminator( AsText( pRecord, CATEGORY_NAME_SIZE ) ), pColour[0], pColour[1], pColour[2] };
}

size_t CategoriesSize( uint32_t nCount )
{
	return CATEGORIES_BEGIN + nCount * CATEGORY_RECORD_SIZE;
}

size_t WriteCategories( std::span<uint8_t> out, std::span<const Category> categories )
{
	CByteWriter writer( out );
	writer.U32BigEndian( static_cast<uint32_t>( categories.size() ) );
	for ( const Category &category : categories )
	{
		const std::string_view name = CutText( UpToTerminator( category.m_Name ), CATEGORY_NAME_SIZE - 1 );
		writer.Text( name );
		writer.Zeros( CATEGORY_NAME_SIZE - name.size() );
		writer.U8( category.m_nRed );
		writer.U8( category.m_nGreen );
		writer.U8( category.m_nBlue );
		writer.U8( 0 );
	}
	return writer.Overflowed() ? 0 : writer.Size();
}

CSampleView::CSampleView( std::span<const uint8_t> payload )
	: m_Payload( payload )
{
	if ( payload.size() < SAMPLE_BEGIN )
	{
		m_Problem = CountProblem::NoCount;
		return;
	}
	m_nCount = V_ReadBigEndian32( payload.data() );
	m_bContinuation = V_ReadBigEndian32( payload.data() + 4 ) == 0;
	m_flFrameRate = V_ReadBigEndianFloat( payload.data() + 8 );
	m_Problem = CheckCount( payload.size(), SAMPLE_BEGIN, m_nCount, sizeof( uint32_t ) );
}

uint32_t CSampleView::Value( uint32_t nIndex ) const
{
	assert( m_Problem == CountProblem::None && nIndex < m_nCount );
	return V_ReadBigEndian32( m_Payload.data() + SAMPLE_BEGIN + nIndex * sizeof( uint32_t ) );
}

void CSampleView::CopyValues( std::span<uint32_t> out ) const
{
	assert( m_Problem == CountProblem::None && out.size() <= m_nCount );
	const uint8_t *pValue = m_Payload.data() + SAMPLE_BEGIN;
	for ( uint32_t &nValue : out )
	{
		nValue = V_ReadBigEndian32( pValue );
		pValue += sizeof( uint32_t );
	}
}

size_t SampleSize( uint32_t nCount )
{
	return SAMPLE_BEGIN + nCount * sizeof( uint32_t );
}

size_t WriteSample( std::span<uint8_t> out, bool bContinuation, float flFrameRate, std::span<const uint32_t> values )
{
	CByteWriter writer( out );
	writer.U32BigEndian( static_cast<uint32_t>( values.size() ) );
	writer.U32BigEndian( bContinuation ? 0 : 1 );
	writer.FloatBigEndian( flFrameRate );
	for ( const uint32_t nValue : values )
		writer.U32BigEndian( nValue );
	return writer.Overflowed() ? 0 : writer.Size();
}
} // namespace wire
