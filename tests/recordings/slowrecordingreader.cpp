#include "tests/recordings/slowrecordingreader.h"

#include <cstdlib>
#include <optional>

#include "recordings/kestofile.h"

namespace
{
constexpr int64_t IDS = 1048576;

class CSlowReader
{
public:
	explicit CSlowReader( std::span<const uint8_t> bytes )
		: m_Bytes( bytes )
	{
	}

	SlowRecording Run()
	{
		const std::optional<uint32_t> version = Number( 4 );
		if ( version != 1u )
		{
			Report( "Unsupported file version" );
			return m_Result;
		}
		m_Result.m_nRoot = static_cast<int32_t>( Number( 4 ).value_or( 0 ) );
		if ( !IsId( m_Result.m_nRoot ) )
		{
			Report( "Root node id " + std::to_string( m_Result.m_nRoot ) + " out of range" );
			return m_Result;
		}
		while ( m_nNext < m_Bytes.size() )
		{
			SlowRecording::Frame frame;
			if ( !ReadFrame( frame ) )
				break;
			Count( frame );
			m_Result.m_Frames.push_back( frame );
		}
		return m_Result;
	}

private:
	static bool IsId( int64_t nId ) { return nId >= 0 && nId < IDS; }

	void Report( const std::string &message )
	{
		m_Result.m_Failure += m_Result.m_Failure.empty() ? message : "\n" + message;
		m_Result.m_bFailed = true;
	}

	std::optional<uint32_t> Number( size_t nBytes )
	{
		if ( m_Result.m_bFailed )
			return std::nullopt;
		if ( m_nNext + nBytes > m_Bytes.size() )
		{
			Report( "Truncated file" );
			return std::nullopt;
		}
		uint32_t nValue = 0;
		for ( size_t i = 0; i < nBytes; i++ )
			nValue += static_cast<uint32_t>( m_Bytes[m_nNext++] ) << ( 8 * i );
		return nValue;
	}

	std::optional<std::string> Text()
	{
		std::string text;
		for ( ;; )
		{
			const std::optional<uint32_t> byte = Number( 1 );
			if ( !byte )
			{
				Report( "No String terminator past end of file" );
				return std::nullopt;
			}
			if ( *byte == 0 )
				return text.substr( 0, 511 );
			text += static_cast<char>( *byte );
		}
	}

	static int SignedByte( uint32_t nByte )
	{
		return nByte < 128 ? static_cast<int>( nByte ) : static_cast<int>( nByte ) - 256;
	}

	bool ReadFrame( SlowRecording::Frame &frame )
	{
		const std::optional<uint32_t> first = Number( 1 );
		if ( !first || *first == 5 )
			return false;
		if ( *first != 0 )
		{
			Report( "Frame header: unexpected token " + std::to_string( SignedByte( *first ) ) );
			return false;
		}
		Number( 4 );
		for ( ;; )
		{
			const uint32_t nToken = Number( 1 ).value_or( 4 );
			if ( nToken == 4 )
				return true;
			bool bRead = false;
			if ( nToken == 1 )
				bRead = ReadNode();
			else if ( nToken == 2 )
				bRead = ReadString();
			else if ( nToken == 3 )
				bRead = ReadTimings( frame );
			else
				Report( "Invalid token " + std::to_string( SignedByte( nToken ) ) );
			if ( !bRead )
				return false;
		}
	}

	bool ReadString()
	{
		const std::optional<std::string> text = Text();
		if ( !text )
			return false;
		const uint32_t nValue = Number( 4 ).value_or( 0 );
		m_Result.m_Strings.emplace_back( *text, nValue );
		return !m_Result.m_bFailed;
	}

	bool ReadNode()
	{
		const int64_t nParent = static_cast<int32_t>( Number( 4 ).value_or( 0 ) );
		const std::optional<std::string> name = Text();
		if ( !name )
			return false;
		const uint32_t nValue = Number( 4 ).value_or( 0 );
		const int64_t nId = static_cast<int32_t>( Number( 4 ).value_or( 0 ) );
		for ( const int64_t n : { nParent, nId } )
			if ( !IsId( n ) )
			{
				Report( "Node id " + std::to_string( n ) + " out of range" );
				return false;
			}
		m_Result.m_nNodes = std::max( { m_Result.m_nNodes, nParent + 1, nId + 1 } );
		SlowRecording::Node &parent = m_Result.m_Nodes[nParent];
		SlowRecording::Node &node = m_Result.m_Nodes[nId];
		node.m_nValue = nValue;
		for ( int64_t nChild = parent.m_nFirstChild; nChild != -1; nChild = m_Result.m_Nodes[nChild].m_nNextSibling )
			if ( nChild == nId )
				return true;
		node.m_Name = *name;
		node.m_nParent = nParent;
		node.m_nNextSibling = parent.m_nFirstChild;
		parent.m_nFirstChild = nId;
		return true;
	}

