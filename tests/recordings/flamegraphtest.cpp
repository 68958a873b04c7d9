#include <gmock/gmock.h>

#include <QApplication>
#include <QGraphicsSceneHoverEvent>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyleOptionGraphicsItem>
#include <QTest>
#include <QWheelEvent>

#include "recordings/flamegraphrowitem.h"
#include "recordings/flamegraphscaleitem.h"
#include "recordings/flamegraphwidget.h"
#include "recordings/flamescalelayout.h"
#include "support/paintlog.h"
#include "tests/recordings/recordingreaders.h"
#include "tests/recordings/recordingwriter.h"

namespace
{
const QColor BAND( 210, 210, 210, 255 );

// Root 0 with "wide" (1) and "narrow" (2); rows 0, 2, 1. Frame 0 is a sixtieth of a second.
class FlameGraph : public testing::Test
{
protected:
	FlameGraph()
	{
		CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "wide", 1 ).Node( 0, "narrow", 2 );
		writer.BeginTimings().Entry( 1, 4166 ).Entry( 1, 9 ).Entry( 1, 2000 ).EndFrame();
		writer.BeginFrame().BeginTimings().Entry( 1, 5000 ).Entry( 0, 0 ).Entry( 1, 4000 ).EndFrame();
		CKestoMemoryReader reader( writer.m_Bytes );
		m_pFile = ParseRecording( reader );
		m_Widget.resize( 800, 300 );
		m_Widget.show();
	}

	void Show( int nFrame )
	{
		m_Widget.SetRecording( m_pFile.Get(), std::make_shared<const NodeRows>( *m_pFile ) );
		m_Widget.SetFrame( m_pFile->GetFrame( nFrame ) );
	}

	CQFlamegraphRowItem &Item( int nRow ) { return *m_Widget.GetRowItems()[static_cast<size_t>( nRow )]; }

	static std::vector<PaintOp> Paint( QGraphicsItem &item )
	{
		CPaintLog log( QSize( 4000, 400 ) );
		QPainter painter( &log );
		QStyleOptionGraphicsItem option;
		option.exposedRect = item.boundingRect();
		item.paint( &painter, &option, nullptr );
		painter.end();
		return log.Ops();
	}

	QPoint ViewPoint( const QGraphicsItem &item ) const
	{
		return m_Widget.mapFromScene( item.boundingRect().center() );
	}

	void Wheel( QPoint ptMouse, int nDelta, Qt::KeyboardModifiers modifiers = Qt::NoModifier )
	{
		QWheelEvent event( ptMouse, m_Widget.viewport()->mapToGlobal( ptMouse ), QPoint(), QPoint( 0, nDelta ),
			Qt::NoButton, modifiers, Qt::NoScrollPhase, false );
		QCoreApplication::sendEvent( m_Widget.viewport(), &event );
	}

	CRefPtr<CKestoFile> m_pFile;
	CQFlamegraphWidget m_Widget;
};

TEST_F( FlameGraph, NothingIsLaidOutBeforeAFrameIsSet )
{
	m_Widget.SetRecording( m_pFile.Get(), std::make_shared<const NodeRows>( *m_pFile ) );
	ASSERT_EQ( m_Widget.GetRowItems().size(), 3u );
	EXPECT_EQ( Item( 2 ).GetBar(), ( FlameBar{ 0, 0 } ) );
	m_Widget.SetFrame( m_pFile->GetFrame( 0 ) );
	EXPECT_EQ( Item( 2 ).GetBar(), ( FlameBar{ 36, 8000 } ) );
	EXPECT_EQ( Item( 2 ).toolTip(), "wide" );
}

TEST_F( FlameGraph, TheMetaObjectHasTheSignalsInTheirOrder )
{
	QStringList signatures;
	const QMetaObject *pMeta = m_Widget.metaObject();
	for ( int i = pMeta->methodOffset(); i < pMeta->methodCount(); i++ )
		signatures << pMeta->method( i ).methodSignature();
	EXPECT_EQ( signatures, ( QStringList{ "OnItemSelectedChanged(int,bool)", "OnItemContextMenu(int,QPoint)" } ) );
}

