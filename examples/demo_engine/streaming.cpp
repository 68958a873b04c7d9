#define SHOWBUDGET_PROJECT "core"
#include "streaming.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
CStreaming::CStreaming()
	: m_Blocks( BLOCKS )
{
	for ( Block &block : m_Blocks )
	{
		block.m_Bytes.resize( BLOCK_BYTES );
		uint8_t nHeight = 0;
		for ( uint8_t &nByte : block.m_Bytes )
		{
			if ( m_Random.Below( 9 ) == 0 )
				nHeight = static_cast<uint8_t>( nHeight + m_Random.Below( 5 ) );
			nByte = nHeight;
		}
		block.m_nSum = Sum( block.m_Bytes );
		Pack( block.m_Bytes, block.m_Packed );
		block.m_Bytes.clear();
	}
}

void CStreaming::Update()
{
	SHOWBUDGET_SCOPE( g_Streaming, "Streaming" );
	Load( m_Blocks[m_nNext] );
	m_nNext = ( m_nNext + 1 ) % BLOCKS;
	Unload( m_Blocks[( m_nNext + BLOCKS / 2 ) % BLOCKS] );
}

void CStreaming::LoadEverything()
{
	SHOWBUDGET_SCOPE( g_Streaming, "Load everything" );
	for ( Block &block : m_Blocks )
		Load( block );
}

void CStreaming::Load( Block &block )
{
	SHOWBUDGET_SCOPE( g_Streaming, "Load block" );
	Unpack( block.m_Packed, block.m_Bytes );
	m_nBroken += Sum( block.m_Bytes ) != block.m_nSum;
}

void CStreaming::Unload( Block &block )
{
	SHOWBUDGET_SCOPE( g_Streaming, "Unload block" );
	if ( block.m_Bytes.empty() )
		return;
	Pack( block.m_Bytes, block.m_Packed );
	block.m_Bytes.clear();
}

uint32_t CStreaming::Sum( const std::vector<uint8_t> &bytes )
{
	SHOWBUDGET_SCOPE( g_Streaming, "Check sum" );
	uint32_t nSum = 1;
	for ( const uint8_t nByte : bytes )
		nSum = nSum * 31 + nByte;
	return nSum;
}

// Runs of one byte: its count, then the byte.
void CStreaming::Pack( const std::vector<uint8_t> &bytes, std::vector<uint8_t> &packed )
{
	SHOWBUDGET_SCOPE( g_Streaming, "Pack" );
	packed.clear();
	for ( size_t i = 0; i < bytes.size(); )
	{
		size_t nRun = 1;
		while ( nRun < 255 && i + nRun < bytes.size() && bytes[i + nRun] == bytes[i] )
			nRun++;
		packed.push_back( static_cast<uint8_t>( nRun ) );
		packed.push_back( bytes[i] );
		i += nRun;
	}
}

void CStreaming::Unpack( const std::vector<uint8_t> &packed, std::vector<uint8_t> &bytes )
{
	SHOWBUDGET_SCOPE( g_Streaming, "Unpack" );
	bytes.clear();
	for ( size_t i = 0; i + 1 < packed.size(); i += 2 )
		bytes.insert( bytes.end(), packed[i], packed[i + 1] );
}
} // namespace demo
