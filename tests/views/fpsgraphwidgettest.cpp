// The threshold markers under a real mouse.
#include "views/fpsgraphwidget.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>
#include <QtTest>

#include "views/budgethistorywidget.h"
#include "views/fakehistoryowner.h"
#include "views/movemouse.h"

namespace
{
// A graph at zoom 0, where a frame per second is 3.3 pixels high.
struct Graph
{
	Graph()
		: m_History( m_Owner, nullptr )
		, m_View( *m_History.findChild<CQFPSGraphWidget *>() )
	{
		m_History.resize( 600, 2400 ); // room for 300 frames per second
		m_History.show();
		QApplication::processEvents();
		for ( int i = 0; i < 500; i++ )
			m_Owner.AddSample( { 10000 } );
	}

	int YOf( float flRate ) const { return m_View.height() - static_cast<int>( flRate * 3.3f ); }
	QPoint LeftHandle( float flRate ) const { return QPoint( 5, YOf( flRate ) ); }
	QPoint RightHandle( float flRate ) const { return QPoint( m_View.width() - 5, YOf( flRate ) ); }

	// The pixel whose middle of truncation is the rate: half a frame above it.
	QPoint Target( float flRate ) const
	{
		return QPoint( 200, m_View.height() - static_cast<int>( ( flRate + 0.5f ) * 3.3f ) );
	}

	void Drag( QPoint ptFrom, std::initializer_list<QPoint> path )
	{
		QTest::mousePress( &m_View, Qt::LeftButton, Qt::NoModifier, ptFrom );
		for ( const QPoint &ptMouse : path )
			MoveMouse( &m_View, ptMouse );
		QTest::mouseRelease( &m_View, Qt::LeftButton, Qt::NoModifier, ptFrom );
	}

	std::pair<float, float> Markers() const { return { m_View.Markers().m_flLower, m_View.Markers().m_flUpper }; }

	CFakeHistoryOwner m_Owner;
	CQBudgetHistoryWidget m_History;
	CQFPSGraphWidget &m_View;
};

using Pair = std::pair<float, float>;
} // namespace

