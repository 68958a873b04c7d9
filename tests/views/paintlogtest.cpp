#include "support/paintlog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QPainter>
#include <QPixmap>
#include <QWidget>

using testing::ElementsAre;

namespace
{
class CQSample : public QWidget
{
protected:
	void paintEvent( QPaintEvent * ) override
	{
		QPainter painter( this );
		painter.fillRect( QRect( 1, 2, 3, 4 ), Qt::red );
	}
};
} // namespace

TEST( PaintLog, RecordsFillsAndOutlinesOfRectangles )
{
	CPaintLog log( QSize( 100, 100 ) );
	QPainter painter( &log );
	painter.fillRect( QRect( 1, 2, 30, 40 ), QBrush( Qt::red, Qt::Dense4Pattern ) );
	painter.setPen( QPen( Qt::blue, 3, Qt::DotLine ) );
	painter.setBrush( Qt::green );
	painter.drawRect( QRect( 5, 6, 7, 8 ) );

	EXPECT_THAT( log.Ops(), ElementsAre( PaintOp::FillRect( QRectF( 1, 2, 30, 40 ), Qt::red, Qt::Dense4Pattern ),
								PaintOp::FillRect( QRectF( 5, 6, 7, 8 ), Qt::green ),
								PaintOp::OutlineRect( QRectF( 5, 6, 7, 8 ), QPen( Qt::blue, 3, Qt::DotLine ) ) ) );
}

TEST( PaintLog, RecordsLinesAndPolygonsInTheDevicesCoordinates )
{
	CPaintLog log( QSize( 100, 100 ) );
	QPainter painter( &log );
	painter.translate( 10, 20 );
	painter.setPen( Qt::blue );
	painter.drawLine( 0, 1, 2, 3 );
	const QPoint points[] = { { 0, 0 }, { 4, 0 }, { 4, 4 } };
	painter.drawPolyline( points, 3 );
	painter.setBrush( Qt::green );
	painter.drawPolygon( points, 3 );

	const std::vector<QPointF> moved = { { 10, 20 }, { 14, 20 }, { 14, 24 } };
	EXPECT_THAT( log.Ops(), ElementsAre( PaintOp::Line( QLineF( 10, 21, 12, 23 ), QPen( Qt::blue ) ),
								PaintOp::Polyline( moved, QPen( Qt::blue ) ), PaintOp::FillPolygon( moved, Qt::green ),
								PaintOp::OutlinePolygon( moved, QPen( Qt::blue ) ) ) );
}

TEST( PaintLog, RecordsATextWithItsFontColourAndPlaceInTheBox )
{
	const QFont font( "Verdana", 9 );
	const QRect box( 10, 20, 200, 31 );
	CPaintLog log( QSize( 300, 100 ) );
	QPainter painter( &log );
	painter.setFont( font );
	painter.setPen( Qt::red );
	std::vector<PaintOp> expected;
	for ( const int nFlags :
		{ int( Qt::AlignLeft | Qt::AlignVCenter ), int( Qt::AlignRight | Qt::AlignVCenter ), int( Qt::AlignCenter ) } )
	{
		painter.drawText( box, nFlags | Qt::TextSingleLine, "  2.50 ms" );
		expected.push_back( PaintOp::Text( box, nFlags, "  2.50 ms", font, Qt::red ) );
	}
	EXPECT_EQ( log.Ops(), expected );
}

TEST( PaintLog, TellsTextsApartByWordsPlaceFontAndColour )
{
	const QFont font( "Verdana", 9 );
	const PaintOp text = PaintOp::Text( QRect( 0, 0, 100, 20 ), Qt::AlignCenter, "5", font, Qt::red );
	EXPECT_NE( text, PaintOp::Text( QRect( 0, 0, 100, 20 ), Qt::AlignCenter, "6", font, Qt::red ) );
	EXPECT_NE( text, PaintOp::Text( QRect( 1, 0, 100, 20 ), Qt::AlignCenter, "5", font, Qt::red ) );
	EXPECT_NE( text, PaintOp::Text( QRect( 0, 0, 100, 20 ), Qt::AlignLeft, "5", font, Qt::red ) );
	EXPECT_NE( text, PaintOp::Text( QRect( 0, 0, 100, 20 ), Qt::AlignCenter, "5", QFont( "Verdana", 10 ), Qt::red ) );
	EXPECT_NE( text, PaintOp::Text( QRect( 0, 0, 100, 20 ), Qt::AlignCenter, "5", font, Qt::blue ) );
}

TEST( PaintLog, RecordsTheGradientOfAPen )
{
	QLinearGradient gradient( 0, 0, 10, 0 );
	gradient.setColorAt( 0, Qt::red );
	gradient.setColorAt( 1, Qt::green );
	CPaintLog log( QSize( 100, 100 ) );
	QPainter painter( &log );
	painter.setPen( QPen( QBrush( gradient ), 1 ) );
	painter.drawLine( 0, 0, 10, 0 );

	EXPECT_THAT( log.Ops(), ElementsAre( PaintOp::Line( QLineF( 0, 0, 10, 0 ), QPen( QBrush( gradient ), 1 ) ) ) );
	gradient.setColorAt( 1, Qt::blue );
	EXPECT_NE( log.Ops()[0], PaintOp::Line( QLineF( 0, 0, 10, 0 ), QPen( QBrush( gradient ), 1 ) ) );
}

TEST( PaintLog, NotesTheClipInForce )
{
	CPaintLog log( QSize( 100, 100 ) );
	QPainter painter( &log );
	painter.fillRect( 0, 0, 10, 10, Qt::red );
	painter.setClipRect( 1, 2, 3, 4 );
	painter.fillRect( 0, 0, 10, 10, Qt::red );

	ASSERT_EQ( log.Ops().size(), 2u );
	EXPECT_FALSE( log.Ops()[0].m_Clip );
	EXPECT_EQ( log.Ops()[1].m_Clip, QRectF( 1, 2, 3, 4 ) );
}

TEST( PaintLog, TakesTheFirstDrawingOfAWidget )
{
	CQSample widget;
	widget.resize( 50, 50 );
	EXPECT_THAT( CPaintLog::OfWidget( widget ), ElementsAre( PaintOp::FillRect( QRectF( 1, 2, 3, 4 ), Qt::red ) ) );
}

TEST( PaintLog, MeasuresFontsAsAWidgetDoes )
{
	const QFont font( "Verdana", 9 );
	CPaintLog log( QSize( 10, 10 ) );
	QPainter painter( &log );
	painter.setFont( font );
	EXPECT_EQ( painter.fontMetrics().height(), QFontMetrics( font ).height() );
}
