#include "events/scenarios.h"

#include <gtest/gtest.h>

#include <QDockWidget>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>
#include <QWindow>

#include "events/toolscene.h"
#include "miniprofiler/miniprofilersearchedit.h"
#include "miniprofiler/miniprofilertreewidget.h"
#include "recordings/flamegraphrowitem.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "support/userloop.h"
#include "views/budgethistorybarswidget.h"
#include "views/budgethistorywidget.h"
#include "views/fpsgraphwidget.h"

namespace
{
constexpr int TURNS_OPEN = 3; // for which a menu stays open

// The steps of one scene, each of which does nothing without the window.
class CSteps
{
public:
	CSteps( CToolScene &scene, CUserLoop &loop )
		: m_Scene( scene )
		, m_Loop( loop )
	{
	}

	void Add( std::function<void()> step ) const
	{
		m_Loop.AddStep(
			[&scene = m_Scene, step = std::move( step )]
			{
				if ( scene.Window() )
					step();
			} );
	}

	void Wait( int nTurns ) const
	{
		for ( int i = 0; i < nTurns; i++ )
			m_Loop.AddStep( nullptr );
	}

private:
	CToolScene &m_Scene;
	CUserLoop &m_Loop;
};

// -- The mouse, through the window system: the toolkit finds the widget and sends what else belongs to it.

using MouseFn = void ( * )( QWindow &window, Qt::MouseButton button, QPoint pt );

void Press( QWindow &window, Qt::MouseButton button, QPoint pt )
{
	QTest::mousePress( &window, button, Qt::NoModifier, pt );
}

void Release( QWindow &window, Qt::MouseButton button, QPoint pt )
{
	QTest::mouseRelease( &window, button, Qt::NoModifier, pt );
}

void Move( QWindow &window, Qt::MouseButton, QPoint pt )
{
	QTest::mouseMove( &window, pt );
}

void Mouse( const QWidget &widget, MouseFn act, Qt::MouseButton button, QPoint pt )
{
	act( *widget.window()->windowHandle(), button, widget.mapTo( widget.window(), pt ) );
}

void RightClick( const QWidget &widget, QPoint pt )
{
	const QPointer<QWindow> pWindow = widget.window()->windowHandle();
	const QPoint ptWindow = widget.mapTo( widget.window(), pt );
	Press( *pWindow, Qt::RightButton, ptWindow );
	if ( pWindow )
		Release( *pWindow, Qt::RightButton, ptWindow );
}

void AddDrag( CToolScene &scene, CUserLoop &loop, QWidget &widget, QPoint ptFrom, QPoint ptStep )
{
	const CSteps steps( scene, loop );
	steps.Add( [&widget, ptFrom] { Mouse( widget, &Press, Qt::LeftButton, ptFrom ); } );
	for ( int i = 1; i <= 4; i++ )
		steps.Add( [&widget, ptFrom, ptStep, i] { Mouse( widget, &Move, Qt::LeftButton, ptFrom + i * ptStep ); } );
	steps.Add( [&widget, ptFrom, ptStep] { Mouse( widget, &Release, Qt::LeftButton, ptFrom + 4 * ptStep ); } );
}

void AddMenu( CToolScene &scene, CUserLoop &loop, const QWidget &widget, QPoint pt )
{
	const CSteps steps( scene, loop );
	steps.Add( [&widget, pt] { RightClick( widget, pt ); } );
	steps.Wait( TURNS_OPEN );
}

// -- What the window shows at first

void ShowRecording( CToolScene &scene )
{
	auto &player = *scene.Find<CQKestoPlayerWidget>();
	scene.Window()->findChild<QDockWidget *>( "Kesto_Player" )->show();
	player.OpenRecording( scene.m_Files.m_Short );
	player.ShowFrame( 1 );
	QCoreApplication::processEvents();
}

void ShowScopes( CToolScene &scene )
{
	scene.Window()->ShowMiniProfiler( true );
	scene.SendScopes( 1, 30 );
	QCoreApplication::processEvents();
}

void ShowStoppedHistory( CToolScene &scene )
{
	scene.Window()->StopSampling();
	QCoreApplication::processEvents();
}

// -- Recordings

void AddOpening( CToolScene &scene, CUserLoop &loop, const QString &fileName )
{
	CSteps( scene, loop ).Add( [&scene, fileName] { scene.Window()->OpenRecording( fileName ); } );
}

void LoadARecording( CToolScene &scene, CUserLoop &loop )
{
	AddOpening( scene, loop, scene.m_Files.m_Long );
}

// The box asks what to do about the damage.
void LoadADamagedRecording( CToolScene &scene, CUserLoop &loop )
{
	AddOpening( scene, loop, scene.m_Files.m_Damaged );
}

void AskForARecording( CToolScene &scene, CUserLoop &loop )
{
	const CSteps steps( scene, loop );
	steps.Add(
		[&scene]
		{
			auto *pToolBar = scene.Find<CQKestoPlayerWidget>()->findChild<QToolBar *>();
			QTest::mouseClick( pToolBar->widgetForAction( pToolBar->actions().first() ), Qt::LeftButton );
		} );
	steps.Wait( TURNS_OPEN );
}

void DropARecording( CToolScene &scene, CUserLoop &loop )
{
	CSteps( scene, loop )
		.Add(
			[&scene]
			{
				QMimeData data;
				data.setUrls( { QUrl::fromLocalFile( scene.m_Files.m_Long ) } );
				auto *pPlayer = scene.Find<CQKestoPlayerWidget>();
				QDragEnterEvent enter( QPoint( 5, 5 ), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier );
				QCoreApplication::sendEvent( pPlayer, &enter );
				QDropEvent drop( QPointF( 5, 5 ), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier );
				QCoreApplication::sendEvent( pPlayer, &drop );
			} );
	CSteps( scene, loop ).Wait( TURNS_OPEN );
}

// -- Menus

void OpenTheTreesMenu( CToolScene &scene, CUserLoop &loop )
{
	const auto *pTree = scene.Find<CQKestoPlayerWidget>()->findChild<QTreeWidget *>();
	AddMenu( scene, loop, *pTree->viewport(), pTree->visualItemRect( pTree->topLevelItem( 1 ) ).center() );
}

void OpenTheFlameGraphsMenu( CToolScene &scene, CUserLoop &loop )
{
	const auto *pFlames = scene.Find<CQFlamegraphWidget>();
	const QPointF ptBar = pFlames->GetRowItems()[0]->boundingRect().center();
	AddMenu( scene, loop, *pFlames->viewport(), pFlames->mapFromScene( ptBar ) );
}

void OpenTheWindowsMenu( CToolScene &scene, CUserLoop &loop )
{
	AddMenu( scene, loop, *scene.Window()->centralWidget(), QPoint( 20, 20 ) );
}

void OpenTheMiniProfilersMenu( CToolScene &scene, CUserLoop &loop )
{
	AddMenu( scene, loop, *scene.Find<CQMiniProfilerTreeWidget>()->viewport(), QPoint( 20, 20 ) );
}

// -- Drags and keys

void DragAMarker( CToolScene &scene, CUserLoop &loop )
{
	auto &graph = *scene.Find<CQFPSGraphWidget>();
	const int nLowerMarker = graph.contentsRect().height() - 18; // 30 frames per second at the smallest scale
	AddDrag( scene, loop, graph, QPoint( 5, nLowerMarker ), QPoint( 0, -4 ) );
}

void DragTheCursor( CToolScene &scene, CUserLoop &loop )
{
	auto &bars = *scene.Find<CQBudgetHistoryBarsWidget>();
	AddDrag( scene, loop, bars, QPoint( bars.width() - 100, 20 ), QPoint( -15, 0 ) );
}

void SearchForScopes( CToolScene &scene, CUserLoop &loop )
{
	const CSteps steps( scene, loop );
	const auto type = [&]( Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier )
	{
		steps.Add(
			[&scene, key, modifiers] { QTest::keyClick( scene.Find<CQMiniProfilerSearchEdit>(), key, modifiers ); } );
	};
	steps.Add( [&scene] { scene.Find<CQMiniProfilerSearchEdit>()->setFocus(); } );
	for ( const Qt::Key key : { Qt::Key_R, Qt::Key_E, Qt::Key_N, Qt::Key_Return } )
		type( key );
	type( Qt::Key_Return, Qt::ShiftModifier );
	type( Qt::Key_Escape );
}

// -- What comes of it

void CheckLongRecording( const CToolScene &scene, const CUserLoop & )
{
	EXPECT_EQ( scene.Find<CQKestoPlayerWidget>()->GetRecording()->GetFrameCount(), SceneFiles::LONG_FRAMES );
}

void CheckRecoveredRecording( const CToolScene &scene, const CUserLoop &loop )
{
	EXPECT_TRUE( loop.WasAsked() );
	CheckLongRecording( scene, loop );
}

void CheckMenu( const CToolScene &, const CUserLoop &loop )
{
	EXPECT_TRUE( loop.WasAsked() );
}

void CheckMarker( const CToolScene &scene, const CUserLoop & )
{
	const FPSMarkers &markers = scene.Find<CQFPSGraphWidget>()->Markers();
	EXPECT_GT( markers.m_flLower, 30.0f );
}

void CheckCursor( const CToolScene &scene, const CUserLoop & )
{
	EXPECT_LT( scene.Find<CQBudgetHistoryWidget>()->Cursor(), CToolScene::SAMPLES - 1 );
}

void CheckSearch( const CToolScene &scene, const CUserLoop & )
{
	EXPECT_EQ( scene.Find<CQMiniProfilerTreeWidget>()->SelectedRows().size(), size_t{ 1 } ) << "the one stepped to";
	EXPECT_EQ( scene.Find<CQMiniProfilerSearchEdit>()->text(), "" );
}

constexpr Scenario SCENARIOS[] = {
	{ "LoadingARecording", nullptr, &LoadARecording, &CheckLongRecording },
	{ "AnsweringTheBoxAboutADamagedRecording", nullptr, &LoadADamagedRecording, &CheckRecoveredRecording },
	{ "ChoosingARecording", &ShowRecording, &AskForARecording, &CheckRecoveredRecording },
	{ "DroppingARecording", &ShowRecording, &DropARecording, &CheckLongRecording },
	{ "TheTreesMenu", &ShowRecording, &OpenTheTreesMenu, &CheckMenu },
	{ "TheFlameGraphsMenu", &ShowRecording, &OpenTheFlameGraphsMenu, &CheckMenu },
	{ "TheWindowsMenu", nullptr, &OpenTheWindowsMenu, &CheckMenu },
	{ "TheMiniProfilersMenu", &ShowScopes, &OpenTheMiniProfilersMenu, &CheckMenu },
	{ "DraggingAMarker", nullptr, &DragAMarker, &CheckMarker },
	{ "DraggingTheCursor", &ShowStoppedHistory, &DragTheCursor, &CheckCursor },
	{ "SearchingForScopes", &ShowScopes, &SearchForScopes, &CheckSearch },
};
} // namespace

std::span<const Scenario> Scenarios()
{
	return SCENARIOS;
}