	bool ReadEntry( int64_t nNode, SlowRecording::Frame &frame )
	{
		uint32_t nCalls = Number( 1 ).value_or( 0 );
		if ( nCalls == 255 )
			nCalls = Number( 2 ).value_or( 0 );
		uint32_t nTime = Number( 2 ).value_or( 0 );
		if ( nTime == 65535 )
			nTime = Number( 4 ).value_or( 0 );
		frame.m_Entries[nNode] = { nCalls, nTime * 4 };
		frame.m_nLength = std::max( frame.m_nLength, nNode + 1 );
		return !m_Result.m_bFailed;
	}

	// The recursion of the format, with the nodes whose children are still to come on a stack of its own.
	bool ReadTimings( SlowRecording::Frame &frame )
	{
		std::vector<int64_t> todo;
		const auto readOne = [&]( int64_t nNode )
		{
			todo.push_back( m_Result.m_Nodes[nNode].m_nFirstChild );
			return ReadEntry( nNode, frame );
		};
		bool bRead = readOne( m_Result.m_nRoot );
		while ( bRead && !todo.empty() )
		{
			const int64_t nNode = todo.back();
			todo.pop_back();
			if ( nNode == -1 )
				continue;
			todo.push_back( m_Result.m_Nodes[nNode].m_nNextSibling );
			bRead = readOne( nNode );
		}
		if ( !bRead )
			Report( "Timings truncated" );
		return bRead;
	}

	void Count( const SlowRecording::Frame &frame )
	{
		m_Result.m_nStatistics = std::max( m_Result.m_nStatistics, frame.m_nLength );
		for ( const auto &[nNode, figures] : frame.m_Entries )
		{
			const int64_t nTime = static_cast<int32_t>( figures.second );
			auto &maximum = m_Result.m_Maxima.try_emplace( nNode, 0, -1 ).first->second;
			if ( std::llabs( nTime ) > std::llabs( maximum.first ) )
				maximum = { nTime, static_cast<int64_t>( m_Result.m_Frames.size() ) };
			m_Result.m_Sums[nNode].first += figures.first;
			m_Result.m_Sums[nNode].second += figures.second;
		}
	}