TEST_F( FlameGraph, BarsHaveFourColoursByDepthAndLeaf )
{
	// 0 has 1 and 2, 2 has 3 and 4. Rows: 0, 2, 4, 3, 1; of these 4, 3 and 1 are the leaves 0, 1 and 2.
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "", 1 ).Node( 0, "", 2 );
	m_pFile = Parse( writer.Node( 2, "", 3 ).Node( 2, "", 4 ).EndFrame() );
	Show( 0 );
	const QColor evenDepth[] = { { 255, 200, 200 }, { 255, 255, 200 } };
	const QColor oddDepth( 240, 210, 215 );
	const QColor expected[] = { evenDepth[0], oddDepth, evenDepth[0], evenDepth[1], oddDepth };
	ASSERT_EQ( m_Widget.GetRowItems().size(), std::size( expected ) );
	for ( int i = 0; i < 5; i++ )
		EXPECT_EQ( Item( i ).GetColour(), expected[i] ) << "row " << i;
}

TEST_F( FlameGraph, TheSceneIsAsLargeAsWhatIsInIt )
{
	Show( 0 );
	Wheel( QPoint( 100, 100 ), 120 );
	QRectF expected = m_Widget.GetScaleItem().boundingRect();
	for ( int i = 0; i < 3; i++ )
		expected |= Item( i ).boundingRect();
	EXPECT_EQ( m_Widget.sceneRect(), expected );
}

TEST_F( FlameGraph, BarsStandAtTheirTimeAndGrowUpwards )
{
	Show( 0 );
	const QRectF root = Item( 0 ).boundingRect();
	EXPECT_FLOAT_EQ( static_cast<float>( root.width() ), 16664 * 0.1f );
	EXPECT_EQ( root.topLeft(), QPointF( 0, 0 ) );
	EXPECT_FLOAT_EQ( static_cast<float>( root.height() ), 20.0f * 0.85f );
	const QRectF wide = Item( 2 ).boundingRect();
	EXPECT_FLOAT_EQ( static_cast<float>( wide.left() ), 36 * 0.1f );
	EXPECT_FLOAT_EQ( static_cast<float>( wide.top() ), -20.0f );
}

TEST_F( FlameGraph, ABarIsARoundedRectangleWithItsNameInTheMiddleAtEveryZoom )
{
	Show( 0 );
	double flXScale = 0.1;
	double flRowHeight = 20.0;
	for ( const auto &[nDelta, bRowHeight] : { std::pair{ 0, false }, { 120, false }, { 240, true }, { -480, false } } )
	{
		Wheel( QPoint( 100, 100 ), nDelta, bRowHeight ? Qt::ControlModifier : Qt::NoModifier );
		( bRowHeight ? flRowHeight : flXScale ) *= std::exp( nDelta * 0.005 );
		const QRectF rect( 36 * flXScale, -flRowHeight, 8000 * flXScale, flRowHeight * 0.85 );
		const std::vector<PaintOp> ops = Paint( Item( 2 ) );
		ASSERT_EQ( ops.size(), 3u );
		EXPECT_EQ( ops[0].m_Kind, PaintOp::Kind::Path );
		EXPECT_EQ( ops[0].m_Colour, QColor( 245, 240, 215 ) ) << "depth 1, leaf 1";
		EXPECT_EQ( ops[1].m_Kind, PaintOp::Kind::Path );
		EXPECT_EQ( ops[1].m_Colour, QColor( Qt::darkYellow ) );
		for ( const PaintOp &op : { ops[0], ops[1] } )
		{
			EXPECT_NEAR( op.m_Rect.left(), rect.left(), 0.01 );
			EXPECT_NEAR( op.m_Rect.top(), rect.top(), 0.01 );
			EXPECT_NEAR( op.m_Rect.width(), rect.width(), 0.01 );
			EXPECT_NEAR( op.m_Rect.height(), rect.height(), 0.01 );
		}
		EXPECT_EQ( ops[2], PaintOp::Text( Item( 2 ).boundingRect().adjusted( 1, 1, -2, -2 ),
							   Qt::AlignCenter | Qt::TextWordWrap, "wide", ops[2].m_Font, QColor( 30, 30, 40 ) ) );
	}
}

