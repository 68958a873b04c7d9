// Little-endian fields from a reader, through its spans where it offers some.
#pragma once

#include <cstring>
#include <span>
#include <type_traits>

#include "recordings/kestofile.h"

// Never asks a reader for other pieces than the fields themselves, so that what a reader does at certain positions (and
// the texts that it reports) do not depend on whether it offers spans.
class CFieldSource
{
public:
	explicit CFieldSource( CKestoFile::CReader &reader )
		: m_Reader( reader )
	{
	}
	CFieldSource( const CFieldSource & ) = delete;
	CFieldSource &operator=( const CFieldSource & ) = delete;

	// False when the field could not be delivered; value is then left as it was.
	template <typename T>
	bool Get( T &value )
	{
		static_assert( std::is_integral_v<T> );
		if ( static_cast<size_t>( m_pEnd - m_pNext ) < sizeof( T ) )
			return GetAcrossSpans( &value, sizeof( T ) );
		std::memcpy( &value, m_pNext, sizeof( T ) );
		m_pNext += sizeof( T );
		return true;
	}

	// The bytes that can be had without asking the reader; at least nWanted of them if the reader offers so many.
	std::span<const uint8_t> Window( size_t nWanted )
	{
		if ( static_cast<size_t>( m_pEnd - m_pNext ) < nWanted )
			Refill();
		return { m_pNext, m_pEnd };
	}
	void SkipTo( const uint8_t *pNext ) { m_pNext = pNext; } // within the window

	bool IsGood() const { return m_Reader.m_bGood; }
	bool HasBytesLeft()
	{
		GiveBack();
		return m_Reader.BytesLeft() >= 1;
	}
	void ReportFailure( const char *pMessage )
	{
		GiveBack();
		m_Reader.ReportFailure( pMessage );
	}

private:
	bool GetAcrossSpans( void *pValue, size_t nSize )
	{
		Refill();
		if ( static_cast<size_t>( m_pEnd - m_pNext ) >= nSize )
		{
			std::memcpy( pValue, m_pNext, nSize );
			m_pNext += nSize;
			return true;
		}
		GiveBack();
		return m_Reader.Read( pValue, static_cast<int>( nSize ) ) == static_cast<int>( nSize );
	}

	void GiveBack()
	{
		if ( m_pNext != m_pBegin )
			m_Reader.SkipSpan( static_cast<size_t>( m_pNext - m_pBegin ) );
		m_pBegin = m_pNext = m_pEnd = nullptr;
	}

	void Refill()
	{
		GiveBack();
		const std::span<const uint8_t> span = m_Reader.PeekSpan();
		m_pBegin = m_pNext = span.data();
		m_pEnd = span.data() + span.size();
	}

	CKestoFile::CReader &m_Reader;
	const uint8_t *m_pBegin = nullptr; // the reader's span
	const uint8_t *m_pNext = nullptr;  // up to here it was used
	const uint8_t *m_pEnd = nullptr;
};