	std::span<const uint8_t> m_Bytes;
	size_t m_nNext = 0;
	SlowRecording m_Result;
};

std::string Differ( const std::string &what, const std::string &actual, const std::string &expected )
{
	return actual == expected ? "" : what + " is " + actual + ", not " + expected;
}

std::string Differ( const std::string &what, int64_t nActual, int64_t nExpected )
{
	return Differ( what, std::to_string( nActual ), std::to_string( nExpected ) );
}

std::string DifferInNode( const CKestoFile &file, int32_t nNode, const SlowRecording::Node &expected )
{
	const std::string what = "node " + std::to_string( nNode ) + ": ";
	for ( const std::string &difference : {
			  Differ( what + "name", file.GetNodeName( nNode ), expected.m_Name ),
			  Differ( what + "parent", file.GetNodeParent( nNode ), expected.m_nParent ),
			  Differ( what + "first child", file.GetNodeFirstChild( nNode ), expected.m_nFirstChild ),
			  Differ( what + "next sibling", file.GetNodeNextSibling( nNode ), expected.m_nNextSibling ),
			  Differ( what + "value", file.GetNodeValue( nNode ), expected.m_nValue ),
		  } )
		if ( !difference.empty() )
			return difference;
	return "";
}

// All ids that the recording can know something about, and one that it cannot.
std::vector<int32_t> IdsOf( const SlowRecording &recording )
{
	std::vector<int32_t> ids = {
		static_cast<int32_t>( recording.m_nRoot ), static_cast<int32_t>( recording.m_nNodes ) };
	for ( const auto &[nNode, node] : recording.m_Nodes )
		ids.push_back( static_cast<int32_t>( nNode ) );
	return ids;
}

std::string DifferInFrame( const CKestoFile &file, int nFrame, const SlowRecording &recording )
{
	const SlowRecording::Frame &expected = recording.m_Frames[static_cast<size_t>( nFrame )];
	const CKestoFile::CTickTimings &frame = *file.GetFrame( nFrame );
	const std::string what = "frame " + std::to_string( nFrame ) + ": ";
	if ( frame.GetCount() != expected.m_nLength )
		return Differ( what + "length", frame.GetCount(), expected.m_nLength );
	for ( const int32_t nNode : IdsOf( recording ) )
	{
		const auto found = expected.m_Entries.find( nNode );
		const SlowRecording::Figures figures =
			found == expected.m_Entries.end() ? SlowRecording::Figures{} : found->second;
		const auto [nCalls, nTime] = frame.PeekEntry( nNode );
		if ( nCalls != figures.first || nTime != figures.second )
			return Differ( what + "calls and time of node " + std::to_string( nNode ),
				std::to_string( nCalls ) + " and " + std::to_string( nTime ),
				std::to_string( figures.first ) + " and " + std::to_string( figures.second ) );
	}
	return "";
}

std::string DifferInStatistics( const CKestoFile &file, const SlowRecording &recording )
{
	if ( file.GetStatisticsCount() != recording.m_nStatistics )
		return Differ( "length of the statistics", file.GetStatisticsCount(), recording.m_nStatistics );
	for ( const int32_t nNode : IdsOf( recording ) )
	{
		const std::string what = " of node " + std::to_string( nNode );
		const auto maximum = recording.m_Maxima.find( nNode );
		const bool bCounted = maximum != recording.m_Maxima.end();
		const SlowRecording::Figures sum = bCounted ? recording.m_Sums.at( nNode ) : SlowRecording::Figures{};
		for ( const std::string &difference : {
				  Differ( "maximum" + what, file.GetMaximum( nNode ).m_nTime, bCounted ? maximum->second.first : 0 ),
				  Differ( "maximum's frame" + what, file.GetMaximum( nNode ).m_nFrame,
					  bCounted ? maximum->second.second : -1 ),
				  Differ( "calls" + what, file.GetSum( nNode ).m_nCalls, sum.first ),
				  Differ( "time" + what, file.GetSum( nNode ).m_nTime, sum.second ),
			  } )
			if ( !difference.empty() )
				return difference;
	}
	return "";
}

std::string DifferInStrings( const CKestoFile &file, const SlowRecording &expected )
{
	const auto &strings = file.GetStringTable();
	if ( strings.size() != expected.m_Strings.size() )
		return Differ( "number of strings", static_cast<int64_t>( strings.size() ),
			static_cast<int64_t>( expected.m_Strings.size() ) );
	for ( size_t i = 0; i < strings.size(); i++ )
		if ( strings[i].m_pText != expected.m_Strings[i].first || strings[i].m_nValue != expected.m_Strings[i].second )
			return "string " + std::to_string( i ) + " is \"" + strings[i].m_pText + "\", not \"" +
				   expected.m_Strings[i].first + "\"";
	return "";
}
} // namespace

SlowRecording ReadSlowly( std::span<const uint8_t> bytes )
{
	return CSlowReader( bytes ).Run();
}

std::string FindDifference(
	const CKestoFile &file, bool bFailed, const std::string &failure, const SlowRecording &expected )
{
	for ( const std::string &difference : {
			  Differ( "failed", bFailed, expected.m_bFailed ),
			  Differ( "failure text", failure, expected.m_Failure ),
			  Differ( "root", file.GetRootNode(), expected.m_nRoot ),
			  Differ( "number of nodes", file.GetNodeCount(), expected.m_nNodes ),
			  Differ( "number of frames", file.GetFrameCount(), static_cast<int64_t>( expected.m_Frames.size() ) ),
			  DifferInStrings( file, expected ),
			  DifferInStatistics( file, expected ),
		  } )
		if ( !difference.empty() )
			return difference;
	for ( const int32_t nNode : IdsOf( expected ) )
	{
		const auto found = expected.m_Nodes.find( nNode );
		const std::string difference =
			DifferInNode( file, nNode, found == expected.m_Nodes.end() ? SlowRecording::Node{} : found->second );
		if ( !difference.empty() )
			return difference;
	}
	for ( int i = 0; i < file.GetFrameCount(); i++ )
		if ( const std::string difference = DifferInFrame( file, i, expected ); !difference.empty() )
			return difference;
	return "";
}
