// The history panel under real events.
#include <gmock/gmock.h>

#include <QFrame>
#include <QHelpEvent>
#include <QLayout>
#include <QSplitter>
#include <QToolTip>
#include <QWheelEvent>

#include "support/logguard.h"
#include "views/framedpanel.h"
#include "views/historypanel.h"
#include "views/movemouse.h"

using testing::HasSubstr;
using testing::Not;

namespace
{
void Turn( QWidget &widget, int nVertical, int nHorizontal = 0 )
{
	const QPointF ptCentre = QRectF( widget.rect() ).center();
	QWheelEvent event( ptCentre, widget.mapToGlobal( ptCentre.toPoint() ), QPoint(), QPoint( nHorizontal, nVertical ),
		Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false );
	QApplication::sendEvent( &widget, &event );
}

int SavedInt( const Panel &panel, const char *pKey )
{
	KeyValues settings( "saved" );
	panel.m_Widget.SaveSettings( settings );
	return settings.GetInt( pKey, -1000 );
}
} // namespace

TEST( BudgetHistory, StacksBarsAndGraphInFramedPanelsAboveTheScrollBar )
{
	Panel panel;
	auto *pSplitter = panel.m_Widget.findChild<QSplitter *>();
	ASSERT_EQ( pSplitter->count(), 2 );
	EXPECT_EQ( pSplitter->orientation(), Qt::Vertical );
	EXPECT_EQ( panel.m_Bars.parentWidget(), pSplitter->widget( 0 ) );
	EXPECT_EQ( panel.m_Graph.parentWidget(), pSplitter->widget( 1 ) );
	EXPECT_TRUE( dynamic_cast<CQFramedPanel *>( pSplitter->widget( 0 ) ) );
	EXPECT_TRUE( dynamic_cast<CQFramedPanel *>( pSplitter->widget( 1 ) ) );
	EXPECT_EQ( panel.m_Widget.layout()->contentsMargins(), QMargins() );
	EXPECT_EQ( panel.m_ScrollBar.orientation(), Qt::Horizontal );
	EXPECT_TRUE( panel.m_ScrollBar.isHidden() );
	for ( const QWidget *pView : { static_cast<QWidget *>( &panel.m_Bars ), static_cast<QWidget *>( &panel.m_Graph ) } )
		EXPECT_EQ( pView->minimumSize(), QSize( 100, 100 ) );
}

TEST( BudgetHistory, SizeHintFollowsTheScale )
{
	EXPECT_EQ( Panel( 0, 1.0f ).m_Widget.sizeHint(), QSize( 1200, 250 ) );
	EXPECT_EQ( Panel( 0, 1.25f ).m_Widget.sizeHint(), QSize( 1500, 312 ) );
}

TEST( BudgetHistory, CursorLabelIsAHiddenSunkenPanelAtFirst )
{
	Panel panel;
	EXPECT_EQ( panel.m_Label.text(), "" );
	EXPECT_TRUE( panel.m_Label.isHidden() );
	EXPECT_EQ( panel.m_Label.frameShape(), QFrame::Panel );
	EXPECT_EQ( panel.m_Label.frameShadow(), QFrame::Sunken );
}

TEST( BudgetHistory, CursorModePutsTheCursorOnTheNewestSampleAndShowsTheLabel )
{
	Panel panel( 30 );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_Widget.Cursor(), 29u );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 30 " );
	EXPECT_FALSE( panel.m_Label.isHidden() );
	panel.m_Widget.SetCursorMode( false );
	EXPECT_TRUE( panel.m_Label.isHidden() );
	EXPECT_FALSE( panel.m_Widget.IsCursorMode() );
}

TEST( BudgetHistory, CursorLabelCountsFromOneAlsoWithoutSamples )
{
	Panel panel;
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 1 " );
	panel.Add( 1 );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 1 " );
}

TEST( BudgetHistory, ScrollBarStaysHiddenWhileAllSamplesFit )
{
	Panel panel;
	panel.Add( static_cast<uint32_t>( panel.Visible() ) );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_TRUE( panel.m_ScrollBar.isHidden() );
	panel.Add( 1 );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_FALSE( panel.m_ScrollBar.isHidden() );
}

