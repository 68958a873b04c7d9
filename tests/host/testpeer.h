// An engine's end of a connection, in the hands of a test.
#pragma once

#include <QByteArray>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

#include <vector>

#include "targetaddress.h"
#include "waitfor.h"
#include "wire/chunkheader.h"
#include "wire/sessionchunks.h"

constexpr uint32_t SAMPLE = wire::FourCC( "PCPU" ); // a chunk that is none of the host's own

inline QByteArray ChunkBytes( uint32_t nType, const QByteArray &payload, uint16_t nVersion = wire::CHUNK_VERSION )
{
	// Written by hand and not with the product's writer.
	QByteArray bytes;
	const auto big = [&bytes]( uint64_t nValue, int nBytes )
	{
		for ( int i = nBytes - 1; i >= 0; i-- )
			bytes += static_cast<char>( nValue >> ( 8 * i ) & 0xFF );
	};
	big( nType, 4 );
	big( nVersion, 2 );
	big( 0, 2 );
	big( static_cast<uint64_t>( payload.size() ), 4 );
	return bytes + payload;
}

inline QByteArray BigEndian32( uint32_t nValue )
{
	QByteArray bytes;
	for ( int i = 3; i >= 0; i-- )
		bytes += static_cast<char>( nValue >> ( 8 * i ) & 0xFF );
	return bytes;
}

inline QByteArray HelloPayload( const QByteArray &name = "engine", uint32_t nProtocol = 2, uint32_t nProcessId = 4711 )
{
	return BigEndian32( nProtocol ) + BigEndian32( nProcessId ) + BigEndian32( 0 ) + BigEndian32( 1000000 ) + name;
}

inline QByteArray HelloBytes( const QByteArray &name = "engine", uint32_t nProtocol = 2, uint32_t nProcessId = 4711 )
{
	return ChunkBytes( wire::FourCC( "HELO" ), HelloPayload( name, nProtocol, nProcessId ) );
}

// Listens on a free port of the loopback and keeps what the newest connection sent.
class CTestPeer
{
public:
	CTestPeer()
	{
		QObject::connect( &m_Server, &QTcpServer::newConnection, &m_Server, [this]() { Accept(); } );
		Listen( 0 );
		m_nPort = m_Server.serverPort();
	}

	bool Listen( quint16 nPort ) { return m_Server.listen( QHostAddress::LocalHost, nPort ); }
	void StopListening() { m_Server.close(); }

	TargetAddress Address() const { return { QStringLiteral( "127.0.0.1" ), m_nPort }; }
	int Accepted() const { return m_nAccepted; }
	bool WaitForConnection( int nNumber = 1 )
	{
		return WaitFor( [this, nNumber]() { return m_nAccepted >= nNumber; } );
	}

	// Answers each connection at once; empty: says nothing by itself.
	void GreetWith( const QByteArray &bytes ) { m_Greeting = bytes; }

	void Send( const QByteArray &bytes )
	{
		m_pSocket->write( bytes );
		m_pSocket->flush();
	}
	void SendChunk( uint32_t nType, const QByteArray &payload, uint16_t nVersion = wire::CHUNK_VERSION )
	{
		Send( ChunkBytes( nType, payload, nVersion ) );
	}
	void Close() { m_pSocket->disconnectFromHost(); }
	void Reset() { m_pSocket->abort(); }
	bool IsConnected() const { return m_pSocket && m_pSocket->state() == QAbstractSocket::ConnectedState; }
	QTcpSocket *Socket() { return m_pSocket; }

	const QByteArray &Received() const { return m_Received; }
	bool WaitForBytes( int nCount )
	{
		return WaitFor( [this, nCount]() { return m_Received.size() >= nCount; } );
	}

	// A peer that stops reading.
	void StopReading()
	{
		m_pSocket->disconnect( m_pSocket, &QTcpSocket::readyRead, nullptr, nullptr );
		m_pSocket->setReadBufferSize( 1 );
	}

private:
	void Accept()
	{
		m_pSocket = m_Server.nextPendingConnection();
		m_nAccepted++;
		m_Received.clear();
		QTcpSocket *pSocket = m_pSocket;
		QObject::connect( pSocket, &QTcpSocket::readyRead, pSocket,
			[this, pSocket]()
			{
				if ( pSocket == m_pSocket )
					m_Received += pSocket->readAll();
			} );
		if ( !m_Greeting.isEmpty() )
			Send( m_Greeting );
	}

	QTcpServer m_Server;
	QPointer<QTcpSocket> m_pSocket;
	QByteArray m_Received;
	QByteArray m_Greeting;
	quint16 m_nPort = 0;
	int m_nAccepted = 0;
};
