// The byte dump of docs/recording-format.md is a recording, and says what the page says that it does.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <string>

#include "tests/recordings/recordingreaders.h"

namespace
{
// The bytes at the front of the lines of the page's dump; what follows three blanks is a remark.
std::vector<uint8_t> ReadDump()
{
	std::vector<uint8_t> bytes;
	std::ifstream file( RECORDING_FORMAT_PAGE );
	bool bInside = false;
	for ( std::string line; std::getline( file, line ); )
	{
		if ( line.starts_with( "```" ) )
			bInside = line == "```hex";
		else if ( bInside )
			for ( size_t i = 0; i + 1 < line.size() && line.compare( i, 3, "   " ) != 0; i++ )
				if ( std::isxdigit( static_cast<unsigned char>( line[i] ) ) )
					bytes.push_back( static_cast<uint8_t>( std::stoi( line.substr( i++, 2 ), nullptr, 16 ) ) );
	}
	return bytes;
}

TEST( FormatPage, ItsExampleReadsAsItSays )
{
	const std::vector<uint8_t> bytes = ReadDump();
	ASSERT_EQ( bytes.size(), 8u + ( 5 + 21 + 20 + 1 + 9 + 1 ) + ( 5 + 1 + 7 + 5 + 3 + 1 ) );
	CKestoMemoryReader reader( bytes );
	const CRefPtr<CKestoFile> pFile = ParseRecording( reader );
	EXPECT_TRUE( reader.m_bGood ) << reader.GetFailureText();
	ASSERT_EQ( pFile->GetFrameCount(), 2 );
	EXPECT_EQ( pFile->GetNodeFirstChild( 0 ), 2 );
	EXPECT_STREQ( pFile->GetNodeName( 2 ), "Render" );
	EXPECT_EQ( pFile->GetNodeNextSibling( 2 ), 1 );
	EXPECT_STREQ( pFile->GetNodeName( 1 ), "Physics" );
	using Entry = CKestoFile::CTickTimings::Entry;
	const Entry expected[2][3] = {
		{ { 1, 16000 }, { 3, 4000 }, { 2, 10000 } }, { { 1, 280000 }, { 0, 0 }, { 300, 16384 } } };
	for ( int nFrame = 0; nFrame < 2; nFrame++ )
		for ( int32_t nNode = 0; nNode < 3; nNode++ )
			EXPECT_EQ( pFile->GetFrame( nFrame )->PeekEntry( nNode ), expected[nFrame][nNode] )
				<< "frame " << nFrame << ", node " << nNode;
}
} // namespace
