// An engine and a console as processes, and what tests wait for of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>

#include "host/waitfor.h"
#include "network/child.h"
#include "support/randomseed.h"

class CProcessesFixture : public testing::Test
{
protected:
	CProcessesFixture()
		: m_nSeed( RandomSeed() )
		, m_Random( m_nSeed )
	{
		std::printf( "%s\n", SeedText( m_nSeed ).c_str() );
	}

	static QStringList DemoEngine( const QString &address = "127.0.0.1", const QString &port = "0" )
	{
		return { DEMO_ENGINE, "--bind", address, "--port", port, "--bodies", "100" };
	}
	static QStringList Console( const QString &address ) { return { CONSOLE_PROBE, address }; }

	// Starts both and waits until samples come.
	void StartSampling( const QStringList &engine )
	{
		m_Engine.Start( engine );
		m_Address = WaitForAddress( m_Engine );
		ASSERT_FALSE( m_Address.isEmpty() ) << "the engine does not listen";
		m_Console.Start( Console( m_Address ) );
		ASSERT_TRUE( WaitForMoreSamples( m_Console ) ) << m_Console.Text().toStdString();
	}

	static int Samples( const CChild &console ) { return console.Last( "samples " ).toInt(); }
	static bool WaitForMoreSamples( CChild &console, int nMore = 3, int nMilliseconds = PROCESS_PATIENCE_MS )
	{
		const int nWanted = Samples( console ) + nMore;
		return WaitFor( [&]() { return Samples( console ) >= nWanted; }, nMilliseconds );
	}
	static int WaitForState( CChild &console, const char *pState, int nFrom, int nMilliseconds )
	{
		return console.WaitForLine( QString( "state %1" ).arg( pState ), nFrom, nMilliseconds );
	}

	int Random( int nLimit ) { return static_cast<int>( m_Random() % static_cast<uint32_t>( nLimit ) ); }

	uint32_t m_nSeed;
	std::mt19937 m_Random;
	CChild m_Engine;
	CChild m_Console;
	QString m_Address;
};