TEST_F( FlameGraph, ABarShowsAnyNameOnOneLine )
{
	CRecordingWriter writer = CRecordingWriter().Header().BeginFrame().Node( 0, "a\n<b>&c", 1 );
	writer.BeginTimings().Entry( 1, 2000 ).Entry( 1, 2000 ).EndFrame();
	m_pFile = Parse( writer );
	Show( 0 );
	EXPECT_EQ( Paint( Item( 1 ) )[2].m_Text, QStringLiteral( "a\uFFFD<b>&c" ) );
}

TEST_F( FlameGraph, ASelectedBarIsOutlinedInCyan )
{
	Show( 0 );
	m_Widget.SetSelected( 1, true );
	EXPECT_EQ( Paint( Item( 2 ) )[1].m_Colour, QColor( Qt::cyan ) );
}

TEST_F( FlameGraph, ABarOfFourPixelsHasNoText )
{
	Show( 0 );
	ASSERT_FLOAT_EQ( static_cast<float>( Item( 1 ).boundingRect().width() ), 3.6f );
	EXPECT_EQ( Paint( Item( 1 ) ).size(), 2u );
	Wheel( ViewPoint( Item( 2 ) ), 120 ); // 6.6 pixels
	EXPECT_EQ( Paint( Item( 1 ) ).size(), 3u );
}

TEST_F( FlameGraph, ABarWithoutTimeIsOnlyAnOutline )
{
	Show( 1 );
	EXPECT_EQ( Item( 1 ).boundingRect().width(), 0.0 );
	for ( const PaintOp &op : Paint( Item( 1 ) ) )
		EXPECT_NE( op.m_Kind, PaintOp::Kind::Text );
}

// The operations that a scale of nMilliseconds and budgets from 2^nExponent on is made of, with texts in the fonts of
// painted ones.
std::vector<PaintOp> ExpectedScale(
	const FlameMap &map, int nMilliseconds, int nExponent, const std::vector<PaintOp> &painted )
{
	const auto band = [&]( double flTop, double flFrom, double flTo )
	{
		const double s = map.m_flXScale;
		const double h = map.m_flRowHeight;
		return QRectF( flFrom * s, flTop * h, ( flTo - flFrom ) * s, 0.75 * h );
	};
	const int nRight = Qt::AlignRight | Qt::AlignVCenter;
	const auto budget = []( int j ) { return 1000000.0 / ( 1 << j ); };
	std::vector<PaintOp> ops = {
		PaintOp::OutlineRect( band( 1.25, 0, nMilliseconds * 1000 ), BAND ),
		PaintOp::OutlineRect( band( 2, 0, budget( nExponent ) ), BAND ),
	};
	for ( int i = 0; i < nMilliseconds; i += 2 )
		ops.push_back( PaintOp::FillRect( band( 1.25, i * 1000, i * 1000 + 1000 ), BAND ) );
	for ( int j = nExponent; j <= nExponent + 3; j++ )
		ops.push_back( PaintOp::FillRect( band( 2, 0.75 * budget( j ), budget( j ) ), BAND ) );
	const auto label = [&]( const QRectF &box, const QString &text, const QColor &colour )
	{
		const QFont font = ops.size() < painted.size() ? painted[ops.size()].m_Font : QFont();
		ops.push_back( PaintOp::Text( box, nRight, text, font, colour ) );
	};
	for ( int i = 1; i < nMilliseconds; i += 2 )
		label( band( 1.25, i * 1000, i * 1000 + 1000 ), QString( "%1 ms" ).arg( i + 1 ), Qt::gray );
	for ( int i = 0; i < nMilliseconds; i += 2 )
		label( band( 1.25, i * 1000, i * 1000 + 1000 ), QString( "%1 ms" ).arg( i + 1 ), Qt::darkGray );
	for ( int j = nExponent; j <= nExponent + 1; j++ )
		label( band( 2, 0.75 * budget( j ), budget( j ) ), QString( "%1 fps" ).arg( 1 << j ), Qt::darkGray );
	return ops;
}