TEST( BudgetHistory, ScrollBarRangesOverTheSamplesThatDoNotFit )
{
	for ( const float flScale : { 1.0f, 2.0f } )
	{
		Panel panel( 500, flScale );
		panel.m_Widget.SetCursorMode( true );
		EXPECT_EQ( panel.m_ScrollBar.minimum(), 0 );
		EXPECT_EQ( panel.m_ScrollBar.maximum(), 500 - panel.Visible() );
		EXPECT_EQ( panel.m_ScrollBar.value(), 500 - panel.Visible() );
		EXPECT_EQ( panel.m_ScrollBar.pageStep(), panel.Visible() );
		EXPECT_EQ( panel.m_ScrollBar.singleStep(), 1 );
		panel.m_Widget.SetCursorMode( false );
		EXPECT_TRUE( panel.m_ScrollBar.isHidden() );
	}
}

TEST( BudgetHistory, EveryUpdateOfTheScrollBarJumpsToTheNewestColumns )
{
	Panel panel( 500 );
	panel.m_Widget.SetCursorMode( true );
	panel.m_ScrollBar.setValue( 7 );
	panel.m_Widget.resize( 600, 420 );
	QApplication::processEvents();
	EXPECT_EQ( panel.m_ScrollBar.value(), 500 - panel.Visible() );
	panel.m_ScrollBar.setValue( 7 );
	panel.m_Widget.resize( 700, 420 );
	QApplication::processEvents();
	EXPECT_EQ( panel.m_ScrollBar.maximum(), 500 - panel.Visible() );
	EXPECT_EQ( panel.m_ScrollBar.value(), 500 - panel.Visible() );
	panel.m_ScrollBar.setValue( 7 );
	panel.m_Widget.SetCursorMode( true );
	EXPECT_EQ( panel.m_ScrollBar.value(), 500 - panel.Visible() );
}

TEST( BudgetHistory, ScrollingKeepsTheCursorAndRefreshesTheWindow )
{
	Panel panel( 500 );
	panel.m_Widget.SetCursorMode( true );
	panel.m_Owner.m_nCursorChanges = 0;
	panel.m_ScrollBar.setValue( 3 );
	EXPECT_EQ( panel.m_Widget.Cursor(), 499u );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 500 " );
	EXPECT_EQ( panel.m_Owner.m_nCursorChanges, 1 );
}

TEST( BudgetHistory, ClearingTheSamplesResetsCursorLabelAndScrollBar )
{
	Panel panel( 500 );
	panel.m_Widget.SetCursorMode( true );
	panel.m_Owner.m_Data.m_nSampleCount = 0;
	panel.m_Widget.OnSamplesCleared();
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	EXPECT_EQ( panel.m_Label.text(), " Cursor: 1 " );
	EXPECT_TRUE( panel.m_ScrollBar.isHidden() );
	EXPECT_EQ( panel.m_ScrollBar.maximum(), 0 );
	EXPECT_EQ( panel.m_ScrollBar.value(), 0 );
}

TEST( BudgetHistory, BothViewsPickTheCursorAndFollowTheMouse )
{
	Panel panel( 500 );
	panel.m_Owner.m_Data.m_bShowThresholds = false;
	panel.m_Widget.SetCursorMode( true );
	panel.m_ScrollBar.setValue( 100 );
	for ( QWidget *pView : { static_cast<QWidget *>( &panel.m_Bars ), static_cast<QWidget *>( &panel.m_Graph ) } )
	{
		panel.m_Owner.m_nCursorChanges = 0;
		QTest::mousePress( pView, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 20 ) );
		EXPECT_EQ( panel.m_Widget.Cursor(), 120u );
		EXPECT_EQ( panel.m_Label.text(), " Cursor: 121 " );
		EXPECT_EQ( panel.m_Owner.m_nCursorChanges, 1 );
		MoveMouse( pView, panel.AtColumn( 20 ) + QPoint( 1, 5 ) );
		EXPECT_EQ( panel.m_Owner.m_nCursorChanges, 1 ); // the same column
		MoveMouse( pView, panel.AtColumn( 33 ) );
		EXPECT_EQ( panel.m_Widget.Cursor(), 133u );
		MoveMouse( pView, QPoint( -50, 40 ) );
		EXPECT_EQ( panel.m_Widget.Cursor(), 100u );
		MoveMouse( pView, QPoint( 5000, 40 ) );
		EXPECT_EQ( panel.m_Widget.Cursor(), 100u + static_cast<uint32_t>( panel.Visible() ) - 1 );
		QTest::mouseRelease( pView, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 33 ) );
		MoveMouse( pView, panel.AtColumn( 5 ) );
		EXPECT_EQ( panel.m_Widget.Cursor(), 100u + static_cast<uint32_t>( panel.Visible() ) - 1 );
	}
}

