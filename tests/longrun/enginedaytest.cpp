// Eight hours of an engine at 60 frames per second, played as fast as they go; a soak lasts an hour at least.
#include <QApplication>
#include <QElapsedTimer>
#include <QTreeWidget>

#include "longrun/engine.h"
#include "longrun/longrun.h"
#include "showbudget/windowfixture.h"
#include "support/paintlog.h"

namespace
{
constexpr int FRAMES_PER_TURN = 64; // of the event loop, in which the window is painted
constexpr int WARM_UP = 8192;       // frames; the ring is full twice over

class EngineDayTest : public WindowTest
{
protected:
	void Open()
	{
		MakeRunningWindow().resize( 1280, 1000 );
		m_pWindow->show();
		Action( "Microprofiler" )->trigger();
		m_Engine.SendBudgets();
		m_Engine.SendNames();
	}

	void RunTurn()
	{
		for ( int i = 0; i < FRAMES_PER_TURN; i++ )
			m_Engine.SendFrame();
		QApplication::processEvents();
	}

	// Drawing operations of the whole window and all that is in it, right after one and the same frame.
	size_t PaintOperations()
	{
		m_Engine.SendFramesUpToTheFirst();
		QApplication::processEvents();
		CPaintLog log( m_pWindow->size() );
		m_pWindow->render( &log );
		return log.Ops().size();
	}

	CLongRunEngine m_Engine{ m_Connection, m_Clock };
};
} // namespace

TEST_F( EngineDayTest, LeavesMemoryDescriptorsAndPaintingWhereTheyWere )
{
	constexpr int FRAMES_OF_EIGHT_HOURS = 8 * 3600 * CLongRunEngine::FRAMES_PER_SECOND;
	constexpr int SOAK = 3'600'000; // milliseconds
	QElapsedTimer soaking;
	soaking.start();
	const int nTurns = LongOrShort( FRAMES_OF_EIGHT_HOURS, WARM_UP ) / FRAMES_PER_TURN;
	Open();
	for ( int i = 0; i < WARM_UP / FRAMES_PER_TURN; i++ )
		RunTurn();

	const int nDescriptorsBefore = OpenDescriptors();
	const size_t nOperationsBefore = PaintOperations();
	CHeapHalves heap;
	for ( int i = 0; i < nTurns / 2; i++ )
	{
		RunTurn();
		heap.NoteFirst();
	}
	for ( int i = 0; i < nTurns / 2 || soaking.elapsed() < LongOrShort( SOAK, 0 ); i++ )
	{
		RunTurn();
		heap.NoteSecond();
	}
	const size_t nOperationsAfter = PaintOperations();

	RecordProperty( "frames", static_cast<int>( m_Engine.FramesSent() ) );
	RecordProperty( "heap_first_half", std::to_string( heap.First() ) );
	RecordProperty( "heap_second_half", std::to_string( heap.Second() ) );
	RecordProperty( "paint_operations", std::to_string( nOperationsAfter ) );
	EXPECT_LE( heap.Second(), heap.First() + heap.First() / 100 );
	EXPECT_EQ( OpenDescriptors(), nDescriptorsBefore );
	EXPECT_GT( nOperationsBefore, 500u ) << "64 budgets alone are more";
	EXPECT_LE( nOperationsAfter * 10, nOperationsBefore * 11 );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), m_Engine.FramesSent() );
	EXPECT_EQ( Dock( "MiniProfiler History" )->findChild<QTreeWidget *>()->topLevelItemCount(),
		static_cast<int>( CLongRunEngine::SCOPES ) );
}