TEST_F( FlameGraph, TheScaleShowsMillisecondsAndBudgetsAtSeveralZooms )
{
	Show( 0 );
	auto &scale = const_cast<CQFlamegraphScaleItem &>( m_Widget.GetScaleItem() );
	for ( const auto &[nSteps, modifier] : { std::pair{ 0, Qt::NoModifier }, { 120, Qt::NoModifier },
			  { 180, Qt::ControlModifier }, { -360, Qt::NoModifier } } )
	{
		Wheel( QPoint( 100, 100 ), nSteps, modifier );
		const std::vector<PaintOp> ops = Paint( scale );
		const std::vector<PaintOp> expected = ExpectedScale( m_Widget.GetMap(), 17, 5, ops );
		ASSERT_EQ( ops.size(), expected.size() ) << nSteps;
		for ( size_t i = 0; i < ops.size(); i++ )
			EXPECT_EQ( ops[i], expected[i] ) << "operation " << i << " after " << nSteps;
	}
}

TEST_F( FlameGraph, TheScalesTextsFitTheirBlocksAsPainted )
{
	Show( 0 );
	auto &scale = const_cast<CQFlamegraphScaleItem &>( m_Widget.GetScaleItem() );
	for ( const int nSteps : { 0, -60, -60, 240 } )
	{
		Wheel( QPoint( 100, 100 ), nSteps );
		int nTexts = 0;
		for ( const PaintOp &op : Paint( scale ) )
		{
			if ( op.m_Kind != PaintOp::Kind::Text )
				continue;
			nTexts++;
			EXPECT_LE( QFontMetricsF( op.m_Font ).horizontalAdvance( op.m_Text ), op.m_Rect.width() + 1.0 )
				<< op.m_Text.toStdString() << " after " << nSteps;
		}
		EXPECT_EQ( nTexts, 17 + 2 );
	}
}

TEST_F( FlameGraph, APressOnTheScaleSetsTheMarker )
{
	Show( 0 );
	auto &scale = const_cast<CQFlamegraphScaleItem &>( m_Widget.GetScaleItem() );
	const QPoint ptPressed = m_Widget.mapFromScene( QPointF( 500, scale.boundingRect().center().y() ) );
	QTest::mousePress( m_Widget.viewport(), Qt::LeftButton, Qt::NoModifier, ptPressed );
	const float flTime = static_cast<float>( m_Widget.mapToScene( ptPressed ).x() ) / 0.1f;
	EXPECT_NEAR( scale.GetMarker(), flTime, 0.5 );
	bool bLine = false;
	QStringList texts;
	for ( const PaintOp &op : Paint( scale ) )
	{
		bLine = bLine || op == PaintOp::Line( QLineF( flTime * 0.1f, 20 * 2.825, flTime * 0.1f, 20 * 3.425 ),
								   QPen( Qt::darkGray ) );
		texts << op.m_Text;
	}
	EXPECT_TRUE( bLine );
	EXPECT_TRUE(
		texts.join( "" ).contains( QString::asprintf( "%.1f fps", static_cast<double>( 1000000.0f / flTime ) ) ) );
}

