#include "recordingfile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "recordings/kestomemoryreader.h"
#include "tests/recordings/slowrecordingreader.h"

CTemporaryFolder::CTemporaryFolder()
	: m_Path( ( std::filesystem::temp_directory_path() / "showbudget-test-XXXXXX" ).string() )
{
	EXPECT_NE( mkdtemp( m_Path.data() ), nullptr );
}

CTemporaryFolder::~CTemporaryFolder()
{
	std::error_code ignored;
	std::filesystem::remove_all( m_Path, ignored );
}

std::vector<uint8_t> ReadBytes( const std::string &path )
{
	std::ifstream file( path, std::ios::binary );
	EXPECT_TRUE( file.is_open() ) << path;
	return { std::istreambuf_iterator<char>( file ), {} };
}

void WriteBytes( const std::string &path, const std::vector<uint8_t> &bytes )
{
	std::ofstream file( path, std::ios::binary );
	file.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<std::streamsize>( bytes.size() ) );
	EXPECT_TRUE( file.good() ) << path;
}

CRecordingFileOfTest::CRecordingFileOfTest( const std::vector<uint8_t> &bytes, bool bWhole )
{
	CKestoMemoryReader reader( bytes );
	m_pFile = CRefPtr<CKestoFile>::Adopt( new CKestoFile( reader ) );
	EXPECT_EQ( FindDifference( *m_pFile, !reader.m_bGood, reader.GetFailureText(), ReadSlowly( bytes ) ), "" );
	if ( bWhole )
	{
		EXPECT_TRUE( reader.m_bGood ) << reader.GetFailureText();
		EXPECT_EQ( reader.GetPosition(), static_cast<int64_t>( bytes.size() ) );
	}
	std::vector<std::pair<int32_t, std::string>> below{ { m_pFile->GetRootNode(), "" } };
	while ( !below.empty() && m_pFile->GetFrameCount() > 0 )
	{
		const auto [nNode, parent] = below.back();
		below.pop_back();
		const std::string path = parent + m_pFile->GetNodeName( nNode );
		EXPECT_TRUE( m_Nodes.emplace( path, nNode ).second ) << path << " is there twice";
		for ( int32_t n = m_pFile->GetNodeFirstChild( nNode ); n >= 0; n = m_pFile->GetNodeNextSibling( n ) )
			below.emplace_back( n, path + '/' );
	}
}

std::map<std::string, CRecordingFileOfTest::Figures> CRecordingFileOfTest::Frame( int nFrame ) const
{
	std::map<std::string, Figures> figures;
	for ( const auto &[path, nNode] : m_Nodes )
	{
		const Figures at = At( nFrame, path );
		if ( at.m_nCalls | at.m_nTime )
			figures[path] = at;
	}
	return figures;
}

CRecordingFileOfTest::Figures CRecordingFileOfTest::At( int nFrame, const std::string &path ) const
{
	const auto node = m_Nodes.find( path );
	if ( node == m_Nodes.end() || nFrame < 0 || nFrame >= FrameCount() )
		return {};
	const CKestoFile::CTickTimings::Entry entry = m_pFile->GetFrame( nFrame )->PeekEntry( node->second );
	return { entry.m_nCalls, entry.m_nTime };
}

std::map<std::string, uint64_t> CRecordingFileOfTest::Calls() const
{
	std::map<std::string, uint64_t> calls;
	for ( int nFrame = 0; nFrame < FrameCount(); nFrame++ )
	{
		for ( const auto &[path, figures] : Frame( nFrame ) )
		{
			if ( figures.m_nCalls > 0 )
				calls[path] += figures.m_nCalls;
		}
	}
	return calls;
}

std::vector<std::string> CRecordingFileOfTest::Children( const std::string &path ) const
{
	std::vector<std::string> names;
	const auto node = m_Nodes.find( path );
	if ( node == m_Nodes.end() )
		return names;
	for ( int32_t n = m_pFile->GetNodeFirstChild( node->second ); n >= 0; n = m_pFile->GetNodeNextSibling( n ) )
		names.push_back( m_pFile->GetNodeName( n ) );
	return names;
}
