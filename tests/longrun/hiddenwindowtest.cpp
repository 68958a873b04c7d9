// What nobody sees costs nothing to paint.
#include <QApplication>
#include <QElapsedTimer>
#include <QTreeWidget>

#include "longrun/engine.h"
#include "longrun/longrun.h"
#include "showbudget/windowfixture.h"

namespace
{
// Counts what would be painted in the whole application while it lives.
class CPaintEvents final : public QObject
{
public:
	CPaintEvents() { qApp->installEventFilter( this ); }
	bool eventFilter( QObject *, QEvent *pEvent ) override
	{
		m_nCount += pEvent->type() == QEvent::Paint ? 1 : 0;
		return false;
	}
	int m_nCount = 0;
};

class HiddenWindowTest : public WindowTest
{
protected:
	// Frames and turns of the event loop until the mini-profiler has caught up, which takes it a quarter of a second.
	void RunUntilScopesAreListed()
	{
		const auto *pTree = Dock( "MiniProfiler History" )->findChild<QTreeWidget *>();
		QElapsedTimer deadline;
		deadline.start();
		while ( pTree->topLevelItemCount() < static_cast<int>( CLongRunEngine::SCOPES ) && deadline.elapsed() < 60'000 )
		{
			m_Engine.SendFrame();
			QApplication::processEvents();
		}
		ASSERT_EQ( pTree->topLevelItemCount(), static_cast<int>( CLongRunEngine::SCOPES ) );
	}

	int PaintsWhileTheEngineRuns()
	{
		const CPaintEvents paints;
		m_Engine.SendBudgets();
		RunUntilScopesAreListed();
		return paints.m_nCount;
	}

	CLongRunEngine m_Engine{ m_Connection, m_Clock };
};
} // namespace

TEST_F( HiddenWindowTest, PaintsNothingBeforeItIsShown )
{
	MakeRunningWindow();
	EXPECT_EQ( PaintsWhileTheEngineRuns(), 0 );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), m_Engine.FramesSent() );
}

TEST_F( HiddenWindowTest, PaintsNothingOnceItIsHiddenAgain )
{
	MakeWindow().show();
	Action( "Microprofiler" )->trigger();
	QApplication::processEvents();
	m_pWindow->hide();
	ASSERT_TRUE( m_pWindow->IsRunning() );
	EXPECT_EQ( PaintsWhileTheEngineRuns(), 0 );
	EXPECT_EQ( m_pWindow->Samples().SampleCount(), m_Engine.FramesSent() );
}

TEST_F( HiddenWindowTest, PaintsWhileItShows )
{
	MakeWindow().show();
	EXPECT_GT( PaintsWhileTheEngineRuns(), 0 ) << "or the tests before would say nothing";
}
