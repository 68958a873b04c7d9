// An engine with 64 budgets and 2,000 scopes that runs as fast as a window takes its frames.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "miniprofiler/framebuilder.h"
#include "showbudget/budgetpayloads.h"
#include "support/fakeclock.h"
#include "support/fakeconnection.h"

class CLongRunEngine
{
public:
	static constexpr int FRAMES_PER_SECOND = 60;
	static constexpr size_t BUDGETS = 64;
	static constexpr uint64_t SCOPES = 2000;
	static constexpr uint32_t DIFFERENT_FRAMES = 256; // after which they come again

	// Both outlive it. The clock goes on with the frames.
	CLongRunEngine( CFakeConnection &connection, CFakeClock &clock )
		: m_Connection( connection )
		, m_Clock( clock )
	{
		std::mt19937 random( 1 );
		for ( uint32_t i = 0; i < DIFFERENT_FRAMES; i++ )
		{
			m_Samples.push_back( MakeSample( random ) );
			m_Scopes.push_back( MakeScopes( random ) );
		}
	}

	void SendBudgets()
	{
		std::vector<TestCategory> categories;
		for ( size_t i = 0; i < BUDGETS; i++ )
			categories.push_back( { "Budget " + std::to_string( i ), static_cast<uint8_t>( 4 * i ), 100,
				static_cast<uint8_t>( 255 - 4 * i ) } );
		Deliver( CHUNK_PCAT, CategoriesPayload( categories ) );
	}

	void SendNames()
	{
		CFrameBuilder names;
		names.BeginNames( 1'000'000'000, SCOPES );
		for ( uint64_t nId = 1; nId <= SCOPES; nId++ )
		{
			const std::string number = std::to_string( nId );
			names.Name( nId, 0, "Scope " + number,
				"Budget " + std::to_string( nId % BUDGETS ) + "\nFunction" + number + "\nsource/file" +
					std::to_string( nId % 100 ) + ".cpp\n17\nproject\n" );
		}
		Deliver( CHUNK_PMPF, names.End().Payload() );
	}

	void SendFrame()
	{
		m_Clock.Advance( 1.0 / FRAMES_PER_SECOND );
		Deliver( CHUNK_PCPU, m_Samples[m_nFrame % DIFFERENT_FRAMES] );
		Deliver( CHUNK_PMPF, m_Scopes[m_nFrame % DIFFERENT_FRAMES].Payload() );
		m_nFrame++;
	}

	// Goes on until the next frame is the first of those that come again and again.
	void SendFramesUpToTheFirst()
	{
		do
			SendFrame();
		while ( m_nFrame % DIFFERENT_FRAMES != 0 );
	}

	uint32_t FramesSent() const { return m_nFrame; }

private:
	void Deliver( uint32_t nType, std::span<const uint8_t> payload )
	{
		EXPECT_TRUE( m_Connection.Deliver( nType, payload ) );
		m_Connection.TakeSent(); // the connection keeps what it is given for tests to look at
	}

	static Payload MakeSample( std::mt19937 &random )
	{
		std::vector<uint32_t> values( BUDGETS );
		std::ranges::generate( values, [&] { return static_cast<uint32_t>( random() % 600 ); } );
		return SamplePayload( values, static_cast<float>( 50 + random() % 20 ) );
	}

	static CFrameBuilder MakeScopes( std::mt19937 &random )
	{
		CFrameBuilder frame( 1000 );
		frame.BeginData( true, SCOPES, SCOPES );
		for ( uint64_t nId = 1; nId <= SCOPES; nId++ )
			frame.Entry( nId, nId / 8, random() % 100'000, random() % 16 );
		return frame.End();
	}

	CFakeConnection &m_Connection;
	CFakeClock &m_Clock;
	std::vector<Payload> m_Samples;
	std::vector<CFrameBuilder> m_Scopes;
	uint32_t m_nFrame = 0;
};
