// Compares the parser with the slow reader, for tests and the fuzz target.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/slowrecordingreader.h"

template <typename Reader>
std::string FindDifferenceWith( std::span<const uint8_t> bytes, const SlowRecording &expected )
{
	Reader reader( bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	return FindDifference( *pFile, !reader.m_bGood, reader.GetFailureText(), expected );
}

// The first difference between the slow reader and the parser with any of the readers; empty when they agree.
inline std::string CompareAllReaders( std::span<const uint8_t> bytes )
{
	const SlowRecording expected = ReadSlowly( bytes );
	if ( const std::string text = FindDifferenceWith<CKestoMemoryReader>( bytes, expected ); !text.empty() )
		return "in one span: " + text;
	if ( const std::string text = FindDifferenceWith<CFieldwiseReader>( bytes, expected ); !text.empty() )
		return "field by field: " + text;
	if ( const std::string text = FindDifferenceWith<CPiecewiseReader>( bytes, expected ); !text.empty() )
		return "in pieces: " + text;
	return "";
}
