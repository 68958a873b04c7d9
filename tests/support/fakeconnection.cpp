#include "support/fakeconnection.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "keel0/memalloc.h"
#include "tessel/itesseldatareceived.h"

namespace
{
constexpr size_t HEADER_SIZE = 12;
constexpr uint8_t HEADER_FILL = 0xEE; // a receiver does not read the header, so its content must not matter
} // namespace

const char *CFakeConnection::GetName() const
{
	CheckAlive( "GetName" );
	return m_Name.c_str();
}

void CFakeConnection::RegisterReceiver( uint32_t nChunkType, uint16_t nVersion, ITesselDataReceived *pReceiver )
{
	CheckAlive( "RegisterReceiver" );
	m_Receivers.push_back( { nChunkType, nVersion, pReceiver } );
}

int CFakeConnection::GetState() const
{
	CheckAlive( "GetState" );
	return m_nState;
}

bool CFakeConnection::SendChunk( uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer )
{
	CheckAlive( "SendChunk" );
	const Chunk chunk{ nChunkType, nVersion, std::vector<uint8_t>( pBuffer, pBuffer + nLength ) };
	g_pMemAlloc->Free( pBuffer );
	m_Sent.push_back( chunk );
	const bool bResult = m_bSends;
	if ( m_OnSend )
		m_OnSend( chunk );
	return bResult;
}

std::vector<CFakeConnection::Chunk> CFakeConnection::TakeSent()
{
	return std::exchange( m_Sent, {} );
}

std::vector<CFakeConnection::Chunk> CFakeConnection::TakeSent( uint32_t nType )
{
	std::vector<Chunk> chunks = TakeSent();
	std::erase_if( chunks, [nType]( const Chunk &chunk ) { return chunk.m_nType != nType; } );
	return chunks;
}

bool CFakeConnection::Deliver( uint32_t nType, std::span<const uint8_t> payload, uint16_t nVersion )
{
	for ( const Receiver &receiver : m_Receivers )
	{
		if ( receiver.m_nType == nType && receiver.m_nVersion == nVersion )
			return DeliverChunk( *receiver.m_pReceiver, this, nType, nVersion, payload );
	}
	ADD_FAILURE() << "nobody registered for chunk type " << nType << ", version " << nVersion;
	return false;
}

void CFakeConnection::CheckAlive( const char *pOperation ) const
{
	if ( m_bEnded )
		ADD_FAILURE() << pOperation << " was called on a connection that has ended";
}

bool DeliverChunk( ITesselDataReceived &receiver, ITesselConnection *pConnection, uint32_t nType, uint16_t nVersion,
	std::span<const uint8_t> payload )
{
	auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( HEADER_SIZE + payload.size() ) );
	std::memset( pBuffer, HEADER_FILL, HEADER_SIZE );
	if ( !payload.empty() )
		std::memcpy( pBuffer + HEADER_SIZE, payload.data(), payload.size() );
	return receiver.OnDataReceived( pConnection, nType, nVersion, static_cast<uint32_t>( payload.size() ), pBuffer );
}
