// A connection to an engine in the hands of the test, and all that it said of itself.
#pragma once

#include <gmock/gmock.h>

#include <QStringList>

#include <cstring>
#include <vector>

#include "keel0/memalloc.h"
#include "recordingreceiver.h"
#include "support/countingallocator.h"
#include "targetconnection.h"
#include "testpeer.h"

class CConnectionFixture : public testing::Test
{
protected:
	CConnectionFixture()
		: m_Connection( m_Peer.Address() )
	{
		QObject::connect( &m_Connection, &CTargetConnection::StateChanged, &m_Connection,
			[this]() { m_States.push_back( m_Connection.GetState() ); } );
		QObject::connect( &m_Connection, &CTargetConnection::Reported, &m_Connection,
			[this]( LoggingSeverity, const QString &text ) { m_Reports += text; } );
		QObject::connect( &m_Connection, &CTargetConnection::Printed, &m_Connection,
			[this]( LoggingSeverity severity, const QString &text ) {
				m_Prints.push_back( { severity, text } );
			} );
	}

	bool ConnectGreeted()
	{
		m_Peer.GreetWith( HelloBytes() );
		m_Connection.Connect();
		// A peer that closes with unread bytes resets the link, which loses what it sent before.
		return WaitFor( [this]() { return m_Connection.IsConnected() && m_Peer.Received().size() >= 28; } );
	}

	// Connects to a peer that answers with these bytes and waits until the attempt has ended.
	QString ProblemAfter( const QByteArray &bytes )
	{
		m_Peer.GreetWith( bytes );
		m_Connection.Connect();
		EXPECT_TRUE( WaitFor( [this]() { return m_Connection.GetState() == CTargetConnection::Waiting; } ) );
		return m_Connection.Problem();
	}

	static bool SendBytes( CTargetConnection &connection, uint32_t nType, const QByteArray &payload )
	{
		auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( static_cast<size_t>( payload.size() ) ) );
		std::memcpy( pBuffer, payload.constData(), static_cast<size_t>( payload.size() ) );
		return connection.SendChunk( nType, 2, static_cast<uint32_t>( payload.size() ), pBuffer );
	}

	CCountingAllocator m_Allocator;
	CTestPeer m_Peer;
	CTargetConnection m_Connection;
	CRecordingReceiver m_Receiver;
	std::vector<int> m_States;
	QStringList m_Reports;
	std::vector<std::pair<LoggingSeverity, QString>> m_Prints;
};
