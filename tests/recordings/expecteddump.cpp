#include "tests/recordings/expecteddump.h"

#include <cstdio>

namespace
{
std::string Quoted( const std::string &bytes )
{
	std::string text = "\"";
	for ( const char c : bytes )
	{
		const unsigned nByte = static_cast<unsigned char>( c );
		char escaped[8];
		const std::string special = "\"\"\\\\\bb\ff\nn\rr\tt";
		size_t nSpecial = 0;
		while ( nSpecial < special.size() && special[nSpecial] != c )
			nSpecial += 2;
		if ( nSpecial < special.size() )
			text += std::string( "\\" ) + special[nSpecial + 1];
		else if ( nByte < 32 || nByte > 126 )
		{
			snprintf( escaped, sizeof( escaped ), "\\u%04x", nByte );
			text += escaped;
		}
		else
			text += c;
	}
	return text + '"';
}

template <typename A, typename B>
std::string Pair( A nFirst, B nSecond )
{
	return "[" + std::to_string( nFirst ) + "," + std::to_string( nSecond ) + "]";
}

template <typename Item>
std::string List( int64_t nCount, const Item &item )
{
	std::string text = "[";
	for ( int64_t i = 0; i < nCount; i++ )
		text += ( i == 0 ? "" : "," ) + item( i );
	return text + "]";
}

template <typename Map>
typename Map::mapped_type Find( const Map &map, int64_t nKey, const typename Map::mapped_type &otherwise )
{
	const auto found = map.find( nKey );
	return found == map.end() ? otherwise : found->second;
}
} // namespace

std::string ExpectedDump( const SlowRecording &model )
{
	const auto frame = [&]( int64_t i )
	{
		const SlowRecording::Frame &entries = model.m_Frames[static_cast<size_t>( i )];
		return List( entries.m_nLength,
			[&]( int64_t nNode )
			{
				const auto entry = Find( entries.m_Entries, nNode, { 0, 0 } );
				return Pair( entry.first, entry.second );
			} );
	};
	const auto maximum = [&]( int64_t i )
	{
		const auto found = Find( model.m_Maxima, i, { 0, -1 } );
		return Pair( found.first, found.second );
	};
	const auto node = [&]( int64_t i )
	{
		const SlowRecording::Node found = Find( model.m_Nodes, i, {} );
		return "{\"first_child\":" + std::to_string( found.m_nFirstChild ) + ",\"name\":" + Quoted( found.m_Name ) +
			   ",\"next_sibling\":" + std::to_string( found.m_nNextSibling ) +
			   ",\"parent\":" + std::to_string( found.m_nParent ) + ",\"value\":" + std::to_string( found.m_nValue ) +
			   "}";
	};
	const auto string = [&]( int64_t i )
	{
		const auto &found = model.m_Strings[static_cast<size_t>( i )];
		return "{\"text\":" + Quoted( found.first ) + ",\"value\":" + std::to_string( found.second ) + "}";
	};
	const auto sum = [&]( int64_t i )
	{
		const auto found = Find( model.m_Sums, i, { 0, 0 } );
		return Pair( found.first, found.second );
	};
	return std::string( "{\"failed\":" ) + ( model.m_bFailed ? "true" : "false" ) +
		   ",\"failure\":" + Quoted( model.m_Failure ) +
		   ",\"frames\":" + List( static_cast<int64_t>( model.m_Frames.size() ), frame ) +
		   ",\"maxima\":" + List( model.m_nStatistics, maximum ) + ",\"nodes\":" + List( model.m_nNodes, node ) +
		   ",\"root\":" + std::to_string( model.m_nRoot ) +
		   ",\"strings\":" + List( static_cast<int64_t>( model.m_Strings.size() ), string ) +
		   ",\"sums\":" + List( model.m_nStatistics, sum ) + "}\n";
}