TEST_F( FlameGraph, TheMarkerFollowsTheLeftButtonAndTheHoveringMouse )
{
	Show( 0 );
	auto &scale = const_cast<CQFlamegraphScaleItem &>( m_Widget.GetScaleItem() );
	EXPECT_TRUE( scale.acceptHoverEvents() );
	const auto press = [&]( QEvent::Type type, Qt::MouseButton button, double x )
	{
		QGraphicsSceneMouseEvent event( type );
		event.setButton( button );
		event.setButtons( button );
		event.setScenePos( QPointF( x, 30 ) );
		m_Widget.scene()->sendEvent( &scale, &event );
	};
	press( QEvent::GraphicsSceneMousePress, Qt::RightButton, 50 );
	press( QEvent::GraphicsSceneMouseMove, Qt::MiddleButton, 50 );
	EXPECT_EQ( scale.GetMarker(), 0.0f );
	press( QEvent::GraphicsSceneMousePress, Qt::LeftButton, 100 );
	EXPECT_FLOAT_EQ( scale.GetMarker(), 1000.0f );
	press( QEvent::GraphicsSceneMouseMove, Qt::LeftButton, 250 );
	EXPECT_FLOAT_EQ( scale.GetMarker(), 2500.0f );
	QGraphicsSceneHoverEvent hover( QEvent::GraphicsSceneHoverMove );
	hover.setScenePos( QPointF( 70, 30 ) );
	m_Widget.scene()->sendEvent( &scale, &hover );
	EXPECT_FLOAT_EQ( scale.GetMarker(), 700.0f );
}

TEST_F( FlameGraph, ARubberBandWouldTakeWhateverItTouches )
{
	EXPECT_EQ( m_Widget.rubberBandSelectionMode(), Qt::IntersectsItemBoundingRect );
	EXPECT_EQ( m_Widget.dragMode(), QGraphicsView::NoDrag );
}

TEST( FlameScaleLayout, TheMarkerHasItsFrameRateAtItsLeftAndItsTimeAtItsRight )
{
	FlameScale scale;
	scale.SetFrameTime( 16666 );
	const QFontMetricsF metrics( QFont{} );
	const FlameScaleLayout layout = LayoutFlameScale( scale, 8000.0f, FlameMap(), 0.0f, 4000.0f, metrics );
	ASSERT_EQ( layout.m_MarkerLabels.size(), 2u );
	EXPECT_EQ( layout.m_MarkerLabels[0].m_Text, "125.0 fps  " );
	EXPECT_EQ( layout.m_MarkerLabels[0].m_Alignment, Qt::AlignRight | Qt::AlignVCenter );
	EXPECT_EQ( layout.m_MarkerLabels[0].m_Box, QRectF( 0, 55, 800, 15 ) );
	EXPECT_EQ( layout.m_MarkerLabels[1].m_Text, "  8.000 ms" );
	EXPECT_EQ( layout.m_MarkerLabels[1].m_Alignment, Qt::AlignLeft | Qt::AlignVCenter );
	EXPECT_EQ( layout.m_MarkerLabels[1].m_Box, QRectF( 800, 55, 3125 - 800, 15 ) ) << "up to 32 frames per second";
	EXPECT_TRUE( LayoutFlameScale( scale, 0.0f, FlameMap(), 0.0f, 4000.0f, metrics ).m_MarkerLabels.empty() );
}

TEST( FlameScaleLayout, AFrameOfHalfAnHourIsNotDrawnMillisecondByMillisecond )
{
	FlameScale scale;
	scale.SetFrameTime( 2147483647 );
	FlameMap map;
	map.m_flXScale = 1e-6f;
	const FlameScaleLayout layout = LayoutFlameScale( scale, 0.0f, map, 0.0f, 4000.0f, QFontMetricsF( QFont{} ) );
	EXPECT_LT( layout.m_Fills.size() + layout.m_OpenLabels.size(), 5000u );
	EXPECT_GT( layout.m_Fills.size(), 1000u );
}