TEST( BudgetHistory, OnlyTheLeftButtonPicksAndOnlyWhileStopped )
{
	Panel panel( 500 );
	QTest::mousePress( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 20 ) );
	QTest::mouseRelease( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 20 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	panel.m_Widget.SetCursorMode( true );
	for ( const Qt::MouseButton button : { Qt::RightButton, Qt::MiddleButton } )
	{
		QTest::mouseClick( &panel.m_Bars, button, Qt::NoModifier, panel.AtColumn( 20 ) );
		QTest::mouseClick( &panel.m_Graph, button, Qt::NoModifier, panel.AtColumn( 20 ) );
		EXPECT_EQ( panel.m_Widget.Cursor(), 499u );
	}
}

TEST( BudgetHistory, PressingWithoutSamplesPicksNothing )
{
	Panel panel;
	panel.m_Widget.SetCursorMode( true );
	QTest::mousePress( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 20 ) );
	panel.Add( 10 );
	MoveMouse( &panel.m_Bars, panel.AtColumn( panel.Visible() - 1 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
}

TEST( BudgetHistory, ADragEndsWhenSamplingStarts )
{
	Panel panel( 500 );
	panel.m_Widget.SetCursorMode( true );
	QTest::mousePress( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 20 ) );
	const uint32_t nCursor = panel.m_Widget.Cursor();
	panel.m_Widget.SetCursorMode( false );
	MoveMouse( &panel.m_Bars, panel.AtColumn( 40 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), nCursor );
}

TEST( BudgetHistory, ClickingLeftOfTheOldestSampleSelectsSampleZero )
{
	Panel panel( 5 );
	panel.m_Widget.SetCursorMode( true );
	QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( 2 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), 0u );
	QTest::mouseClick( &panel.m_Bars, Qt::LeftButton, Qt::NoModifier, panel.AtColumn( panel.Visible() - 2 ) );
	EXPECT_EQ( panel.m_Widget.Cursor(), 3u );
}

TEST( BudgetHistory, WheelZoomsEachViewByItselfWithinItsBounds )
{
	Panel panel;
	struct
	{
		QWidget &m_View;
		const char *m_pKey;
		const char *m_pOtherKey;
	} const views[] = {
		{ panel.m_Bars, "history_scale", "fps_graph_scale" }, { panel.m_Graph, "fps_graph_scale", "history_scale" } };
	for ( const auto &[view, pKey, pOtherKey] : views )
	{
		const int nOther = SavedInt( panel, pOtherKey );
		EXPECT_EQ( SavedInt( panel, pKey ), 0 );
		Turn( view, 1 );
		EXPECT_EQ( SavedInt( panel, pKey ), 1 );
		for ( int i = 0; i < 7; i++ )
			Turn( view, 120 );
		EXPECT_EQ( SavedInt( panel, pKey ), 5 );
		Turn( view, 0, 120 ); // sideways counts as down
		EXPECT_EQ( SavedInt( panel, pKey ), 4 );
		for ( int i = 0; i < 12; i++ )
			Turn( view, -120 );
		EXPECT_EQ( SavedInt( panel, pKey ), -5 );
		EXPECT_EQ( SavedInt( panel, pOtherKey ), nOther );
	}
}

