// A recording whose bytes are all in memory, read with progress and a way to stop.
#pragma once

#include <string>

#include "recordings/kestofile.h"

// Reports "Truncated file" when more is asked for than there is, and "Decoding cancelled" when it was stopped.
class CKestoMemoryReader : public CKestoFile::CReader
{
public:
	// A read that begins more than this behind the last progress step makes the next step.
	static constexpr int64_t PROGRESS_STEP = 0x20000; // bytes

	// The bytes must stay where they are as long as the reader is used.
	explicit CKestoMemoryReader( std::span<const uint8_t> bytes = {} )
		: m_Bytes( bytes )
	{
	}

	void ReportFailure( const char *pMessage ) override;
	int Read( void *pDestination, int nCount ) override;
	int64_t BytesLeft() const override { return Size() - m_nPosition; }
	std::span<const uint8_t> PeekSpan() override;
	void SkipSpan( size_t nBytes ) override { m_nPosition += static_cast<int64_t>( nBytes ); }

	const std::string &GetFailureText() const { return m_FailureText; } // messages, separated by line feeds
	int64_t GetPosition() const { return m_nPosition; }                 // bytes that were read

protected:
	void SetBytes( std::span<const uint8_t> bytes ) { m_Bytes = bytes; } // before the first read

	// Asked at each progress step, before it is made.
	virtual bool IsCancelled() { return false; }
	// At each progress step, with the position after the read.
	virtual void OnProgress( int64_t /*nPosition*/ ) {}

private:
	int64_t Size() const { return static_cast<int64_t>( m_Bytes.size() ); }
	bool IsProgressDue() const { return m_nPosition > m_nLastProgress + PROGRESS_STEP; }

	std::span<const uint8_t> m_Bytes;
	int64_t m_nPosition = 0;
	int64_t m_nLastProgress = 0;
	std::string m_FailureText;
};