TEST( FlameScaleLayout, LabelsShrinkBeforeTheyAreCutOff )
{
	FlameScale scale;
	scale.SetFrameTime( 26000 );
	const QFontMetricsF metrics( QFont{} );
	FlameMap map;
	for ( const float flBlock : { 200.0f, 30.0f, 15.0f, 2.0f } ) // pixels
	{
		map.m_flXScale = flBlock / 1000.0f;
		const FlameScaleLayout layout = LayoutFlameScale( scale, 400.0f, map, 0.0f, 6000.0f, metrics );
		ASSERT_EQ( layout.m_OpenLabels.size() + layout.m_FilledLabels.size(), 26u + 2u );
		ASSERT_EQ( layout.m_MarkerLabels.size(), 2u );
		std::vector<FlameScaleLabel> labels = layout.m_FilledLabels;
		labels.push_back( layout.m_OpenLabels.back() );
		labels.push_back( layout.m_MarkerLabels[0] );
		for ( const FlameScaleLabel &label : labels )
		{
			const double flWidth = metrics.horizontalAdvance( label.m_Text ) * label.m_flFontSize;
			EXPECT_LE( label.m_flFontSize, 1.0 );
			EXPECT_TRUE( flWidth <= label.m_Box.width() + 0.01 || label.m_flFontSize == 0.25 )
				<< label.m_Text.toStdString() << " at " << flBlock;
		}
		// Milliseconds have one size, which is no smaller than it must be.
		EXPECT_EQ( layout.m_OpenLabels[0].m_flFontSize, layout.m_FilledLabels[0].m_flFontSize );
		const double flWidest = metrics.horizontalAdvance( "26 ms" );
		const double flExpected = std::clamp( static_cast<double>( flBlock ) / flWidest, 0.25, 1.0 );
		EXPECT_NEAR( layout.m_OpenLabels[0].m_flFontSize, flExpected, 1e-5 );
	}
}

TEST_F( FlameGraph, TheWheelZoomsTimeAndWithCtrlTheRowHeight )
{
	Show( 0 );
	Wheel( QPoint( 200, 100 ), 120 );
	EXPECT_FLOAT_EQ( m_Widget.GetMap().m_flXScale, 0.1f * std::exp( 0.6f ) );
	EXPECT_EQ( m_Widget.GetMap().m_flRowHeight, 20.0f );
	Wheel( QPoint( 200, 100 ), -120, Qt::ControlModifier );
	EXPECT_FLOAT_EQ( m_Widget.GetMap().m_flRowHeight, 20.0f * std::exp( -0.6f ) );
	EXPECT_FLOAT_EQ( m_Widget.GetMap().m_flXScale, 0.1f * std::exp( 0.6f ) );
}

TEST_F( FlameGraph, WhatIsUnderTheMouseStaysThereWhileZooming )
{
	Show( 0 );
	Wheel( QPoint( 400, 100 ), 360 ); // wider than the view, so that it can scroll
	const QPoint ptMouse( 300, 120 );
	const float flTime = m_Widget.GetMap().TimeAt( static_cast<float>( m_Widget.mapToScene( ptMouse ).x() ) );
	Wheel( ptMouse, 120 );
	const float flAfter = m_Widget.GetMap().TimeAt( static_cast<float>( m_Widget.mapToScene( ptMouse ).x() ) );
	EXPECT_NEAR( flAfter, flTime, 3.0f / m_Widget.GetMap().m_flXScale );
}

TEST_F( FlameGraph, ZoomingNeverLeavesTheNumbers )
{
	Show( 0 );
	for ( const int nDelta : { 1200, -1200 } )
		for ( int i = 0; i < 100; i++ )
		{
			Wheel( QPoint( 100, 100 ), nDelta );
			Wheel( QPoint( 100, 100 ), nDelta, Qt::ControlModifier );
			ASSERT_TRUE( std::isnormal( m_Widget.GetMap().m_flXScale ) );
			ASSERT_TRUE( std::isnormal( m_Widget.GetMap().m_flRowHeight ) );
		}
	m_Widget.grab();
}

TEST_F( FlameGraph, ClearGoesBackToTheBeginning )
{
	Show( 0 );
	m_Widget.SetSelected( 1, true );
	Wheel( QPoint( 100, 100 ), 120 );
	m_Widget.Clear();
	EXPECT_TRUE( m_Widget.GetRowItems().empty() );
	EXPECT_EQ( m_Widget.GetMap().m_flXScale, 0.1f );
	EXPECT_EQ( m_Widget.GetSelectedNode(), -1 );
	EXPECT_EQ( m_Widget.GetScaleItem().GetScale().GetMilliseconds(), 1 );
	EXPECT_EQ( m_Widget.GetScaleItem().GetScale().GetExponent(), 1 );
}

