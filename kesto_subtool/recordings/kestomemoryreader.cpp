#include "recordings/kestomemoryreader.h"

#include <algorithm>
#include <cstring>

void CKestoMemoryReader::ReportFailure( const char *pMessage )
{
	if ( !m_FailureText.empty() )
		m_FailureText += '\n';
	m_FailureText += pMessage;
	m_bGood = false;
}

int CKestoMemoryReader::Read( void *pDestination, int nCount )
{
	if ( !m_bGood )
		return 0;
	const bool bProgressDue = IsProgressDue();
	if ( bProgressDue && IsCancelled() )
	{
		ReportFailure( "Decoding cancelled" );
		return 0;
	}
	if ( nCount > BytesLeft() )
	{
		ReportFailure( "Truncated file" );
		return 0;
	}
	std::memcpy( pDestination, m_Bytes.data() + m_nPosition, static_cast<size_t>( nCount ) );
	m_nPosition += nCount;
	if ( bProgressDue )
	{
		OnProgress( m_nPosition );
		m_nLastProgress = m_nPosition;
	}
	return nCount;
}

// Ends where a read would begin that makes a progress step, so that none is missed.
std::span<const uint8_t> CKestoMemoryReader::PeekSpan()
{
	if ( !m_bGood || IsProgressDue() )
		return {};
	const int64_t nEnd = std::min( Size(), m_nLastProgress + PROGRESS_STEP + 1 );
	return m_Bytes.subspan( static_cast<size_t>( m_nPosition ), static_cast<size_t>( nEnd - m_nPosition ) );
}
