// Readers of recordings that differ in what they hand out at a time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "recordings/kestofile.h"
#include "recordings/kestomemoryreader.h"
#include "tests/recordings/recordingwriter.h"

// Offers no spans, as a reader may that knows only the three first operations.
class CFieldwiseReader : public CKestoMemoryReader
{
public:
	using CKestoMemoryReader::CKestoMemoryReader;
	std::span<const uint8_t> PeekSpan() override { return {}; }
};

// Offers spans of changing lengths from 0 to 37 bytes.
class CPiecewiseReader : public CKestoMemoryReader
{
public:
	using CKestoMemoryReader::CKestoMemoryReader;
	std::span<const uint8_t> PeekSpan() override
	{
		m_nPiece = ( m_nPiece * 29 + 11 ) % 38;
		const std::span<const uint8_t> span = CKestoMemoryReader::PeekSpan();
		return span.first( std::min( span.size(), m_nPiece ) );
	}

private:
	size_t m_nPiece = 0;
};

inline CRefPtr<CKestoFile> ParseRecording( CKestoFile::CReader &reader )
{
	return CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
}

inline CRefPtr<CKestoFile> Parse( const CRecordingWriter &writer )
{
	CKestoMemoryReader reader( writer.m_Bytes );
	return ParseRecording( reader );
}