TEST( FPSGraph, MarkersFollowTheMouseByEitherHandle )
{
	Graph graph;
	ASSERT_GT( graph.m_View.height(), 1000 );
	graph.Drag( graph.LeftHandle( 60.0f ), { graph.Target( 90.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 90.0f ) );
	graph.Drag( graph.RightHandle( 90.0f ), { graph.Target( 80.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 80.0f ) );
	graph.Drag( graph.LeftHandle( 30.0f ), { graph.Target( 40.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 40.0f, 80.0f ) );
	graph.Drag( graph.RightHandle( 40.0f ), { graph.Target( 20.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 20.0f, 80.0f ) );
}

TEST( FPSGraph, AMarkerThatIsDraggedPastTheOtherPushesIt )
{
	Graph graph;
	graph.Drag( graph.LeftHandle( 60.0f ), { graph.Target( 31.0f ), graph.Target( 30.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 25.0f, 30.0f ) );
	graph.Drag( graph.LeftHandle( 30.0f ), { graph.Target( 10.0f ), graph.Target( 70.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 5.0f, 70.0f ) );
	graph.Drag( graph.LeftHandle( 5.0f ), { graph.Target( 70.0f ), graph.Target( 40.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 40.0f, 75.0f ) );
}

TEST( FPSGraph, MarkersStopAtBothBounds )
{
	Graph graph;
	graph.Drag( graph.LeftHandle( 60.0f ), { QPoint( 5, 5000 ) } );
	EXPECT_EQ( graph.Markers(), Pair( 1.0f, 1.0f ) );
	graph.Drag( graph.LeftHandle( 1.0f ), { QPoint( 5, -5000 ) } ); // the upper one wins where both lie
	EXPECT_EQ( graph.Markers(), Pair( 1.0f, 300.0f ) );
	graph.Drag( graph.LeftHandle( 1.0f ), { QPoint( 5, -5000 ) } );
	EXPECT_EQ( graph.Markers(), Pair( 300.0f, 300.0f ) );
}

TEST( FPSGraph, MouseCursorShowsThatAMarkerIsDragged )
{
	Graph graph;
	EXPECT_FALSE( graph.m_View.testAttribute( Qt::WA_SetCursor ) );
	QTest::mousePress( &graph.m_View, Qt::LeftButton, Qt::NoModifier, graph.LeftHandle( 60.0f ) );
	EXPECT_EQ( graph.m_View.cursor().shape(), Qt::SizeVerCursor );
	MoveMouse( &graph.m_View, graph.Target( 100.0f ) );
	EXPECT_EQ( graph.m_View.cursor().shape(), Qt::SizeVerCursor );
	QTest::mouseRelease( &graph.m_View, Qt::LeftButton, Qt::NoModifier, graph.Target( 100.0f ) );
	EXPECT_FALSE( graph.m_View.testAttribute( Qt::WA_SetCursor ) );
	MoveMouse( &graph.m_View, graph.Target( 150.0f ) );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 100.0f ) );
}

TEST( FPSGraph, DraggingAMarkerPicksNoHistoryCursor )
{
	Graph graph;
	graph.m_History.SetCursorMode( true );
	graph.Drag( graph.LeftHandle( 60.0f ), { graph.Target( 90.0f ) } );
	EXPECT_EQ( graph.m_History.Cursor(), 499u );
	QTest::mouseClick( &graph.m_View, Qt::LeftButton, Qt::NoModifier, QPoint( 40, graph.YOf( 90.0f ) ) ); // beside it
	EXPECT_LT( graph.m_History.Cursor(), 499u );
}

TEST( FPSGraph, HiddenMarkersCannotBeGrabbed )
{
	Graph graph;
	graph.m_Owner.m_Data.m_bShowThresholds = false;
	graph.m_History.SetCursorMode( true );
	graph.Drag( graph.LeftHandle( 60.0f ), { graph.Target( 90.0f ) } );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 60.0f ) );
	EXPECT_LT( graph.m_History.Cursor(), 499u ); // the press went to the columns
}

TEST( FPSGraph, HidingTheMarkersDuringADragLeavesThemWhereTheyAre )
{
	Graph graph;
	QTest::mousePress( &graph.m_View, Qt::LeftButton, Qt::NoModifier, graph.LeftHandle( 60.0f ) );
	graph.m_Owner.m_Data.m_bShowThresholds = false;
	MoveMouse( &graph.m_View, graph.Target( 90.0f ) );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 60.0f ) );
	QTest::mouseRelease( &graph.m_View, Qt::LeftButton, Qt::NoModifier, graph.Target( 90.0f ) );
	EXPECT_FALSE( graph.m_View.testAttribute( Qt::WA_SetCursor ) );
}

TEST( FPSGraph, OtherButtonsNeitherGrabNorRelease )
{
	Graph graph;
	QTest::mousePress( &graph.m_View, Qt::RightButton, Qt::NoModifier, graph.LeftHandle( 60.0f ) );
	MoveMouse( &graph.m_View, graph.Target( 90.0f ) );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 60.0f ) );
	QTest::mousePress( &graph.m_View, Qt::LeftButton, Qt::NoModifier, graph.LeftHandle( 60.0f ) );
	QTest::mouseRelease( &graph.m_View, Qt::RightButton, Qt::NoModifier, graph.LeftHandle( 60.0f ) );
	MoveMouse( &graph.m_View, graph.Target( 90.0f ) );
	EXPECT_EQ( graph.Markers(), Pair( 30.0f, 90.0f ) );
}

TEST( FPSGraph, HandlesExplainThemselves )
{
	Graph graph;
	const auto Hover = [&]( QPoint ptMouse )
	{
		QHelpEvent event( QEvent::ToolTip, ptMouse, graph.m_View.mapToGlobal( ptMouse ) );
		QApplication::sendEvent( &graph.m_View, &event );
		return QToolTip::text().toStdString();
	};
	EXPECT_THAT( Hover( graph.LeftHandle( 60.0f ) ), testing::HasSubstr( "Upper threshold: at 60 fps" ) );
	EXPECT_THAT( Hover( graph.RightHandle( 30.0f ) ), testing::HasSubstr( "Lower threshold: at 30 fps" ) );
	QToolTip::hideText();
}
