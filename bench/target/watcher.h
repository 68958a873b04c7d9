// A console that asks for everything and throws it away, so that the library measures for somebody; or one that asks
// and does not read.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <arpa/inet.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <thread>
#include <vector>

#include "target/showbudget.h"
#include "wire/chunkheader.h"
#include "wire/controlchunks.h"
#include "wire/sessionchunks.h"

// A socket that is connected to the port of this process's session.
inline int ConnectToPort()
{
	const int nSocket = socket( AF_INET, SOCK_STREAM, 0 );
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_port = htons( showbudget::Port() );
	address.sin_addr.s_addr = htonl( INADDR_LOOPBACK );
	if ( connect( nSocket, reinterpret_cast<sockaddr *>( &address ), sizeof( address ) ) != 0 )
		std::abort();
	return nSocket;
}

class CWatcher
{
public:
	explicit CWatcher( bool bReads = true )
	{
		showbudget::Settings settings;
		settings.m_nPort = 0;
		settings.m_pLog = []( showbudget::Severity, const char *, void * ) {};
		if ( !showbudget::Start( settings ) )
			std::abort();
		m_nSocket = ConnectToPort();
		Send( wire::CHUNK_HELLO, wire::WriteHello( { wire::PROTOCOL_VERSION, 0, 0, "benchmark" } ) );
		Send( wire::CHUNK_SAMPLING, wire::WriteSamplingRequest( { true, {} } ) );
		Send( wire::CHUNK_MINIPROFILER_CONTROL, wire::WriteMiniProfilerControl( true ) );
		if ( bReads )
			m_Reader = std::thread( [this] { Read(); } );
		while ( showbudget::detail::g_nWanted.load() != 3 )
			std::this_thread::yield();
	}
	~CWatcher()
	{
		showbudget::Stop();
		if ( m_Reader.joinable() )
			m_Reader.join();
		close( m_nSocket );
	}
	CWatcher( const CWatcher & ) = delete;
	CWatcher &operator=( const CWatcher & ) = delete;

private:
	void Send( uint32_t nType, std::span<const uint8_t> payload )
	{
		std::array<uint8_t, wire::CHUNK_HEADER_SIZE> header;
		wire::WriteChunkHeader( header, { nType, wire::CHUNK_VERSION, static_cast<uint32_t>( payload.size() ) } );
		if ( send( m_nSocket, header.data(), header.size(), MSG_NOSIGNAL ) < 0 ||
			 send( m_nSocket, payload.data(), payload.size(), MSG_NOSIGNAL ) < 0 )
			std::abort();
	}
	void Read()
	{
		std::vector<char> bytes( 1 << 16 );
		while ( recv( m_nSocket, bytes.data(), bytes.size(), 0 ) > 0 )
		{
		}
	}

	int m_nSocket = -1;
	std::thread m_Reader;
};
