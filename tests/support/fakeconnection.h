// A connection without a socket: keeps what was sent and delivers what the test makes up.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "tessel/itesselconnection.h"

class CFakeConnection final : public ITesselConnection
{
public:
	static constexpr int CONNECTED = 3;

	struct Chunk
	{
		uint32_t m_nType = 0;
		uint16_t m_nVersion = 0;
		std::vector<uint8_t> m_Payload;

		friend bool operator==( const Chunk &, const Chunk & ) = default;
	};

	struct Receiver
	{
		uint32_t m_nType = 0;
		uint16_t m_nVersion = 0;
		ITesselDataReceived *m_pReceiver = nullptr;
	};

	explicit CFakeConnection( const char *pName = "engine", int nState = CONNECTED )
		: m_Name( pName )
		, m_nState( nState )
	{
	}

	const char *GetName() const override;
	void RegisterReceiver( uint32_t nChunkType, uint16_t nVersion, ITesselDataReceived *pReceiver ) override;
	int GetState() const override;
	bool SendChunk( uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer ) override;

	// The chunks sent since the last call, oldest first.
	std::vector<Chunk> TakeSent();
	std::vector<Chunk> TakeSent( uint32_t nType ); // of one type; the others are forgotten too

	// Hands a chunk as the host does (header, then payload, in one block) to whoever registered for its type and
	// version. Fails the test when nobody did. Returns what the receiver returned.
	bool Deliver( uint32_t nType, std::span<const uint8_t> payload, uint16_t nVersion = 2 );

	// Every call from now on fails the test: the connection ended.
	void End() { m_bEnded = true; }

	std::vector<Receiver> m_Receivers;
	std::string m_Name;
	int m_nState;
	bool m_bSends = true;                          // what SendChunk returns
	std::function<void( const Chunk & )> m_OnSend; // runs inside SendChunk, for re-entrancy

private:
	void CheckAlive( const char *pOperation ) const;

	std::vector<Chunk> m_Sent;
	bool m_bEnded = false;
};

// Hands a chunk to a receiver in one g_pMemAlloc block, as a host does: 12 bytes of header, then the payload.
bool DeliverChunk( ITesselDataReceived &receiver, ITesselConnection *pConnection, uint32_t nType, uint16_t nVersion,
	std::span<const uint8_t> payload );