TEST_F( FlameGraph, AClickSelectsAndReportsOnce )
{
	Show( 0 );
	QSignalSpy spy( &m_Widget, &CQFlamegraphWidget::OnItemSelectedChanged );
	// What a player does: it echoes.
	QObject::connect(
		&m_Widget, &CQFlamegraphWidget::OnItemSelectedChanged, &m_Widget, &CQFlamegraphWidget::SetSelected );
	QTest::mouseClick( m_Widget.viewport(), Qt::LeftButton, Qt::NoModifier, ViewPoint( Item( 2 ) ) );
	ASSERT_EQ( spy.count(), 1 );
	EXPECT_EQ( spy[0][0].toInt(), 1 );
	EXPECT_TRUE( spy[0][1].toBool() );
	EXPECT_EQ( m_Widget.GetSelectedNode(), 1 );
}

TEST_F( FlameGraph, SetSelectedReportsNothing )
{
	Show( 0 );
	QSignalSpy spy( &m_Widget, &CQFlamegraphWidget::OnItemSelectedChanged );
	m_Widget.SetSelected( 1, true );
	m_Widget.SetSelected( 99, true );
	EXPECT_EQ( spy.count(), 0 );
	EXPECT_TRUE( Item( 2 ).isSelected() );
	EXPECT_EQ( m_Widget.GetSelectedNode(), 1 );
	m_Widget.Clear();
	EXPECT_EQ( spy.count(), 0 ) << "going away is no news either";
}

TEST_F( FlameGraph, TheMiddleButtonPans )
{
	Show( 0 );
	Wheel( QPoint( 100, 100 ), 360 );
	Wheel( QPoint( 100, 100 ), 480, Qt::ControlModifier );
	const QScrollBar &horizontal = *m_Widget.horizontalScrollBar();
	const QScrollBar &vertical = *m_Widget.verticalScrollBar();
	m_Widget.centerOn( m_Widget.sceneRect().center() );
	const QPoint ptBefore( horizontal.value(), vertical.value() );
	const QPoint ptFrom( 300, 100 ), ptTo( 260, 130 );
	QTest::mousePress( m_Widget.viewport(), Qt::MiddleButton, Qt::NoModifier, ptFrom );
	QMouseEvent move( QEvent::MouseMove, ptTo, m_Widget.viewport()->mapToGlobal( ptTo ), Qt::NoButton, Qt::MiddleButton,
		Qt::NoModifier );
	QCoreApplication::sendEvent( m_Widget.viewport(), &move );
	EXPECT_EQ( QPoint( horizontal.value(), vertical.value() ), ptBefore + ptFrom - ptTo );
}

// Deliberate: the wheel scrolls as in any view, and then zooms around what is under the mouse.
TEST_F( FlameGraph, TheWheelScrollsBeforeItZooms )
{
	Show( 0 );
	Wheel( QPoint( 100, 100 ), 480, Qt::ControlModifier ); // higher than the view
	m_Widget.centerOn( m_Widget.sceneRect().center() );
	const QPoint ptMouse( 100, 100 );
	const double flBefore = m_Widget.mapToScene( ptMouse ).y();
	const int nLines = QApplication::wheelScrollLines();
	const int nScrolled = nLines * m_Widget.verticalScrollBar()->singleStep();
	Wheel( ptMouse, -120 );
	EXPECT_NEAR( m_Widget.mapToScene( ptMouse ).y() - flBefore, nScrolled, 2.0 );
}

TEST_F( FlameGraph, TheFirstFrameIsSeenFromItsBeginning )
{
	m_Widget.resize( 400, 300 );
	Show( 0 );
	EXPECT_NEAR( m_Widget.mapToScene( QPoint( 0, 0 ) ).x(), 0.0, 1.0 );
	m_Widget.horizontalScrollBar()->setValue( 300 );
	m_Widget.SetFrame( m_pFile->GetFrame( 1 ) );
	EXPECT_EQ( m_Widget.horizontalScrollBar()->value(), 300 ) << "where the user looks stays";
}

