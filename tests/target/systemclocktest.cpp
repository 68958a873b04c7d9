// A machine whose time-stamp counter is no clock.
#include <gtest/gtest.h>

#include "session.h"
#include "wire/sessionchunks.h"

namespace
{
SHOWBUDGET_BUDGET( g_Slow, "System clock test", 1, 2, 3 );

class SystemClock : public CSession
{
	showbudget::Settings MakeSettings() override
	{
		showbudget::Settings settings = CSession::MakeSettings();
		settings.m_Clock = showbudget::Clock::System;
		return settings;
	}
};

uint64_t Recurse( int nDepth )
{
	SHOWBUDGET_SCOPE( g_Slow, "Measured by the system" );
	return BeBusy( 300 ) + ( nDepth > 0 ? Recurse( nDepth - 1 ) : 0 );
}

TEST_F( SystemClock, MeasuresAllTheSame )
{
	CTestConsole console( showbudget::Port() );
	const std::optional<wire::Hello> hello = wire::ReadHello( console.Greet().m_Payload );
	ASSERT_TRUE( hello.has_value() );
	EXPECT_EQ( hello->m_nTickFrequency, 1000000000u );
	console.WantBudgets( true );
	console.WantScopes( true );
	ASSERT_TRUE( WaitUntilWanted( 3 ) );
	const uint64_t nBegin = NowMicroseconds();
	showbudget::EndFrame();
	const uint64_t nBusy = Recurse( 4 );
	showbudget::EndFrame();
	const uint64_t nElapsed = NowMicroseconds() - nBegin;

	const Sample sample = ReadSample( console.ReceiveType( wire::CHUNK_SAMPLE ) );
	EXPECT_LE( sample.Total(), nElapsed + 2 );
	const uint32_t nValue = sample.m_Values.at( sample.m_Values.size() - 2 ); // the only budget, before "Other"
	EXPECT_GE( nValue + 10, nBusy );
	const ProfilerFrame frame = ReadProfilerFrame( console.ReceiveType( wire::CHUNK_MINIPROFILER ) );
	ASSERT_EQ( frame.m_Entries.size(), 1u );
	EXPECT_EQ( frame.m_Entries[0].m_nCalls, 5u );
	EXPECT_GE( frame.m_Entries[0].m_nTicks / 1000 + 10, nBusy );
	EXPECT_LE( frame.m_Entries[0].m_nTicks / 1000, nElapsed );
}
} // namespace