TEST( BudgetHistory, SettingsComeBack )
{
	Panel panel( 10 );
	auto *pSplitter = panel.m_Widget.findChild<QSplitter *>();
	pSplitter->setSizes( { 250, 120 } );
	Turn( panel.m_Bars, 120 );
	Turn( panel.m_Graph, -120 );
	CFakeHistoryOwner other;
	panel.m_Widget.SaveSettings( other.m_Settings );
	EXPECT_EQ( QByteArray::fromBase64( other.m_Settings.GetString( "budget_history_splitter_sizes" ) ),
		pSplitter->saveState() );

	CQBudgetHistoryWidget widget( other, nullptr );
	widget.resize( 600, 400 );
	widget.show();
	QApplication::processEvents();
	EXPECT_EQ( widget.findChild<QSplitter *>()->sizes(), pSplitter->sizes() );
	KeyValues saved( "saved" );
	widget.SaveSettings( saved );
	EXPECT_EQ( saved.GetInt( "history_scale" ), 1 );
	EXPECT_EQ( saved.GetInt( "fps_graph_scale" ), -1 );
	EXPECT_EQ( saved.GetFloat( "fps_upper_marker" ), 60.0f );
	EXPECT_EQ( saved.GetFloat( "fps_lower_marker" ), 30.0f );
}

TEST( BudgetHistory, BadSettingsAreClampedOrIgnored )
{
	CFakeHistoryOwner owner;
	owner.m_Settings.SetString( "budget_history_splitter_sizes", "no base64 at all!" );
	owner.m_Settings.SetInt( "history_scale", 99 );
	owner.m_Settings.SetInt( "fps_graph_scale", -99 );
	owner.m_Settings.SetFloat( "fps_upper_marker", 500.0f );
	owner.m_Settings.SetFloat( "fps_lower_marker", 0.0f );
	CExpectWarnings warnings;
	CQBudgetHistoryWidget widget( owner, nullptr );
	EXPECT_THAT( warnings.Take(), testing::ElementsAre( HasSubstr( "\"budget_history_splitter_sizes\"" ) ) );
	KeyValues saved( "saved" );
	widget.SaveSettings( saved );
	EXPECT_EQ( saved.GetInt( "history_scale" ), 5 );
	EXPECT_EQ( saved.GetInt( "fps_graph_scale" ), -5 );
	EXPECT_EQ( saved.GetFloat( "fps_upper_marker" ), 300.0f );
	EXPECT_EQ( saved.GetFloat( "fps_lower_marker" ), 1.0f );
}

TEST( BudgetHistory, WorksWithoutSettings )
{
	CFakeHistoryOwner owner;
	owner.m_bHasSettings = false;
	const CQBudgetHistoryWidget widget( owner, nullptr );
	KeyValues saved( "saved" );
	widget.SaveSettings( saved );
	EXPECT_EQ( saved.GetInt( "history_scale", -1 ), 0 );
	EXPECT_EQ( saved.GetFloat( "fps_upper_marker" ), 60.0f );
}

TEST( BudgetHistoryToolTip, DescribesTheHoveredColumn )
{
	Panel panel( 500 );
	panel.m_Widget.SetCursorMode( true );
	panel.m_ScrollBar.setValue( 100 );
	const auto Hover = []( QWidget &view, QPoint ptMouse )
	{
		QHelpEvent event( QEvent::ToolTip, ptMouse, view.mapToGlobal( ptMouse ) );
		QApplication::sendEvent( &view, &event );
		return QToolTip::text().toStdString();
	};
	const std::string text = Hover( panel.m_Bars, panel.AtColumn( 20 ) );
	EXPECT_THAT( text, HasSubstr( "Frame 121" ) );
	EXPECT_THAT( text, HasSubstr( "10.12 ms" ) ); // 5000 + 3120 + 2000 microseconds
	EXPECT_THAT( text, HasSubstr( "Budget 0" ) );
	EXPECT_THAT( text, Not( HasSubstr( "Totals" ) ) );
	EXPECT_THAT( Hover( panel.m_Graph, panel.AtColumn( 40 ) ), HasSubstr( "Frame 141" ) );
	EXPECT_THAT( Hover( panel.m_Bars, QPoint( panel.m_Bars.width() - 5, 30 ) ), HasSubstr( "Home, End" ) );
	QToolTip::hideText();
}

TEST( BudgetHistoryToolTip, KeysAreExplainedWhereTheCursorIsShown )
{
	Panel panel;
	EXPECT_THAT( panel.m_Label.toolTip().toStdString(), HasSubstr( "Shift+N" ) );
	EXPECT_THAT( panel.m_ScrollBar.toolTip().toStdString(), HasSubstr( "Shift+N" ) );
}