TEST_F( FlameGraph, TheWholeFrameIsAsWideAsTheView )
{
	Show( 0 );
	m_Widget.ShowWholeFrame();
	EXPECT_NEAR( Item( 0 ).boundingRect().width(), m_Widget.viewport()->width() - 4, 0.5 );
	EXPECT_NEAR( m_Widget.mapToScene( QPoint( 0, 0 ) ).x(), 0.0, 2.0 );
	EXPECT_EQ( m_Widget.GetMap().m_flRowHeight, 20.0f );
	m_Widget.Clear();
	m_Widget.ShowWholeFrame();
	EXPECT_EQ( m_Widget.GetMap().m_flXScale, 0.1f );
}

TEST_F( FlameGraph, WithoutARecordingTheScaleIsThatOf60FramesPerSecond )
{
	m_Widget.SetFrame( m_pFile->GetFrame( 0 ) );
	EXPECT_EQ( m_Widget.GetScaleItem().GetScale().GetMilliseconds(), 17 );
	EXPECT_EQ( m_Widget.GetScaleItem().GetScale().GetExponent(), 5 );
}

TEST_F( FlameGraph, APlainStyleOptionShowsTheWholeScale )
{
	Show( 0 );
	auto &scale = const_cast<CQFlamegraphScaleItem &>( m_Widget.GetScaleItem() );
	CPaintLog log( QSize( 4000, 400 ) );
	QPainter painter( &log );
	const QStyleOptionGraphicsItem option;
	scale.paint( &painter, &option, nullptr );
	painter.end();
	const std::vector<PaintOp> whole = Paint( scale );
	EXPECT_EQ( log.Ops().size(), whole.size() );
}

TEST_F( FlameGraph, MovesThatPanAreNotSeenByItems )
{
	Show( 0 );
	const auto &scale = m_Widget.GetScaleItem();
	const QPoint ptScale = m_Widget.mapFromScene( QPointF( 500, scale.boundingRect().center().y() ) );
	for ( const Qt::MouseButtons buttons : { Qt::MouseButtons( Qt::NoButton ), Qt::MouseButtons( Qt::LeftButton ) } )
	{
		QMouseEvent move( QEvent::MouseMove, ptScale, m_Widget.viewport()->mapToGlobal( ptScale ), Qt::NoButton,
			buttons, Qt::NoModifier );
		QCoreApplication::sendEvent( m_Widget.viewport(), &move );
		EXPECT_EQ( scale.GetMarker(), 0.0f ) << "deliberate: the scene hands no move on";
	}
}

TEST_F( FlameGraph, ASelectedBarKeepsItsPlaceWhenTheFrameChanges )
{
	Show( 0 );
	Wheel( QPoint( 400, 100 ), 480 );
	m_Widget.SetSelected( 1, true );
	m_Widget.centerOn( &Item( 2 ) );
	const QPoint ptBefore = ViewPoint( Item( 2 ) );
	m_Widget.SetFrame( m_pFile->GetFrame( 1 ) );
	EXPECT_LE( ( ViewPoint( Item( 2 ) ) - ptBefore ).manhattanLength(), 3 );
}

TEST_F( FlameGraph, AContextMenuOnABarIsReported )
{
	Show( 0 );
	QSignalSpy spy( &m_Widget, &CQFlamegraphWidget::OnItemContextMenu );
	const QPoint pt = ViewPoint( Item( 2 ) );
	const QPoint ptGlobal = m_Widget.viewport()->mapToGlobal( pt );
	QContextMenuEvent event( QContextMenuEvent::Mouse, pt, ptGlobal );
	QCoreApplication::sendEvent( m_Widget.viewport(), &event );
	ASSERT_EQ( spy.count(), 1 );
	EXPECT_EQ( spy[0][0].toInt(), 1 );
	EXPECT_EQ( spy[0][1].toPoint(), ptGlobal );
}
} // namespace
