// The queues between the threads, against dumb models.
#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <memory>
#include <random>
#include <thread>

#include "target/src/framequeue.h"
#include "target/src/linequeue.h"

namespace
{
using namespace showbudget;

bool Put( CFrameQueue &queue, uint64_t nNumber, uint32_t nBudgets, uint32_t nEntries, uint32_t nReservedEntries )
{
	uint8_t *pFrame = queue.Reserve( FrameSize( nBudgets, nReservedEntries ) );
	if ( !pFrame )
		return false;
	FrameHeader header{};
	header.m_nBegin = nNumber;
	header.m_nBudgets = nBudgets;
	header.m_nEntries = nEntries;
	std::memcpy( pFrame, &header, sizeof( header ) );
	for ( uint32_t i = 0; i < nBudgets; i++ )
		reinterpret_cast<uint64_t *>( pFrame + sizeof( header ) )[i] = nNumber + i;
	auto *pEntries = reinterpret_cast<FrameEntry *>( pFrame + sizeof( header ) + nBudgets * sizeof( uint64_t ) );
	for ( uint32_t i = 0; i < nEntries; i++ )
		pEntries[i] = { i, 0, nNumber, nNumber };
	queue.Commit( FrameSize( nBudgets, nEntries ) );
	return true;
}

void Check( const Frame &frame, uint64_t nNumber )
{
	ASSERT_EQ( frame.m_Header.m_nBegin, nNumber );
	for ( size_t i = 0; i < frame.m_BudgetTicks.size(); i++ )
		ASSERT_EQ( frame.m_BudgetTicks[i], nNumber + i );
	for ( size_t i = 0; i < frame.m_Entries.size(); i++ )
	{
		ASSERT_EQ( frame.m_Entries[i].m_nSite, i );
		ASSERT_EQ( frame.m_Entries[i].m_nTicks, nNumber );
	}
}

TEST( FrameQueue, KeepsFramesAsAListWould )
{
	const uint32_t nSeed = std::random_device()();
	SCOPED_TRACE( nSeed );
	std::mt19937 generator( nSeed );
	const auto Below = [&generator]( uint32_t nLimit ) { return static_cast<uint32_t>( generator() % nLimit ); };
	const auto pQueue = std::make_unique<CFrameQueue>();
	std::deque<uint64_t> model;
	uint64_t nNumber = 1;
	uint64_t nRefused = 0;
	Frame frame;
	for ( int i = 0; i < 20000; i++ )
	{
		if ( Below( 5 ) < 3 )
		{
			const uint32_t nEntries = Below( 2000 );
			if ( Put( *pQueue, nNumber, Below( 100 ), nEntries, nEntries + Below( 2000 ) ) )
				model.push_back( nNumber );
			else
				nRefused++;
			nNumber++;
		}
		else
		{
			ASSERT_EQ( pQueue->Peek( frame ), !model.empty() );
			if ( model.empty() )
				continue;
			Check( frame, model.front() );
			pQueue->Pop();
			model.pop_front();
		}
	}
	EXPECT_GT( nRefused, 0u ) << "the queue was never full";
	pQueue->Clear();
	EXPECT_FALSE( pQueue->Peek( frame ) );
}

TEST( FrameQueue, PassesFramesBetweenTwoThreads )
{
	constexpr uint64_t FRAMES = 20000;
	const auto pQueue = std::make_unique<CFrameQueue>();
	std::thread writer(
		[&]
		{
			for ( uint64_t nNumber = 1; nNumber <= FRAMES; )
			{
				if ( Put( *pQueue, nNumber, 3, static_cast<uint32_t>( nNumber % 70 ), 70 ) )
					nNumber++;
				else
					std::this_thread::yield();
			}
		} );
	Frame frame;
	for ( uint64_t nNumber = 1; nNumber <= FRAMES; )
	{
		if ( !pQueue->Peek( frame ) )
		{
			std::this_thread::yield();
			continue;
		}
		Check( frame, nNumber++ );
		pQueue->Pop();
	}
	writer.join();
	EXPECT_FALSE( pQueue->Peek( frame ) );
}

TEST( LineQueue, CountsWhatFindsNoRoom )
{
	const auto pQueue = std::make_unique<CLineQueue>();
	uint64_t nTaken = 0;
	while ( pQueue->Push( Severity::Message, std::to_string( nTaken ) ) )
		nTaken++;
	EXPECT_FALSE( pQueue->Push( Severity::Message, "one more" ) );
	EXPECT_EQ( pQueue->TakeDropped(), 2u );
	EXPECT_EQ( pQueue->TakeDropped(), 0u );
	for ( uint64_t i = 0; i < nTaken; i++ )
	{
		const CLineQueue::Line *pLine = pQueue->Peek();
		ASSERT_NE( pLine, nullptr );
		EXPECT_EQ( std::string_view( pLine->m_Text, pLine->m_nLength ), std::to_string( i ) );
		pQueue->Pop();
	}
	EXPECT_EQ( pQueue->Peek(), nullptr );
	EXPECT_TRUE( pQueue->Push( Severity::Message, "room again" ) );
}

TEST( LineQueue, TakesLinesOfManyThreadsEachInItsOrder )
{
	constexpr int THREADS = 4;
	constexpr uint32_t LINES = 2000;
	const auto pQueue = std::make_unique<CLineQueue>();
	std::vector<std::thread> writers;
	for ( int nThread = 0; nThread < THREADS; nThread++ )
	{
		writers.emplace_back(
			[&, nThread]
			{
				for ( uint32_t i = 0; i < LINES; i++ )
				{
					while ( !pQueue->Push( Severity::Message, std::to_string( nThread ) + ' ' + std::to_string( i ) ) )
						std::this_thread::yield();
				}
			} );
	}
	uint32_t next[THREADS]{};
	for ( uint32_t i = 0; i < THREADS * LINES; )
	{
		const CLineQueue::Line *pLine = pQueue->Peek();
		if ( !pLine )
		{
			std::this_thread::yield();
			continue;
		}
		const std::string text( pLine->m_Text, pLine->m_nLength );
		const size_t nThread = static_cast<size_t>( text[0] - '0' );
		EXPECT_EQ( text.substr( 2 ), std::to_string( next[nThread]++ ) );
		pQueue->Pop();
		i++;
	}
	for ( std::thread &writer : writers )
		writer.join();
}
} // namespace
